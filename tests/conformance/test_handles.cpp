// test_handles.cpp: handles: their names, types, texts and equality, their end, and what else passes for one.
#include "harness.h"

#include <cstdio>

#include <lua.hpp>

using namespace conformance;

namespace {

const std::string no_application = "Invalid argument, no application pointer";
const std::string not_a_handle = "Argument must be a keldom_object";
const std::string no_name = "Object has no qualified name";

// What a handle's userdata holds.
struct Record {
    const char *name;
    kl_object_type_t type;
};

// bare(name or nil, type): a userdata without a metatable that holds what a handle holds, or zeros. Its name is no
// block.
int new_bare(lua_State *L) {
    static char name[64];
    Record made = {lua_isnoneornil(L, 1) ? nullptr : name, static_cast<kl_object_type_t>(luaL_optinteger(L, 2, 0))};
    std::snprintf(name, sizeof name, "%s", luaL_optstring(L, 1, ""));
    *static_cast<Record *>(lua_newuserdata(L, sizeof(Record))) = made;
    return 1;
}

// foreign(metatable): another library's userdata.
int new_foreign(lua_State *L) {
    auto *record = static_cast<Record *>(lua_newuserdata(L, sizeof(Record)));
    *record = {nullptr, KL_OBJECT_TYPE_SCREEN};
    lua_pushvalue(L, 1);
    lua_setmetatable(L, -2);
    return 1;
}

int new_light(lua_State *L) {
    static Record record = {"main.list", KL_OBJECT_TYPE_TABLE};
    lua_pushlightuserdata(L, &record);
    return 1;
}

struct Handles : Session {
    Handles() {
        define("bare", new_bare);
        define("foreign", new_foreign);
        define("light", new_light);
        results("meta = debug.getmetatable app = keldom.get_application() home = keldom.get_object('home')"
                " main = keldom.get_object('main') place = keldom.get_object('home.main')"
                " ok = keldom.get_object('main.ok') list = keldom.get_object('main.list')"
                " bar = keldom.get_object('main.bar') deep = keldom.get_object('main.bar.inner.deep')"
                " cell = keldom.get_object('main.mark')"
                " get_name, get_type = ok.get_name, ok.get_type"
                " to_string, equals, collect = meta(ok).__tostring, meta(ok).__eq, meta(ok).__gc");
    }

    kl_object_t *object(const char *name) { return kl_application_find_object(application(), name, 0); }
};

struct Kind {
    const char *global;
    const char *text;
    const char *name;
    const char *type;
};

const Kind kinds[] = {
    {"app",   "<keldom_object >",                     "\"\"",                    "7"},
    {"home",  "<screen_object home>",                 "\"home\"",                "6"},
    {"main",  "<layer_object main>",                  "\"main\"",                "4"},
    {"place", "<layer_instance_object home.main>",    "\"home.main\"",           "5"},
    {"ok",    "<control_object main.ok>",             "\"main.ok\"",             "0"},
    {"list",  "<table_object main.list>",             "\"main.list\"",           "1"},
    {"bar",   "<group_object main.bar>",              "\"main.bar\"",            "3"},
    {"deep",  "<control_object main.bar.inner.deep>", "\"main.bar.inner.deep\"", "0"},
    {"cell",  "<control_object main.mark>",           "\"main.mark\"",           "0"},
};

// For the time of its life, an object of the host's claims another type.
class Retyped {
public:
    Retyped(kl_object_t *object, int type) : object_(object), type_(object->type) {
        object->type = static_cast<kl_object_type_t>(type);
    }
    ~Retyped() { object_->type = type_; }

private:
    kl_object_t *object_;
    kl_object_type_t type_;
};

// For the time of its life, a layer lists nothing.
class EmptiedLayer {
public:
    explicit EmptiedLayer(kl_object_t *layer)
        : layer_(reinterpret_cast<kl_layer_t *>(layer)), list_(layer_->control_list) {
        layer_->control_list = kl_darray_create(sizeof(kl_object_t *), 1, 0);
    }
    ~EmptiedLayer() {
        kl_darray_free(layer_->control_list);
        layer_->control_list = list_;
    }

private:
    kl_layer_t *layer_;
    kl_darray_t *list_;
};

// Lua expressions of what is no handle.
const char *const strangers[] = {
    "",
    "nil",
    "true",
    "5",
    "'main.ok'",
    "{}",
    "print",
    "setmetatable({}, meta(ok))",
    "foreign({})",
    "foreign({__index = {}})",
    "foreign({__index = print})",
    "foreign({__index = setmetatable({}, {})})",
    "foreign({__index = setmetatable({}, {__index = {}})})",
    "foreign({__tostring = to_string, __eq = equals})",
};

// Those that pass for one: with no metatable, or with one whose __index leads to the handles'.
const char *const lookalikes[] = {
    "bare()",
    "light()",
    "foreign({__index = setmetatable({}, meta(app))})",
    "foreign({__index = setmetatable({}, meta(list))})",
    "foreign({__index = setmetatable({}, {__index = setmetatable({}, meta(bar))})})",
};

} // namespace

