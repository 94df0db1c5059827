// host_functions.cpp: what runner.lua and kel_test.lua ask of the tool. Lua raises errors by longjmp, and no C++
// exception may reach it: a function keeps the objects that it works with in the run.
#include "test_run.h"

#include "../display_list.h"
#include "../object_names.h"
#include "private_globals.h"

#include <iterator>

namespace kelhost {

namespace {

// Does the work; its exception becomes a Lua error.
template <typename Work> void do_work(lua_State *L, const Work &work) {
    bool done = false;
    try {
        work();
        done = true;
    } catch (...) { // memory is out
    }
    if (!done) luaL_error(L, "not enough memory");
}

// [-0, +1]
void push(lua_State *L, const std::string &text) { lua_pushlstring(L, text.data(), text.size()); }

// The text at the index; lives as long as it is on the stack.
std::string_view text_at(lua_State *L, int index) {
    std::size_t length = 0;
    const char *const text = luaL_checklstring(L, index, &length);
    return {text, length};
}

// Fields of the table at index 1, which hold texts or numbers; [-0, +1], so that the text stays alive.
std::string_view text_field(lua_State *L, const char *name) {
    lua_getfield(L, 1, name);
    return text_at(L, -1);
}

double number_field(lua_State *L, const char *name) {
    lua_getfield(L, 1, name);
    return luaL_checknumber(L, -1);
}

struct StatusName {
    const char *name;
    TestStatus status;
};

constexpr StatusName status_names[] = {
    {"success", TestStatus::success},
    {"failure", TestStatus::failure},
    {"error",   TestStatus::error  },
    {"pending", TestStatus::pending},
    {"listed",  TestStatus::listed },
};

TestStatus status_from(std::string_view name) {
    for (const StatusName &row : status_names)
        if (name == row.name) return row.status;
    return TestStatus::error;
}

} // namespace

struct TestRun::HostFunctions {
    static TestRun &run_of(lua_State *L) { return *static_cast<TestRun *>(lua_touserdata(L, lua_upvalueindex(1))); }

    // ---- For runner.lua ----

    // call(name, function): runs it as the host calls a script, bounded by the limits; the name is for messages about
    // what runs. Gives what it was stopped with, or nothing.
    static int call(lua_State *L) {
        TestRun &run = run_of(L);
        const std::string_view name = text_at(L, 1);
        luaL_checktype(L, 2, LUA_TFUNCTION);
        lua_settop(L, 2);
        do_work(L, [&] { run.app().call(call_author, &run, std::string(name)); }); // what it fails with is in the log
        return lua_gettop(L) - 2;
    }

    // In the application's own thread. Nothing of what the author's code raises gets here.
    static int call_author(lua_State *L) {
        auto &run = *static_cast<TestRun *>(lua_touserdata(L, 1));
        run.author_ = push_thread_like(L, run.runner_);
        lua_pushvalue(run.runner_, 2);
        lua_xmove(run.runner_, run.author_, 1);
        if (lua_pcall(run.author_, 0, 0, 0) != 0) lua_xmove(run.author_, run.runner_, 1);
        run.author_ = nullptr;
        return 0;
    }

    // take_log() -> {{level = "warning", text = ..., place = ...}, ...}
    static int take_log(lua_State *L) {
        TestRun &run = run_of(L);
        run.taken_.clear();
        run.taken_.swap(run.lines_);
        lua_createtable(L, static_cast<int>(run.taken_.size()), 0);
        int index = 0;
        for (const LogLine &line : run.taken_) {
            lua_createtable(L, 0, 3);
            lua_pushstring(L, log_level_name(line.level));
            lua_setfield(L, -2, "level");
            push(L, line.text);
            lua_setfield(L, -2, "text");
            push(L, line.place);
            lua_setfield(L, -2, "place");
            lua_rawseti(L, -2, ++index);
        }
        return 1;
    }

    // result{status = ..., name = ..., file = ..., line = ..., message = ..., traceback = ..., seconds = ...}
    static int result(lua_State *L) {
        TestRun &run = run_of(L);
        const std::string_view status = text_field(L, "status");
        const std::string_view name = text_field(L, "name");
        const std::string_view file = text_field(L, "file");
        const std::string_view message = text_field(L, "message");
        const std::string_view traceback = text_field(L, "traceback");
        const double line = number_field(L, "line");
        const double seconds = number_field(L, "seconds");
        do_work(L, [&] {
            TestResult found;
            found.status = status_from(status);
            found.name = name;
            found.file = file;
            found.line = static_cast<int>(line);
            found.message = message;
            found.traceback = traceback;
            found.seconds = seconds;
            run.add_result(std::move(found));
        });
        return 0;
    }

    // print(text): at once, a line.
    static int print(lua_State *L) {
        const std::string_view text = text_at(L, 1);
        do_work(L, [text] { report_line(text); });
        return 0;
    }

    // ---- For kel_test.lua ----

    // exists(name): whether an event can be sent to it.
    static int exists(lua_State *L) {
        TestRun &run = run_of(L);
        bool found = false;
        if (lua_type(L, 1) == LUA_TSTRING) {
            const std::string_view name = text_at(L, 1);
            do_work(L, [&] { found = run.app().find(name) != nullptr || run.app().variable(name).has_value(); });
        }
        lua_pushboolean(L, found);
        return 1;
    }

    // nearest_object(name) -> "; did you mean main.ok?" or ""
    static int nearest_object(lua_State *L) {
        TestRun &run = run_of(L);
        const std::string_view name = text_at(L, 1);
        do_work(L, [&] { run.text_ = suggest(std::string(name), object_names(run.app())); });
        push(L, run.text_);
        return 1;
    }

