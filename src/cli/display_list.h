// display_list.h: what a screen shows now, by the values that variables have, as a list of areas in the order in which
// they are painted. Knows nothing of how it is drawn.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <kelhost/application.h>

namespace kelhost {

// Pixels of the screen.
struct Box {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Box &) const = default;
    bool is_empty() const { return width <= 0 || height <= 0; }
};

// What the two have in common; empty when that is nothing.
Box common_part(const Box &one, const Box &other);

enum class DisplayKind : std::uint8_t { layer, control, table, cell };

struct DisplayItem {
    DisplayKind kind = DisplayKind::control;
    std::string name; // qualified; a layer has that of its place on the screen, "home.climate"; a cell its table's
    int row = 0;      // of a cell
    int col = 0;
    Box box;                // may reach beyond clip
    Box clip;               // nothing is painted outside: the layer's part of the screen, and the table's of that
    int alpha = 255;        // of the layer as a whole: to be painted first, with its items, and then laid on the screen
    std::string fill;       // "#rrggbb", "" for none
    std::string text;       // with the values of variables in place, as UTF-8 when those are; "" for none
    std::string color;      // of the text, "#rrggbb"
    int font_size = 0;      // pixels
    std::string text_align; // "left", "center", "right"
};

struct DisplayList {
    std::string screen;
    int width = 0;
    int height = 0;
    // Bottom first. Each layer is an item, and the next ones up to the next layer are in it. What is hidden, is in
    // something hidden, has alpha 0 or no pixel within the clip is left out.
    std::vector<DisplayItem> items;
};

// What the screen shows, "" for the default one. Nothing, with the reason and the nearest name in `fault`, when there
// is no such screen.
std::optional<DisplayList> make_display_list(const Application &app, const std::string &screen, std::string &fault);

// The list as text for files that are compared: a line for the screen and one for each item, what is in a layer
// indented.
//
//     screen home 480x272
//     layer home.alerts 480x176 at 0,36 alpha 96 fill #111920
//       control alerts.title 92x20 at 400,186 clip 480x176 at 0,36 text "2 new" #f4f6f8 14px right
//       table alerts.list 448x57 at 16,40
//       cell alerts.list 2,0 88x19 at 16,78 fill #3a2718
//
// A layer's alpha is named when it is not 255, a clip when it cuts something off. A text has \n, \", \\ and \x1f for
// what would end it or cannot be seen.
std::string to_text(const DisplayList &list);

} // namespace kelhost
