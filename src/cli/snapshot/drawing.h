// drawing.h: paints a display list.
#pragma once

#include "../display_list.h"

#include <cairo.h>

namespace kelhost {

// The screen as the user sees it, on black. A pixel of the screen is a unit of the canvas.
void draw_screen(cairo_t *canvas, const DisplayList &list);

// A frame around each item and its name. Frames and letters are in units of the canvas, whatever the scale is.
void draw_outlines(cairo_t *canvas, const DisplayList &list, int scale);

} // namespace kelhost
