// measurement.h: runs one operation and its floor on a sample, by any clock.
#pragma once

#include <cstdint>
#include <string>

#include "operations.h"
#include "sample_model.h"

namespace bench {

using Clock = std::uint64_t (*)();

// In the clock's units, for all calls together; what an empty loop takes is taken off.
struct Reading {
    std::int64_t total;
    std::int64_t floor;
};

class Measurement {
public:
    // Runs both once, and ends the program when they do not do the same.
    Measurement(SampleModel &sample, const Operation &operation);
    ~Measurement();
    Measurement(const Measurement &) = delete;
    Measurement &operator=(const Measurement &) = delete;

    // Nothing is collected while the clock runs. calls: 1 to most_calls.
    Reading measure(Clock clock, int calls);

private:
    std::string description(int functions);
    std::int64_t run(int functions, Clock clock, int calls);
    void run_field(int functions, const char *field, int calls);

    SampleModel &sample_;
    lua_State *L_;
    int total_; // references to the Lua functions of both
    int floor_;
};

inline constexpr int most_calls = 256;

// A call from C++ of a chunk or function that is on the stack below its arguments. Ends the program when it fails.
void call_lua(lua_State *L, int arguments, int results);

} // namespace bench
