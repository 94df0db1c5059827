// functions.h: every function that the plug-in gives to Lua, where it is found, and what it likes to be called with.
#pragma once

#include <span>
#include <vector>

enum Subject : unsigned { navigation = 1, values = 2, geometry = 4, lifecycle = 8 };

struct Function {
    const char *name;
    std::vector<const char *> places; // metatables whose method it is; "keldom": the module; "": a metamethod
    unsigned subjects;
    // One letter an argument: h handle, n name, e name or handle, k variable, v value, i integer, a anchor, t table.
    const char *arguments;
    int optional; // how many of them may be left out
};

std::span<const Function> all_functions();
