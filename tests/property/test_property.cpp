// test_property.cpp: random scripts on random applications do what the oracle expects of them.
//   test_property [SUBJECT...]     navigation, values, geometry, lifecycle, mixed; all when none is named
// RC_PARAMS is the generator library's: "seed=1 max_success=10000" and, after a failure, the "reproduce=..." it prints.
#include <rapidcheck.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "compare.h"
#include "functions.h"
#include "generate.h"

namespace {

struct Property {
    const char *name;
    unsigned subjects;
    std::vector<const char *> texts; // warnings and errors that must have come up, for the test to be worth its name
};

const std::vector<Property> properties{
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

constexpr unsigned enough_cases = 800; // for the tally to be held against the lists

// Whether everything that the property is about came up at all.
bool is_complete(const Property &property, const Tally &tally) {
    bool complete = true;
    auto require = [&](const char *text) {
        if (tally.seen.contains(text)) return;
        std::fprintf(stderr, "%s: \"%s\" never came up\n", property.name, text);
        complete = false;
    };
    for (const Function &function : all_functions())
        if (function.subjects & property.subjects && std::string(function.name) != "__gc") require(function.name);
    for (const char *text : property.texts) require(text);
    return complete;
}

bool holds(const Property &property) {
    Tally tally;
    unsigned cases = 0;
    rc::Gen<RandomCase> cases_of_subject = arbitrary_case(property.subjects);
    bool passed = rc::check(property.name, [&] {
        RandomCase random_case = *cases_of_subject;
        std::string difference = first_difference(random_case, tally);
        ++cases;
        if (!difference.empty()) RC_FAIL(difference);
    });
    std::fprintf(stderr, "%s: %u sequences of %lu calls in all\n", property.name, cases, tally.calls);
    return passed && (cases < enough_cases || is_complete(property, tally));
}

bool is_wanted(const Property &property, int argc, char **argv) {
    for (int i = 1; i < argc; ++i)
        if (property.name == std::string(argv[i])) return true;
    return argc == 1;
}

int run(int argc, char **argv) {
    const char *given = std::getenv("RC_PARAMS");
    std::string parameters = std::string("max_success=1000 ") + (given ? given : "");
    setenv("RC_PARAMS", parameters.c_str(), 1);
    int wanted = 0;
    bool passed = true;
    for (const Property &property : properties) {
        if (!is_wanted(property, argc, argv)) continue;
        ++wanted;
        passed = holds(property) && passed;
    }
    if (wanted != (argc == 1 ? static_cast<int>(properties.size()) : argc - 1)) {
        std::fprintf(stderr, "test_property: subjects are navigation, values, geometry, lifecycle and mixed\n");
        return 2;
    }
    return passed ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "test_property: %s\n", error.what());
        return 2;
    }
}
