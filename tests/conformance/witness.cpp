// witness.cpp: judges what comes of a test whose requests for memory are refused.
#include "witness.h"

#include <algorithm>
#include <utility>

#include <lua.hpp>

namespace conformance {

namespace {

// How much of a test is run behind the run that met the first refusal.
constexpr unsigned runs_that_follow = 8;

// Ends a test early: nothing of Lua's is on the C stack between the suite and its sessions.
struct Enough {};

const std::string out_of_memory = "not enough memory";

// Where a script catches errors itself, what it then gives is its own affair.
constexpr const char *catches_errors[] = {"pcall", "coroutine", "loadstring"};

// What is said where a name or list cannot be made. These two give nothing without a word.
constexpr const char *name_texts[] = {"warning: Object has no qualified name",
                                      "warning: DOM Object has no qualified name"};
constexpr const char *list_texts[] = {"warning: No such object in DOM"};
constexpr const char *silent_lists[] = {"get_screens", "get_layers"};

// Lua's own words for code that goes on with nil where an object was expected, and for a script's own check.
constexpr const char *follow_up_errors[] = {"attempt to ", "bad argument #", "assertion failed!"};

// Reads, writes, lists, clones and deletes, in a part of the model that tests leave alone.
constexpr const char *probe_code =
    "local lone = keldom.get_object('spare.lone') lone:set_x(7) local x = lone:get_x() lone:set_x(0)"
    " local copy = lone:clone('probe', 'spare') local name = copy:get_name() copy:delete()"
    " return lone, x, lone:get_x(), name, lone:get_parents(), keldom.get_object('spare'):get_children(),"
    " #keldom.get_layers(), #keldom.get_screens(), #lone:get_variables()";

const Lines probe_answers = {"<control_object spare.lone>",
                             "7",
                             "0",
                             "\"spare.probe\"",
                             "{<layer_object spare>}",
                             "{<control_object spare.lone>}",
                             "3",
                             "3",
                             "5"};

Lines said_now() {
    Lines said;
    for (int i = 0; i < kc_call_count(); ++i) {
        const std::string line = kc_call(i);
        if (line.starts_with("warning: ") || line.starts_with("log ") || line.starts_with("error: "))
            said.push_back(line);
    }
    return said;
}

template <typename Texts> bool contains_any(const std::string &code, const Texts &texts) {
    return std::any_of(std::begin(texts), std::end(texts),
                       [&](const char *text) { return code.find(text) != std::string::npos; });
}

template <typename Texts> bool says_any(const Lines &said, const Texts &texts) {
    return std::any_of(std::begin(texts), std::end(texts),
                       [&](const char *text) { return std::find(said.begin(), said.end(), text) != said.end(); });
}

bool same(const Witness::Run &a, const Witness::Run &b) {
    return a.outcome.ok == b.outcome.ok && a.outcome.results == b.outcome.results && a.outcome.error == b.outcome.error
           && a.said == b.said;
}

std::string joined(const Lines &lines) {
    std::string text;
    for (const std::string &line : lines) text += (text.empty() ? "" : ", ") + line;
    return "(" + text + ")";
}

std::string description(const Witness::Run &run) {
    return (run.outcome.ok ? joined(run.outcome.results) : "error: " + run.outcome.error) + " after "
           + joined(run.said);
}

} // namespace

void Witness::begin() {
    course_ = {};
    faults_.clear();
    run_ = session_ = 0;
    runs_after_ = 0;
}

void Witness::learn() {
    begin();
    learning_ = true;
    plan_refusal(nullptr);
}

void Witness::judge(const Refusal &refusal, const Course &course) {
    begin();
    learning_ = false;
    refusal_ = refusal;
    expected_ = &course;
    plan_refusal(&refusal);
}

void Witness::session_starts(Session &session) {
    L_ = session.lua();
    watch_allocator(L_);
}

void Witness::call_starts() {
    if (probing_) return;
    refused_before_ = refused_requests();
    admit_refusals();
}

void Witness::call_ends() { end_refusals(); }

void Witness::run_ends(const std::string &code, const Outcome &outcome) {
    if (probing_) {
        probe_results_ = outcome.ok ? outcome.results : Lines{"error: " + outcome.error};
        return;
    }
    Run run{outcome, said_now()};
    if (learning_)
        learn_run(std::move(run));
    else
        judge_run(code, run);
    ++run_;
    if (!learning_) end_test_soon();
}

void Witness::learn_run(Run run) {
    known_.insert(run.said.begin(), run.said.end());
    if (!run.outcome.ok) known_.insert(run.outcome.error);
    course_.runs.push_back(std::move(run));
}

void Witness::judge_run(const std::string &code, const Run &run) {
    for (const std::string &line : run.said)
        if (!known_.contains(line)) fault("said what no test expects: " + line);
    const std::string &error = run.outcome.error;
    const bool expected = run.outcome.ok || known_.contains(error)
                          || (refusal_.kind == lua_request && error == out_of_memory)
                          || std::any_of(std::begin(follow_up_errors), std::end(follow_up_errors),
                                         [&](const char *text) { return error.starts_with(text); });
    if (!expected) fault("raised what no test expects: " + error);
    if (refused_before_ == 0 && refused_requests() > 0)
        judge_interrupted(code, run, run_ < expected_->runs.size() ? &expected_->runs[run_] : nullptr);
    judge_holds();
    if (refused_requests() > 0) collect_with_application();
}

// Kept by the plug-in: a handle that is collected while there is no application raises, and its name is lost. A test
// that hides the application has seen to it that there is no garbage, but not of what failed.
void Witness::collect_with_application() const {
    const int hidden = kc_is_application_hidden();
    kc_hide_application(0);
    lua_gc(L_, LUA_GCCOLLECT, 0);
    kc_hide_application(hidden);
}

// The first run that met a refusal.
void Witness::judge_interrupted(const std::string &code, const Run &run, const Run *undisturbed) {
    const bool unnoticed = undisturbed != nullptr && same(run, *undisturbed);
    switch (refusal_.kind) {
    case KC_STRDUP:
    case KC_REALLOC:
        if (unnoticed || says_any(run.said, name_texts)) return;
        fault("gave " + description(run) + ", expected " + name_texts[0]);
        return;
    case KC_LIST:
        if (unnoticed || says_any(run.said, list_texts) || contains_any(code, silent_lists)) return;
        fault("gave " + description(run) + ", expected " + list_texts[0]);
        return;
    case lua_request:
        if (run.outcome.error == out_of_memory || contains_any(code, catches_errors)) return;
        fault("gave " + description(run) + ", expected error: " + out_of_memory);
        return;
    default: // a shorter list, or what a host makes of it: known texts
        return;
    }
}

void Witness::end_test_soon() {
    if (refused_requests() > 0 && ++runs_after_ > runs_that_follow) throw Enough{};
}

// An error of Lua's that passes through a batch of writes leaves its bracket open, which the host closes when the
// script has ended. Nothing else may.
void Witness::judge_holds() {
    if (kc_open_holds() == 0) return;
    if (refusal_.kind == lua_request && refused_requests() > refused_before_)
        ++cut_brackets_;
    else
        fault("left " + std::to_string(kc_open_holds()) + " hold(s) open");
    kc_close_holds();
}

bool Witness::probe_gives_what_it_should(Session &session) {
    probing_ = true;
    session.run(probe_code);
    session.calls(); // its warnings are no test's
    probing_ = false;
    return probe_results_ == probe_answers;
}

void Witness::session_ends(Session &session) {
    release_allocator(L_);
    if (learning_) {
        course_.sound.push_back(probe_gives_what_it_should(session));
    } else if (refused_requests() == 0) {
        // as it was learnt
    } else if (session_ < expected_->sound.size() && expected_->sound[session_]) {
        ++probes_;
        if (!probe_gives_what_it_should(session))
            fault("with memory again, the probe gives " + joined(probe_results_) + ", expected "
                  + joined(probe_answers));
    } else {
        ++unsound_;
    }
    ++session_;
}

void Witness::session_ended(const Remains &left) {
    const std::pair<const char *, int> accounts[] = {
        {"block(s)",                left.blocks      },
        {"list(s)",                 left.lists       },
        {"hold(s)",                 left.holds       },
        {"value(s) on Lua's stack", left.stack_height},
    };
    for (const auto &[what, count] : accounts)
        if (count != 0) fault("left " + std::to_string(count) + " " + what);
    if (left.violations != 0) fault("broke the interface: " + left.last_violation);
}

} // namespace conformance
