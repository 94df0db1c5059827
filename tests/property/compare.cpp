// compare.cpp: results, calls of the host and what stays alive, after each action.
#include "compare.h"

#include "plugin_session.h"

static std::string listed(const std::vector<std::string> &lines) {
    if (lines.empty()) return " nothing\n";
    std::string text = "\n";
    for (const std::string &line : lines) text += "    " + line + "\n";
    return text;
}

static std::string against(const char *what, const std::vector<std::string> &expected,
                           const std::vector<std::string> &seen) {
    if (expected == seen) return "";
    return std::string("  expected ") + what + ":" + listed(expected) + "  seen " + what + ":" + listed(seen);
}

static void count(const Action &action, const Outcome &outcome, Tally &tally) {
    if (action.event != Step::call || action.is_preparation) return;
    ++tally.calls;
    bool complained = false;
    for (const std::string &line : outcome.lines) {
        if (!line.starts_with("kel_app_log(") && !line.starts_with("kl_lua_error(")) continue;
        complained = true;
        std::size_t begin = line.find('"');
        ++tally.seen[line.substr(begin + 1, line.rfind('"') - begin - 1)];
    }
    if (!complained) ++tally.seen[action.function];
}

std::string first_difference(const RandomCase &random_case, Tally &tally) {
    Description description = build_description(random_case.bricks);
    PluginSession session(description, random_case.errors_return);
    std::string difference;
    rehearse(random_case, description, [&](const Action &action, const Outcome &expected, int live_names) {
        Outcome seen = session.perform(action);
        difference = against("results", expected.results, seen.results)
                     + against("calls of the host", expected.lines, seen.lines) + session.complaint();
        if (session.live_names() != live_names)
            difference += "  names alive: expected " + std::to_string(live_names) + ", seen "
                          + std::to_string(session.live_names()) + "\n";
        if (!difference.empty()) difference = "at " + action_text(action, description) + "\n" + difference;
        count(action, expected, tally);
        return difference.empty();
    });
    std::string remains = session.close();
    return difference.empty() && !remains.empty() ? "at the end: " + remains : difference;
}
