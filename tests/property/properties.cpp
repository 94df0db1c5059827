// properties.cpp: the subjects of random cases.
#include "properties.h"

#include <string>

#include "functions.h"

static const std::vector<Property> properties{
    {"navigation",
     navigation,                                               {"This function should have exactly one argument", "Invalid argument, no application pointer",
      "Invalid call, no application pointer", "Argument must be a string", "Argument must be a keldom_object",
      "Argument must be a string or keldom_object", "Argument must be a valid fully qualified name",
      "No such object in DOM", "Object has no qualified name", "Object is not a layer instance"}     },
    {"values",
     values,                                                   {"Invalid argument, cannot access data manager", "Argument must be a table", "Argument 2 must be a string",
      "Argument 2 must be a number", "Argument 3 must be a number", "Argument 3 must be a string",
      "This function expects at least 2 arguments (self, key, ...)",
      "This function expects at least 3 arguments (self, k, v, ...)", "DOM Object has no qualified name"}},
    {"geometry",
     geometry,                                                 {"Invalid argument, cannot access data manager", "Argument 2 must be an integer", "Argument 3 must be an integer",
      "Argument 4 must be an integer", "Argument 3 must be kel.LEFT, kel.CENTER or kel.RIGHT",
      "Argument 3 must be kel.TOP, kel.CENTER or kel.BOTTOM", "Argument 4 must be kel.LEFT, kel.CENTER or kel.RIGHT",
      "Argument 5 must be kel.TOP, kel.CENTER or kel.BOTTOM", "This function expects 2 arguments (self, x)",
      "This function expects 2 arguments (self, height)",
      "This function expects at least 3 arguments (self, width, height)",
      "This function expects 5 arguments (self, x, y, width, height)"}                                 },
    {"lifecycle",
     lifecycle,                                                {"This function expects 3 or 4 arguments (self, name, parent_name, data(optional))", "No such object in DOM",
      "Object has no qualified name"}                                                                 },
    {"mixed",      navigation | values | geometry | lifecycle, {}                                                    },
};

static constexpr unsigned long enough_cases = 800; // for the tally to be held against the lists

std::span<const Property> all_properties() { return properties; }

const Property *property_named(std::string_view name) {
    for (const Property &property : properties)
        if (property.name == name) return &property;
    return nullptr;
}

static bool is_complete(const Property &property, const Tally &tally, std::FILE *report) {
    bool complete = true;
    auto require = [&](const char *text) {
        if (tally.seen.contains(text)) return;
        std::fprintf(report, "%s: \"%s\" never came up\n", property.name, text);
        complete = false;
    };
    for (const Function &function : all_functions())
        if (function.subjects & property.subjects && std::string_view(function.name) != "__gc") require(function.name);
    for (const char *text : property.texts) require(text);
    return complete;
}

bool conclude(const Property &property, unsigned long cases, const Tally &tally, std::FILE *report) {
    std::fprintf(report, "%s: %lu sequences of %lu calls in all\n", property.name, cases, tally.calls);
    return cases < enough_cases || is_complete(property, tally, report);
}
