// app_file.cpp: finds, opens and reads application files. What members the file's objects have stands in the tables
// below, in the order of description.h; what they mean together is for validate.cpp. (A comma in a template's arguments
// would break the formatter's columns; hence the readers with one argument.)
#include "app_file.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "file.h"
#include "json_reader.h"
#include "member_reader.h"
#include "model.h"
#include "variable_reader.h"

namespace kelhost {

namespace {

// The items of the file's lists.
void read_item(Reader &reader, const JsonValue &json, const Place &place, LayerDescription &layer);
void read_item(Reader &reader, const JsonValue &json, const Place &place, ElementDescription &element);
void read_item(Reader &reader, const JsonValue &json, const Place &place, TemplateDescription &description);
void read_item(Reader &reader, const JsonValue &json, const Place &place, std::vector<CellDescription> &row);
void read_item(Reader &reader, const JsonValue &json, const Place &place, CellDescription &cell);
void read_item(Reader &reader, const JsonValue &json, const Place &place, ScreenDescription &screen);
void read_item(Reader &reader, const JsonValue &json, const Place &place, LayerInstanceDescription &instance);
void read_item(Reader &reader, const JsonValue &json, const Place &place, std::string &script);
void read_item(Reader &reader, const JsonValue &json, const Place &place, HandlerDescription &handler);

// An item that cannot be read keeps its place, so that the others keep their paths.
template <typename Item>
void read_list(Reader &reader, const JsonValue &json, const Place &place, std::vector<Item> &items) {
    const JsonArray *array = reader.read_array(json, place);
    if (array == nullptr) return;
    items.reserve(array->size());
    for (std::size_t index = 0; index < array->size(); ++index)
        read_item(reader, (*array)[index], place.item(index), items.emplace_back());
}

template <auto field, typename Record>
void list(Reader &reader, const JsonValue &json, const Place &place, Record &record) {
    read_list(reader, json, place, record.*field);
}

template <auto field, typename Record>
void coordinate(Reader &reader, const JsonValue &json, const Place &place, Record &record) {
    whole<coordinates, field>(reader, json, place, record);
}

template <auto field, typename Record>
void size(Reader &reader, const JsonValue &json, const Place &place, Record &record) {
    whole<sizes, field>(reader, json, place, record);
}

template <typename Record> void variables(Reader &reader, const JsonValue &json, const Place &place, Record &record) {
    read_variables(reader, json, place, record.variables);
}

template <const auto &members, typename Record>
void draw(Reader &reader, const JsonValue &json, const Place &place, Record &record) {
    read_record<members>(reader, json, place, record.draw);
}

void font_size(Reader &reader, const JsonValue &json, const Place &place, DrawHints &draw) {
    whole<font_sizes, &DrawHints::font_size>(reader, json, place, draw);
}

constexpr Member<DrawHints> draw_members[] = {
    {"fill",      optional, given_text<&DrawHints::fill> },
    {"color",     optional, given_text<&DrawHints::color>},
    {"text",      optional, text<&DrawHints::text>       },
    {"font_size", optional, font_size                    },
    {"align",     optional, given_text<&DrawHints::align>},
};

constexpr Member<DrawHints> layer_draw_members[] = {
    {"fill", optional, given_text<&DrawHints::fill>},
};

constexpr Member<TemplateDescription> template_members[] = {
    {"name",      required, text<&TemplateDescription::name>  },
    {"width",     optional, size<&TemplateDescription::width> },
    {"height",    optional, size<&TemplateDescription::height>},
    {"variables", optional, variables                         },
    {"draw",      optional, draw<draw_members>                },
};

void read_item(Reader &reader, const JsonValue &json, const Place &place, TemplateDescription &description) {
    read_record<template_members>(reader, json, place, description);
}

constexpr Member<CellDescription> cell_members[] = {
    {"template",  required, text<&CellDescription::template_name>},
    {"variables", optional, variables                            },
};

void read_item(Reader &reader, const JsonValue &json, const Place &place, CellDescription &cell) {
    if (json.as<JsonObject>() != nullptr)
        read_record<cell_members>(reader, json, place, cell);
    else if (json.as<std::string>() != nullptr)
        reader.read_text(json, place, cell.template_name);
    else
        reader.report_mismatch(json, place, "the name of a template or an object");
}

void read_item(Reader &reader, const JsonValue &json, const Place &place, std::vector<CellDescription> &row) {
    read_list(reader, json, place, row);
}

constexpr Kinds controls = 1;
constexpr Kinds tables = 2;
constexpr Kinds groups = 4;

struct ElementType {
    std::string_view name;
    ElementKind kind;
    Kinds bit;
};
constexpr ElementType element_types[] = {
    {"control", ElementKind::control, controls},
    {"table",   ElementKind::table,   tables  },
    {"group",   ElementKind::group,   groups  },
};

const ElementType *element_type(const JsonValue &json) {
    if (const auto *name = json.as<std::string>())
        for (const ElementType &type : element_types)
            if (type.name == *name) return &type;
    return nullptr;
}

void element_kind(Reader &reader, const JsonValue &json, const Place &place, ElementDescription &element) {
    if (const ElementType *type = element_type(json))
        element.kind = type->kind;
    else
        reader.report_mismatch(json, place, choice_text({"control", "table", "group"}));
}

template <auto field>
void element_coordinate(Reader &reader, const JsonValue &json, const Place &place, ElementDescription &element) {
    coordinate<field>(reader, json, place, element.geometry);
}

template <auto field>
void element_size(Reader &reader, const JsonValue &json, const Place &place, ElementDescription &element) {
    size<field>(reader, json, place, element.geometry);
}

template <auto field>
void table_side(Reader &reader, const JsonValue &json, const Place &place, ElementDescription &table) {
    whole<table_sides, field>(reader, json, place, table);
}

constexpr Member<ElementDescription> element_members[] = {
    {"type",      required, element_kind,                          every_kind       },
    {"name",      required, text<&ElementDescription::name>,       every_kind       },
    {"x",         optional, element_coordinate<&Geometry::x>,      every_kind       },
    {"y",         optional, element_coordinate<&Geometry::y>,      every_kind       },
    {"width",     optional, element_size<&Geometry::width>,        controls | tables},
    {"height",    optional, element_size<&Geometry::height>,       controls | tables},
    {"hidden",    optional, flag<&ElementDescription::hidden>,     every_kind       },
    {"variables", optional, variables,                             every_kind       },
    {"draw",      optional, draw<draw_members>,                    controls | tables},
    {"children",  optional, list<&ElementDescription::children>,   groups           },
    {"rows",      required, table_side<&ElementDescription::rows>, tables           },
    {"cols",      required, table_side<&ElementDescription::cols>, tables           },
    {"templates", required, list<&ElementDescription::templates>,  tables           },
    {"cells",     optional, list<&ElementDescription::cells>,      tables           },
};

// An element whose type cannot be read is taken for what its members show, so that they can be read.
ElementKind likely_kind(const JsonObject &object) {
    if (find_member(object, "children") != nullptr) return ElementKind::group;
    const bool has_cells = find_member(object, "rows") != nullptr || find_member(object, "templates") != nullptr;
    return has_cells ? ElementKind::table : ElementKind::control;
}

void read_item(Reader &reader, const JsonValue &json, const Place &place, ElementDescription &element) {
    const JsonObject *object = reader.read_object(json, place);
    if (object == nullptr) return;
    const JsonValue *type_name = find_member(*object, "type");
    const ElementType *type = type_name != nullptr ? element_type(*type_name) : nullptr;
    element.kind = type != nullptr ? type->kind : likely_kind(*object);
    const bool is_group = element.kind == ElementKind::group;
    if (is_group && reader.group_depth == deepest_nesting) return reader.report(place, too_deep_text());
    if (is_group) ++reader.group_depth;
    const Kinds kinds = type != nullptr ? type->bit : controls | tables | groups;
    read_members<element_members>(reader, *object, place, element, kinds);
    if (is_group) --reader.group_depth;
}

constexpr Member<LayerDescription> layer_members[] = {
    {"name",      required, text<&LayerDescription::name>    },
    {"width",     optional, size<&LayerDescription::width>   },
    {"height",    optional, size<&LayerDescription::height>  },
    {"variables", optional, variables                        },
    {"draw",      optional, draw<layer_draw_members>         },
    {"children",  optional, list<&LayerDescription::children>},
};

void read_item(Reader &reader, const JsonValue &json, const Place &place, LayerDescription &layer) {
    read_record<layer_members>(reader, json, place, layer);
}

void alpha(Reader &reader, const JsonValue &json, const Place &place, LayerInstanceDescription &instance) {
    whole<alphas, &LayerInstanceDescription::alpha>(reader, json, place, instance);
}

constexpr Member<LayerInstanceDescription> instance_members[] = {
    {"layer",     required, text<&LayerInstanceDescription::layer>  },
    {"x",         optional, coordinate<&LayerInstanceDescription::x>},
    {"y",         optional, coordinate<&LayerInstanceDescription::y>},
    {"width",     optional, size<&LayerInstanceDescription::width>  },
    {"height",    optional, size<&LayerInstanceDescription::height> },
    {"alpha",     optional, alpha                                   },
    {"hidden",    optional, flag<&LayerInstanceDescription::hidden> },
    {"variables", optional, variables                               },
};

void read_item(Reader &reader, const JsonValue &json, const Place &place, LayerInstanceDescription &instance) {
    read_record<instance_members>(reader, json, place, instance);
}

constexpr Member<ScreenDescription> screen_members[] = {
    {"name",      required, text<&ScreenDescription::name>  },
    {"variables", optional, variables                       },
    {"layers",    optional, list<&ScreenDescription::layers>},
};

void read_item(Reader &reader, const JsonValue &json, const Place &place, ScreenDescription &screen) {
    read_record<screen_members>(reader, json, place, screen);
}

void read_item(Reader &reader, const JsonValue &json, const Place &place, std::string &script) {
    reader.read_text(json, place, script);
}

constexpr Member<HandlerDescription> handler_members[] = {
    {"event",    required, text<&HandlerDescription::event>       },
    {"target",   optional, given_text<&HandlerDescription::target>},
    {"function", required, text<&HandlerDescription::function>    },
};

void read_item(Reader &reader, const JsonValue &json, const Place &place, HandlerDescription &handler) {
    read_record<handler_members>(reader, json, place, handler);
}

template <auto field>
void screen_size(Reader &reader, const JsonValue &json, const Place &place, ApplicationDescription &application) {
    whole<screen_sizes, field>(reader, json, place, application);
}

constexpr Member<ApplicationDescription> size_members[] = {
    {"width",  required, screen_size<&ApplicationDescription::width> },
    {"height", required, screen_size<&ApplicationDescription::height>},
};

// For editors, which take the schema from it; the host has no use for it.
void schema(Reader &reader, const JsonValue &json, const Place &place, ApplicationDescription &) {
    std::string address;
    reader.read_text(json, place, address);
}

constexpr Member<ApplicationDescription> application_members[] = {
    {"$schema",        optional, schema                                             },
    {"name",           required, text<&ApplicationDescription::name>                },
    {"size",           required, read_record<size_members>                          },
    {"default_screen", optional, given_text<&ApplicationDescription::default_screen>},
    {"variables",      optional, variables                                          },
    {"layers",         required, list<&ApplicationDescription::layers>              },
    {"screens",        required, list<&ApplicationDescription::screens>             },
    {"scripts",        optional, list<&ApplicationDescription::scripts>             },
    {"handlers",       optional, list<&ApplicationDescription::handlers>            },
};

} // namespace

std::optional<ApplicationDescription> read_application_file(const std::string &path, Diagnostics &faults) {
    std::string file = path;
    std::string why;
    std::optional<std::string> text = read_file(file, why);
    if (!text) {
        const std::string inside = join_path(path, "app.json");
        std::string why_inside;
        text = read_file(inside, why_inside);
        // Of a folder, what is inside is what the user meant.
        if (text || why == std::strerror(EISDIR)) {
            file = inside;
            why = why_inside;
        }
    }
    if (!text) {
        const std::string expected = "an application file or a folder that holds it as app.json";
        faults.push_back({file, 0, 0, "", "cannot read the file (" + why + "), expected " + expected});
        return std::nullopt;
    }
    return parse_application(*text, file, faults);
}

std::optional<ApplicationDescription> parse_application(std::string_view text, const std::string &file,
                                                        Diagnostics &faults) {
    const std::optional<JsonValue> json = read_json(text, file, faults);
    if (!json) return std::nullopt;
    ApplicationDescription description;
    description.file = file;
    description.folder = folder_of(file);
    Reader reader(description.file, faults);
    read_record<application_members>(reader, *json, Place(), description);
    return description;
}

} // namespace kelhost
