// fault_report.h: collects faults of meaning, and keeps back those that follow from what could not be read.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

#include <kelhost/diagnostic.h>

#include "place.h"

namespace kelhost {

class FaultReport {
public:
    // faults: what was reported about the file already; new faults are appended.
    FaultReport(const std::string &file, Diagnostics &faults);

    // Reports the fault unless what stands at the place, or holds it, was reported before: then the description has a
    // stopgap there, not what the file says.
    void add(const Place &place, std::string message);

    // Whether the place, or what holds it, was reported before the check began.
    bool is_unreadable(const Place &place) const;

    // Whether something that could not be read may have held objects or variables of any name.
    bool may_lack_names() const noexcept { return may_lack_names_; }

    // Whether a guess at what was meant is worth its cost: looking through thousands of names for thousands of faults
    // is not.
    bool may_guess() noexcept { return guesses_left_ > 0 && guesses_left_-- > 0; }

private:
    const std::string &file_;
    Diagnostics &faults_;
    std::unordered_set<std::string> unreadable_; // JSON paths
    bool may_lack_names_ = false;
    int guesses_left_ = 100;
};

} // namespace kelhost
