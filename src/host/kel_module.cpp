// kel_module.cpp: what the host gives scripts: the `kel` module and print.
// No C++ exception leaves an entry, and no object with a destructor is alive across a Lua call that can raise.
#include "kel_module.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "c_border.h"
#include "lua_values.h"
#include "runtime.h"

namespace kelhost {

namespace {

// Raises when the state belongs to nobody, which happens when a script with the debug library tampers with the
// registry.
Runtime &runtime_of(lua_State *L) {
    Runtime *const runtime = LuaHost::runtime_of(L);
    if (runtime != nullptr) return *runtime;
    luaL_error(L, "no application owns this Lua state");
    std::abort(); // luaL_error does not return
}

// ---- kel ----

// kel.get_value(key, ...): one value a key, nil for a variable that does not exist.
int get_value_function(lua_State *L) {
    Runtime &runtime = runtime_of(L);
    const int count = lua_gettop(L);
    luaL_checkstring(L, 1);
    for (int index = 2; index <= count; ++index) luaL_checkstring(L, index);
    // Each result takes its key's place: the stack need not grow with the number of keys.
    for (int index = 1; index <= count; ++index) {
        lua_pushvalue(L, index);
        if (!replace_key_by_value(L, runtime.data, -1)) lua_pushnil(L);
        lua_replace(L, index);
    }
    return count;
}

// Raises unless the arguments are pairs of a key and a value.
void check_pairs(lua_State *L, int count) {
    luaL_checkstring(L, 1);
    for (int index = 3; index <= count; index += 2) luaL_checkstring(L, index);
    if (count % 2 == 0) return;
    lua_pushfstring(L, "no value for key \"%s\"", lua_tostring(L, count));
    luaL_argerror(L, count, lua_tostring(L, -1));
}

// kel.set_value(key, value, ...): writes all pairs as one batch. Keys are checked first: from hold to release nothing
// raises.
int set_value_function(lua_State *L) {
    Runtime &runtime = runtime_of(L);
    const int count = lua_gettop(L);
    check_pairs(L, count);
    runtime.data.hold();
    for (int index = 1; index < count; index += 2) write_value(L, runtime.data, runtime.log, index, index + 1);
    runtime.release_changes();
    return 0;
}

struct LevelName {
    const char *name;
    int level;
};
constexpr LevelName level_names[] = {
    {"error",   KL_LOG_ERROR  },
    {"warning", KL_LOG_WARNING},
    {"info",    KL_LOG_INFO   }
};

int check_level(lua_State *L, int index) {
    const std::string_view name = luaL_optstring(L, index, "info");
    for (const LevelName &row : level_names)
        if (name == row.name) return row.level;
    lua_pushfstring(L, "invalid level \"%s\", expected \"error\", \"warning\" or \"info\"", name.data());
    return luaL_argerror(L, index, lua_tostring(L, -1));
}

// kel.log(text [, level])
int log_function(lua_State *L) {
    Runtime &runtime = runtime_of(L);
    std::size_t length = 0;
    const char *const text = luaL_checklstring(L, 1, &length);
    const int level = check_level(L, 2);
    runtime.log.write(level, {text, length});
    return 0;
}

bool queue(IoManager &io, const char *name, const char *target) noexcept {
    return at_c_border(false, [&] {
        io.queue(name, target);
        return true;
    });
}

// kel.queue_event(name [, target])
int queue_event_function(lua_State *L) {
    Runtime &runtime = runtime_of(L);
    std::size_t name_length = 0;
    std::size_t target_length = 0;
    const char *const name = luaL_checklstring(L, 1, &name_length);
    luaL_argcheck(L, name_length != 0, 1, "the event's name is empty");
    luaL_argcheck(L, std::strlen(name) == name_length, 1, "the event's name has a zero byte");
    const char *const target = luaL_optlstring(L, 2, "", &target_length);
    luaL_argcheck(L, std::strlen(target) == target_length, 2, "the target has a zero byte");
    if (!queue(runtime.io, name, target)) luaL_error(L, "not enough memory");
    return 0;
}

constexpr luaL_Reg functions[] = {
    {"get_value",   get_value_function  },
    {"set_value",   set_value_function  },
    {"log",         log_function        },
    {"queue_event", queue_event_function},
    {nullptr,       nullptr             },
};

struct Constant {
    const char *name;
    int value;
};

// Which point of an object a coordinate means; both axes count alike.
constexpr Constant constants[] = {
    {"LEFT",   1},
    {"TOP",    1},
    {"CENTER", 2},
    {"RIGHT",  3},
    {"BOTTOM", 3},
};

// ---- print ----

bool write_output(const Options &options, std::string_view line) noexcept {
    return at_c_border(false, [&] {
        if (!options.output) return std::fwrite(line.data(), 1, line.size(), stdout) == line.size();
        options.output(line);
        return true;
    });
}

// print(...): as Lua's, but to the application's output, a whole line at a time.
int print_function(lua_State *L) {
    const Runtime &runtime = runtime_of(L);
    const int count = lua_gettop(L);
    lua_getglobal(L, "tostring");
    luaL_Buffer line;
    luaL_buffinit(L, &line);
    for (int index = 1; index <= count; ++index) {
        if (index > 1) luaL_addchar(&line, '\t');
        lua_pushvalue(L, count + 1);
        lua_pushvalue(L, index);
        lua_call(L, 1, 1);
        if (lua_tostring(L, -1) == nullptr) return luaL_error(L, "'tostring' must return a string to 'print'");
        luaL_addvalue(&line);
    }
    luaL_addchar(&line, '\n');
    luaL_pushresult(&line);
    std::size_t length = 0;
    const char *const text = lua_tolstring(L, -1, &length);
    if (!write_output(runtime.options, {text, length})) return luaL_error(L, "cannot write what 'print' was given");
    return 0;
}

} // namespace

void open_kel_module(lua_State *L) {
    luaL_register(L, "kel", functions);
    for (const Constant &constant : constants) {
        lua_pushinteger(L, constant.value);
        lua_setfield(L, -2, constant.name);
    }
    lua_pop(L, 1);
    lua_pushcfunction(L, print_function);
    lua_setglobal(L, "print");
}

} // namespace kelhost
