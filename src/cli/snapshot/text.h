// text.h: lines of text in a box.
#pragma once

#include "../display_list.h"

#include <memory>
#include <string>

#include <cairo.h>

namespace kelhost {

// One font for a whole picture: the usual one, or, when letters are missing in that, one that has them.
class Font {
public:
    explicit Font(const std::string &letters);

    // Makes texts on the canvas that follow have this font; a letter is as wide at every scale.
    void use(cairo_t *canvas, int size) const;

private:
    struct Released {
        void operator()(cairo_font_face_t *face) const { cairo_font_face_destroy(face); }
    };
    std::unique_ptr<cairo_font_face_t, Released> face_;
};

// The width of the text as one line.
double text_width(cairo_t *canvas, const std::string &text);
double line_height(cairo_t *canvas);

// In the color and font that the canvas has, in the middle of the box's height. A line that is too long for the box
// ends in an ellipsis; nothing is painted outside.
void draw_text(cairo_t *canvas, const std::string &text, const std::string &align, const Box &box);

} // namespace kelhost
