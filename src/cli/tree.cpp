// tree.cpp: `kel tree`: walks screens and layers down to templates and cells. The tree is made as JSON once; the text
// shows the same.
#include "tree.h"

#include "commands.h"
#include "look.h"
#include "object_names.h"
#include "output.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include <kel/kel.h>

namespace kelhost {

namespace {

using Json = nlohmann::ordered_json;

// Where a node's children are, in the order in which the text shows them.
constexpr const char *child_lists[] = {"screens", "instances", "layers", "templates", "children"};

// ---- From the application to JSON ----

struct Property {
    const char *member;
    const char *variable;
};

// An object has those of its kind.
constexpr Property properties[] = {
    {"x",      "kld_x"     },
    {"y",      "kld_y"     },
    {"width",  "kld_width" },
    {"height", "kld_height"},
    {"rows",   "kld_rows"  },
    {"cols",   "kld_cols"  },
    {"alpha",  "kld_alpha" },
};

class TreeMaker {
public:
    explicit TreeMaker(const Application &app) : app_(app) {}

    Json application() const;
    Json cells(const std::string &table_name) const;

private:
    Json object(const char *kind, const std::string &name) const;
    Json screen(const ScreenDescription &screen) const;
    Json layer(const std::string &name) const;
    Json children(kl_darray_t *list, const std::string &container) const;
    Json child(const kl_control_t &control, const std::string &container) const;
    static Json templates(const kl_table_t &table, const std::string &container);

    const Application &app_;
};

std::string join(const std::string &container, const char *name) { return container + "." + name; }

// With what variables say of it.
Json TreeMaker::object(const char *kind, const std::string &name) const {
    Json node = {
        {"kind", kind},
        {"name", name}
    };
    const auto number = [&](const char *variable) -> std::optional<std::int64_t> {
        const std::optional<Value> value = app_.variable(join(name, variable));
        if (!value) return std::nullopt;
        return static_cast<std::int64_t>(std::get<double>(*value));
    };
    for (const Property &property : properties)
        if (const auto value = number(property.variable)) node[property.member] = *value;
    if (const auto hidden = number("kld_hidden")) node["hidden"] = *hidden != 0;
    return node;
}

// Screens, layers and layer instances are those of the description for as long as the application runs.
Json TreeMaker::application() const {
    const ApplicationDescription &description = app_.description();
    Json node = {
        {"kind",    "application"     },
        {"name",    description.name  },
        {"width",   description.width },
        {"height",  description.height},
        {"screens", Json::array()     },
        {"layers",  Json::array()     }
    };
    for (const ScreenDescription &each : description.screens) node["screens"].push_back(screen(each));
    for (const LayerDescription &each : description.layers) node["layers"].push_back(layer(each.name));
    return node;
}

Json TreeMaker::screen(const ScreenDescription &screen) const {
    Json node = object("screen", screen.name);
    Json &instances = node["instances"] = Json::array();
    for (const LayerInstanceDescription &instance : screen.layers)
        instances.push_back(object("layer_instance", join(screen.name, instance.layer.c_str())));
    return node;
}

Json TreeMaker::layer(const std::string &name) const {
    Json node = object("layer", name);
    node["children"] = children(reinterpret_cast<const kl_layer_t *>(app_.find(name))->control_list, name);
    return node;
}

// A null entry ends the list.
Json TreeMaker::children(kl_darray_t *list, const std::string &container) const {
    Json nodes = Json::array();
    for (int index = 0; index < kl_darray_size(list); ++index) {
        const auto *const control = *static_cast<kl_control_t **>(kl_darray_item(list, index));
        if (control == nullptr) break;
        nodes.push_back(child(*control, container));
    }
    return nodes;
}

Json TreeMaker::child(const kl_control_t &control, const std::string &container) const {
    const std::string name = join(container, control.name);
    if (control.object.type == KL_OBJECT_TYPE_GROUP) {
        Json node = object("group", name);
        node["children"] = children(reinterpret_cast<const kl_group_t &>(control).control_list, name);
        return node;
    }
    if (control.object.type == KL_OBJECT_TYPE_TABLE) {
        Json node = object("table", name);
        node["templates"] = templates(reinterpret_cast<const kl_table_t &>(control), container);
        return node;
    }
    return object("control", name);
}

// A null entry ends the array. Templates have no variables of their own.
Json TreeMaker::templates(const kl_table_t &table, const std::string &container) {
    Json nodes = Json::array();
    for (kl_control_t **entry = table.template_controls; entry != nullptr && *entry != nullptr; ++entry) {
        const kl_control_t &made_from = **entry;
        nodes.push_back({
            {"kind", "template"    },
            {"name", join(container, made_from.name)},
            {"width",      made_from.size.width             },
            {"height",      made_from.size.height}
        });
    }
    return nodes;
}

// The name of each cell, which is its template's, row by row.
Json TreeMaker::cells(const std::string &table_name) const {
    const auto &table = *reinterpret_cast<const kl_table_t *>(app_.find(table_name));
    const std::string container = table_name.substr(0, table_name.rfind('.'));
    Json rows = Json::array();
    for (int row = 0; row < table.rows; ++row) {
        Json &names = rows.emplace_back(Json::array());
        for (int col = 0; col < table.cols; ++col) names.push_back(join(container, table.controls[row][col]->name));
    }
    return rows;
}

// ---- Looking for an object ----

// Calls visit(node, depth) for a node and everything in it, those that contain others first.
template <typename Visitor> void walk(const Json &node, int depth, const Visitor &visit) {
    visit(node, depth);
    for (const char *list : child_lists)
        if (const auto found = node.find(list); found != node.end())
            for (const Json &inner : *found) walk(inner, depth + 1, visit);
}

std::vector<std::string> names_in(const Json &tree) {
    std::vector<std::string> names;
    walk(tree, 0, [&names](const Json &node, int depth) {
        if (depth > 0) names.push_back(node["name"]); // scripts do not reach the application by its name
    });
    std::sort(names.begin(), names.end());
    return names;
}

const Json *find_node(const Json &tree, const std::string &name) {
    const Json *found = nullptr;
    walk(tree, 0, [&](const Json &node, int depth) {
        if (depth > 0 && found == nullptr && node["name"] == name) found = &node;
    });
    return found;
}

// ---- From JSON to text ----

std::string words_of(const Json &node) { // "layer instance"
    std::string kind = node["kind"];
    std::replace(kind.begin(), kind.end(), '_', ' ');
    return kind;
}

std::string pair_of(const Json &node, const char *first, const char *second, const char *between) {
    if (!node.contains(first) || !node.contains(second)) return {};
    return node[first].dump() + between + node[second].dump();
}

std::string remarks_on(const Json &node) {
    std::string remarks;
    if (node.contains("rows")) remarks += "  " + pair_of(node, "rows", "cols", "x") + " cells";
    if (node.contains("alpha")) remarks += "  alpha " + node["alpha"].dump();
    if (node.value("hidden", false)) remarks += "  hidden";
    return remarks;
}

// One line of the text, in parts.
struct Line {
    std::string indent;
    std::string kind;
    std::string name;
    std::string position;
    std::string size;
    std::string remarks;

