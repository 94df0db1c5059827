/* misuse.c: takes a value from an empty Lua stack. A Lua with its API checks on ends the program for it. */
#include <lauxlib.h>
#include <lua.h>

int main(void) {
    lua_State *L = luaL_newstate();
    lua_settop(L, -2);
    return 0;
}
