// replay.cpp: plays files of cases, and shows one that fails with what the failure does not need left out.
#include "replay.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <sstream>

#include "case_file.h"
#include "compare.h"

namespace {

struct Order {
    unsigned long at_most = ULONG_MAX;
    std::vector<std::string> files;
};

bool is_number(const std::string &text) {
    return !text.empty() && text.size() < 10 && text.find_first_not_of("0123456789") == std::string::npos;
}

// False when the arguments make no sense.
bool read_arguments(const std::vector<std::string> &arguments, Order &order) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] != "--at-most") {
            order.files.push_back(arguments[i]);
            continue;
        }
        if (++i == arguments.size() || !is_number(arguments[i])) return false;
        order.at_most = std::strtoul(arguments[i].c_str(), nullptr, 10);
    }
    auto is_option = [](const std::string &file) { return file.starts_with('-'); };
    return !order.files.empty() && std::none_of(order.files.begin(), order.files.end(), is_option);
}

bool differs(const RandomCase &random_case) {
    Tally ignored;
    return !first_difference(random_case, ignored).empty();
}

// Leaves out each part without which the case still fails. Whatever is left of a case is a case.
template <typename Part> void thin_out(RandomCase &failing, std::vector<Part> RandomCase::*parts) {
    for (std::size_t i = (failing.*parts).size(); i-- > 0;) {
        RandomCase fewer = failing;
        (fewer.*parts).erase((fewer.*parts).begin() + static_cast<std::ptrdiff_t>(i));
        if (differs(fewer)) failing = std::move(fewer);
    }
}

void show(const std::string &place, RandomCase failing, std::FILE *report) {
    thin_out(failing, &RandomCase::steps);
    thin_out(failing, &RandomCase::bricks);
    Tally ignored;
    std::ostringstream text;
    showValue(failing, text);
    text << first_difference(failing, ignored);
    std::fprintf(report, "%s: this case fails, here without what it does not need:%s", place.c_str(),
                 text.str().c_str());
}

bool play(CaseReader &file, unsigned long at_most, std::FILE *report) {
    Tally tally;
    RandomCase random_case;
    unsigned long cases = 0;
    while (cases < at_most && file.next(random_case)) {
        ++cases;
        if (first_difference(random_case, tally).empty()) continue;
        show(file.place(), random_case, report);
        return false;
    }
    if (cases == 0) {
        std::fprintf(report, "%s: there is no case in it\n", file.place().c_str());
        return false;
    }
    return conclude(file.property(), cases, tally, report);
}

// What is wrong other than a file is said with the case at which it was met.
bool holds(const std::string &path, unsigned long at_most, std::FILE *report) {
    CaseReader file(path);
    try {
        return play(file, at_most, report);
    } catch (const CaseFileError &) {
        throw;
    } catch (const std::exception &error) {
        throw CaseFileError(file.place() + ": " + error.what());
    }
}

} // namespace

int replay(const std::vector<std::string> &arguments, std::FILE *report) {
    Order order;
    if (!read_arguments(arguments, order)) {
        std::fprintf(report, "usage: replay_property [--at-most N] FILE...\n");
        return 2;
    }
    bool all_hold = true;
    try {
        for (const std::string &file : order.files) all_hold = holds(file, order.at_most, report) && all_hold;
    } catch (const std::exception &error) {
        std::fprintf(report, "%s\n", error.what());
        return 2;
    }
    return all_hold ? 0 : 1;
}
