// test_table_sizes.cpp: the tables that the plug-in makes take as much of Lua's memory as what they hold asks for.
#include "plugin_fixture.h"

#include "registration.h"

namespace {

struct Tables : PluginFixture {
    Tables() {
        recording_add_control(recording_add_layer("main"), "ok");
        for (const char *key : {"main.a", "main.b", "main.c", "main.d", "main.e", "main.f", "main.g"})
            recording_set_number(key, 1);
        run("app = keldom.get_application() main = keldom.get_object('main') kept = false");
    }

    // What the expression's value takes once everything else is collected. Before, what stays from the first time is
    // made.
    std::size_t bytes(const std::string &expression) {
        run("kept = " + expression + " kept = false");
        collect();
        std::size_t before = memory.live_bytes();
        run("kept = " + expression);
        collect();
        take_lines();
        return memory.live_bytes() - before;
    }

    // How often it takes more memory to make the value.
    unsigned long requests(const std::string &expression) {
        bytes(expression);
        std::string code = "kept = " + expression;
        REQUIRE(luaL_loadbuffer(L, code.data(), code.size(), "=test") == 0);
        unsigned long before = memory.requests();
        lua_call(L, 0, 0);
        take_lines();
        return memory.requests() - before;
    }
};

} // namespace

TEST_CASE("an empty array has no room for anything") {
    Tables tables;
    std::size_t empty = tables.bytes("{}");
    CHECK(tables.bytes("app.get_children('main.ok')") == empty);
    CHECK(tables.bytes("app:get_parents()") == empty);
    CHECK(tables.bytes("app.get_variables('main.ok')") == empty);
}

TEST_CASE("a table of values has room for as many as were asked for") {
    Tables tables;
    CHECK(tables.bytes("main:get_data('a', 'b', 'c')") == tables.bytes("{a = 1, b = 1, c = 1}"));
    CHECK(tables.bytes("main:get_data('a', 'b', 'c', 'd', 'e')") == tables.bytes("{a=1, b=1, c=1, d=1, e=1}"));
}

TEST_CASE("a table of values does not grow while it is filled") {
    Tables tables;
    unsigned long three = tables.requests("main:get_data('a', 'b', 'c')");
    unsigned long five = tables.requests("main:get_data('a', 'b', 'c', 'd', 'e')");
    unsigned long six = tables.requests("main:get_data('a', 'b', 'c', 'd', 'e', 'f')");
    unsigned long seven = tables.requests("main:get_data('a', 'b', 'c', 'd', 'e', 'f', 'g')");
    CHECK(seven - six == six - five);
    CHECK(seven - five == five - three);
}

TEST_CASE("an empty method table has no room for methods") {
    Tables tables;
    create_metatable(tables.L, "empty_object", 0, nullptr, 0);
    tables.collect();
    std::size_t before = tables.memory.live_bytes();
    lua_createtable(tables.L, 0, 0);
    lua_setfield(tables.L, -2, "__index");
    tables.collect();
    CHECK(tables.memory.live_bytes() == before);
    lua_settop(tables.L, -2);
}
