// number_facts.h: what becomes of numbers that no integer holds. Lua 5.1 and LuaJIT leave that to the machine, so
// results differ from build to build; tests take what they expect from here.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include <lua.hpp>

namespace number_facts {

// What lua_tointeger gives. lua_Integer is as wide as a pointer: 64 bits on the desktop, 32 on i386 and on the target.
// Numbers within its range are cut toward zero. For others, x86's instruction gives the smallest integer, whatever the
// number; ARM's gives the nearest integer, and 0 for what is no number.
inline lua_Integer to_integer(double number) {
    using Limits = std::numeric_limits<lua_Integer>;
    constexpr double least = static_cast<double>(Limits::min()); // a power of two: exact
    const double whole = std::trunc(number);
    if (whole >= least && whole < -least) return static_cast<lua_Integer>(whole);
#if defined(__arm__) || defined(__aarch64__)
    if (std::isnan(number)) return 0;
    return number < 0 ? Limits::min() : Limits::max();
#elif defined(__i386__) || defined(__x86_64__)
    return Limits::min();
#else
#error "state what this machine makes of a number that is out of an integer's range"
#endif
}

// Its low bits, with their sign: what is left of it in the plug-in's narrower integers.
inline int to_row(double number) { return static_cast<std::int32_t>(to_integer(number)); }
inline int to_coordinate(double number) { return static_cast<std::int16_t>(to_integer(number)); }
inline int to_anchor(double number) { return static_cast<std::int8_t>(to_integer(number)); }

} // namespace number_facts
