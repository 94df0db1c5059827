// relatives.cpp: the entries that walk from one object to its relatives, or list the application's.
// Each list is made by a fetcher, lives until its handles are pushed, and is freed by the push.
#include "checks.h"
#include "entries.h"
#include "lookup.h"
#include "traversal.h"

namespace {

// Returns a new list, or null when there is none for this kind of object or memory is out.
using fetcher_t = kl_darray_t *(*)(kl_application_t *app, kl_object_t *object);

kl_darray_t *keldom_get_parents(kl_application_t *app, kl_object_t *object) {
    switch (object->type) {
    case KL_OBJECT_TYPE_CONTROL:
    case KL_OBJECT_TYPE_TABLE:
    case KL_OBJECT_TYPE_TEMPLATE:
    case KL_OBJECT_TYPE_GROUP:
        return keldom_get_darray_of(keldom_find_parent_under(&app->object, keldom_traverse_layers, object, 1));
    case KL_OBJECT_TYPE_LAYER:
        return keldom_find_layer_parents(&app->object, object);
    case KL_OBJECT_TYPE_LAYER_INSTANCE:
        return keldom_get_darray_of(keldom_find_parent_under(&app->object, keldom_traverse, object, 0));
    case KL_OBJECT_TYPE_SCREEN:
        return keldom_get_darray_of(&app->object);
    case KL_OBJECT_TYPE_APP:
        return keldom_create_darray(0);
    default:
        return nullptr;
    }
}

kl_darray_t *keldom_get_screens(kl_application_t *app) { return keldom_get_children(app, &app->object); }

kl_darray_t *keldom_get_layers(kl_application_t *app) {
    kl_darray_t *list = keldom_create_darray(1);
    if (list) keldom_traverse_layers(&app->object, add_to_darray, list);
    return list;
}

// [-0, +0..1] Pushes the handles of a list, if there is one. The holder on top keeps it from being lost when Lua
// raises. container: what lists all of them, or null.
int push_held(lua_State *L, kl_application_t *app, dom_object_t *holder, kl_darray_t *list, kl_object_t *container) {
    int pushed = 0;
    holder->name = reinterpret_cast<char *>(list);
    if (list)
        pushed = container ? keldom_push_children(L, app, list, container) : keldom_push_as_dom_objects(L, app, list);
    keldom_disown(L, holder, -1 - pushed);
    return pushed;
}

// The holder comes first: a collection that making it starts could take the object away.
int keldom_push_relatives(lua_State *L, fetcher_t fetch) {
    kl_application_t *app = lua_one_arg_app(L);
    if (!app) return 0;
    dom_object_t *holder = keldom_push_blank(L, list_holder);
    kl_object_t *object = keldom_get_object_from_stack(L, app);
    kl_darray_t *list = object ? fetch(app, object) : nullptr;
    if (!list) warn(app, no_such_object);
    return push_held(L, app, holder, list, fetch == keldom_get_children ? object : nullptr);
}

// Kept: without an application these log, where the methods raise; and a list that cannot be made is silently nothing.
int push_all(lua_State *L, kl_darray_t *(*fetch_all)(kl_application_t *app)) {
    kl_application_t *app = kl_lua_get_app(L);
    if (!app) return warn(app, no_application_for_call);
    dom_object_t *holder = keldom_push_blank(L, list_holder);
    kl_darray_t *list = fetch_all(app);
    return push_held(L, app, holder, list, nullptr);
}

} // namespace

int keldom_get_layers_function(lua_State *L) { return push_all(L, keldom_get_layers); }
int keldom_get_screens_function(lua_State *L) { return push_all(L, keldom_get_screens); }
int keldom_get_parents_function(lua_State *L) { return keldom_push_relatives(L, keldom_get_parents); }
int keldom_get_children_function(lua_State *L) { return keldom_push_relatives(L, keldom_get_children); }

// Kept: what is a warning in its siblings is an error here.
int keldom_get_dom_object_layer_function(lua_State *L) {
    kl_application_t *app;
    dom_object_t *handle = get_dom_object(L, app);
    if (!handle) return 0;
    kl_object_t *object = keldom_get_object(app, handle->name);
    if (!object) return raise_error(L, no_such_object);
    if (object->type != KL_OBJECT_TYPE_LAYER_INSTANCE) return raise_error(L, "Object is not a layer instance");
    return keldom_push_as_dom_object(L, app, &reinterpret_cast<kl_layer_instance_t *>(object)->layer->object);
}
