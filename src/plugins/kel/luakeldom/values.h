// values.h: data variables of an object: their keys, the single read, and the one writer of all setters.
#pragma once

#include "handle.h"
#include "variables.h"

// [-0, +1] Pushes the key of an object's variable: "main.ok.kld_x", or the bare name for the application.
void keldom_push_key(lua_State *L, const dom_object_t *object, const char *variable);

// [-0, +1] Pushes a variable's value, or nil when there is no such variable or `variable` is null. Raises without a
// data manager, and pushes nil should that return. Returns 1.
int keldom_get_value(lua_State *L, kl_application_t *app, const dom_object_t *object, const char *variable);

// [-0, +n] Writes the values at stack positions start, start + 1, ... into the listed variables, as one batch of
// changes, and leaves their keys, four at most; a placeholder consumes its position and writes nothing. Raises without
// a data manager. Returns 0.
int keldom_set_values_from_list(lua_State *L, kl_application_t *app, const dom_object_t *object, int start,
                                variable_list_t list);
