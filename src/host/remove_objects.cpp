// remove_objects.cpp: deletes controls, tables and groups with all that they contain.
// Records are retired, not freed: lists of objects may still point to them.
#include "remove_objects.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kelhost {

namespace {

bool refuse(const ModelContext &context, std::string_view name, const std::string &why) {
    context.log.write(KL_LOG_WARNING, "Cannot delete " + shown_name(name) + ": " + why);
    return false;
}

// What the keys of the object's variables begin with: its own, those below it, and those of a table's cells' names.
// Only whole names: "main.bar2" lives on when "main.bar" goes.
std::vector<std::string> prefixes_of(NamedNode &node) {
    std::vector<std::string> prefixes{node.qualified_name + "."};
    if (auto *table = as<TableNode>(&node)) {
        for (const TemplateNode *made : table->templates) prefixes.push_back(made->qualified_name + ".");
    }
    return prefixes;
}

ContainerNode &container_of(const ModelContext &context, kl_control_t &control) noexcept {
    kl_object_t *const container = control.parent != nullptr ? &control.parent->object : &control.layer->object;
    return *as<ContainerNode>(context.objects.node_of(container));
}

void take_from_list(ContainerNode &container, const kl_object_t &object) noexcept {
    const int position = container.children.remove(object);
    for (int behind = position; behind < container.children.size(); ++behind) {
        reinterpret_cast<kl_control_t *>(container.children.at(behind))->zindex = static_cast<std::uint16_t>(behind);
    }
}

void retire_with_children(const ModelContext &context, Node &node) noexcept;

void retire_children(const ModelContext &context, TableNode &table) noexcept {
    for (std::size_t row = 0; row < table.record.rows; ++row) {
        for (kl_control_t *cell : table.rows[row])
            retire_with_children(context, *context.objects.node_of(&cell->object));
    }
    for (TemplateNode *made : table.templates) context.objects.retire(*made);
}

void retire_children(const ModelContext &context, GroupNode &group) noexcept {
    for (int child = 0; child < group.children.size(); ++child) {
        retire_with_children(context, *context.objects.node_of(group.children.at(child)));
    }
}

void retire_with_children(const ModelContext &context, Node &node) noexcept {
    if (auto *table = as<TableNode>(&node)) retire_children(context, *table);
    if (auto *group = as<GroupNode>(&node)) retire_children(context, *group);
    context.objects.retire(node);
}

} // namespace

bool remove_object(ModelContext &context, std::string_view name) {
    NamedNode *const node = context.objects.named(name);
    if (node == nullptr || node->resolved == nullptr) return refuse(context, name, "no such object");
    if (!is_element(*node)) {
        return refuse(context, name,
                      std::string("it is ") + named_kind_text(*node)
                          + "; only controls, tables and groups can be deleted");
    }
    const std::vector<std::string> prefixes = prefixes_of(*node);
    take_from_list(container_of(context, *control_of(*node)), node->object);
    retire_with_children(context, *node);
    for (const std::string &prefix : prefixes) context.data.erase_prefix(prefix);
    return true;
}

} // namespace kelhost
