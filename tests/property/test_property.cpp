// test_property.cpp: random scripts on random applications do what the oracle expects of them.
//   test_property [SUBJECT...]                 navigation, values, geometry, lifecycle, mixed; all when none is named
//   test_property --write FOLDER [SUBJECT...]  writes cases to FOLDER/SUBJECT.cases, for replay_property
// RC_PARAMS is the generator library's: "seed=1 max_success=10000" and, after a failure, the "reproduce=..." it prints.
#include <rapidcheck.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "case_file.h"
#include "compare.h"
#include "generate.h"
#include "properties.h"

namespace {

bool holds(const Property &property) {
    Tally tally;
    unsigned long cases = 0;
    rc::Gen<RandomCase> cases_of_subject = arbitrary_case(property.subjects);
    bool passed = rc::check(property.name, [&] {
        RandomCase random_case = *cases_of_subject;
        std::string difference = first_difference(random_case, tally);
        ++cases;
        if (!difference.empty()) RC_FAIL(difference);
    });
    return conclude(property, cases, tally, stderr) && passed;
}

// A property that always holds: so the library generates as many cases, as large, as it would for the test.
void write_cases(const Property &property, const std::string &folder, const std::string &seed) {
    std::string path = folder + "/" + property.name + ".cases";
    CaseWriter file(path, property, seed);
    rc::Gen<RandomCase> cases_of_subject = arbitrary_case(property.subjects);
    bool written = rc::check(path, [&] { file.add(*cases_of_subject); });
    if (!written) throw CaseFileError(path + ": not all cases were written");
    file.finish();
}

// The library would pick a seed of its own and keep it to itself.
std::string choose_seed(std::string &parameters) {
    const std::string key = "seed=";
    if (parameters.find(key) == std::string::npos) parameters += " " + key + std::to_string(std::random_device{}());
    std::size_t begin = parameters.find(key) + key.size();
    return parameters.substr(begin, parameters.find(' ', begin) - begin);
}

struct Order {
    std::string folder; // to write cases to; empty: they are played
    std::vector<const Property *> properties;
};

// False when the arguments make no sense.
bool read_arguments(std::vector<std::string> names, Order &order) {
    if (!names.empty() && names[0] == "--write") {
        if (names.size() < 2) return false;
        order.folder = names[1];
        names.erase(names.begin(), names.begin() + 2);
    }
    for (const Property &property : all_properties())
        if (names.empty() || std::find(names.begin(), names.end(), property.name) != names.end())
            order.properties.push_back(&property);
    return names.empty() || names.size() == order.properties.size();
}

bool check_all(const Order &order) {
    bool passed = true;
    for (const Property *property : order.properties) passed = holds(*property) && passed;
    return passed;
}

void write_all(const Order &order, const std::string &seed) {
    std::filesystem::create_directories(order.folder);
    for (const Property *property : order.properties) write_cases(*property, order.folder, seed);
    std::fprintf(stderr, "cases in %s: from seed %s\n", order.folder.c_str(), seed.c_str());
}

int run(int argc, char **argv) {
    Order order;
    if (!read_arguments(std::vector<std::string>(argv + 1, argv + argc), order)) {
        std::fprintf(stderr, "usage: test_property [--write FOLDER] [SUBJECT...]\n"
                             "Subjects are navigation, values, geometry, lifecycle and mixed.\n");
        return 2;
    }
    const char *given = std::getenv("RC_PARAMS");
    std::string parameters = std::string("max_success=1000 ") + (given ? given : "");
    std::string seed = order.folder.empty() ? "" : choose_seed(parameters);
    setenv("RC_PARAMS", parameters.c_str(), 1);
    if (order.folder.empty()) return check_all(order) ? 0 : 1;
    write_all(order, seed);
    return 0;
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
