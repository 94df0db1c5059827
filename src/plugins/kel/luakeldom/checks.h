// checks.h: what Lua entries check before they work, and the two channels in which they say no: a warning in the host's
// log, after which the script sees nil, and a Lua error. Which check takes which channel is part of the module's
// behaviour.
#pragma once

#include "handle.h"

// Texts that more than one entry uses.
inline constexpr char not_a_handle[] = "Argument must be a keldom_object";
inline constexpr char no_application[] = "Invalid argument, no application pointer";
inline constexpr char no_application_for_call[] = "Invalid call, no application pointer";
inline constexpr char no_such_object[] = "No such object in DOM";
inline constexpr char one_argument_expected[] = "This function should have exactly one argument";

// Each gives 0, an entry's count of results, so that an entry can say `return warn(app, text)`.
int warn(kl_application_t *app, const char *text);
int raise_error(lua_State *L, const char *text); // returns where the host's kl_lua_error does

// The application, or null after raising the error that there is none.
kl_application_t *keldom_require_app(lua_State *L);

// The application, or null after raising the error that there is not exactly one argument, or no application.
kl_application_t *lua_one_arg_app(lua_State *L);

// Whether there are at least `minimum` arguments; warns "This function expects <expects>" when not.
bool has_arguments(lua_State *L, kl_application_t *app, int minimum, const char *expects);

// The first step of every method: the application, and the handle at position 1. False after raising that there is no
// application, or after the warning that argument 1 is no handle.
bool get_dom_object(lua_State *L, kl_application_t *&app, dom_object_t *&object);
