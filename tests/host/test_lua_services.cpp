// test_lua_services.cpp: the functions by which plug-ins reach the application from Lua, and exactly what each leaves
// on the stack.
#include <cstdlib>
#include <new>
#include <string>

#include <doctest/doctest.h>

#include "failing_new.h"
#include "scripted_application.h"

using kelhost::ErrorMode;
using kelhost::Options;
using kelhost::Runtime;

namespace {

// The stack's values, bottom first, as "type:text" of each.
std::string stack_of(lua_State *L) {
    std::string text;
    for (int index = 1; index <= lua_gettop(L); ++index) {
        if (index > 1) text += ' ';
        if (lua_type(L, index) == LUA_TSTRING || lua_type(L, index) == LUA_TNUMBER) {
            lua_pushvalue(L, index); // the conversion would change a number
            text += std::string(luaL_typename(L, index)) + ":" + lua_tostring(L, -1);
            lua_pop(L, 1);
        } else {
            text += luaL_typename(L, index);
        }
    }
    return text;
}

struct Services {
    explicit Services(Options options = {}) : app(std::move(options)) {}
    ~Services() { lua_settop(L, 0); }
    Services(const Services &) = delete;
    Services &operator=(const Services &) = delete;

    int get(int key_index) {
        return kl_lua_get_data_value(L, &app.runtime.record, app.runtime.load_info.data_mgr, key_index, -1);
    }
    int set(int key_index, int value_index) {
        return kl_lua_set_data_value(L, &app.runtime.record, app.runtime.load_info.data_mgr, key_index, value_index);
    }
    std::string text(std::string_view key) { return kelhost::to_text(app.runtime.data.find(key)->value); }
    void set_text(std::string_view key, const std::string &text) {
        CHECK(app.runtime.data.write(key, kelhost::to_input(text)) != kelhost::WriteResult::refused);
    }

    ScriptedApplication app;
    lua_State *L = app.state();
};

// Lua functions that plug-ins might have.
int raise_function(lua_State *L) {
    kl_lua_error(L, "%s is %d, not %s", "x", -7, "y");
    lua_pushstring(L, "went on");
    return 1;
}

int raise_long_function(lua_State *L) {
    const std::size_t length = 5000;
    auto *const text = static_cast<char *>(lua_newuserdata(L, length + 1));
    for (std::size_t at = 0; at < length; ++at) text[at] = 'x';
    text[length] = '\0';
    kl_lua_error(L, "<%s>", text);
    return 0;
}

kl_application_t *seen_by_finalizer = nullptr;
int remember_application(lua_State *L) {
    seen_by_finalizer = kl_lua_get_app(L);
    return 0;
}

} // namespace

// ---- kl_lua_get_app ----

TEST_CASE("the application that owns a state is found, in its coroutines too, and pushes nothing") {
    Services services;
    CHECK(kl_lua_get_app(services.L) == &services.app.runtime.record);
    CHECK(lua_gettop(services.L) == 0);
    lua_State *const coroutine = lua_newthread(services.L);
    CHECK(kl_lua_get_app(coroutine) == &services.app.runtime.record);
    CHECK(lua_gettop(coroutine) == 0);
}

TEST_CASE("a foreign state has no application") {
    ScriptedApplication app;
    lua_State *const foreign = luaL_newstate();
    CHECK(kl_lua_get_app(foreign) == nullptr);
    CHECK(lua_gettop(foreign) == 0);
    lua_close(foreign);
}

TEST_CASE("each of two applications owns its own state") {
    ScriptedApplication one;
    ScriptedApplication two;
    CHECK(kl_lua_get_app(one.state()) == &one.runtime.record);
    CHECK(kl_lua_get_app(two.state()) == &two.runtime.record);
}

