// value.cpp: the names, ranges and texts of data types and values. The one table of the types.
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>

#include <kelhost/value.h>

namespace kelhost {

namespace {

struct TypeTraits {
    const char *name;
    double smallest;
    double largest;
};

template <typename Number> constexpr TypeTraits traits_of(const char *name) {
    return {name, static_cast<double>(std::numeric_limits<Number>::lowest()),
            static_cast<double>(std::numeric_limits<Number>::max())};
}

// In the order of DataType.
constexpr std::array<TypeTraits, data_type_count> types = {
    {
     traits_of<std::int8_t>("i8"),
     traits_of<std::uint8_t>("u8"),
     traits_of<std::int16_t>("i16"),
     traits_of<std::uint16_t>("u16"),
     traits_of<std::int32_t>("i32"),
     traits_of<std::uint32_t>("u32"),
     traits_of<double>("f64"),
     {"string", 0, 0},
     }
};
static_assert(static_cast<int>(DataType::string) + 1 == data_type_count, "one row a type");

const TypeTraits &traits_of(DataType type) { return types[static_cast<std::size_t>(type)]; }

} // namespace

const char *data_type_name(DataType type) noexcept { return traits_of(type).name; }

std::optional<DataType> data_type_from_name(std::string_view name) noexcept {
    for (std::size_t index = 0; index < types.size(); ++index)
        if (name == types[index].name) return static_cast<DataType>(index);
    return std::nullopt;
}

double smallest_value(DataType type) noexcept { return traits_of(type).smallest; }

double largest_value(DataType type) noexcept { return traits_of(type).largest; }

std::string to_text(const Value &value) {
    if (const auto *text = std::get_if<std::string>(&value)) return *text;
    const double number = std::get<double>(value);
    // C libraries differ in the sign that they print for it.
    if (std::isnan(number)) return "nan";
    char text[32];
    std::snprintf(text, sizeof text, "%.14g", number);
    return text;
}

} // namespace kelhost
