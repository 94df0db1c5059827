// display_list.cpp: walks a screen's layers, adds positions up, and puts the values of variables into texts.
#include "display_list.h"

#include "object_names.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

#include <kel/kel.h>

namespace kelhost {

namespace {

constexpr int default_font_size = 16;
constexpr const char *default_color = "#ffffff";
constexpr const char *default_align = "left";

int number(const Application &app, const std::string &owner, std::string_view variable, int otherwise = 0) {
    const std::optional<Value> value = app.variable(owner + "." + std::string(variable));
    const double *found = value ? std::get_if<double>(&*value) : nullptr;
    return found == nullptr ? otherwise : static_cast<int>(*found); // 16 bits
}

Box box_of(const Application &app, const std::string &owner) {
    return {number(app, owner, "kld_x"), number(app, owner, "kld_y"), number(app, owner, "kld_width"),
            number(app, owner, "kld_height")};
}

bool is_hidden(const Application &app, const std::string &owner) { return number(app, owner, "kld_hidden") != 0; }

// "{name}" at the beginning of the text, with the brackets; "" when there is none.
std::string_view placeholder_at(std::string_view text) {
    constexpr const char *letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
    if (!text.starts_with('{')) return {};
    const std::size_t end = text.find_first_not_of(letters, 1);
    return end == std::string_view::npos || text[end] != '}' ? std::string_view() : text.substr(0, end + 1);
}

// Where the variables of a text are: "main.ok" + "." + variable, and for a cell + ".3.2".
struct VariableOwner {
    std::string name;
    std::string cell;

    std::string key(std::string_view variable) const { return name + "." + std::string(variable) + cell; }
};

// A variable that does not exist stays in the text as it was written: its author sees what is wrong.
std::string with_values(const Application &app, std::string_view text, const VariableOwner &owner) {
    std::string result;
    while (!text.empty()) {
        const std::string_view placeholder = placeholder_at(text);
        const std::size_t taken = text.starts_with("{{") ? 2 : std::max<std::size_t>(placeholder.size(), 1);
        if (placeholder.empty()) {
            result += text.front();
        } else {
            const auto value = app.variable(owner.key(placeholder.substr(1, placeholder.size() - 2)));
            result += value ? to_text(*value) : std::string(placeholder);
        }
        text.remove_prefix(taken);
    }
    return result;
}

void add_hints(const Application &app, const kl_object_t *object, const VariableOwner &owner, DisplayItem &item) {
    const DrawHints *hints = app.draw_hints(object);
    if (hints == nullptr) return;
    item.fill = hints->fill;
    item.text = with_values(app, hints->text, owner);
    item.color = hints->color.empty() ? default_color : hints->color;
    item.font_size = hints->font_size == 0 ? default_font_size : hints->font_size;
    item.text_align = hints->align.empty() ? default_align : hints->align;
}

// What the things in a layer or group have from it.
struct Container {
    std::string name; // qualified
    int x = 0;        // of its origin on the screen
    int y = 0;
    Box clip;
    int alpha = 255;
};

class Collector {
public:
    Collector(const Application &app, DisplayList &list) : app_(app), list_(list) {}

    void add_layers(const kl_screen_t &screen) {
        for_each<kl_layer_instance_t>(screen.layer_list, [&](const auto &instance) { add_layer(instance); });
    }

private:
    template <typename Record, typename Visit> static void for_each(kl_darray_t *records, const Visit &visit) {
        for (int i = 0; i < kl_darray_size(records); ++i) {
            const Record *record = *static_cast<Record **>(kl_darray_item(records, i));
            if (record == nullptr) return;
            visit(*record);
        }
    }

    void add_layer(const kl_layer_instance_t &instance) {
        const kl_layer_t &layer = *instance.layer;
        DisplayItem item;
        item.kind = DisplayKind::layer;
        item.name = list_.screen + "." + layer.name;
        item.box = box_of(app_, item.name);
        item.clip = common_part(item.box, {0, 0, list_.width, list_.height});
        item.alpha = number(app_, item.name, "kld_alpha", 255);
        if (is_hidden(app_, item.name) || item.alpha == 0 || item.clip.is_empty()) return;
        const Container inside{layer.name, item.box.x, item.box.y, item.clip, item.alpha};
        add_hints(app_, &layer.object, {}, item);
        list_.items.push_back(std::move(item));
        add_elements(layer.control_list, inside);
    }

    void add_elements(kl_darray_t *elements, const Container &container) {
        for_each<kl_control_t>(elements, [&](const auto &element) { add_element(element, container); });
    }

    void add_element(const kl_control_t &element, const Container &container) {
        std::string name = container.name + "." + element.name;
        if (is_hidden(app_, name)) return;
        Box box = box_of(app_, name);
        box.x += container.x;
        box.y += container.y;
        if (element.object.type == KL_OBJECT_TYPE_GROUP) {
            const auto &group = reinterpret_cast<const kl_group_t &>(element);
            return add_elements(group.control_list, {std::move(name), box.x, box.y, container.clip, container.alpha});
        }
        const bool is_table = element.object.type == KL_OBJECT_TYPE_TABLE;
        DisplayItem item;
        item.kind = is_table ? DisplayKind::table : DisplayKind::control;
        item.name = name;
        item.box = box;
        item.clip = container.clip;
        item.alpha = container.alpha;
        add_visible(std::move(item), &element.object, {name, {}});
        if (is_table)
            add_cells(reinterpret_cast<const kl_table_t &>(element),
                      {std::move(name), box.x, box.y, common_part(box, container.clip), container.alpha});
    }

