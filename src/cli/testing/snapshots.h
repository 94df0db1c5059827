// snapshots.h: texts that a test file keeps beside itself, to be compared with what is shown now.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace kelhost {

class Snapshots {
public:
    // Those of tests/climate_spec.lua are tests/snapshots/climate_spec/NAME.txt. update: store what is compared.
    Snapshots(const std::string &test_file, bool update);

    // Why the text is not the stored one, with the lines that differ; "" when it is. With update the first text of a
    // name is stored.
    std::string compare(const std::string &name, const std::string &text);

    // Stored files that were not compared with anything, sorted.
    std::vector<std::string> unused() const;

private:
    std::string store(const std::string &file, const std::string &text) const;

    std::string folder_;
    bool update_;
    std::set<std::string> used_; // files
};

} // namespace kelhost
