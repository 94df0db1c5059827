// picture.h: a display list as a picture file in memory.
#pragma once

#include "../display_list.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kelhost {

enum class PictureFormat : std::uint8_t { svg, png };

struct PictureStyle {
    int scale = 1;        // of the picture's pixels to the screen's
    bool outline = false; // each item gets a frame and its name on top
};

// The file's bytes, the same for the same list and the same fonts. Nothing, with the reason in `fault`, when it cannot
// be drawn.
std::optional<std::string> draw_picture(const DisplayList &list, PictureFormat format, const PictureStyle &style,
                                        std::string &fault);

} // namespace kelhost
