// sandbox.cpp: opens Lua's libraries as far as scripts may reach, and the loaders of code that refuse bytecode.
// Entries that Lua calls hold no object with a destructor: Lua raises errors by longjmp.
#include "sandbox.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kelhost {

namespace {

// ---- Libraries and what is taken out of them ----

void open(lua_State *L, const char *name, lua_CFunction library) {
    lua_pushcfunction(L, library);
    lua_pushstring(L, name);
    lua_call(L, 1, 0);
}

void remove_global(lua_State *L, const char *name) {
    lua_pushnil(L);
    lua_setglobal(L, name);
}

// Takes a library away, from `require` too.
void remove_library(lua_State *L, const char *name) {
    remove_global(L, name);
    lua_getfield(L, LUA_REGISTRYINDEX, "_LOADED");
    lua_pushnil(L);
    lua_setfield(L, -2, name);
    lua_pop(L, 1);
}

void remove_field(lua_State *L, const char *library, const char *name) {
    lua_getglobal(L, library);
    lua_pushnil(L);
    lua_setfield(L, -2, name);
    lua_pop(L, 1);
}

// Leaves only what asks for the time; a list of what is open stays true when a library grows.
void keep_harmless_os(lua_State *L) {
    lua_getglobal(L, LUA_OSLIBNAME);
    lua_newtable(L);
    for (const char *const name : {"clock", "date", "difftime", "time"}) {
        lua_getfield(L, -2, name);
        lua_setfield(L, -2, name);
    }
    remove_library(L, LUA_OSLIBNAME);
    lua_pushvalue(L, -1);
    lua_setglobal(L, LUA_OSLIBNAME);
    lua_getfield(L, LUA_REGISTRYINDEX, "_LOADED");
    lua_insert(L, -2);
    lua_setfield(L, -2, LUA_OSLIBNAME);
    lua_pop(L, 2);
}

// The metatable of files is their method table too, so that a script could reach their finalizer through any file. Lua
// runs finalizers in the midst of other calls, and no limit ends them. The methods get a table of their own.
void open_io(lua_State *L) {
    open(L, LUA_IOLIBNAME, luaopen_io);
    luaL_getmetatable(L, LUA_FILEHANDLE);
    lua_newtable(L);
    for (lua_pushnil(L); lua_next(L, -3) != 0;) {
        const std::string_view name = lua_tostring(L, -2);
        lua_pushvalue(L, -2);
        lua_insert(L, -2);
        if (name.starts_with("__"))
            lua_pop(L, 2);
        else
            lua_rawset(L, -4);
    }
    lua_setfield(L, -2, "__index");
    lua_pop(L, 1);
}

// ---- Loaders of code ----

// A chunk on its way to the compiler, piece by piece.
struct Chunk {
    bool bytecode_allowed = false;
    bool begun = false;
    // One of these is where it comes from.
    const char *text = nullptr;
    std::size_t length = 0;
    std::FILE *file = nullptr;
    char buffer[512] = {};
};

// Lua passes an error on as the loader's result. An empty piece does not count: Lua asks once more after a first one.
void check_first_piece(lua_State *L, Chunk &chunk, const char *piece, std::size_t length) {
    if (chunk.begun || length == 0) return;
    chunk.begun = true;
    if (chunk.bytecode_allowed || !is_bytecode({piece, length})) return;
    lua_pushstring(L, bytecode_refused);
    lua_error(L);
}

const char *read_text(lua_State *L, void *data, std::size_t *length) {
    auto &chunk = *static_cast<Chunk *>(data);
    *length = chunk.length;
    chunk.length = 0;
    check_first_piece(L, chunk, chunk.text, *length);
    return *length != 0 ? chunk.text : nullptr;
}

// The pieces are what the function at stack index 1 gives. Each stays anchored in slot 3 while it is read.
const char *read_from_function(lua_State *L, void *data, std::size_t *length) {
    luaL_checkstack(L, 2, "too many nested functions");
    lua_pushvalue(L, 1);
    // Not left to lua_load: in LuaJIT an error of the instruction limit's would leave hooks off, and so the limit.
    if (lua_pcall(L, 0, 1, 0) != 0) lua_error(L);
    *length = 0;
    if (lua_isnil(L, -1)) {
        lua_pop(L, 1);
        return nullptr;
    }
    if (!lua_isstring(L, -1)) luaL_error(L, "reader function must return a string");
    lua_replace(L, 3);
    const char *const piece = lua_tolstring(L, 3, length);
    check_first_piece(L, *static_cast<Chunk *>(data), piece, *length);
    return *length != 0 ? piece : nullptr;
}

const char *read_from_file(lua_State *L, void *data, std::size_t *length) {
    auto &chunk = *static_cast<Chunk *>(data);
    *length = std::fread(chunk.buffer, 1, sizeof chunk.buffer, chunk.file);
    check_first_piece(L, chunk, chunk.buffer, *length);
    return *length != 0 ? chunk.buffer : nullptr;
}

bool bytecode_allowed(lua_State *L) { return lua_toboolean(L, lua_upvalueindex(1)) != 0; }

// [-0, +1 or +2] The results of a loader: the function that is on top, or nil and the message that is.
int loaded(lua_State *L, int status) {
    if (status == 0) return 1;
    lua_pushnil(L);
    lua_insert(L, -2);
    return 2;
}

int load_function(lua_State *L) { // load(function [, name])
    luaL_checktype(L, 1, LUA_TFUNCTION);
    const char *const name = luaL_optstring(L, 2, "=(load)");
    lua_settop(L, 3); // function, name, room for the piece that is read
    Chunk chunk{.bytecode_allowed = bytecode_allowed(L)};
    return loaded(L, lua_load(L, read_from_function, &chunk, name));
}

int loadstring_function(lua_State *L) { // loadstring(text [, name])
    Chunk chunk{.bytecode_allowed = bytecode_allowed(L)};
    chunk.text = luaL_checklstring(L, 1, &chunk.length);
    const char *const name = luaL_optstring(L, 2, chunk.text);
    return loaded(L, lua_load(L, read_text, &chunk, name));
}

// A first line that begins with "#" is for the system's shell. Its end stays, so that lines count as in the file.
void skip_shell_line(std::FILE *file) {
    int character = std::fgetc(file);
    if (character == '#')
        while (character != EOF && character != '\n') character = std::fgetc(file);
    if (character != EOF) static_cast<void>(std::ungetc(character, file));
}

// [-0, +1] Loads the file at stack index 1: its function, or a message with a status other than 0.
int load_file(lua_State *L) {
    const char *const path = luaL_checkstring(L, 1);
    const char *const name = lua_pushfstring(L, "@%s", path);
    Chunk chunk{.bytecode_allowed = bytecode_allowed(L)};
    chunk.file = std::fopen(path, "rb");
    if (chunk.file == nullptr) {
        lua_pushfstring(L, "cannot open %s: %s", path, std::strerror(errno));
        return LUA_ERRFILE;
    }
    skip_shell_line(chunk.file);
    int status = lua_load(L, read_from_file, &chunk, name); // never raises, so the file is closed
    const bool failed = std::ferror(chunk.file) != 0;
    static_cast<void>(std::fclose(chunk.file));
    if (!failed) return status;
    lua_pushfstring(L, "cannot read %s", path);
    return LUA_ERRFILE;
}

int loadfile_function(lua_State *L) { return loaded(L, load_file(L)); } // loadfile(path)

int dofile_function(lua_State *L) { // dofile(path)
    if (load_file(L) != 0) return lua_error(L);
    const int below = lua_gettop(L) - 1;
    lua_call(L, 0, LUA_MULTRET);
    return lua_gettop(L) - below;
}

void set_loader(lua_State *L, const char *name, lua_CFunction loader, const Sandbox &sandbox) {
    lua_pushboolean(L, sandbox.bytecode);
    lua_pushcclosure(L, loader, 1);
    lua_setglobal(L, name);
}

// ---- Metatables ----

// getmetatable(value). A userdata's metatable stays the host's: with it a script could replace finalizers, which Lua
// runs in the midst of other calls, and make handles that are none.
int getmetatable_function(lua_State *L) {
    luaL_checkany(L, 1);
    if (lua_isuserdata(L, 1) || lua_getmetatable(L, 1) == 0) {
        lua_pushnil(L);
        return 1;
    }
    static_cast<void>(
        luaL_getmetafield(L, 1, "__metatable")); // stands instead of the metatable, which is on top already
    return 1;
}

void open_base(lua_State *L, const Sandbox &sandbox) {
    open(L, "", luaopen_base);
    set_loader(L, "load", load_function, sandbox);
    set_loader(L, "loadstring", loadstring_function, sandbox);
    if (sandbox.load_files) {
        set_loader(L, "loadfile", loadfile_function, sandbox);
        set_loader(L, "dofile", dofile_function, sandbox);
    } else {
        remove_global(L, "loadfile");
        remove_global(L, "dofile");
    }
    if (!sandbox.newproxy) remove_global(L, "newproxy");
    if (!sandbox.debug && !sandbox.newproxy) lua_register(L, "getmetatable", getmetatable_function);
}

} // namespace

void open_libraries(lua_State *L, const Sandbox &sandbox) {
    open_base(L, sandbox);
    open(L, LUA_TABLIBNAME, luaopen_table);
    open(L, LUA_MATHLIBNAME, luaopen_math);
    open(L, LUA_STRLIBNAME, luaopen_string);
    if (!sandbox.bytecode) remove_field(L, LUA_STRLIBNAME, "dump");
    open(L, LUA_OSLIBNAME, luaopen_os);
    if (!sandbox.os) keep_harmless_os(L);
    if (sandbox.io) open_io(L);
    if (sandbox.modules) open(L, LUA_LOADLIBNAME, luaopen_package);
    if (sandbox.debug)
        open(L, LUA_DBLIBNAME, luaopen_debug);
    else
        remove_library(L, LUA_DBLIBNAME);
}

void push_traceback_function(lua_State *L) {
    open(L, LUA_DBLIBNAME, luaopen_debug);
    lua_getglobal(L, LUA_DBLIBNAME);
    lua_getfield(L, -1, "traceback");
    lua_remove(L, -2);
}

bool is_bytecode(std::string_view chunk) noexcept { return !chunk.empty() && chunk.front() == LUA_SIGNATURE[0]; }

} // namespace kelhost
