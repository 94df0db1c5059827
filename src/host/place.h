// place.h: where in an application file something stands, for messages.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelhost {

// A JSON path as a chain of steps on the stack, so that walking a file costs no memory; text is made only for a fault.
// REQUIRES: a place lives no longer than the place that it was made from, and than the member names on its way.
class Place {
public:
    Place() noexcept = default; // the file's top

    Place member(std::string_view name) const noexcept { return {this, name, 0, false}; }
    Place item(std::size_t index) const noexcept { return {this, {}, index, true}; }

    // "$", "$.layers[0].children[2].x"; a name that is no identifier reads $.variables["a b"].
    std::string path() const;

private:
    Place(const Place *above, std::string_view name, std::size_t index, bool is_item) noexcept
        : above_(above), name_(name), index_(index), is_item_(is_item) {}

    const Place *above_ = nullptr;
    std::string_view name_;
    std::size_t index_ = 0;
    bool is_item_ = false;
};

} // namespace kelhost
