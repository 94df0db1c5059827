// object_nodes.cpp: fills the records of an application's objects with names and links.
#include "object_nodes.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "validate.h"
#include "wording.h"

namespace kelhost {

namespace {

// What every control-like record says of its place.
void link(kl_control_t &record, kl_object_type_t type, char *name, ContainerNode &container) noexcept {
    record.object.type = type;
    record.name = name;
    if (auto *layer = as<LayerNode>(&container)) {
        record.layer = &layer->record;
        record.app = layer->record.app;
    } else {
        auto &group = static_cast<GroupNode &>(container);
        record.layer = group.record.control.layer;
        record.parent = &group.record.control;
        record.app = group.record.control.app;
    }
}

void link(kl_control_t &record, kl_object_type_t type, char *name, TableNode &table) noexcept {
    record.object.type = type;
    record.name = name;
    record.layer = table.record.control.layer;
    record.parent = &table.record.control;
    record.app = table.record.control.app;
}

} // namespace

const char *kind_text(NodeKind kind) noexcept {
    static constexpr const char *texts[] = {"a control", "a table", "a template",       "a cell",
                                            "a group",   "a layer", "a layer instance", "a screen"};
    static_assert(std::size(texts) == static_cast<std::size_t>(NodeKind::screen) + 1, "one text a kind");
    return texts[static_cast<std::size_t>(kind)];
}

const char *named_kind_text(const NamedNode &node) noexcept {
    return kind_text(node.kind == NodeKind::cell_template ? NodeKind::cell : node.kind);
}

char *NamedNode::own_name() noexcept {
    char *const dot = std::strrchr(qualified_name.data(), '.');
    return dot == nullptr ? qualified_name.data() : dot + 1;
}

LayerNode::LayerNode(kl_application_t &app, const std::string &name)
    : ContainerNode(NodeKind::layer, record.object, name) {
    record.object.type = KL_OBJECT_TYPE_LAYER;
    record.name = own_name();
    record.app = &app;
    record.control_list = children.array();
}

GroupNode::GroupNode(ContainerNode &container, std::string_view name)
    : ContainerNode(NodeKind::group, record.control.object, join_name(container.qualified_name, name)) {
    link(record.control, KL_OBJECT_TYPE_GROUP, own_name(), container);
    record.control_list = children.array();
}

ControlNode::ControlNode(ContainerNode &container, std::string_view name)
    : NamedNode(NodeKind::control, record.object, join_name(container.qualified_name, name)) {
    link(record, KL_OBJECT_TYPE_CONTROL, own_name(), container);
}

TemplateNode::TemplateNode(TableNode &table, std::string_view name)
    : NamedNode(NodeKind::cell_template, record.object, join_name(container_name(table.qualified_name), name)) {
    resolved = nullptr; // it has no cells yet
    link(record, KL_OBJECT_TYPE_TEMPLATE, own_name(), table);
}

CellNode::CellNode(TableNode &table, TemplateNode &made) noexcept
    : Node(NodeKind::cell, record.object), made_from(made) {
    link(record, KL_OBJECT_TYPE_CONTROL, made.record.name, table);
    record.size = made.record.size;
}

TableNode::TableNode(ContainerNode &container, std::string_view name)
    : NamedNode(NodeKind::table, record.control.object, join_name(container.qualified_name, name)),
      rows_key(qualified_name + ".kld_rows"), cols_key(qualified_name + ".kld_cols") {
    link(record.control, KL_OBJECT_TYPE_TABLE, own_name(), container);
}

void TableNode::add_template(TemplateNode &added) {
    added.index = templates.size();
    templates.push_back(&added);
    template_records.assign(templates.size() + 1, nullptr);
    for (TemplateNode *one : templates) template_records[one->index] = &one->record;
    record.template_controls = template_records.data();
    record.max_template_col = static_cast<std::uint16_t>(templates.size());
    record.row_height = std::max(record.row_height, static_cast<std::uint16_t>(added.record.size.height));
}

TemplateNode &TableNode::template_of(const kl_control_t &cell) noexcept {
    // A cell's record has its name from its template, the very same characters.
    std::size_t index = 0;
    while (templates[index]->record.name != cell.name) ++index;
    return *templates[index];
}

ScreenNode::ScreenNode(kl_application_t &app, const std::string &name)
    : NamedNode(NodeKind::screen, record.object, name) {
    record.object.type = KL_OBJECT_TYPE_SCREEN;
    record.name = own_name();
    record.app = &app;
    record.layer_list = instances.array();
}

LayerInstanceNode::LayerInstanceNode(ScreenNode &screen, LayerNode &layer)
    : NamedNode(NodeKind::layer_instance, record.object, join_name(screen.qualified_name, layer.qualified_name)) {
    record.object.type = KL_OBJECT_TYPE_LAYER_INSTANCE;
    record.layer = &layer.record;
    record.screen = &screen.record;
}

kl_control_t *control_of(Node &node) noexcept {
    switch (node.kind) {
    case NodeKind::control:
        return &static_cast<ControlNode &>(node).record;
    case NodeKind::table:
        return &static_cast<TableNode &>(node).record.control;
    case NodeKind::group:
        return &static_cast<GroupNode &>(node).record.control;
    default:
        return nullptr;
    }
}

bool is_element(const Node &node) noexcept {
    return node.kind == NodeKind::control || node.kind == NodeKind::table || node.kind == NodeKind::group;
}

std::string shown_name(std::string_view name) {
    const bool plain = std::all_of(name.begin(), name.end(), [](char c) { return c == '.' || is_valid_name({&c, 1}); });
    return plain && !name.empty() ? std::string(name) : quoted(name);
}

std::string join_name(std::string_view container, std::string_view name) {
    std::string joined;
    joined.reserve(container.size() + 1 + name.size());
    joined.append(container).append(1, '.').append(name);
    return joined;
}

std::string_view container_name(std::string_view qualified_name) noexcept {
    const std::size_t dot = qualified_name.rfind('.');
    return dot == std::string_view::npos ? std::string_view() : qualified_name.substr(0, dot);
}

} // namespace kelhost
