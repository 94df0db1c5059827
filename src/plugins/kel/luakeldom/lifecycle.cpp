// lifecycle.cpp: clone and delete. The host does both; this only hands it names and stack positions.
#include "checks.h"
#include "entries.h"
#include "lookup.h"

// The name takes the handle's place on the stack: from there on the handle may be collected, and nothing of it is used.
int keldom_clone_function(lua_State *L) {
    kl_application_t *app;
    dom_object_t *handle = get_dom_object(L, app);
    if (!handle) return 0;
    int count = lua_gettop(L);
    if (count != 3 && count != 4)
        return warn(app, "This function expects 3 or 4 arguments (self, name, parent_name, data(optional))");
    lua_pushstring(L, handle->name);
    lua_replace(L, 1);
    const char *new_name = nullptr;
    if (!kl_lua_clone_object(L, app, 1, 2, 3, 4, &new_name)) return 0;
    kl_object_t *clone = keldom_get_object(app, new_name);
    if (!clone) return warn(app, no_such_object);
    return keldom_push_as_dom_object(L, app, clone);
}

// Kept: the host is asked to delete what argument 2 names, which is the pushed name only when nothing stands behind
// self.
int keldom_delete_function(lua_State *L) {
    kl_application_t *app;
    dom_object_t *handle = get_dom_object(L, app);
    if (!handle) return 0;
    lua_pushstring(L, handle->name);
    kl_lua_delete_object(L, app, 2);
    lua_settop(L, -2);
    return 0;
}
