// lua_services.cpp: the functions by which plug-ins reach the application from Lua.
// They are called inside Lua functions: no C++ exception leaves them, and no object with a destructor is alive across a
// Lua call that can raise.
#include <cstdarg>

#include <lua.hpp>

#include <kel/kel.h>

#include "c_border.h"
#include "lua_values.h"
#include "runtime.h"

namespace kelhost {

namespace {

// Returns the string at index; a null view after a warning when there is none. what: which argument it is.
std::string_view string_argument(lua_State *L, Log &log, const char *verb, const char *what, int index) noexcept {
    const std::string_view text = string_at(L, index);
    if (text.data() == nullptr)
        log.format(KL_LOG_WARNING, "Cannot %s, %s: found %s, expected a string", verb, what, luaL_typename(L, index));
    return text;
}

const std::string *clone(Model &model, std::string_view source, std::string_view name,
                         std::string_view parent) noexcept {
    return at_c_border<const std::string *>(nullptr, [&] { return model.clone(source, name, parent); });
}

bool remove(Model &model, std::string_view name) noexcept {
    return at_c_border(false, [&] { return model.remove(name); });
}

void write_variable(Runtime &runtime, const std::string &object, std::string_view variable,
                    const Input &input) noexcept {
    try {
        runtime.data.write(object + "." + std::string(variable), input);
    } catch (...) {
        runtime.log.format(KL_LOG_ERROR, "Cannot write to clone \"%s\": not enough memory", object.c_str());
    }
}

// [-0, +0] Writes each pair of the table at data_index to the clone. A key that is a number is not made a string, as
// that would confuse the walk.
void write_data(lua_State *L, Runtime &runtime, const std::string &object, int data_index) {
    data_index = absolute_index(L, data_index);
    runtime.data.hold();
    for (lua_pushnil(L); lua_next(L, data_index) != 0; lua_pop(L, 1)) {
        const std::string_view variable = string_at(L, -2);
        if (variable.data() != nullptr)
            write_variable(runtime, object, variable, to_input(L, -1));
        else
            runtime.log.format(KL_LOG_WARNING, "Data for clone \"%s\": found a %s as key, expected a variable's name",
                               object.c_str(), luaL_typename(L, -2));
    }
    runtime.release_changes();
}

} // namespace

} // namespace kelhost

using namespace kelhost;

extern "C" kl_application_t *kl_lua_get_app(lua_State *L) {
    Runtime *const runtime = LuaHost::runtime_of(L);
    return runtime != nullptr ? &runtime->record : nullptr;
}

extern "C" void kl_lua_error(lua_State *L, const char *format, ...) {
    Runtime *const runtime = LuaHost::runtime_of(L);
    std::va_list arguments;
    va_start(arguments, format);
    if (runtime != nullptr && runtime->options.error_mode == ErrorMode::returns) {
        runtime->log.format_list(KL_LOG_ERROR, format, arguments);
        va_end(arguments);
        return;
    }
    luaL_where(L, 1);
    lua_pushvfstring(L, format, arguments);
    va_end(arguments);
    lua_concat(L, 2);
    lua_error(L);
}

extern "C" int kl_lua_get_data_value(lua_State *L, kl_application_t *, kl_data_mgr_t *mgr, int key_index, int) {
    return replace_key_by_value(L, DataManager::of(mgr), key_index) ? 1 : 0;
}

extern "C" int kl_lua_set_data_value(lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index,
                                     int value_index) {
    return write_value(L, DataManager::of(mgr), Runtime::of(app).log, key_index, value_index) ? 1 : 0;
}

extern "C" int kl_lua_clone_object(lua_State *L, kl_application_t *app, int source_index, int name_index,
                                   int parent_index, int data_index, const char **new_name) {
    Runtime &runtime = Runtime::of(app);
    const std::string_view source = string_argument(L, runtime.log, "clone", "source", source_index);
    if (source.data() == nullptr) return 0;
    const std::string_view name = string_argument(L, runtime.log, "clone", "name", name_index);
    if (name.data() == nullptr) return 0;
    const std::string_view parent = string_argument(L, runtime.log, "clone", "parent", parent_index);
    if (parent.data() == nullptr) return 0;
    const bool has_data = !lua_isnoneornil(L, data_index);
    if (has_data && !lua_istable(L, data_index)) {
        runtime.log.format(KL_LOG_WARNING, "Cannot clone, data: found %s, expected a table",
                           luaL_typename(L, data_index));
        return 0;
    }
    const std::string *const clone_name = clone(runtime.model, source, name, parent);
    if (clone_name == nullptr) return 0;
    if (has_data) write_data(L, runtime, *clone_name, data_index);
    *new_name = clone_name->c_str();
    return 1;
}

extern "C" int kl_lua_delete_object(lua_State *L, kl_application_t *app, int name_index) {
    Runtime &runtime = Runtime::of(app);
    const std::string_view name = string_argument(L, runtime.log, "delete", "name", name_index);
    return name.data() != nullptr && remove(runtime.model, name) ? 1 : 0;
}