TEST_CASE("finalizers that run when the state is closed still find the application") {
    ScriptedApplication app;
    lua_State *const L = app.state();
    lua_newuserdata(L, 1);
    lua_newtable(L);
    lua_pushcfunction(L, remember_application);
    lua_setfield(L, -2, "__gc");
    lua_setmetatable(L, -2);
    lua_setglobal(L, "keepsake");
    seen_by_finalizer = nullptr;
    app.runtime.stop();
    CHECK(app.state() == nullptr);
    CHECK(seen_by_finalizer == &app.runtime.record);
}

// ---- kl_lua_error ----

TEST_CASE("kl_lua_error raises the formatted message with the script's place") {
    ScriptedApplication app;
    lua_register(app.state(), "raise", raise_function);
    CHECK(app.error_of("local a = 1\nraise()") == "test:2: x is -7, not y");
    CHECK(app.value("pcall(raise)") == "false\tx is -7, not y");
}

TEST_CASE("kl_lua_error cuts no long message") {
    ScriptedApplication app;
    lua_register(app.state(), "raise", raise_long_function);
    CHECK(app.error_of("raise()") == "test:1: <" + std::string(5000, 'x') + ">");
}

TEST_CASE("kl_lua_error may be made to log and return, the stack as it was") {
    Options options;
    options.error_mode = ErrorMode::returns;
    Services services(options);
    lua_pushinteger(services.L, 1);
    kl_lua_error(services.L, "%s is %d", "x", 5);
    CHECK(stack_of(services.L) == "number:1");
    CHECK(services.app.take_log() == "error: x is 5");
    lua_settop(services.L, 0);
    lua_register(services.L, "raise", raise_function);
    CHECK(services.app.value("raise()") == "went on");
    CHECK(services.app.take_log() == "error: x is -7, not y");
    CHECK(services.app.runtime.lua.errors().empty());
}

TEST_CASE("kl_lua_error raises in a state that no application owns") {
    lua_State *const foreign = luaL_newstate();
    lua_pushcfunction(foreign, raise_function);
    CHECK(lua_pcall(foreign, 0, 0, 0) == LUA_ERRRUN);
    CHECK(std::string(lua_tostring(foreign, -1)) == "x is -7, not y");
    lua_close(foreign);
}

// ---- kl_lua_get_data_value ----

TEST_CASE("reading a variable puts its value in the key's place") {
    Services services;
    lua_pushboolean(services.L, 1);
    lua_pushstring(services.L, "mode");
    CHECK(services.get(-1) == 1);
    CHECK(stack_of(services.L) == "boolean number:1");
    lua_pushstring(services.L, "title");
    CHECK(services.get(-1) == 1);
    CHECK(stack_of(services.L) == "boolean number:1 string:Hi");
}

TEST_CASE("reading what does not exist removes the key and leaves nothing") {
    Services services;
    lua_pushboolean(services.L, 1);
    lua_pushstring(services.L, "nosuch");
    CHECK(services.get(-1) == 0);
    CHECK(stack_of(services.L) == "boolean");
    lua_pushstring(services.L, "");
    CHECK(services.get(-1) == 0);
    CHECK(stack_of(services.L) == "boolean");
}

TEST_CASE("the key may stand anywhere on the stack, counted from either end") {
    Services services;
    lua_pushstring(services.L, "mode");
    lua_pushstring(services.L, "nosuch");
    lua_pushstring(services.L, "title");
    lua_pushnil(services.L);
    CHECK(services.get(-2) == 1);
    CHECK(stack_of(services.L) == "string:mode string:nosuch string:Hi nil");
    CHECK(services.get(1) == 1);
    CHECK(stack_of(services.L) == "number:1 string:nosuch string:Hi nil");
    CHECK(services.get(2) == 0);
    CHECK(stack_of(services.L) == "number:1 string:Hi nil");
}

TEST_CASE("a key that is no string names no variable") {
    Services services;
    lua_newtable(services.L);
    CHECK(services.get(-1) == 0);
    lua_pushnil(services.L);
    CHECK(services.get(-1) == 0);
    CHECK(lua_gettop(services.L) == 0);
}

