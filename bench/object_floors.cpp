// object_floors.cpp: floors of what gives, copies, compares and deletes handles.
#include "floor_handle.h"
#include "floors.h"

namespace bench {

namespace {

constexpr char bare_metatable[] = "bench.bare";

const char *metatable_of(kl_object_type_t type) {
    static const char *const names[] = {
        control_object_metatable, table_object_metatable,          keldom_object_metatable, group_object_metatable,
        layer_object_metatable,   layer_instance_object_metatable, screen_object_metatable, keldom_object_metatable};
    return names[type];
}

void push_metatable(lua_State *L, kl_object_type_t type) { lua_getfield(L, LUA_REGISTRYINDEX, metatable_of(type)); }

int push_one(lua_State *L, kl_object_type_t type, char *name) {
    push_handle(L, type, name);
    push_metatable(L, type);
    lua_setmetatable(L, -2);
    return 1;
}

char *joined(const char *container, std::size_t length, const char *own) {
    const std::size_t own_size = std::strlen(own) + 1;
    auto *const name = static_cast<char *>(kelal_realloc(nullptr, length + 1 + own_size));
    std::memcpy(name, container, length);
    name[length] = '.';
    std::memcpy(name + length + 1, own, own_size);
    return name;
}

int free_bare(lua_State *L) {
    kelal_free(handle_given(L, 1).name);
    return 0;
}

kl_darray_t *children_of(kl_object_t *container) {
    return container->type == KL_OBJECT_TYPE_GROUP ? reinterpret_cast<kl_group_t *>(container)->control_list
                                                   : reinterpret_cast<kl_layer_t *>(container)->control_list;
}

struct Appended {
    lua_State *L;
    int count;
};

// For layers and screens, whose records begin alike.
int append(const char *name, void *object, void *user_data) {
    auto &list = *static_cast<Appended *>(user_data);
    push_one(list.L, static_cast<kl_object_t *>(object)->type, kelal_strdup(name));
    lua_rawseti(list.L, -2, ++list.count);
    return 0;
}

int push_map(lua_State *L, kl_string_map_t *map) {
    lua_createtable(L, 0, 0);
    Appended list{L, 0};
    kl_string_map_traverse(map, append, &list, 1);
    return 1;
}

} // namespace

void register_floors(lua_State *L) {
    luaL_newmetatable(L, bare_metatable);
    lua_pushcfunction(L, free_bare);
    lua_setfield(L, -2, "__gc");
    lua_pop(L, 1);
}

int floor_of_lookup(lua_State *L) {
    const char *const name = lua_tolstring(L, 1, nullptr);
    const kl_object_t *const object = kl_application_find_object(kl_lua_get_app(L), name, 0);
    return push_one(L, object->type, kelal_strdup(name));
}

int floor_of_same_handle(lua_State *L) {
    lua_pushvalue(L, 1);
    return 1;
}

int floor_of_application(lua_State *L) { return push_one(L, kl_lua_get_app(L)->object.type, kelal_strdup("")); }

int floor_of_children(lua_State *L) {
    const char *const container = handle_given(L, 1).name;
    const std::size_t length = std::strlen(container);
    kl_object_t *const object = kl_application_find_object(kl_lua_get_app(L), container, 0);
    kl_darray_iter_t iterator;
    kl_darray_iterator_init(&iterator, children_of(object), 0);
    lua_createtable(L, 0, 0);
    lua_pushnil(L); // the metatable of the children before
    int type = -1;
    int count = 0;
    for (void *slot = iterator.first(&iterator, -1, -1); slot != nullptr; slot = iterator.next(&iterator, -1, -1)) {
        const auto *const child = *static_cast<const kl_control_t **>(slot);
        if (child->object.type != type) {
            type = child->object.type;
            push_metatable(L, child->object.type);
            lua_replace(L, -2);
        }
        push_handle(L, child->object.type, joined(container, length, child->name));
        lua_pushvalue(L, -2);
        lua_setmetatable(L, -2);
        lua_rawseti(L, -3, ++count);
    }
    lua_pop(L, 1);
    return 1;
}

int floor_of_parents(lua_State *L) {
    const char *const name = handle_given(L, 1).name;
    const auto *const object =
        reinterpret_cast<const kl_control_t *>(kl_application_find_object(kl_lua_get_app(L), name, 0));
    const kl_object_t *const parent = object->parent != nullptr ? &object->parent->object : &object->layer->object;
    char *const copy = kelal_strdup(name);
    *std::strrchr(copy, '.') = '\0';
    lua_createtable(L, 0, 0);
    push_one(L, parent->type, copy);
    lua_rawseti(L, -2, 1);
    return 1;
}

int floor_of_layers(lua_State *L) { return push_map(L, kl_lua_get_app(L)->layer_map); }
int floor_of_screens(lua_State *L) { return push_map(L, kl_lua_get_app(L)->screen_map); }

int floor_of_clone(lua_State *L) {
    const dom_object_t &handle = handle_given(L, 1);
    lua_pushstring(L, handle.name);
    const char *name = nullptr;
    kl_lua_clone_object(L, kl_lua_get_app(L), -1, 2, 3, 5, &name);
    return push_one(L, handle.type, kelal_strdup(name));
}

int floor_of_delete(lua_State *L) {
    lua_pushstring(L, handle_given(L, 1).name);
    kl_lua_delete_object(L, kl_lua_get_app(L), -1);
    return 0;
}

int floor_of_name(lua_State *L) {
    lua_pushstring(L, handle_given(L, 1).name);
    return 1;
}

int floor_of_type(lua_State *L) {
    lua_pushinteger(L, handle_given(L, 1).type);
    return 1;
}

int floor_of_equality(lua_State *L) {
    lua_pushboolean(L, std::strcmp(handle_given(L, 1).name, handle_given(L, 2).name) == 0);
    return 1;
}

int floor_of_collected(lua_State *L) {
    push_handle(L, KL_OBJECT_TYPE_LAYER, kelal_strdup(lua_tolstring(L, 1, nullptr)));
    luaL_getmetatable(L, bare_metatable);
    lua_setmetatable(L, -2);
    return 1;
}

} // namespace bench
