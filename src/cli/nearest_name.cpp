// nearest_name.cpp: edit distance between names.
#include "nearest_name.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace kelhost {

namespace {

// How many characters must be added, dropped or changed to get from one text to the other.
std::size_t edit_distance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size()
                                 + 1); // distances from the first i characters of `from` to each prefix of `to`
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t change = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({change, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string nearest_name(std::string_view wanted, const std::vector<std::string> &names) {
    std::string nearest;
    std::size_t least = wanted.size() / 3 + 1;
    for (const std::string &name : names) {
        const std::size_t distance = edit_distance(wanted, name);
        if (distance >= least) continue;
        least = distance;
        nearest = name;
    }
    return nearest;
}

} // namespace kelhost