TEST_CASE("every number type comes as a number") {
    Services services;
    for (const auto type :
         {kelhost::DataType::i8, kelhost::DataType::u8, kelhost::DataType::i16, kelhost::DataType::u16,
          kelhost::DataType::i32, kelhost::DataType::u32, kelhost::DataType::f64}) {
        const std::string key = std::string("number_") + kelhost::data_type_name(type);
        for (const double number : {kelhost::smallest_value(type), 0.0, kelhost::largest_value(type)}) {
            services.app.runtime.data.erase(key);
            REQUIRE(services.app.runtime.data.create(key, type, number));
            lua_pushstring(services.L, key.c_str());
            CHECK(services.get(-1) == 1);
            CHECK(lua_type(services.L, -1) == LUA_TNUMBER);
            CHECK(lua_tonumber(services.L, -1) == number);
            lua_settop(services.L, 0);
        }
    }
}

TEST_CASE("texts of any length come whole, zeros included") {
    Services services;
    for (const std::size_t length : {0U, 1U, 255U, 256U, 257U, 1000U, 100000U}) {
        std::string text(length, 'a');
        if (length > 2) text[1] = '\0';
        services.set_text("title", text);
        lua_pushstring(services.L, "title");
        CHECK(services.get(-1) == 1);
        CHECK(lua_gettop(services.L) == 1);
        REQUIRE(lua_type(services.L, -1) == LUA_TSTRING);
        CHECK(std::string(lua_tostring(services.L, -1), lua_objlen(services.L, -1)) == text);
        lua_settop(services.L, 0);
    }
}

TEST_CASE("a read that misses tells the data manager's miss listeners, once") {
    Services services;
    kl_data_mgr_t *const data = services.app.runtime.load_info.data_mgr;
    std::string missed;
    REQUIRE(data->add_miss_listener(
                data, [](kl_data_mgr_t *, const char *key, void *list) { *static_cast<std::string *>(list) += key; },
                &missed)
            == 0);
    lua_pushstring(services.L, "nosuch");
    CHECK(services.get(-1) == 0);
    CHECK(missed == "nosuch");
}

namespace {

// An application in which the next allocation of Lua's that may collect garbage runs a finalizer of a script.
struct WithFinalizer : Services {
    explicit WithFinalizer(const char *finalizer) : Services(options()) {
        lua_register(L, "erase", [](lua_State *state) {
            lua_pushboolean(state, Runtime::of(kl_lua_get_app(state)).data.erase(luaL_checkstring(state, 1)));
            return 1;
        });
        set_text("title", std::string(1000, 'a'));
        lua_gc(L, LUA_GCCOLLECT, 0);
        lua_gc(L, LUA_GCSTOP, 0);
        CHECK(app.run("finalizer = function() " + std::string(finalizer)
                      + " finalized = true end "
                        "getmetatable(newproxy(true)).__gc = finalizer"));
    }
    static Options options() {
        Options options;
        options.sandbox.newproxy = true;
        return options;
    }
    int read(const char *key) {
        lua_pushstring(L, key);
        lua_gc(L, LUA_GCSETSTEPMUL, 0); // a whole collection at once
        lua_gc(L, LUA_GCRESTART, 0);
        const int result = get(-1);
        lua_getglobal(L, "finalized");
        CHECK(lua_toboolean(L, -1) == 1);
        lua_pop(L, 1);
        return result;
    }
};

} // namespace

TEST_CASE("a long text that a finalizer erases while it is read is missing") {
    WithFinalizer services("assert(erase('title'))");
    CHECK(services.read("title") == 0);
    CHECK(lua_gettop(services.L) == 0);
}

TEST_CASE("a long text that a finalizer makes longer while it is read comes as it is then") {
    WithFinalizer services("kel.set_value('title', string.rep('b', 5000))");
    CHECK(services.read("title") == 1);
    CHECK(stack_of(services.L) == "string:" + std::string(5000, 'b'));
}

