// object_nodes.h: the records of an application's objects, each in a node with what the host keeps beside it.
// Plain data that knows how to fill itself; the registry (object_registry.h) owns the nodes and leads names to them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <kel/kel.h>

#include <kelhost/description.h>

#include "object_list.h"

namespace kelhost {

enum class NodeKind : std::uint8_t { control, table, cell_template, cell, group, layer, layer_instance, screen };

// "a control", "a table", ...: how messages speak of it.
const char *kind_text(NodeKind kind) noexcept;

struct NamedNode;
// As kind_text, of what a node's name gives: a template's gives a cell.
const char *named_kind_text(const NamedNode &node) noexcept;

// The bit in the flags of a control, table, group or layer instance that says that it is not shown.
inline constexpr std::uint16_t flag_hidden = 1;

// A node and its record live and die together and never move, so pointers to records stay good.
struct Node {
    Node(NodeKind node_kind, kl_object_t &record) noexcept : kind(node_kind), object(record) {}
    virtual ~Node() = default;
    Node(const Node &) = delete;
    Node &operator=(const Node &) = delete;

    const NodeKind kind;
    kl_object_t &object;          // the record, which lies in the node
    Node *next_retired = nullptr; // the registry's
};

// A node of type T behind a pointer, or null when it is of another kind.
template <typename T> T *as(Node *node) noexcept {
    return node != nullptr && T::is_kind(node->kind) ? static_cast<T *>(node) : nullptr;
}

// All but cells, which share the name of their template.
struct NamedNode : Node {
    NamedNode(NodeKind node_kind, kl_object_t &record, std::string name) noexcept
        : Node(node_kind, record), qualified_name(std::move(name)), resolved(&record) {}
    static bool is_kind(NodeKind kind) noexcept { return kind != NodeKind::cell; }

    // The last component of the qualified name; the record's name points here.
    char *own_name() noexcept;

    std::string qualified_name;
    kl_object_t *resolved; // what the name gives: this object; for a template the first of its cells, or null
    std::shared_ptr<const DrawHints> draw; // null for none; a clone shares them
};

// Holds controls, tables and groups: a layer or a group.
struct ContainerNode : NamedNode {
    using NamedNode::NamedNode;
    static bool is_kind(NodeKind kind) noexcept { return kind == NodeKind::layer || kind == NodeKind::group; }

    ObjectList children;
};

struct LayerNode final : ContainerNode {
    LayerNode(kl_application_t &app, const std::string &name);
    static bool is_kind(NodeKind kind) noexcept { return kind == NodeKind::layer; }

    kl_layer_t record{};
};

struct GroupNode final : ContainerNode {
    GroupNode(ContainerNode &container, std::string_view name);
    static bool is_kind(NodeKind kind) noexcept { return kind == NodeKind::group; }

    kl_group_t record{};
};

struct ControlNode final : NamedNode {
    ControlNode(ContainerNode &container, std::string_view name);
    static bool is_kind(NodeKind kind) noexcept { return kind == NodeKind::control; }

    kl_control_t record{};
};

struct TableNode;

// A template stands for its cells: their shared name is its own. It is in no list and is found by no name itself.
struct TemplateNode final : NamedNode {
    TemplateNode(TableNode &table, std::string_view name);
    static bool is_kind(NodeKind kind) noexcept { return kind == NodeKind::cell_template; }

    kl_control_t record{};
    std::shared_ptr<const std::vector<VariableDescription>> variables; // that new cells start with; never null
    std::size_t index = 0;                                             // in the table's templates
    std::size_t cells = 0;                                             // how many there are
};

struct CellNode final : Node {
    CellNode(TableNode &table, TemplateNode &made_from) noexcept;
    static bool is_kind(NodeKind kind) noexcept { return kind == NodeKind::cell; }

    kl_control_t record{};
    TemplateNode &made_from;
};

struct TableNode final : NamedNode {
    TableNode(ContainerNode &container, std::string_view name);
    static bool is_kind(NodeKind kind) noexcept { return kind == NodeKind::table; }

    // Adds a template and keeps the record's array in step.
    void add_template(TemplateNode &added);
    TemplateNode &template_of(const kl_control_t &cell) noexcept;

    kl_table_t record{};
    const std::string rows_key; // of its size variables: at hand, so that following them needs no memory
    const std::string cols_key;
    std::vector<TemplateNode *> templates;
    std::vector<kl_control_t *> template_records; // the same for the record, with a null at the end
    // The grid, which table_grid.cpp alone changes. There may be more rows than the record counts; those are empty.
    std::vector<std::vector<kl_control_t *>> rows;
    std::vector<kl_control_t **> row_pointers;
};

struct ScreenNode final : NamedNode {
    ScreenNode(kl_application_t &app, const std::string &name);
    static bool is_kind(NodeKind kind) noexcept { return kind == NodeKind::screen; }

    kl_screen_t record{};
    ObjectList instances;
};

struct LayerInstanceNode final : NamedNode {
    LayerInstanceNode(ScreenNode &screen, LayerNode &layer);
    static bool is_kind(NodeKind kind) noexcept { return kind == NodeKind::layer_instance; }

    kl_layer_instance_t record{};
};

// The control at the head of the record of a control, table or group; null for other kinds.
kl_control_t *control_of(Node &node) noexcept;

// Whether scripts may clone and delete it: a control, table or group.
bool is_element(const Node &node) noexcept;

// A qualified name for a message: as it is, or in quotes where it is none, such as "" or "a b".
std::string shown_name(std::string_view name);

// "main.bar" and "ok" give "main.bar.ok".
std::string join_name(std::string_view container, std::string_view name);

// "main.bar.list" gives "main.bar": where a table's cells have their names.
std::string_view container_name(std::string_view qualified_name) noexcept;

} // namespace kelhost
