// identity.cpp: what a handle says of itself: its name and type, its text, equality, and its end.
// Nothing here looks at the model.
#include <string.h>

#include "checks.h"
#include "entries.h"

int keldom_dom_object_to_string(lua_State *L) {
    dom_object_t *object = handle_at(L, 1);
    lua_pushstring(L, object ? object->name : "nil");
    return 1;
}

int keldom_dom_object_equals(lua_State *L) {
    dom_object_t *a = handle_at(L, 1);
    dom_object_t *b = handle_at(L, 2);
    lua_pushboolean(L, a && b && a->name && b->name && strcmp(a->name, b->name) == 0);
    return 1;
}

// A script can call this by hand: the null name makes the collection that follows, and every later use, harmless.
int keldom_dom_object_free(lua_State *L) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object) return 0;
    if (object->type == list_holder && object->name)
        kl_darray_free(reinterpret_cast<kl_darray_t *>(object->name));
    else
        kelal_free(object->name);
    object->name = nullptr;
    return 0;
}

int keldom_get_dom_object_name_function(lua_State *L) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object) return 0;
    lua_pushstring(L, object->name);
    return 1;
}

int keldom_get_dom_object_type_function(lua_State *L) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object) return 0;
    lua_pushnumber(L, object->type);
    return 1;
}
