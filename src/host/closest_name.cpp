// closest_name.cpp: edit distance between names.
#include <kelhost/closest_name.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "wording.h"

namespace kelhost {

namespace {

// Longer names are nobody's slip of the pen, and would cost too much to compare.
constexpr std::size_t longest = 64;

using Row = std::array<std::size_t, longest + 1>;

std::string lower_case(std::string_view name) {
    std::string lower(name);
    for (char &letter : lower)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return lower;
}

// How many letters must be added, dropped, changed or swapped with their neighbour to get from one text to the other.
std::size_t distance(std::string_view from, std::string_view to) {
    Row before{};
    Row above{};
    Row row{};
    for (std::size_t j = 0; j <= to.size(); ++j) above[j] = j;
    for (std::size_t i = 1; i <= from.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t change = from[i - 1] == to[j - 1] ? 0 : 1;
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + change});
            const bool swapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
            if (swapped) row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = std::exchange(above, row);
    }
    return above[to.size()];
}

// In how many letters two components differ; nothing when they are not alike.
std::optional<std::size_t> difference(std::string_view wanted, std::string_view name) {
    if (wanted == name) return 0;
    const std::size_t most = std::min<std::size_t>(wanted.size() / 3, 3);
    const std::size_t lengths_differ = std::max(wanted.size(), name.size()) - std::min(wanted.size(), name.size());
    if (lengths_differ > most) return std::nullopt;
    const std::size_t letters_differ = distance(wanted, name);
    return letters_differ <= most ? std::optional(letters_differ) : std::nullopt;
}

// Takes the first component off the name, which is left without it and its dot.
std::string_view take_component(std::string_view &name) {
    const std::string_view component = name.substr(0, name.find('.'));
    name.remove_prefix(std::min(component.size() + 1, name.size()));
    return component;
}

std::optional<std::size_t> difference_by_component(std::string_view wanted, std::string_view name) {
    std::size_t sum = 0;
    while (!wanted.empty() && !name.empty()) {
        const auto letters = difference(take_component(wanted), take_component(name));
        if (!letters) return std::nullopt;
        sum += *letters;
    }
    return wanted.empty() && name.empty() ? std::optional(sum) : std::nullopt;
}

} // namespace

ClosestName::ClosestName(std::string_view wanted)
    : lower_(wanted.size() <= longest ? lower_case(wanted) : ""), least_(longest) {}

void ClosestName::offer(std::string_view name) {
    if (lower_.empty() || name.empty() || name.size() > longest) return;
    const auto letters = difference_by_component(lower_, lower_case(name));
    if (!letters || *letters >= least_) return;
    least_ = *letters;
    found_ = name;
}

std::string ClosestName::text(std::string_view expected) const {
    if (found_.empty()) return ", expected " + std::string(expected);
    return ", did you mean " + quoted(found_) + "?";
}

} // namespace kelhost