TEST_CASE("a handle tells its name and type, of its own, whatever arguments follow") {
    Handles session;
    for (const Kind &kind : kinds) {
        CAPTURE(kind.global);
        std::string h = kind.global;
        CHECK(session.results("return " + h) == Lines{kind.text});
        CHECK(session.results("return " + h + ":get_name(), " + h + ":get_type(), tostring(" + h + ")")
              == Lines{kind.name, kind.type, kind.name});
        CHECK(session.calls() == Lines{});
        CHECK(session.results("return " + h + ":get_name(1, {}), " + h + ":get_type('x')")
              == Lines{kind.name, kind.type});
    }
}

TEST_CASE("a name is kept as it was when the handle was made") {
    Handles session;
    CHECK(session.results("bar:delete() return deep:get_name(), deep:get_type(), bar:get_name(), bar:get_type()")
          == Lines{"\"main.bar.inner.deep\"", "0", "\"main.bar\"", "3"});
}

TEST_CASE("a template's handle has a name, its type, and the common methods alone") {
    Handles session;
    Retyped as_template(session.object("main.mark"), KL_OBJECT_TYPE_TEMPLATE);
    CHECK(session.results("h = keldom.get_object('main.mark') return h, h:get_type(), type(h.key), h.get_x, h.delete")
          == Lines{"<keldom_object main.mark>", "2", "\"function\"", "nil", "nil"});
}

TEST_CASE("an object of no valid type has no handle") {
    Handles session;
    for (int type : {8, 9, 255}) {
        Retyped invalid(session.object("main.mark"), type);
        CHECK(session.results("return keldom.get_object('main.mark')") == Lines{});
        CHECK(session.calls() == Lines{"find \"main.mark\"", "warning: " + no_name});
    }
}

TEST_CASE("a control that no layer lists has no handle") {
    Handles session;
    session.hold_collection();
    int blocks = kc_live_blocks();
    EmptiedLayer emptied(session.object("main"));
    for (const char *name : {"main.ok", "main.bar", "main.bar.inner.deep", "main.list", "main.mark"}) {
        CHECK(session.results("return keldom.get_object('" + std::string(name) + "')") == Lines{});
        CHECK(session.calls() == Lines{"find \"" + std::string(name) + "\"", "warning: " + no_name});
    }
    CHECK(kc_live_blocks() == blocks);
}

TEST_CASE("a name that memory does not suffice for is none, whichever of its components fails, and leaves no block") {
    Handles session;
    session.hold_collection();
    int blocks = kc_live_blocks();
    const std::pair<const char *, int> reallocations[] = {
        {"home",                0},
        {"main",                0},
        {"home.main",           1},
        {"main.ok",             1},
        {"main.mark",           2},
        {"main.bar.inner.deep", 3},
    };
    for (const auto &[name, count] : reallocations) {
        const std::string get = "return keldom.get_object('" + std::string(name) + "')";
        for (int failing = -1; failing < count; ++failing) {
            CAPTURE(name);
            CAPTURE(failing);
            kc_fail(failing < 0 ? "kelal_strdup" : "kelal_realloc", failing < 0 ? 0 : failing);
            CHECK(session.results(get) == Lines{});
            CHECK(session.calls() == Lines{"find \"" + std::string(name) + "\"", "warning: " + no_name});
            CHECK(kc_live_blocks() == blocks);
        }
        kc_fail("kelal_realloc", count);
        CHECK(session.results(get).size() == 1);
        kc_mend();
        CHECK(kc_live_blocks() == ++blocks);
    }
}

