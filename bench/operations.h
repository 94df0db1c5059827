// operations.h: what is measured: what a script can ask the plug-in for, and what it costs at least.
#pragma once

#include <span>

#include <lua.hpp>

namespace bench {

// Lua texts know f: the function that is measured, the plug-in's or its floor; handle, container: of the sample; few,
// panel, grid: of what stands beside it; name: the control's; names: new names; clones: an empty list; data[n]: n
// variables of panel; meta: the metatable of handles to controls; i: the number of the call. $n stands for the names of
// panel's first n variables.
struct Operation {
    const char *name;
    bool grows;              // whether its cost depends on the size of the model
    const char *function;    // the plug-in's, as a Lua expression
    lua_CFunction floor;     // gives the same with the calls alone that nobody can do without
    const char *call;        // one call of f; null: what is measured is that handles which `before` left are collected
    const char *before = ""; // makes what the calls use up
    const char *after = "";  // takes away what they have made
    const char *effect = "handle:get_bounds()"; // what the calls may have changed
};

std::span<const Operation> all_operations();

} // namespace bench
