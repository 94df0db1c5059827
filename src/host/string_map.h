// string_map.h: the map behind kl_string_map_t: keeps the order of insertion.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <tsl/ordered_map.h>

#include <kel/kel.h>

namespace kelhost {

// Lets look-ups take a C string without making a std::string.
struct StringHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
};

template <typename Mapped> using OrderedStringMap = tsl::ordered_map<std::string, Mapped, StringHash, std::equal_to<>>;

} // namespace kelhost

struct _kl_string_map {
    kelhost::OrderedStringMap<void *> entries;
};
