// called_names.cpp: which rows of the registration tables the tests have called. A debug hook sees every call; each row
// has a closure of its own, which tells it from the others, also where two rows share their C function.
#include "called_names.h"

#include <map>
#include <ostream>
#include <string>

#include <doctest/doctest.h>

#include <lua.hpp>

namespace conformance {

namespace {

bool is_asked_for = false; // watching takes a quarter of the time that a short test does

// "control_object get_x" -> how often it was called, in all states together.
std::map<std::string, unsigned long> &calls_by_name() {
    static std::map<std::string, unsigned long> calls;
    return calls;
}

// Of the state that is watched now. There is one at a time.
std::map<const void *, unsigned long *> &counters() {
    static std::map<const void *, unsigned long *> by_closure;
    return by_closure;
}

// [-1, +0] Notes each function of the table on top.
void note_functions(lua_State *L, const std::string &table) {
    for (lua_pushnil(L); lua_istable(L, -2) && lua_next(L, -2); lua_pop(L, 1)) {
        if (lua_type(L, -2) != LUA_TSTRING || !lua_isfunction(L, -1)) continue;
        counters()[lua_topointer(L, -1)] = &calls_by_name()[table + " " + lua_tostring(L, -2)];
    }
    lua_settop(L, 0);
}

void count_call(lua_State *L, lua_Debug *call) {
    lua_getinfo(L, "f", call);
    auto counter = counters().find(lua_topointer(L, -1));
    if (counter != counters().end()) ++*counter->second;
    lua_pop(L, 1);
}

class CalledNames : public doctest::IReporter {
public:
    explicit CalledNames(const doctest::ContextOptions &options) : out_(*options.cout) { is_asked_for = true; }

    void test_run_end(const doctest::TestRunStats &run) override {
        unsigned missing = 0;
        for (const auto &[name, count] : calls_by_name()) {
            if (count > 0) continue;
            out_ << "never called: " << name << "\n";
            ++missing;
        }
        if (run.numTestCasesFailed > 0)
            out_ << run.numTestCasesFailed << " tests failed: run without a reporter to see them\n";
        else if (missing == 0 && !calls_by_name().empty())
            out_ << "every registered name was called: " << calls_by_name().size() << "\n";
    }

    void report_query(const doctest::QueryData &) override {}
    void test_run_start() override {}
    void test_case_start(const doctest::TestCaseData &) override {}
    void test_case_reenter(const doctest::TestCaseData &) override {}
    void test_case_end(const doctest::CurrentTestCaseStats &) override {}
    void test_case_exception(const doctest::TestCaseException &) override {}
    void subcase_start(const doctest::SubcaseSignature &) override {}
    void subcase_end() override {}
    void log_assert(const doctest::AssertData &) override {}
    void log_message(const doctest::MessageData &) override {}
    void test_case_skipped(const doctest::TestCaseData &) override {}

private:
    std::ostream &out_;
};

REGISTER_REPORTER("called_names", 1, CalledNames);

} // namespace

void watch_called_names(lua_State *L) {
    if (!is_asked_for) return;
    counters().clear();
    for (const char *name : {"keldom_object", "control_object", "table_object", "group_object", "layer_instance_object",
                             "layer_object", "screen_object"}) {
        luaL_getmetatable(L, name);
        if (lua_istable(L, -1)) lua_getfield(L, -1, "__index");
        note_functions(L, name);
    }
    lua_getglobal(L, "keldom");
    note_functions(L, "keldom");
    lua_sethook(L, count_call, LUA_MASKCALL, 0);
}

} // namespace conformance
