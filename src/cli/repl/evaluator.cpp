// evaluator.cpp: decides what a piece of code is, and has the application run it under its own rules.
// Entries that Lua calls hold no object with a destructor across a call that can raise.
#include "evaluator.h"

#include "../output.h"
#include "value_text.h"

#include <memory>
#include <new>
#include <string_view>

#include <lua.hpp>

namespace kelhost {

namespace {

constexpr char chunk_name[] = "=stdin";

struct CloseState {
    void operator()(lua_State *L) const noexcept { lua_close(L); }
};

// The compiler's message; empty when the code compiles. A state of its own: nothing of the application's is touched.
std::string fault_of(const std::string &code) {
    if (code.starts_with(LUA_SIGNATURE[0])) return "stdin: precompiled code is not run here";
    const std::unique_ptr<lua_State, CloseState> state(luaL_newstate());
    if (state == nullptr) throw std::bad_alloc();
    if (luaL_loadbuffer(state.get(), code.data(), code.size(), chunk_name) == 0) return {};
    return lua_tostring(state.get(), -1);
}

// A string in quotes ends with its line, unless a backslash takes it on to the next.
bool is_for_want_of_more(const std::string &code, const std::string &fault) {
    if (!fault.ends_with("'<eof>'")) return false;
    return fault.find(": unfinished string near ") == std::string::npos || code.ends_with('\\');
}

struct Evaluation {
    const Application &app;
    const std::string &chunk;
    std::string results{};
    bool out_of_memory = false;
};

// [-0, +0]
void describe(lua_State *L, Evaluation &evaluation, int count) noexcept {
    try {
        evaluation.results = value_texts(evaluation.app, L, count, count + 1);
    } catch (...) {
        evaluation.out_of_memory = true;
    }
}

int run_chunk(lua_State *L) {
    auto &evaluation = *static_cast<Evaluation *>(lua_touserdata(L, 1));
    lua_settop(L, 0);
    if (luaL_loadbuffer(L, evaluation.chunk.data(), evaluation.chunk.size(), chunk_name) != 0) return lua_error(L);
    lua_call(L, 0, LUA_MULTRET);
    const int count = lua_gettop(L);
    if (lua_checkstack(L, value_text_slots) == 0) {
        lua_settop(L, 0); // an error needs room too
        return luaL_error(L, "stack overflow (too many results)");
    }
    push_handle_facts(L);
    describe(L, evaluation, count);
    return 0;
}

Outcome run(Application &app, const std::string &chunk) {
    const std::size_t errors_before = app.script_errors().size();
    Evaluation evaluation{.app = app, .chunk = chunk};
    bool succeeded = app.call(run_chunk, &evaluation, "input");
    if (evaluation.out_of_memory) {
        report_error("not enough memory to show the results");
        succeeded = false;
    }
    if (!evaluation.results.empty()) print(evaluation.results + "\n");
    app.pump();
    return succeeded && app.script_errors().size() == errors_before ? Outcome::succeeded : Outcome::failed;
}

} // namespace

Outcome evaluate(Application &app, const std::string &code, bool more_can_come) {
    const bool asks_for_value = code.starts_with('='); // an old habit of Lua's users
    const std::string expression = "return " + (asks_for_value ? code.substr(1) : code);
    const std::string expression_fault = fault_of(expression);
    if (expression_fault.empty()) return run(app, expression);
    const std::string fault = asks_for_value ? expression_fault : fault_of(code);
    if (fault.empty()) return run(app, code);
    if (more_can_come && (is_for_want_of_more(code, expression_fault) || is_for_want_of_more(code, fault)))
        return Outcome::unfinished;
    report_error(fault);
    return Outcome::failed;
}

} // namespace kelhost
