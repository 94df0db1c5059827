// collecting.cpp: the reporter "collecting" lets Lua collect all garbage at every moment that can be had:
// - wherever Lua itself looks whether to collect: before it makes a string, table, userdata, closure or coroutine;
// - when a function, Lua's or C's, is called and when it returns;
// - before and after each host call of the plug-in's, as a host may collect in any of them.
// What is used without being anchored is gone then. Say --reporters=console,collecting.
#include <ostream>

#include <lua.hpp>

#include "observer.h"

namespace conformance {

namespace {

// A finalizer calls the plug-in and so comes here again: in the midst of a collection is none.
unsigned long moments = 0;

void collect(lua_State *L) {
    static bool collecting = false;
    if (collecting) return;
    collecting = true;
    ++moments;
    lua_gc(L, LUA_GCCOLLECT, 0);
    collecting = false;
}

class Collecting : public Observer {
public:
    void session_starts(Session &session) override {
        lua_State *L = session.lua();
        lua_gc(L, LUA_GCSETPAUSE, 0);             // no waiting for the next cycle
        lua_gc(L, LUA_GCSETSTEPMUL, whole_cycle); // which is one step
        lua_gc(L, LUA_GCCOLLECT, 0);              // from here on
        lua_sethook(
            L, [](lua_State *running, lua_Debug *) { collect(running); }, LUA_MASKCALL | LUA_MASKRET, 0);
        kc_set_moment(collect);
    }

    void collection_held(Session &session) override { stop(session); }
    void session_ends(Session &session) override { stop(session); }

private:
    static constexpr int whole_cycle = 10'000'000; // in percent of what is allocated meanwhile; times 10 it is an int

    static void stop(Session &session) {
        lua_sethook(session.lua(), nullptr, 0, 0);
        kc_set_moment(nullptr);
    }
};

class CollectingReporter : public doctest::IReporter {
public:
    explicit CollectingReporter(const doctest::ContextOptions &options) : out_(*options.cout) {}

    void test_run_start() override { set_observer(&observer_); }
    void test_run_end(const doctest::TestRunStats &) override {
        set_observer(nullptr);
        out_ << "collected " << moments << " times, not counting where Lua looks by itself\n";
    }

    void report_query(const doctest::QueryData &) override {}
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
    Collecting observer_;
};

REGISTER_REPORTER("collecting", 2, CollectingReporter);

} // namespace

} // namespace conformance
