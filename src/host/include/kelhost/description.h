// description.h: an application as its designer describes it: what the application file holds, in plain records.
//
// Read from a file by Application::load, or filled by hand and given to Application::create. The records follow the
// file (schema/application.schema.json) member by member, so a fault has the same JSON path in both.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <kelhost/value.h>

namespace kelhost {

struct VariableDescription {
    std::string name; // letters, digits and "_"
    DataType type = DataType::f64;
    Value value = 0.0;
};

// How a tool draws an object. A device's engine has its own ways; scripts cannot see these.
struct DrawHints {
    std::string fill;  // "#rrggbb" or "" for none
    std::string color; // of the text, "#rrggbb" or "" for the default
    std::string text;  // "{variable}" in it stands for a variable of the object, "{{" for "{"; "" for none
    int font_size = 0; // pixels, 1 to 1000; 0 for the default
    std::string align; // "left", "center", "right" or "" for the default
};

// All coordinates are pixels, signed 16-bit, and relative to the container.
struct Geometry {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
};

// Describes cells of a table: they carry its name and start with its variables.
struct TemplateDescription {
    std::string name;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<VariableDescription> variables; // each cell has its own, under a cell key
    DrawHints draw;
};

struct CellDescription {
    std::string template_name;
    std::vector<VariableDescription> variables; // instead of, or beside, the template's
};

enum class ElementKind : std::uint8_t { control, table, group };

struct ElementDescription {
    ElementKind kind = ElementKind::control;
    std::string name;
    Geometry geometry; // a group has a position only
    bool hidden = false;
    std::vector<VariableDescription> variables;
    DrawHints draw; // controls and tables

    std::vector<ElementDescription> children; // groups

    std::int32_t rows = 0; // tables
    std::int32_t cols = 0;
    std::vector<TemplateDescription> templates;
    // cells[row][column]; empty when every cell is made from the first template, else rows lists of cols cells.
    std::vector<std::vector<CellDescription>> cells;
};

struct LayerDescription {
    std::string name;
    std::optional<std::int32_t> width; // the application's when not given
    std::optional<std::int32_t> height;
    std::vector<VariableDescription> variables;
    DrawHints draw; // fill alone
    std::vector<ElementDescription> children;
};

struct LayerInstanceDescription {
    std::string layer;
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::optional<std::int32_t> width; // the layer's when not given
    std::optional<std::int32_t> height;
    std::int32_t alpha = 255; // 0 to 255
    bool hidden = false;
    std::vector<VariableDescription> variables;
};

struct ScreenDescription {
    std::string name;
    std::vector<VariableDescription> variables;
    std::vector<LayerInstanceDescription> layers; // bottom first
};

// Calls a Lua function when an event comes.
struct HandlerDescription {
    std::string event;
    std::string target;   // qualified name of the object or key of the variable that the event is for; "" for any
    std::string function; // a global, or "table.field"
};

struct ApplicationDescription {
    std::string file;   // where it was read from; "" for one made in memory
    std::string folder; // script paths are relative to it; "" for the working folder
    std::string name;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::string default_screen; // "" for the first
    std::vector<VariableDescription> variables;
    std::vector<LayerDescription> layers;
    std::vector<ScreenDescription> screens;
    std::vector<std::string> scripts;
    std::vector<HandlerDescription> handlers;
};

} // namespace kelhost
