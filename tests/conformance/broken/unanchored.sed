# Breaks getters.cpp: a handle's name is used when nothing keeps the handle any more.
s/^    int count = 0;/    lua_pushnil(L);\n    lua_replace(L, 1);\n&/
