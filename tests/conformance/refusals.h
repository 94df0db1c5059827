// refusals.h: counts what is asked of memory while a test's Lua code runs, and refuses what a plan says.
#pragma once

#include <array>

#include "observer.h"

namespace conformance {

// The recorder's kinds of requests, and Lua's own.
inline constexpr int lua_request = KC_REQUEST_KINDS;
inline constexpr int request_kinds = KC_REQUEST_KINDS + 1;
extern const char *const request_names[request_kinds];

using RequestCounts = std::array<unsigned long, request_kinds>;

// Which request fails: of which kind, counted from 0 over one test case; and whether all later ones of it fail too.
struct Refusal {
    int kind = 0;
    unsigned long request = 0;
    bool and_all_after = false;
};

// Starts counting anew; null refuses nothing. It is copied.
void plan_refusal(const Refusal *refusal);

const RequestCounts &requests();  // of each kind since then
unsigned long refused_requests(); // since then

// Between these, requests are counted and refused.
void admit_refusals();
void end_refusals();

// Puts itself before the state's allocator, until the state is released. One state at a time.
void watch_allocator(lua_State *L);
void release_allocator(lua_State *L);

} // namespace conformance
