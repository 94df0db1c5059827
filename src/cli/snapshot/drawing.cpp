// drawing.cpp: areas, texts, layers that shine through, and frames for those who look for a name.
#include "drawing.h"

#include "text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

namespace kelhost {

namespace {

void set_color(cairo_t *canvas, const std::string &color, double opacity = 1) {
    const auto rgb = static_cast<unsigned>(std::strtoul(color.c_str() + 1, nullptr, 16)); // "#rrggbb"
    cairo_set_source_rgba(canvas, (rgb >> 16U & 0xffU) / 255.0, (rgb >> 8U & 0xffU) / 255.0, (rgb & 0xffU) / 255.0,
                          opacity);
}

void add_rectangle(cairo_t *canvas, const Box &box) { cairo_rectangle(canvas, box.x, box.y, box.width, box.height); }

void clip_to(cairo_t *canvas, const Box &box) {
    add_rectangle(canvas, box);
    cairo_clip(canvas);
}

void fill(cairo_t *canvas, const Box &box, const std::string &color, double opacity = 1) {
    set_color(canvas, color, opacity);
    add_rectangle(canvas, box);
    cairo_fill(canvas);
}

void draw_item(cairo_t *canvas, const DisplayItem &item, const Font &font) {
    cairo_save(canvas);
    clip_to(canvas, item.clip);
    if (!item.fill.empty()) fill(canvas, item.box, item.fill);
    if (!item.text.empty()) {
        font.use(canvas, item.font_size);
        set_color(canvas, item.color);
        draw_text(canvas, item.text, item.text_align, item.box);
    }
    cairo_restore(canvas);
}

using Items = std::vector<DisplayItem>::const_iterator;

// Paints a layer and what is in it; gives the next layer.
Items draw_layer(cairo_t *canvas, Items layer, Items end, const Font &font) {
    const bool shines_through = layer->alpha < 255;
    cairo_save(canvas);
    clip_to(canvas, layer->clip);
    if (shines_through) cairo_push_group(canvas);
    Items item = layer;
    do draw_item(canvas, *item++, font);
    while (item != end && item->kind != DisplayKind::layer);
    if (shines_through) {
        cairo_pop_group_to_source(canvas);
        cairo_paint_with_alpha(canvas, layer->alpha / 255.0);
    }
    cairo_restore(canvas);
    return item;
}

const char *outline_color(DisplayKind kind) {
    switch (kind) {
    case DisplayKind::layer:
        return "#ff4fa3";
    case DisplayKind::control:
        return "#35d0ff";
    case DisplayKind::table:
        return "#ffd54a";
    case DisplayKind::cell:
        break;
    }
    return "#9be37a";
}

// A cell says its row and column only: its table says the rest.
std::string outline_name(const DisplayItem &item) {
    if (item.kind != DisplayKind::cell) return item.name;
    return std::to_string(item.row) + "," + std::to_string(item.col);
}

Box scaled(const Box &box, int scale) { return {box.x * scale, box.y * scale, box.width * scale, box.height * scale}; }

// Frames lie within the box, on whole pixels.
void draw_frame(cairo_t *canvas, const Box &box, const char *color) {
    set_color(canvas, color);
    cairo_set_line_width(canvas, 1);
    cairo_rectangle(canvas, box.x + 0.5, box.y + 0.5, box.width - 1, box.height - 1);
    cairo_stroke(canvas);
}

class Labels {
public:
    Labels(cairo_t *canvas, const Font &font) : canvas_(canvas) { font.use(canvas, 9); }

    // Below those that stand in its way.
    void draw(const std::string &name, Box box, const char *color) {
        box.width = static_cast<int>(std::ceil(text_width(canvas_, name)));
        box.height = static_cast<int>(std::ceil(line_height(canvas_)));
        while (overlaps_another(box)) ++box.y;
        drawn_.push_back(box);
        cairo_save(canvas_);
        fill(canvas_, box, "#000000", 0.75);
        set_color(canvas_, color);
        draw_text(canvas_, name, "left", box);
        cairo_restore(canvas_);
    }

private:
    bool overlaps_another(const Box &box) const {
        return std::any_of(drawn_.begin(), drawn_.end(),
                           [&box](const Box &other) { return !common_part(box, other).is_empty(); });
    }

    cairo_t *canvas_;
    std::vector<Box> drawn_;
};

std::string all_letters(const DisplayList &list) {
    std::string letters;
    for (const DisplayItem &item : list.items) letters += item.text;
    return letters;
}

} // namespace

void draw_screen(cairo_t *canvas, const DisplayList &list) {
    const Font font(all_letters(list));
    fill(canvas, {0, 0, list.width, list.height}, "#000000");
    for (Items layer = list.items.begin(); layer != list.items.end();)
        layer = draw_layer(canvas, layer, list.items.end(), font);
}

void draw_outlines(cairo_t *canvas, const DisplayList &list, int scale) {
    Labels labels(canvas, Font({}));
    for (const DisplayItem &item : list.items)
        draw_frame(canvas, scaled(common_part(item.box, item.clip), scale), outline_color(item.kind));
    for (const DisplayItem &item : list.items)
        labels.draw(outline_name(item), scaled(common_part(item.box, item.clip), scale), outline_color(item.kind));
}

} // namespace kelhost
