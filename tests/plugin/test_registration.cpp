// test_registration.cpp: what a Lua state holds after the start-up event: the module, its constants, the seven
// metatables.
#include <utility>

#include "entries.h"
#include "plugin_fixture.h"
#include "registration.h"

namespace {

using Methods = std::vector<std::pair<std::string, lua_CFunction>>;

// What is registered, row by row: to be kept in step with the module's tables, which is the point of these lists.
const Methods common_methods = {
    {"get_name",      keldom_get_dom_object_name_function},
    {"get_type",      keldom_get_dom_object_type_function},
    {"get_parents",   keldom_get_parents_function        },
    {"get_children",  keldom_get_children_function       },
    {"get_variables", keldom_get_variables_function      },
    {"get_value",     keldom_get_value_function          },
    {"set_value",     keldom_set_value_function          },
    {"get_data",      keldom_get_data_function           },
    {"set_data",      keldom_set_data_function           },
    {"key",           keldom_get_key_function            },
};
const Methods control_methods = {
    {"get_hidden",   keldom_get_hidden_function  },
    {"get_x",        keldom_get_x_function       },
    {"get_y",        keldom_get_y_function       },
    {"get_width",    keldom_get_width_function   },
    {"get_height",   keldom_get_height_function  },
    {"get_position", keldom_get_position_function},
    {"get_size",     keldom_get_size_function    },
    {"get_bounds",   keldom_get_bounds_function  },
    {"set_hidden",   keldom_set_hidden_function  },
    {"set_x",        keldom_set_x_function       },
    {"set_y",        keldom_set_y_function       },
    {"set_width",    keldom_set_width_function   },
    {"set_height",   keldom_set_height_function  },
    {"set_position", keldom_set_position_function},
    {"set_size",     keldom_set_size_function    },
    {"set_bounds",   keldom_set_bounds_function  },
    {"hide",         keldom_hide_function        },
    {"show",         keldom_show_function        },
    {"clone",        keldom_clone_function       },
    {"delete",       keldom_delete_function      },
};
const Methods table_methods = {
    {"get_rows", keldom_get_rows_function    },
    {"get_cols", keldom_get_cols_function    },
    {"set_rows", keldom_set_rows_function    },
    {"set_cols", keldom_set_cols_function    },
    {"cell_key", keldom_get_cell_key_function},
};
const Methods group_methods = {
    {"get_hidden", keldom_get_hidden_function},
    {"get_x",      keldom_get_x_function     },
    {"get_y",      keldom_get_y_function     },
    {"set_hidden", keldom_set_hidden_function},
    {"set_x",      keldom_set_x_function     },
    {"set_y",      keldom_set_y_function     },
    {"hide",       keldom_hide_function      },
    {"show",       keldom_show_function      },
    {"clone",      keldom_clone_function     },
    {"delete",     keldom_delete_function    },
};
const Methods layer_instance_methods = {
    {"get_layer",    keldom_get_dom_object_layer_function},
    {"get_hidden",   keldom_get_hidden_function          },
    {"get_x",        keldom_get_x_function               },
    {"get_y",        keldom_get_y_function               },
    {"get_width",    keldom_get_width_function           },
    {"get_height",   keldom_get_height_function          },
    {"get_alpha",    keldom_get_alpha_function           },
    {"get_position", keldom_get_position_function        },
    {"get_size",     keldom_get_size_function            },
    {"get_bounds",   keldom_get_bounds_function          },
    {"set_hidden",   keldom_set_hidden_function          },
    {"set_x",        keldom_set_x_function               },
    {"set_y",        keldom_set_y_function               },
    {"set_width",    keldom_set_width_function           },
    {"set_height",   keldom_set_height_function          },
    {"set_alpha",    keldom_set_alpha_function           },
    {"set_position", keldom_set_position_function        },
    {"set_size",     keldom_set_size_function            },
    {"set_bounds",   keldom_set_bounds_function          },
    {"hide",         keldom_hide_function                },
    {"show",         keldom_show_function                },
};

struct MetatableRow {
    const char *name;
    const char *parent; // null for none
    Methods methods;
};

const MetatableRow metatable_rows[] = {
    {"keldom_object",         nullptr,          common_methods        },
    {"control_object",        "keldom_object",  control_methods       },
    {"table_object",          "control_object", table_methods         },
    {"group_object",          "keldom_object",  group_methods         },
    {"layer_instance_object", "keldom_object",  layer_instance_methods},
    {"layer_object",          "keldom_object",  {}                    },
    {"screen_object",         "keldom_object",  {}                    },
};

const Methods module_functions = {
    {"get_application",    keldom_get_application_function   },
    {"get_object",         keldom_get_object_function        },
    {"get_layers",         keldom_get_layers_function        },
    {"get_screens",        keldom_get_screens_function       },
    {"get_control",        keldom_get_control_function       },
    {"get_table",          keldom_get_table_function         },
    {"get_group",          keldom_get_group_function         },
    {"get_layer_instance", keldom_get_layer_instance_function},
    {"get_layer",          keldom_get_layer_function         },
    {"get_screen",         keldom_get_screen_function        },
};

const std::vector<std::pair<std::string, int>> constants = {
    {"CONTROL",        0},
    {"TABLE",          1},
    {"TEMPLATE",       2},
    {"GROUP",          3},
    {"LAYER",          4},
    {"LAYER_INSTANCE", 5},
    {"SCREEN",         6},
    {"APP",            7},
};

// [-0, +0] The names of a table's fields, sorted.
Lines field_names(lua_State *L) {
    Lines names;
    for (lua_pushnil(L); lua_next(L, -2); lua_settop(L, -2)) {
        REQUIRE(lua_type(L, -2) == LUA_TSTRING);
        names.emplace_back(lua_tostring(L, -2));
    }
    std::sort(names.begin(), names.end());
    return names;
}

Lines sorted_names(const Methods &methods) {
    Lines names;
    for (const auto &[name, function] : methods) names.push_back(name);
    std::sort(names.begin(), names.end());
    return names;
}

// [-0, +0] Whether a field of the table on top is exactly this function.
void check_functions(lua_State *L, const Methods &methods) {
    for (const auto &[name, function] : methods) {
        CAPTURE(name);
        lua_getfield(L, -1, name.c_str());
        CHECK((lua_tocfunction(L, -1) == function));
        lua_settop(L, -2);
    }
}

// [-0, +1] Pushes the method table of a metatable.
void push_methods(lua_State *L, const char *metatable) {
    lua_getfield(L, LUA_REGISTRYINDEX, metatable);
    lua_getfield(L, -1, "__index");
    lua_replace(L, -2);
}

// [-0, +1] Pushes a metamethod.
void push_metamethod(lua_State *L, const char *metatable, const char *name) {
    lua_getfield(L, LUA_REGISTRYINDEX, metatable);
    lua_getfield(L, -1, name);
    lua_replace(L, -2);
}

// Registers, with Lua errors caught.
int protected_registration(lua_State *L) {
    return lua_cpcall(
        L,
        [](lua_State *state) {
            keldom_register(state);
            return 0;
        },
        nullptr);
}

} // namespace

