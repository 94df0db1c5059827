// compare.h: plays a random case with the oracle and the plug-in side by side.
#pragma once

#include <map>
#include <string>

#include "random_case.h"

// What was seen, so that a test can tell that it did test.
struct Tally {
    unsigned long calls = 0;
    std::map<std::string, unsigned long> seen; // functions that went without complaint; texts of warnings and errors
};

// What differs, or nothing.
std::string first_difference(const RandomCase &random_case, Tally &tally);
