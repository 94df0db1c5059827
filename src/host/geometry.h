// geometry.h: numbers of variables and descriptions as the 16-bit coordinates of records.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include <kel/kel.h>

namespace kelhost {

// The nearest number that a record's field can hold; 0 for what is no number at all.
template <typename Field> Field to_field(double number) noexcept {
    using Limits = std::numeric_limits<Field>;
    if (std::isnan(number)) return 0;
    return static_cast<Field>(std::clamp<double>(number, Limits::min(), Limits::max()));
}

inline std::int16_t to_coordinate(double number) noexcept { return to_field<std::int16_t>(number); }

inline kl_render_rect_t make_rect(std::int16_t left, std::int16_t top, kl_render_size_t size) noexcept {
    return {left, top, to_coordinate(left + size.width), to_coordinate(top + size.height)};
}

inline kl_render_size_t make_size(double width, double height) noexcept {
    return {to_coordinate(width), to_coordinate(height)};
}

} // namespace kelhost