TEST_CASE("a handle's name is one block, which goes with it") {
    Handles session;
    session.hold_collection();
    int blocks = kc_live_blocks();
    session.results("kept = {} for i = 1, 100 do kept[i] = keldom.get_object('main.bar.inner.deep') end");
    CHECK(kc_live_blocks() == blocks + 100);
    session.results("kept = nil");
    lua_gc(session.lua(), LUA_GCCOLLECT, 0);
    lua_gc(session.lua(), LUA_GCCOLLECT, 0);
    CHECK(kc_live_blocks() == blocks);
}

TEST_CASE("a handle made in a coroutine is one like others") {
    Handles session;
    CHECK(session.results("local h = coroutine.wrap(function() return keldom.get_object('main.ok') end)()"
                          " return h == ok, coroutine.wrap(function() return h:get_name(), h:get_x() end)()")
          == Lines{"true", "\"main.ok\"", "10"});
}

TEST_CASE("name and type of what is no handle warn and give nothing") {
    Handles session;
    for (const char *stranger : strangers)
        for (const char *function : {"get_name", "get_type"}) {
            CAPTURE(stranger);
            CHECK(session.results("return " + std::string(function) + "(" + stranger + ")") == Lines{});
            CHECK(session.calls() == Lines{"warning: " + not_a_handle});
        }
}

TEST_CASE("a metatable that leads back to itself is no handle's, and the search ends") {
    Handles session;
    session.results("one = {} one.__index = setmetatable({}, one) local a, b, c = {}, {}, {}"
                    " a.__index, b.__index, c.__index = setmetatable({}, b), setmetatable({}, c), setmetatable({}, b)"
                    " circle = a");
    for (const char *metatable : {"one", "circle"}) {
        CHECK(session.results("return get_name(foreign(" + std::string(metatable) + "))") == Lines{});
        CHECK(session.calls() == Lines{"warning: " + not_a_handle});
    }
}

TEST_CASE("of what is no userdata the metatables are not looked at") {
    Handles session;
    session.results("asked = 0 local meta = setmetatable({}, {__index = function() asked = asked + 1 end})"
                    " disguised = setmetatable({}, meta)");
    CHECK(session.results("return get_name(disguised)") == Lines{});
    CHECK(session.calls() == Lines{"warning: " + not_a_handle});
    CHECK(session.results("return asked") == Lines{"0"});
}

TEST_CASE("a userdata without a metatable, or with one that leads to the handles', passes for a handle") {
    Handles session;
    CHECK(session.results("return get_name(bare('main.bar', 3)), get_type(bare('main.bar', 3))")
          == Lines{"\"main.bar\"", "3"});
    CHECK(session.results("return get_name(light()), get_type(light())") == Lines{"\"main.list\"", "1"});
    for (const char *lookalike : {lookalikes[0], lookalikes[2], lookalikes[3], lookalikes[4]}) {
        CAPTURE(lookalike);
        CHECK(session.results("return get_name(" + std::string(lookalike) + ")") == Lines{"nil"});
        CHECK(session.results("return get_type(" + std::string(lookalike) + ")")
              == Lines{lookalike == lookalikes[0] ? "0" : "6"});
        CHECK(session.calls() == Lines{});
    }
}

TEST_CASE("name and type ask for the application first, then for a handle") {
    Handles session;
    kc_hide_application(1);
    for (const char *call : {"ok:get_name()", "ok:get_type()", "get_name({})", "get_type()"}) {
        CHECK(session.error("return " + std::string(call)) == no_application);
        CHECK(session.calls() == Lines{"error: " + no_application});
        ReturningErrors returning;
        CHECK(session.results("return " + std::string(call)) == Lines{});
        CHECK(session.calls() == Lines{"error: " + no_application});
    }
    kc_hide_application(0);
}

TEST_CASE("the text of a handle is its name, with or without an application, and of anything else the word nil") {
    Handles session;
    for (int hidden : {0, 1}) {
        kc_hide_application(hidden);
        CHECK(session.results("return tostring(deep), tostring(app), to_string(place, 1)")
              == Lines{"\"main.bar.inner.deep\"", "\"\"", "\"home.main\""});
        for (const char *stranger : strangers) {
            CAPTURE(stranger);
            CHECK(session.results("return to_string(" + std::string(stranger) + ")") == Lines{"\"nil\""});
        }
        CHECK(session.results("return to_string(bare()), to_string(light())") == Lines{"nil", "\"main.list\""});
        CHECK(session.calls() == Lines{});
    }
    kc_hide_application(0);
}

