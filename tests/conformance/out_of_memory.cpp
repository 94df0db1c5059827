// out_of_memory.cpp: runs each test case of the suite once for each request for memory that it makes, with that request
// refused, and once with all of that kind refused from there on. See docs/host-conformance.md.
#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <unistd.h>

#include <lua.hpp>

#include "witness.h"

using namespace conformance;

namespace {

struct Options {
    unsigned long every = 1;    // how many failures of a kind, of which one is tried
    int kind = -1;              // -1: every kind
    unsigned long seconds = 60; // that a test case may take
    std::size_t test_case = 0;  // from 1, and its one failure; 0: all
    Refusal refusal;
};

// A test case without refusals.
struct Case {
    std::string file;
    std::string name;
    RequestCounts requests{};
    Witness::Course course;
};

struct Tally {
    unsigned long requests = 0;
    unsigned long failures = 0;
    unsigned long survived = 0;
};

constexpr unsigned most_faults = 20; // enough to begin with

std::string file_name(const char *path) {
    const char *slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

class Campaign {
public:
    explicit Campaign(const Options &options) : options_(options) {}

    // Exit status.
    int run();

    // For the reporter.
    void case_starts(const doctest::TestCaseData &data);
    void case_ends();

    // Where the program is, should it die there.
    void tell_place() const;

private:
    bool learn();
    void try_all();
    void try_kind(std::size_t number, int kind);
    void try_failure(std::size_t number, const Refusal &refusal);
    int try_one();
    void show_fault(std::size_t number, const Refusal &refusal, const std::string &fault);
    int summarize() const;

    Options options_;
    Witness witness_;
    std::vector<Case> cases_;
    bool learning_ = true;
    Tally tallies_[request_kinds];
    unsigned long turn_ = 0; // counts requests of a kind
    unsigned long faults_ = 0;
    std::size_t number_ = 0;
    Refusal refusal_;
};

Campaign *campaign = nullptr;

// Tests are expected to fail: their checks are not shown.
class Muted : public doctest::IReporter {
public:
    explicit Muted(const doctest::ContextOptions &) {}
    void test_case_start(const doctest::TestCaseData &data) override { campaign->case_starts(data); }
    void test_case_end(const doctest::CurrentTestCaseStats &) override { campaign->case_ends(); }
    void test_case_exception(const doctest::TestCaseException &exception) override {
        if (exception.is_crash) campaign->tell_place();
    }

    void report_query(const doctest::QueryData &) override {}
    void test_run_start() override {}
    void test_run_end(const doctest::TestRunStats &) override {}
    void test_case_reenter(const doctest::TestCaseData &) override {}
    void subcase_start(const doctest::SubcaseSignature &) override {}
    void subcase_end() override {}
    void log_assert(const doctest::AssertData &) override {}
    void log_message(const doctest::MessageData &) override {}
    void test_case_skipped(const doctest::TestCaseData &) override {}
};

REGISTER_REPORTER("muted", 1, Muted);

// number: from 1; 0 for all. Whether all tests pass.
bool run_tests(std::size_t number, const char *reporter) {
    doctest::Context context;
    context.addFilter("reporters", reporter);
    context.setOption("first", static_cast<int>(number));
    context.setOption("last", static_cast<int>(number));
    context.setOption("no-breaks", true);
    context.setOption("no-intro", true);
    return context.run() == 0;
}

void Campaign::case_starts(const doctest::TestCaseData &data) {
    if (!learning_) return;
    cases_.push_back({file_name(data.m_file.c_str()), data.m_name, {}, {}});
    witness_.learn();
}

void Campaign::case_ends() {
    if (!learning_) return;
    cases_.back().requests = requests();
    cases_.back().course = witness_.take_course();
}

void Campaign::tell_place() const {
    std::fflush(stdout);
    if (learning_) {
        std::fprintf(stderr, "died before any request was refused\n");
        return;
    }
    const Case &one = cases_[number_ - 1];
    std::fprintf(stderr, "died in %s: \"%s\" with --test-case=%lu --kind=%s --request=%lu%s\n", one.file.c_str(),
                 one.name.c_str(), static_cast<unsigned long>(number_), request_names[refusal_.kind], refusal_.request,
                 refusal_.and_all_after ? " --and-all-after" : "");
}

bool Campaign::learn() {
    learning_ = true;
    const bool passed = run_tests(0, "muted");
    learning_ = false;
    if (!passed || cases_.empty())
        std::printf("the suite fails without any failure of memory: run conformance_* first\n");
    return passed && !cases_.empty();
}

void Campaign::show_fault(std::size_t number, const Refusal &refusal, const std::string &fault) {
    ++faults_;
    const Case &one = cases_[number - 1];
    std::printf("%s: \"%s\": %s\n    --test-case=%lu --kind=%s --request=%lu%s\n", one.file.c_str(), one.name.c_str(),
                fault.c_str(), static_cast<unsigned long>(number), request_names[refusal.kind], refusal.request,
                refusal.and_all_after ? " --and-all-after" : "");
}

void Campaign::try_failure(std::size_t number, const Refusal &refusal) {
    number_ = number;
    refusal_ = refusal;
    witness_.judge(refusal, cases_[number - 1].course);
    alarm(static_cast<unsigned>(options_.seconds));
    run_tests(number, "muted");
    alarm(0);
    Lines faults = witness_.take_faults();
    if (refused_requests() == 0) faults.push_back("never came to this request");
    Tally &tally = tallies_[refusal.kind];
    ++tally.failures;
    tally.survived += faults.empty();
    for (const std::string &fault : faults) show_fault(number, refusal, fault);
}

void Campaign::try_kind(std::size_t number, int kind) {
    const unsigned long count = cases_[number - 1].requests[static_cast<std::size_t>(kind)];
    tallies_[kind].requests += count;
    for (unsigned long request = 0; request < count && faults_ < most_faults; ++request) {
        const unsigned long turn = turn_++ % options_.every;
        if (turn == 0) try_failure(number, {kind, request, false});
        if (turn == options_.every / 2) try_failure(number, {kind, request, true});
    }
}

void Campaign::try_all() {
    for (int kind = 0; kind < request_kinds; ++kind) {
        if (options_.kind >= 0 && kind != options_.kind) continue;
        turn_ = 0;
        for (std::size_t number = 1; number <= cases_.size(); ++number) try_kind(number, kind);
    }
}

// Shows what the test's own checks say, too.
int Campaign::try_one() {
    number_ = options_.test_case;
    refusal_ = options_.refusal;
    refusal_.kind = options_.kind;
    if (number_ > cases_.size()) {
        std::printf("there are %lu test cases\n", static_cast<unsigned long>(cases_.size()));
        return EXIT_FAILURE;
    }
    witness_.judge(refusal_, cases_[number_ - 1].course);
    run_tests(number_, "console");
    for (const std::string &fault : witness_.take_faults()) show_fault(number_, refusal_, fault);
    std::printf("%lu refused, %lu faults\n", refused_requests(), faults_);
    return faults_ == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

int Campaign::summarize() const {
    Tally all;
    std::printf("%s: %lu test cases, one of %lu failures tried\n", kc_host_name(),
                static_cast<unsigned long>(cases_.size()), options_.every);
    for (int kind = 0; kind < request_kinds; ++kind) {
        const Tally &tally = tallies_[kind];
        std::printf("  %-16s %7lu requests  %7lu failures  %7lu survived\n", request_names[kind], tally.requests,
                    tally.failures, tally.survived);
        all.failures += tally.failures;
        all.survived += tally.survived;
    }
    std::printf("  %lu times the probe was run after it; %lu sessions had been taken apart by their tests\n",
                witness_.probes(), witness_.unsound());
    std::printf("  %lu brackets that an error of Lua's left open were closed as a host does\n",
                witness_.cut_brackets());
    if (all.survived == all.failures && faults_ == 0) {
        std::printf("all %lu failures survived\n", all.failures);
        return EXIT_SUCCESS;
    }
    std::printf("%lu of %lu failures NOT survived, %lu faults%s\n", all.failures - all.survived, all.failures, faults_,
                faults_ < most_faults ? "" : ": stopped here");
    return EXIT_FAILURE;
}

int Campaign::run() {
    set_observer(&witness_);
    if (!learn()) return EXIT_FAILURE;
    if (options_.test_case != 0) return try_one();
    try_all();
    return summarize();
}

// Whether the argument is NAME=NUMBER.
bool take_number(const char *argument, const char *name, unsigned long &number) {
    const std::size_t length = std::strlen(name);
    if (std::strncmp(argument, name, length) != 0 || argument[length] != '=') return false;
    char *end = nullptr;
    number = std::strtoul(argument + length + 1, &end, 10);
    return end != argument + length + 1 && *end == '\0';
}

bool take_kind(const char *argument, int &kind) {
    constexpr const char *name = "--kind=";
    if (std::strncmp(argument, name, std::strlen(name)) != 0) return false;
    for (kind = 0; kind < request_kinds; ++kind)
        if (std::strcmp(argument + std::strlen(name), request_names[kind]) == 0) return true;
    return false;
}

bool take_argument(const char *argument, Options &options) {
    unsigned long test_case = 0;
    if (std::strcmp(argument, "--and-all-after") == 0) {
        options.refusal.and_all_after = true;
        return true;
    }
    if (take_number(argument, "--test-case", test_case)) {
        options.test_case = test_case;
        return true;
    }
    return take_kind(argument, options.kind) || take_number(argument, "--request", options.refusal.request)
           || take_number(argument, "--seconds", options.seconds)
           || (take_number(argument, "--every", options.every) && options.every > 0);
}

// A test case without an end is at its end.
void end_endless(int) {
    std::fputs("took too long\n", stderr);
    std::abort();
}

} // namespace

// A sanitizer's report is to end like any other crash, so that the place is told.
extern "C" {
const char *__asan_default_options() { return "abort_on_error=1"; }
const char *__ubsan_default_options() { return "abort_on_error=1:print_stacktrace=1"; }
}

int main(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        if (take_argument(argv[i], options)) continue;
        std::fprintf(stderr,
                     "usage: %s [--every=NUMBER] [--kind=KIND] [--seconds=NUMBER]\n"
                     "       %s --test-case=NUMBER --kind=KIND --request=NUMBER [--and-all-after]\n",
                     argv[0], argv[0]);
        return 2;
    }
    Campaign all(options);
    campaign = &all;
    std::signal(SIGALRM, end_endless);
    if (options.test_case != 0 && options.kind < 0) return 2;
    return all.run();
}