TEST_CASE("a long text that a finalizer makes short while it is read comes as it is then") {
    WithFinalizer services("kel.set_value('title', 'short')");
    CHECK(services.read("title") == 1);
    CHECK(stack_of(services.L) == "string:short");
}

TEST_CASE("a long text that a finalizer makes a number while it is read comes as it is then") {
    WithFinalizer services("assert(erase('title')) kel.set_value('title', 12)");
    CHECK(services.read("title") == 1);
    CHECK(stack_of(services.L) == "number:12");
}

TEST_CASE("a short text that a finalizer erases while it is read comes as it was") {
    WithFinalizer services("assert(erase('main.ok.text'))");
    CHECK(services.read("main.ok.text") == 1);
    CHECK(stack_of(services.L) == "string:OK");
    CHECK(services.app.runtime.data.find("main.ok.text") == nullptr);
}

// ---- kl_lua_set_data_value ----

TEST_CASE("writing leaves the stack as it was, and says whether it was done") {
    Services services;
    lua_pushstring(services.L, "mode");
    lua_pushinteger(services.L, 7);
    CHECK(services.set(-2, -1) == 1);
    CHECK(stack_of(services.L) == "string:mode number:7");
    CHECK(services.text("mode") == "7");
    CHECK(services.set(1, 2) == 1); // the same value again
    lua_pushstring(services.L, "title");
    CHECK(services.set(-1, 2) == 1);
    CHECK(services.text("title") == "7");
    CHECK(stack_of(services.L) == "string:mode number:7 string:title");
}

TEST_CASE("booleans, numbers and strings are written, converted to the variable's type") {
    Services services;
    lua_pushstring(services.L, "main.ok.kld_hidden");
    lua_pushboolean(services.L, 1);
    CHECK(services.set(1, 2) == 1);
    CHECK(services.text("main.ok.kld_hidden") == "1");
    lua_pushboolean(services.L, 0);
    CHECK(services.set(1, 3) == 1);
    CHECK(services.text("main.ok.kld_hidden") == "0");
    lua_pushstring(services.L, "1");
    CHECK(services.set(1, 4) == 1);
    CHECK(services.text("main.ok.kld_hidden") == "1");
    lua_pushstring(services.L, "title");
    lua_pushlstring(services.L, "a\0b", 3);
    CHECK(services.set(5, 6) == 1);
    CHECK(services.text("title") == std::string("a\0b", 3));
}

TEST_CASE("values that no variable can hold are refused with a warning that names them") {
    Services services;
    const auto refused = [&](const char *what) {
        CHECK(services.set(1, -1) == 0);
        CHECK(services.app.take_log() == std::string("warning: Cannot write ") + what + " to mode (i32)");
        CHECK(services.text("mode") == "1");
    };
    lua_pushstring(services.L, "mode");
    lua_pushnil(services.L);
    refused("nil");
    lua_newtable(services.L);
    refused("table");
    lua_pushcfunction(services.L, raise_function);
    refused("function");
    lua_newuserdata(services.L, 1);
    refused("userdata");
    lua_newthread(services.L);
    refused("thread");
    CHECK(services.set(1, 20) == 0); // past the top
    CHECK(services.app.take_log() == "warning: Cannot write no value to mode (i32)");
}

TEST_CASE("a key that is no string is refused with a warning") {
    Services services;
    lua_newtable(services.L);
    lua_pushinteger(services.L, 1);
    CHECK(services.set(1, 2) == 0);
    CHECK(services.app.take_log() == "warning: Cannot write, key: found table, expected a string");
    CHECK(stack_of(services.L) == "table number:1");
}

TEST_CASE("a variable of an object that exists is created, of another it is refused") {
    Services services;
    lua_pushstring(services.L, "main.bar.count");
    lua_pushinteger(services.L, 3);
    CHECK(services.set(1, 2) == 1);
    CHECK(services.text("main.bar.count") == "3");
    lua_pushstring(services.L, "main.nosuch.count");
    CHECK(services.set(3, 2) == 0);
    CHECK(services.app.take_log() == "warning: Cannot create main.nosuch.count: no object \"main.nosuch\"");
}

