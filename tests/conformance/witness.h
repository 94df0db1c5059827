// witness.h: judges what comes of a test whose requests for memory are refused. The test's own checks say nothing then,
// as its results are others; so it is watched once without refusals, and then held against that.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "refusals.h"

namespace conformance {

class Witness : public Observer {
public:
    // Begins a test case. Learning, nothing is refused, and whatever is logged or raised is known from then on.
    // Judging, `refusal` is planned, and what was learnt of the same test case is the course that it would take.
    struct Course;
    void learn();
    void judge(const Refusal &refusal, const Course &course);

    // What was learnt or found since the last learn() or judge().
    Course take_course() { return std::move(course_); }
    Lines take_faults() { return std::move(faults_); }

    unsigned long probes() const { return probes_; }             // of all sessions that were judged
    unsigned long unsound() const { return unsound_; }           // sessions that tests took apart: not probed
    unsigned long cut_brackets() const { return cut_brackets_; } // that an error of Lua's left open

    struct Run {
        Outcome outcome;
        Lines said; // warnings, other lines of the log, and errors
    };
    struct Course {
        std::vector<Run> runs;
        std::vector<bool> sound; // by session: whether the probe gives what it should at its end
    };

    void session_starts(Session &session) override;
    void call_starts() override;
    void call_ends() override;
    void run_ends(const std::string &code, const Outcome &outcome) override;
    void session_ends(Session &session) override;
    void session_ended(const Remains &left) override;

private:
    void begin();
    void learn_run(Run run);
    void judge_run(const std::string &code, const Run &run);
    void judge_interrupted(const std::string &code, const Run &run, const Run *undisturbed);
    void judge_holds();
    void collect_with_application() const;
    void end_test_soon();
    bool probe_gives_what_it_should(Session &session);
    void fault(const std::string &text) { faults_.push_back(text); }

    lua_State *L_ = nullptr; // of the session
    bool learning_ = true;
    bool probing_ = false;
    Refusal refusal_;
    Course course_;                    // being learnt
    const Course *expected_ = nullptr; // to judge by
    std::size_t run_ = 0;
    std::size_t session_ = 0;
    unsigned long refused_before_ = 0; // this run
    unsigned runs_after_ = 0;          // the interrupted one
    std::set<std::string> known_;
    Lines faults_;
    Lines probe_results_;
    unsigned long probes_ = 0;
    unsigned long unsound_ = 0;
    unsigned long cut_brackets_ = 0;
};

} // namespace conformance