TEST_CASE("each of the seven metatables has the three metamethods and a method table, and nothing else") {
    PluginFixture fixture;
    lua_State *L = fixture.L;
    for (const MetatableRow &row : metatable_rows) {
        CAPTURE(std::string(row.name));
        lua_getfield(L, LUA_REGISTRYINDEX, row.name);
        REQUIRE(lua_type(L, -1) == LUA_TTABLE);
        CHECK(field_names(L) == Lines{"__eq", "__gc", "__index", "__tostring"});
        check_functions(L, {
                               {"__tostring", keldom_dom_object_to_string},
                               {"__gc",       keldom_dom_object_free     },
                               {"__eq",       keldom_dom_object_equals   }
        });
        lua_getfield(L, -1, "__index");
        CHECK(lua_type(L, -1) == LUA_TTABLE);
        CHECK(lua_getmetatable(L, -2) == 0);
        lua_settop(L, 0);
    }
}

TEST_CASE("each method table holds its methods, each name bound to its own function") {
    PluginFixture fixture;
    for (const MetatableRow &row : metatable_rows) {
        CAPTURE(std::string(row.name));
        push_methods(fixture.L, row.name);
        CHECK(field_names(fixture.L) == sorted_names(row.methods));
        check_functions(fixture.L, row.methods);
        lua_settop(fixture.L, 0);
    }
}