TEST_CASE("running out of memory while writing is logged, not thrown") {
    Services services;
    services.app.runtime.data.set_key_policy(
        [](std::string_view) -> std::optional<std::string> { throw std::bad_alloc(); });
    lua_pushstring(services.L, "fresh");
    lua_pushinteger(services.L, 3);
    CHECK(services.set(1, 2) == 0);
    CHECK(services.app.take_log() == "error: Cannot write \"fresh\": not enough memory");
}

// ---- kl_lua_clone_object ----

namespace {

struct CloneServices : Services {
    explicit CloneServices() {
        lua_pushstring(L, "main.ok");
        lua_pushstring(L, "ok2");
        lua_pushstring(L, "main");
    }
    int clone(int data_index = 4) {
        name = nullptr;
        return kl_lua_clone_object(L, &app.runtime.record, 1, 2, 3, data_index, &name);
    }
    const char *name = nullptr;
};

} // namespace

TEST_CASE("cloning gives the clone's name and leaves the stack as it was") {
    CloneServices services;
    CHECK(services.clone() != 0);
    REQUIRE(services.name != nullptr);
    CHECK(std::string(services.name) == "main.ok2");
    CHECK(stack_of(services.L) == "string:main.ok string:ok2 string:main");
    CHECK(services.app.runtime.model.find("main.ok2") != nullptr);
    CHECK(services.text("main.ok2.text") == "OK");
}

TEST_CASE("a clone's data may be nil") {
    CloneServices services;
    lua_pushnil(services.L);
    CHECK(services.clone() != 0);
    CHECK(services.text("main.ok2.level") == "5");
}

TEST_CASE("data is written to the clone's variables, in one batch") {
    CloneServices services;
    std::string changed;
    services.app.runtime.data.add_listener([&](std::string_view key) {
        changed += key;
        CHECK(services.text("main.ok2.text") == "New");
        CHECK(services.text("main.ok2.level") == "9");
    });
    REQUIRE(luaL_dostring(services.L, "return {text = 'New', level = 9}") == 0);
    CHECK(services.clone() != 0);
    CHECK(std::string(services.name) == "main.ok2");
    CHECK(stack_of(services.L) == "string:main.ok string:ok2 string:main table");
    CHECK((changed == "main.ok2.textmain.ok2.level" || changed == "main.ok2.levelmain.ok2.text"));
    CHECK(services.text("main.ok.text") == "OK");
    CHECK(services.text("main.ok.level") == "5");
}

TEST_CASE("data may be found from the top of the stack") {
    CloneServices services;
    REQUIRE(luaL_dostring(services.L, "return {text = 'New'}") == 0);
    CHECK(services.clone(-1) != 0);
    CHECK(services.text("main.ok2.text") == "New");
}

TEST_CASE("data with new variables creates them; what cannot be written is a warning each") {
    CloneServices services;
    REQUIRE(luaL_dostring(services.L, "return {hint = 'x', level = {}, ['a.b'] = 1}") == 0);
    CHECK(services.clone() != 0);
    CHECK(services.text("main.ok2.hint") == "x");
    CHECK(services.text("main.ok2.level") == "5");
    const std::string log = services.app.take_log();
    CHECK(log.find("warning: Cannot write table to main.ok2.level (i16)") != std::string::npos);
    CHECK(log.find("warning: Cannot create main.ok2.a.b: ") != std::string::npos);
}

TEST_CASE("keys of data that are no strings are skipped with a warning, numbers too") {
    CloneServices services;
    REQUIRE(luaL_dostring(services.L, "return {'first', text = 'New', [true] = 1}") == 0);
    CHECK(services.clone() != 0);
    CHECK(services.text("main.ok2.text") == "New");
    const std::string log = services.app.take_log();
    CHECK(log.find("warning: Data for clone \"main.ok2\": found a number as key, expected a variable's name")
          != std::string::npos);
    CHECK(log.find("warning: Data for clone \"main.ok2\": found a boolean as key, expected a variable's name")
          != std::string::npos);
    lua_rawgeti(services.L, 4, 1);
    CHECK(std::string(lua_tostring(services.L, -1)) == "first");
}