    void add_cells(const kl_table_t &table, const Container &inside) {
        for (int row = 0; row < table.rows; ++row)
            for (int col = 0; col < table.cols; ++col) add_cell(*table.controls[row][col], row, col, inside);
    }

    // Where a cell stands in its table is in its record: there are no variables of it.
    void add_cell(const kl_control_t &cell, int row, int col, const Container &table) {
        DisplayItem item;
        item.kind = DisplayKind::cell;
        item.name = table.name;
        item.row = row;
        item.col = col;
        item.box = {table.x + cell.rect.left, table.y + cell.rect.top, cell.size.width, cell.size.height};
        item.clip = table.clip;
        item.alpha = table.alpha;
        add_visible(std::move(item), &cell.object,
                    {table.name, std::string(".").append(std::to_string(row)).append(".").append(std::to_string(col))});
    }

    void add_visible(DisplayItem item, const kl_object_t *object, const VariableOwner &owner) {
        if (common_part(item.box, item.clip).is_empty()) return;
        add_hints(app_, object, owner, item);
        list_.items.push_back(std::move(item));
    }

    const Application &app_;
    DisplayList &list_;
};

std::string default_screen(const ApplicationDescription &description) {
    const bool is_first = description.default_screen.empty() && !description.screens.empty();
    return is_first ? description.screens.front().name : description.default_screen;
}

// `no screen "hom"; did you mean home?`, or the names of all when none is near.
std::string no_screen_text(const ApplicationDescription &description, const std::string &wanted) {
    if (description.screens.empty()) return "the application has no screens";
    std::vector<std::string> names;
    std::string all;
    for (const ScreenDescription &screen : description.screens) {
        names.push_back(screen.name);
        all += (all.empty() ? "" : ", ") + screen.name;
    }
    const std::string suggestion = suggest(wanted, names);
    return "no screen \"" + wanted + "\"" + (suggestion.empty() ? "; there are " + all : suggestion);
}

std::string quoted(const std::string &text) {
    std::string result = "\"";
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        char number[5];
        static_cast<void>(std::snprintf(number, sizeof number, "\\x%02x", code));
        if (character == '\n') {
            result += "\\n";
        } else if (code < 0x20 || code == 0x7f) {
            result += number;
        } else {
            if (character == '"' || character == '\\') result += '\\';
            result += character;
        }
    }
    return result + '"';
}

std::string size_and_place(const Box &box) {
    return std::to_string(box.width) + "x" + std::to_string(box.height) + " at " + std::to_string(box.x) + ","
           + std::to_string(box.y);
}

std::string kind_and_name(const DisplayItem &item) {
    switch (item.kind) {
    case DisplayKind::layer:
        return "layer " + item.name;
    case DisplayKind::control:
        return "  control " + item.name;
    case DisplayKind::table:
        return "  table " + item.name;
    case DisplayKind::cell:
        break;
    }
    return "  cell " + item.name + " " + std::to_string(item.row) + "," + std::to_string(item.col);
}

std::string line(const DisplayItem &item) {
    std::string text = kind_and_name(item) + " " + size_and_place(item.box);
    if (common_part(item.box, item.clip) != item.box) text += " clip " + size_and_place(item.clip);
    if (item.kind == DisplayKind::layer && item.alpha != 255) text += " alpha " + std::to_string(item.alpha);
    if (!item.fill.empty()) text += " fill " + item.fill;
    if (!item.text.empty())
        text += " text " + quoted(item.text) + " " + item.color + " " + std::to_string(item.font_size) + "px "
                + item.text_align;
    return text + "\n";
}

} // namespace

Box common_part(const Box &one, const Box &other) {
    const int left = std::max(one.x, other.x);
    const int top = std::max(one.y, other.y);
    const int right = std::min(one.x + one.width, other.x + other.width);
    const int bottom = std::min(one.y + one.height, other.y + other.height);
    return {left, top, std::max(right - left, 0), std::max(bottom - top, 0)};
}

std::optional<DisplayList> make_display_list(const Application &app, const std::string &screen, std::string &fault) {
    const ApplicationDescription &description = app.description();
    DisplayList list{screen.empty() ? default_screen(description) : screen, description.width, description.height, {}};
    const kl_object_t *found = app.find(list.screen);
    if (found == nullptr || found->type != KL_OBJECT_TYPE_SCREEN) {
        fault = no_screen_text(description, list.screen);
        return std::nullopt;
    }
    Collector(app, list).add_layers(*reinterpret_cast<const kl_screen_t *>(found));
    return list;
}

std::string to_text(const DisplayList &list) {
    std::string text =
        "screen " + list.screen + " " + std::to_string(list.width) + "x" + std::to_string(list.height) + "\n";
    for (const DisplayItem &item : list.items) text += line(item);
    return text;
}

} // namespace kelhost