TEST_CASE("each method table inherits from its parent's metatable") {
    PluginFixture fixture;
    lua_State *L = fixture.L;
    for (const MetatableRow &row : metatable_rows) {
        CAPTURE(std::string(row.name));
        push_methods(L, row.name);
        int inherits = lua_getmetatable(L, -1);
        CHECK(inherits == (row.parent ? 1 : 0));
        if (row.parent && inherits) {
            lua_getfield(L, LUA_REGISTRYINDEX, row.parent);
            CHECK(lua_rawequal(L, -1, -2));
        }
        lua_settop(L, 0);
    }
}

TEST_CASE("method tables are not shared") {
    PluginFixture fixture;
    for (const MetatableRow &row : metatable_rows)
        for (const MetatableRow &other : metatable_rows) {
            CAPTURE(std::string(row.name));
            CAPTURE(std::string(other.name));
            push_methods(fixture.L, row.name);
            push_methods(fixture.L, other.name);
            CHECK(bool(lua_rawequal(fixture.L, -1, -2)) == (&row == &other));
            lua_settop(fixture.L, 0);
        }
}

TEST_CASE("each metatable has metamethods of its own, so that Lua asks __eq only for two handles of one kind") {
    PluginFixture fixture;
    for (const MetatableRow &row : metatable_rows)
        for (const MetatableRow &other : metatable_rows)
            for (const char *metamethod : {"__eq", "__gc", "__tostring"}) {
                CAPTURE(std::string(row.name));
                CAPTURE(std::string(other.name));
                CAPTURE(std::string(metamethod));
                push_metamethod(fixture.L, row.name, metamethod);
                push_metamethod(fixture.L, other.name, metamethod);
                CHECK(bool(lua_rawequal(fixture.L, -1, -2)) == (&row == &other));
                lua_settop(fixture.L, 0);
            }
}

TEST_CASE("metamethods have no upvalues") {
    PluginFixture fixture;
    for (const MetatableRow &row : metatable_rows)
        for (const char *metamethod : {"__eq", "__gc", "__tostring"}) {
            push_metamethod(fixture.L, row.name, metamethod);
            CHECK(lua_getupvalue(fixture.L, -1, 1) == nullptr);
            lua_settop(fixture.L, 0);
        }
}

TEST_CASE("the module holds its functions and its constants, and nothing else") {
    PluginFixture fixture;
    lua_State *L = fixture.L;
    lua_getfield(L, LUA_GLOBALSINDEX, "keldom");
    Lines expected = sorted_names(module_functions);
    for (const auto &[name, value] : constants) expected.push_back(name);
    std::sort(expected.begin(), expected.end());
    CHECK(field_names(L) == expected);
    check_functions(L, module_functions);
    lua_settop(L, 0);
}

TEST_CASE("the constants are the type codes, as numbers") {
    PluginFixture fixture;
    for (const auto &[name, value] : constants) {
        CAPTURE(name);
        CHECK(fixture.run("return type(keldom." + name + "), keldom." + name)
              == Lines{"\"number\"", std::to_string(value)});
    }
}

TEST_CASE("the module is a global and a loaded package") {
    PluginFixture fixture;
    CHECK(fixture.run("return rawequal(keldom, package.loaded.keldom), rawequal(require 'keldom', keldom)")
          == Lines{"true", "true"});
    CHECK(fixture.run("return getmetatable(keldom)") == Lines{"nil"});
}

TEST_CASE("a global table keldom that is there already is kept and filled") {
    HostFixture host;
    host.run("keldom = {mine = 'kept', get_object = 'replaced', APP = 'replaced'} before = keldom");
    CHECK(protected_registration(host.L) == 0);
    CHECK(host.run("return rawequal(keldom, before), keldom.mine, type(keldom.get_object), keldom.APP")
          == Lines{"true", "\"kept\"", "\"function\"", "7"});
}