    // nearest_key(key): the same for variables.
    static int nearest_key(lua_State *L) {
        TestRun &run = run_of(L);
        const std::string_view key = text_at(L, 1);
        do_work(L, [&] { run.text_ = suggest(std::string(key), run.app().keys()); });
        push(L, run.text_);
        return 1;
    }

    // variable(key) -> its value, or nil when there is none.
    static int variable(lua_State *L) {
        TestRun &run = run_of(L);
        run.value_.reset();
        if (lua_type(L, 1) == LUA_TSTRING) {
            const std::string_view key = text_at(L, 1);
            do_work(L, [&] { run.value_ = run.app().variable(key); });
        }
        if (!run.value_)
            lua_pushnil(L);
        else if (const double *number = std::get_if<double>(&*run.value_))
            lua_pushnumber(L, *number);
        else
            push(L, *std::get_if<std::string>(&*run.value_));
        return 1;
    }

    // set_variable(key, value): a number, a text or a boolean; what is refused is in the log.
    static int set_variable(lua_State *L) {
        TestRun &run = run_of(L);
        const std::string_view key = text_at(L, 1);
        if (lua_isboolean(L, 2)) {
            const double value = lua_toboolean(L, 2);
            do_work(L, [&] { run.app().set_variable(key, value); });
        } else if (lua_type(L, 2) == LUA_TNUMBER) {
            const double value = lua_tonumber(L, 2);
            do_work(L, [&] { run.app().set_variable(key, value); });
        } else {
            const std::string_view value = text_at(L, 2);
            do_work(L, [&] { run.app().set_variable(key, std::string(value)); });
        }
        return 0;
    }

    // keys(prefix) -> those of all variables that begin like this, sorted.
    static int keys(lua_State *L) {
        TestRun &run = run_of(L);
        const std::string_view prefix = text_at(L, 1);
        do_work(L, [&] { run.names_ = run.app().keys(prefix); });
        lua_createtable(L, static_cast<int>(run.names_.size()), 0);
        int index = 0;
        for (const std::string &key : run.names_) {
            push(L, key);
            lua_rawseti(L, -2, ++index);
        }
        return 1;
    }

    // send(event [, target]): and delivers all that waits.
    static int send(lua_State *L) {
        TestRun &run = run_of(L);
        const std::string_view event = text_at(L, 1);
        const std::string_view target = lua_isnoneornil(L, 2) ? std::string_view() : text_at(L, 2);
        do_work(L, [&] {
            run.app().queue_event(std::string(event), std::string(target));
            run.app().pump();
        });
        return 0;
    }

    // pump() -> how many events were delivered.
    static int pump(lua_State *L) {
        TestRun &run = run_of(L);
        std::size_t delivered = 0;
        do_work(L, [&] { delivered = run.app().pump(); });
        lua_pushnumber(L, static_cast<double>(delivered));
        return 1;
    }

    // screen_text(screen) -> what it shows, or nil and why there is no such screen.
    static int screen_text(lua_State *L) {
        TestRun &run = run_of(L);
        const std::string_view screen = text_at(L, 1);
        bool found = false;
        do_work(L, [&] {
            const auto list = make_display_list(run.app(), std::string(screen), run.text_);
            found = list.has_value();
            if (found) run.text_ = to_text(*list);
        });
        if (!found) lua_pushnil(L);
        push(L, run.text_);
        return found ? 1 : 2;
    }

    // compare_snapshot(name, text) -> what is wrong, or nil.
    static int compare_snapshot(lua_State *L) {
        TestRun &run = run_of(L);
        const std::string_view name = text_at(L, 1);
        const std::string_view text = text_at(L, 2);
        do_work(L, [&] { run.text_ = run.snapshots_.compare(std::string(name), std::string(text)); });
        if (run.text_.empty())
            lua_pushnil(L);
        else
            push(L, run.text_);
        return 1;
    }

    static constexpr luaL_Reg table[] = {
        {"call",             call            },
        {"take_log",         take_log        },
        {"result",           result          },
        {"print",            print           },
        {"exists",           exists          },
        {"nearest_object",   nearest_object  },
        {"nearest_key",      nearest_key     },
        {"variable",         variable        },
        {"set_variable",     set_variable    },
        {"keys",             keys            },
        {"send",             send            },
        {"pump",             pump            },
        {"screen_text",      screen_text     },
        {"compare_snapshot", compare_snapshot},
    };
};

// [-0, +1] Pushes the table `host`: the functions, and what describes the run.
void TestRun::push_host(lua_State *L, TestRun &run) {
    lua_newtable(L);
    for (const luaL_Reg &row : HostFunctions::table) {
        lua_pushlightuserdata(L, &run);
        lua_pushcclosure(L, row.func, 1);
        lua_setfield(L, -2, row.name);
    }
    push(L, run.file_);
    lua_setfield(L, -2, "file");
    push(L, run.folder_);
    lua_setfield(L, -2, "folder");
    lua_pushvalue(run.app().lua(), LUA_GLOBALSINDEX);
    lua_xmove(run.app().lua(), L, 1);
    lua_setfield(L, -2, "globals");
    push(L, run.app().description().name);
    lua_setfield(L, -2, "app_name");
    push(L, run.arguments_.session.path);
    lua_setfield(L, -2, "app_path");
    lua_pushboolean(L, run.arguments_.list);
    lua_setfield(L, -2, "listing");
    if (!run.arguments_.filter.empty()) {
        push(L, run.arguments_.filter);
        lua_setfield(L, -2, "filter");
    }
}

} // namespace kelhost
