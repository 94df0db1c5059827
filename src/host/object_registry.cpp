// object_registry.cpp: owns the nodes of an application's objects and leads names to them.
#include "object_registry.h"

#include <utility>

namespace kelhost {

ObjectRegistry::~ObjectRegistry() { reclaim(); }

void ObjectRegistry::publish(NamedNode &node) { names_.emplace(node.qualified_name, &node); }

NamedNode *ObjectRegistry::named(std::string_view qualified_name) const noexcept {
    const auto found = names_.find(qualified_name);
    return found == names_.end() ? nullptr : found->second;
}

Node *ObjectRegistry::node_of(const kl_object_t *object) const noexcept {
    const auto found = nodes_.find(object);
    return found == nodes_.end() ? nullptr : found->second.get();
}

std::unique_ptr<Node> ObjectRegistry::take_out(Node &node) noexcept {
    if (auto *named_node = as<NamedNode>(&node)) {
        const auto name = names_.find(named_node->qualified_name);
        if (name != names_.end() && name->second == named_node) names_.erase(name);
    }
    const auto found = nodes_.find(&node.object);
    std::unique_ptr<Node> taken = std::move(found->second);
    nodes_.erase(found);
    return taken;
}

void ObjectRegistry::discard(Node &node) noexcept { take_out(node); }

void ObjectRegistry::retire(Node &node) noexcept {
    Node *const retired = take_out(node).release();
    empty(*retired);
    retired->next_retired = std::exchange(retired_, retired);
}

void ObjectRegistry::empty(Node &node) noexcept {
    if (app_.pressed_control != nullptr && &app_.pressed_control->object == &node.object)
        app_.pressed_control = nullptr;
    if (auto *group = as<GroupNode>(&node)) group->record.control_list = no_children_.array();
    if (auto *table = as<TableNode>(&node)) {
        table->record.rows = table->record.cols = 0;
        table->record.controls = nullptr;
        table->record.template_controls = nullptr;
        table->record.active_control = nullptr;
    }
}

void ObjectRegistry::reclaim() noexcept {
    while (retired_ != nullptr) {
        const std::unique_ptr<Node> gone(retired_);
        retired_ = gone->next_retired;
    }
}

} // namespace kelhost