TEST_CASE("a metatable of the same name that is there already is kept and filled again") {
    HostFixture host;
    lua_State *L = host.L;
    for (const MetatableRow &row : metatable_rows) {
        luaL_newmetatable(L, row.name);
        lua_pushstring(L, "kept");
        lua_setfield(L, -2, "mine");
        lua_pushstring(L, "replaced");
        lua_setfield(L, -2, "__eq");
        lua_createtable(L, 0, 0);
        lua_setfield(L, -2, "__index");
        lua_setfield(L, LUA_GLOBALSINDEX, row.name);
    }
    CHECK(protected_registration(L) == 0);
    for (const MetatableRow &row : metatable_rows) {
        CAPTURE(std::string(row.name));
        lua_getfield(L, LUA_REGISTRYINDEX, row.name);
        lua_getfield(L, LUA_GLOBALSINDEX, row.name);
        CHECK(lua_rawequal(L, -1, -2));
        CHECK(field_names(L) == Lines{"__eq", "__gc", "__index", "__tostring", "mine"});
        check_functions(L, {
                               {"__eq", keldom_dom_object_equals}
        });
        push_methods(L, row.name);
        CHECK(field_names(L) == sorted_names(row.methods));
        lua_settop(L, 0);
    }
}

TEST_CASE("registering twice leaves what registering once does, with new method tables") {
    PluginFixture fixture;
    lua_State *L = fixture.L;
    push_methods(L, "table_object");
    CHECK(protected_registration(L) == 0);
    push_methods(L, "table_object");
    CHECK_FALSE(lua_rawequal(L, -1, -2));
    REQUIRE(lua_getmetatable(L, -1));
    lua_getfield(L, LUA_REGISTRYINDEX, "control_object");
    CHECK(lua_rawequal(L, -1, -2));
    lua_settop(L, 0);
}

TEST_CASE("a state without any library can be registered in") {
    HostFixture host;
    LuaMemory memory;
    lua_State *bare = lua_newstate(LuaMemory::allocate, &memory);
    if (!bare) bare = luaL_newstate();
    REQUIRE(bare != nullptr);
    CHECK(protected_registration(bare) == 0);
    lua_getfield(bare, LUA_GLOBALSINDEX, "keldom");
    lua_getfield(bare, -1, "SCREEN");
    CHECK(lua_tonumber(bare, -1) == 6);
    CHECK(lua_gettop(bare) == 2);
    lua_close(bare);
    CHECK(memory.live_bytes() == 0);
}

TEST_CASE("a global keldom that is no table is Lua's error") {
    HostFixture host;
    host.run("keldom = 'occupied'");
    CHECK(protected_registration(host.L) != 0);
    CHECK(host.text_of(1) == "\"name conflict for module 'keldom'\"");
    lua_settop(host.L, 0);
}

TEST_CASE("registration without memory is Lua's error, wherever it runs out, and can be repeated") {
    HostFixture host;
    unsigned long refusals = 0;
    for (unsigned long nth = 1;; ++nth) {
        host.memory.forget_refusal();
        host.memory.refuse(nth);
        int status = protected_registration(host.L);
        host.memory.refuse(0);
        if (!host.memory.refused()) {
            CHECK(status == 0);
            break;
        }
        ++refusals;
        CHECK(status == LUA_ERRMEM);
        lua_settop(host.L, 0);
    }
    CHECK(refusals > 0);
    CHECK(host.run("return keldom.APP") == Lines{"7"});
    CHECK(lua_gettop(host.L) == 0);
}

TEST_CASE("create_metatable pushes the metatable and inherits from the index counted before the call") {
    HostFixture host;
    lua_State *L = host.L;
    const luaL_Reg methods[] = {
        {"get_name", keldom_get_dom_object_name_function},
        {nullptr,    nullptr                            }
    };
    create_metatable(L, "first", 0, methods);
    create_metatable(L, "second", 0, methods);
    create_metatable(L, "of_first", -2, methods);
    create_metatable(L, "of_second", -2, methods);
    CHECK(lua_gettop(L) == 4);
    for (int i = 1; i <= 4; ++i) {
        CAPTURE(i);
        const char *names[] = {"first", "second", "of_first", "of_second"};
        lua_getfield(L, LUA_REGISTRYINDEX, names[i - 1]);
        CHECK(lua_rawequal(L, -1, i));
        lua_getfield(L, i, "__index");
        CHECK(field_names(L) == Lines{"get_name"});
        CHECK(lua_getmetatable(L, -1) == (i > 2 ? 1 : 0));
        if (i > 2) CHECK(lua_rawequal(L, -1, i - 2));
        lua_settop(L, 4);
    }
    lua_settop(L, 0);
}