    std::size_t head_width() const { return indent.size() + kind.size() + 1 + name.size(); }
};

struct Widths {
    std::size_t head = 0;
    std::size_t position = 0;
    std::size_t size = 0;
};

std::string padding(std::size_t width, std::size_t used) { return std::string(width - used, ' '); }

void print_line(const Line &line, const Widths &widths) {
    print(line.indent);
    print_colored(Color::faint, line.kind);
    std::string rest = " " + line.name + padding(widths.head, line.head_width()) + "  " + line.position
                       + padding(widths.position, line.position.size()) + "  " + line.size
                       + padding(widths.size, line.size.size()) + line.remarks;
    rest.erase(rest.find_last_not_of(' ') + 1);
    print(rest + "\n");
}

void print_cells(const Json &node) {
    if (!node.contains("cells")) return;
    std::size_t number = 0;
    for (const Json &row : node["cells"]) {
        std::string text = "  row " + std::to_string(number++) + ":";
        for (const Json &cell : row) text += " " + cell.get<std::string>();
        print(text + "\n");
    }
}

void print_text(const Json &tree) {
    std::vector<Line> lines;
    Widths widths;
    walk(tree, 0, [&](const Json &node, int depth) {
        const Line &line = lines.emplace_back(Line{std::string(2 * static_cast<std::size_t>(depth), ' '),
                                                   words_of(node), node["name"], pair_of(node, "x", "y", ","),
                                                   pair_of(node, "width", "height", "x"), remarks_on(node)});
        widths.head = std::max(widths.head, line.head_width());
        widths.position = std::max(widths.position, line.position.size());
        widths.size = std::max(widths.size, line.size.size());
    });
    for (const Line &line : lines) print_line(line, widths);
    print_cells(tree);
}

} // namespace

bool print_tree(const Application &app, const std::string &name, bool json) {
    const TreeMaker maker(app);
    Json tree = maker.application();
    if (!name.empty()) {
        const Json *const found = find_node(tree, name);
        if (found == nullptr) {
            report_error("there is no object \"" + name + "\"" + suggest(name, names_in(tree)));
            return false;
        }
        tree = Json(*found);
        if (tree["kind"] == "table") tree["cells"] = maker.cells(name);
    }
    if (json)
        print(tree.dump(2) + "\n");
    else
        print_text(tree);
    return true;
}

ExitStatus tree(const TreeArguments &arguments) {
    return look(arguments.look, [&](Application &app) { return print_tree(app, arguments.name, arguments.json); });
}

} // namespace kelhost
