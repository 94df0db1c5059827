// refusals.cpp: counts what is asked of memory while a test's Lua code runs, and refuses what a plan says.
#include "refusals.h"

#include <iterator>

#include <lua.hpp>

namespace conformance {

const char *const request_names[request_kinds] = {
    "kelal_strdup", "kelal_realloc", "kl_darray_create", "kl_darray_add", "find_for_prefix", "host", "lua",
};

namespace {

static_assert(std::size(request_names) == lua_request + 1, "one name a kind");

struct {
    Refusal refusal;
    bool refuses = false;
    bool admitted = false;
    RequestCounts requests{};
    unsigned long refused = 0;
    lua_Alloc allocate = nullptr; // the state's own, with its data
    void *allocator = nullptr;
} plan;

bool is_refused(int kind) {
    if (!plan.admitted) return false;
    const unsigned long request = plan.requests[static_cast<std::size_t>(kind)]++;
    if (!plan.refuses || kind != plan.refusal.kind) return false;
    if (request < plan.refusal.request) return false;
    if (request > plan.refusal.request && !plan.refusal.and_all_after) return false;
    ++plan.refused;
    return true;
}

// Only growing can fail: Lua relies on that.
void *allocate(void *, void *block, std::size_t old_size, std::size_t new_size) {
    if (new_size > old_size && is_refused(lua_request)) return nullptr;
    return plan.allocate(plan.allocator, block, old_size, new_size);
}

} // namespace

void plan_refusal(const Refusal *refusal) {
    plan.refuses = refusal != nullptr;
    if (refusal) plan.refusal = *refusal;
    plan.requests = {};
    plan.refused = 0;
    kc_set_refuse([](kc_request_t kind) { return is_refused(kind) ? 1 : 0; });
}

const RequestCounts &requests() { return plan.requests; }
unsigned long refused_requests() { return plan.refused; }
void admit_refusals() { plan.admitted = true; }
void end_refusals() { plan.admitted = false; }

void watch_allocator(lua_State *L) {
    plan.allocate = lua_getallocf(L, &plan.allocator);
    lua_setallocf(L, allocate, nullptr);
}

void release_allocator(lua_State *L) { lua_setallocf(L, plan.allocate, plan.allocator); }

} // namespace conformance