TEST_CASE("arguments of the wrong type are named, and nothing is cloned") {
    CloneServices services;
    const std::size_t variables = services.app.runtime.data.keys("").size();
    const auto refused = [&](const char *warning) {
        CHECK(services.clone() == 0);
        CHECK(services.name == nullptr);
        CHECK(services.app.take_log() == std::string("warning: Cannot clone, ") + warning);
        CHECK(services.app.runtime.data.keys("").size() == variables);
    };
    lua_pushinteger(services.L, 5);
    refused("data: found number, expected a table");
    lua_settop(services.L, 3);
    lua_newtable(services.L);
    lua_replace(services.L, 3);
    refused("parent: found table, expected a string");
    lua_pushinteger(services.L, 5);
    lua_replace(services.L, 2);
    refused("name: found number, expected a string");
    CHECK(stack_of(services.L) == "string:main.ok number:5 table");
    lua_pushnil(services.L);
    lua_replace(services.L, 1);
    refused("source: found nil, expected a string");
    lua_settop(services.L, 0);
    refused("source: found no value, expected a string");
}

TEST_CASE("a clone that the model refuses is logged, and its data is not written") {
    CloneServices services;
    lua_pushstring(services.L, "go");
    lua_replace(services.L, 2);
    lua_pushstring(services.L, "main.bar");
    lua_replace(services.L, 3);
    REQUIRE(luaL_dostring(services.L, "return {kld_x = 99}") == 0);
    CHECK(services.clone() == 0);
    CHECK(services.name == nullptr);
    const std::string log = services.app.take_log();
    CHECK(log.starts_with("warning: "));
    CHECK(log.find("main.bar.go") != std::string::npos);
    CHECK(services.text("main.bar.go.kld_x") == "10");
}

// ---- kl_lua_delete_object ----

TEST_CASE("deleting takes the object and its variables, and leaves the stack as it was") {
    Services services;
    lua_pushboolean(services.L, 1);
    lua_pushstring(services.L, "main.bar");
    CHECK(kl_lua_delete_object(services.L, &services.app.runtime.record, 2) != 0);
    CHECK(stack_of(services.L) == "boolean string:main.bar");
    CHECK(services.app.runtime.model.find("main.bar") == nullptr);
    CHECK(services.app.runtime.model.find("main.bar.go") == nullptr);
    CHECK(services.app.runtime.data.keys("main.bar").empty());
}

TEST_CASE("deleting what is not there, or not a name, is logged") {
    Services services;
    lua_pushstring(services.L, "main.nosuch");
    CHECK(kl_lua_delete_object(services.L, &services.app.runtime.record, 1) == 0);
    const std::string log = services.app.take_log();
    CHECK(log.starts_with("warning: "));
    CHECK(log.find("main.nosuch") != std::string::npos);
    lua_newtable(services.L);
    CHECK(kl_lua_delete_object(services.L, &services.app.runtime.record, 2) == 0);
    CHECK(services.app.take_log() == "warning: Cannot delete, name: found table, expected a string");
    CHECK(kl_lua_delete_object(services.L, &services.app.runtime.record, 9) == 0);
    CHECK(services.app.take_log() == "warning: Cannot delete, name: found no value, expected a string");
}

// ---- Out of memory ----

namespace {

// Lets the state's allocator fail once.
struct FailingAllocator {
    explicit FailingAllocator(lua_State *state) : L(state) { original = lua_getallocf(L, &original_data); }

    static void *allocate(void *self, void *block, std::size_t old_bytes, std::size_t new_bytes) {
        auto &allocator = *static_cast<FailingAllocator *>(self);
        if (new_bytes > old_bytes && allocator.allocations++ == allocator.failing) return nullptr;
        return allocator.original(allocator.original_data, block, old_bytes, new_bytes);
    }

