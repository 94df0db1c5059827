// sizes.h: the models on which operations are measured.
#pragma once

#include <iterator>

#include "sample_model.h"

namespace bench {

inline constexpr Size standard_size{1000, 3}; // for operations that do not depend on it

inline constexpr Size all_sizes[] = {
    {10,    1},
    {10,    3},
    {10,    6},
    {100,   1},
    {100,   3},
    {100,   6},
    {1000,  1},
    {1000,  3},
    {1000,  6},
    {10000, 1},
    {10000, 3},
    {10000, 6}
};

inline constexpr Size largest_size = all_sizes[std::size(all_sizes) - 1];

} // namespace bench