TEST_CASE("handles of one object are equal, those of others are not, with or without an application") {
    Handles session;
    session.results("again = {keldom.get_application(), keldom.get_object('home'), keldom.get_object('main'),"
                    " keldom.get_object('home.main'), keldom.get_object('main.ok'), keldom.get_object('main.list'),"
                    " keldom.get_object('main.bar'), keldom.get_object('main.bar.inner.deep'),"
                    " keldom.get_object('main.mark')}"
                    " first = {app, home, main, place, ok, list, bar, deep, cell}");
    for (int hidden : {0, 1}) {
        kc_hide_application(hidden);
        CHECK(session.results("local equal = {} for i, a in ipairs(first) do for j, b in ipairs(again) do"
                              " if a == b then equal[#equal + 1] = i * 10 + j end"
                              " if equals(a, b) ~= (i == j) then error('by hand') end"
                              " end end return equal, rawequal(first[1], again[1])")
              == Lines{"{11, 22, 33, 44, 55, 66, 77, 88, 99}", "false"});
        CHECK(session.calls() == Lines{});
    }
    kc_hide_application(0);
}

TEST_CASE("handles of one name but two kinds differ to Lua, and are equal to the function behind it") {
    Handles session;
    Retyped as_template(session.object("main.mark"), KL_OBJECT_TYPE_TEMPLATE);
    CHECK(session.results("local h = keldom.get_object('main.mark') return h == cell, equals(h, cell)")
          == Lines{"false", "true"});
}

TEST_CASE("what is no handle equals nothing, silently") {
    Handles session;
    for (const char *stranger : strangers) {
        CAPTURE(stranger);
        std::string other = *stranger ? stranger : "nil";
        CHECK(session.results("return equals(ok, " + other + ")") == Lines{"false"});
        CHECK(session.results("return equals(" + other + ", ok)") == Lines{"false"});
        CHECK(session.results("return equals(" + other + ", " + other + ")") == Lines{"false"});
        CHECK(session.results("return equals(" + std::string(stranger) + ")") == Lines{"false"});
        CHECK(session.calls() == Lines{});
    }
    CHECK(session.results("return equals(light(), list), equals(bare('main.ok'), ok), equals(bare(), bare())")
          == Lines{"true", "true", "false"});
}

TEST_CASE("a handle that was collected by hand has given its name back, and does no harm") {
    Handles session;
    session.hold_collection();
    int blocks = kc_live_blocks();
    for (const Kind &kind : kinds) {
        CAPTURE(kind.global);
        std::string h = kind.global;
        CHECK(session.results("return meta(" + h + ").__gc(" + h + ")") == Lines{});
        CHECK(session.calls() == Lines{});
        CHECK(kc_live_blocks() == --blocks);
        CHECK(session.results("return meta(" + h + ").__gc(" + h + ", 1)") == Lines{});
        CHECK(kc_live_blocks() == blocks);
        CHECK(session.results("return " + h + ":get_name(), " + h + ":get_type(), " + h + " == " + h + ", to_string("
                              + h + "), equals(" + h + ", ok)")
              == Lines{"nil", kind.type, "true", "nil", "false"});
    }
}

TEST_CASE("the object of a handle that was collected by hand is not found, without a look-up") {
    Handles session;
    session.results("collect(ok)");
    for (const char *method : {"get_children", "get_parents", "get_variables"}) {
        CHECK(session.results("return ok:" + std::string(method) + "()") == Lines{});
        CHECK(session.calls() == Lines{"warning: No such object in DOM"});
    }
}

TEST_CASE("collection by hand asks for the application first, then for a handle") {
    Handles session;
    session.hold_collection();
    int blocks = kc_live_blocks();
    for (const char *stranger : strangers) {
        CAPTURE(stranger);
        CHECK(session.results("return collect(" + std::string(stranger) + ")") == Lines{});
        CHECK(session.calls() == Lines{"warning: " + not_a_handle});
    }
    kc_hide_application(1);
    CHECK(session.error("collect(ok)") == no_application);
    CHECK(session.error("collect({})") == no_application);
    {
        ReturningErrors returning;
        CHECK(session.results("return collect(ok)") == Lines{});
        CHECK(session.calls() == Lines{"error: " + no_application});
    }
    kc_hide_application(0);
    CHECK(kc_live_blocks() == blocks);
    CHECK(session.results("return ok:get_name()") == Lines{"\"main.ok\""});
}
