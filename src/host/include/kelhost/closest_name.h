// closest_name.h: guesses which name the writer of an application file meant.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelhost {

// Offered one name after the other, remembers the one that is spelt most like the wanted name. Upper and lower case are
// not told apart. Of names with dots each component must be alike: "main.ok" is not nearly "main.no".
class ClosestName {
public:
    explicit ClosestName(std::string_view wanted);

    void offer(std::string_view name);

    // The first of the closest names; "" when none is near: when more than three letters or a third of them differ.
    const std::string &found() const noexcept { return found_; }

    // `, did you mean "width"?`, or `, expected ` and what was expected when no name is near.
    std::string text(std::string_view expected) const;

private:
    std::string lower_; // the wanted name in lower case; "" when it is too long to be compared
    std::string found_;
    std::size_t least_; // letters in which the next to be found must differ less
};

} // namespace kelhost
