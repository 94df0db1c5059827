// properties.h: the subjects that random cases are about, and what must have come up before a run of them counts.
#pragma once

#include <cstdio>
#include <span>
#include <string_view>
#include <vector>

#include "compare.h"

struct Property {
    const char *name;
    unsigned subjects;               // of functions.h, or'ed
    std::vector<const char *> texts; // warnings and errors that must come up
};

std::span<const Property> all_properties();

// Null when there is none of that name.
const Property *property_named(std::string_view name);

// Reports how much was played. False, with what is missing, when it was enough for everything to come up and something
// did not.
bool conclude(const Property &property, unsigned long cases, const Tally &tally, std::FILE *report);
