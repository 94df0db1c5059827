// private_globals.cpp: opens Lua's libraries in a thread whose table of globals is not the application's.
// No object with a destructor lives here: Lua raises errors by longjmp.
#include "private_globals.h"

namespace kelhost {

namespace {

constexpr luaL_Reg libraries[] = {
    {"",              luaopen_base   },
    {LUA_IOLIBNAME,   luaopen_io     },
    {LUA_OSLIBNAME,   luaopen_os     },
    {LUA_DBLIBNAME,   luaopen_debug  },
    {LUA_LOADLIBNAME, luaopen_package},
    {nullptr,         nullptr        },
};

// Of the application's libraries those that the tests have copies of. Lua's own come from there, and not from the list
// above: what watches a script's coroutines stands in them.
constexpr const char *copied_libraries[] = {
    LUA_TABLIBNAME, LUA_MATHLIBNAME, LUA_STRLIBNAME, LUA_COLIBNAME, "kel", "keldom",
};

// [-0, +0] from: the place of the table on the stack.
void copy_library(lua_State *L, int from, const char *name) {
    lua_newtable(L);
    for (lua_pushnil(L); lua_next(L, from) != 0;) {
        lua_pushvalue(L, -2);
        lua_insert(L, -2);
        lua_rawset(L, -4);
    }
    lua_getfield(L, LUA_REGISTRYINDEX, "_LOADED");
    lua_pushvalue(L, -2);
    lua_setfield(L, -2, name);
    lua_pop(L, 1);
    lua_setglobal(L, name);
}

// Runs in the new thread. A library is registered in the globals, and in the table of loaded modules: with the
// application's there, its reduced os library would be completed. Nothing else uses that table once an application
// runs. What modules add to a library, and busted's do, is not for scripts either. The methods of strings stay the
// application's.
int open_libraries(lua_State *L) {
    lua_getfield(L, LUA_REGISTRYINDEX, "_LOADED");
    const int applications = lua_gettop(L);
    lua_newtable(L);
    lua_setfield(L, LUA_REGISTRYINDEX, "_LOADED");
    for (const luaL_Reg *library = libraries; library->func != nullptr; ++library) {
        lua_pushcfunction(L, library->func);
        lua_pushstring(L, library->name);
        lua_call(L, 1, 0);
    }
    for (const char *const name : copied_libraries) {
        lua_getfield(L, applications, name);
        if (lua_istable(L, -1)) copy_library(L, lua_gettop(L), name);
        lua_settop(L, applications);
    }
    return 0;
}

// [-1, +0] Makes the table on top of L's stack the thread's globals.
void set_globals(lua_State *L, lua_State *thread) {
    lua_xmove(L, thread, 1);
    lua_replace(thread, LUA_GLOBALSINDEX);
}

// [-0, +1] An empty table beneath which the globals of L show.
void push_table_over_globals(lua_State *L) {
    lua_newtable(L);
    lua_createtable(L, 0, 1);
    lua_pushvalue(L, LUA_GLOBALSINDEX);
    lua_setfield(L, -2, "__index");
    lua_setmetatable(L, -2);
}

} // namespace

lua_State *push_thread_with_libraries(lua_State *L) {
    lua_State *const thread = lua_newthread(L);
    push_table_over_globals(L);
    set_globals(L, thread);
    if (lua_cpcall(thread, open_libraries, nullptr) == 0) return thread; // with the thread's globals
    lua_xmove(thread, L, 1);
    lua_error(L);
    return nullptr;
}

lua_State *push_thread_like(lua_State *L, lua_State *other) {
    lua_State *const thread = lua_newthread(L);
    lua_pushvalue(other, LUA_GLOBALSINDEX);
    set_globals(other, thread);
    return thread;
}

} // namespace kelhost