    lua_State *L;
    lua_Alloc original;
    void *original_data = nullptr;
    int failing = 0;
    int allocations = 0;
};

int use_every_service(lua_State *L) {
    kl_application_t *const app = kl_lua_get_app(L);
    kl_data_mgr_t *const data = app->linfo->data_mgr;
    lua_settop(L, 0);
    lua_pushstring(L, "title");
    kl_lua_get_data_value(L, app, data, -1, -1);
    lua_pushfstring(L, "%s%s", "mo", "de");
    lua_pushnumber(L, 2);
    kl_lua_set_data_value(L, app, data, -2, -1);
    kl_lua_set_data_value(L, app, data, -1, -2); // the number becomes a key, in place
    lua_settop(L, 0);
    lua_pushstring(L, "main.ok");
    lua_pushstring(L, "twin");
    lua_pushstring(L, "main");
    lua_createtable(L, 0, 1);
    lua_pushstring(L, "Twin");
    lua_setfield(L, -2, "text");
    const char *name = nullptr;
    if (kl_lua_clone_object(L, app, 1, 2, 3, 4, &name) != 0) {
        lua_pushstring(L, name);
        kl_lua_delete_object(L, app, 5);
    }
    kl_lua_error(L, "%s", "done");
    return 0;
}

} // namespace

TEST_CASE("wherever Lua runs out of memory, nothing leaks and nothing stays held") {
    Services services;
    services.set_text("title", std::string(1000, 'a'));
    FailingAllocator allocator(services.L);
    std::string message;
    for (; message != "done" && allocator.failing < 200; ++allocator.failing) {
        lua_gc(services.L, LUA_GCCOLLECT, 0);
        allocator.allocations = 0;
        lua_setallocf(services.L, FailingAllocator::allocate, &allocator);
        const int status = lua_cpcall(services.L, use_every_service, nullptr);
        lua_setallocf(services.L, allocator.original, allocator.original_data);
        REQUIRE(status != 0);
        message = lua_tostring(services.L, -1);
        lua_pop(services.L, 1);
        CHECK((message == "not enough memory" || message == "done"));
        CHECK(services.app.runtime.data.hold_depth() == 0);
        services.app.runtime.model.remove("main.twin"); // when memory ran out before that
        services.app.runtime.model.reclaim();
        services.app.take_log();
    }
    CHECK(message == "done");
    CHECK(allocator.failing > 5);
}

TEST_CASE("wherever the C++ heap is out, no exception gets into Lua, nothing leaks and nothing stays held") {
    constexpr char every_service[] = R"(
        kel.set_value('a_variable_that_is_new', 'a text that is too long for a string without a block of its own')
        kel.set_value('title', 'another text that is too long for a string without a block', 'mode', 2)
        kel.get_value('title', 'a_variable_that_does_not_exist')
        kel.log('a line that is too long for a string without a block of its own')
        kel.queue_event('an_event_with_a_long_name_indeed', 'main.ok')
        print('a line that is too long for a string without a block of its own')
        use_every_service()
    )";
    std::size_t request = 1;
    for (bool failed = true; failed && request < 1000; ++request) {
        CAPTURE(request);
        ScriptedApplication app;
        lua_register(app.state(), "use_every_service", use_every_service);
        app.runtime.data.add_listener([](std::string_view) {});
        {
            const FailingNew failing(request);
            app.run(every_service); // ends in an error, whatever happens before
            failed = FailingNew::has_failed();
        }
        app.take_log();
        app.take_output();
        CHECK(app.runtime.data.hold_depth() == 0);
        CHECK(app.value("1 + 1") == "2");
        if (!failed) CHECK(app.runtime.lua.errors().at(0).message == "test:8: done");
    }
    CHECK(request > 20);
    CHECK(request < 1000);
}
