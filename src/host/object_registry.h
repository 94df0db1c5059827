// object_registry.h: owns the nodes of an application's objects, leads names to them, and keeps deleted ones readable
// until nobody can hold them any more.
#pragma once

#include <memory>
#include <string_view>
#include <unordered_map>

#include <kel/kel.h>

#include "data_manager.h"
#include "log.h"
#include "object_nodes.h"

namespace kelhost {

class ObjectRegistry {
public:
    explicit ObjectRegistry(kl_application_t &app) : app_(app) {}
    ~ObjectRegistry();
    ObjectRegistry(const ObjectRegistry &) = delete;
    ObjectRegistry &operator=(const ObjectRegistry &) = delete;

    // Takes a node over. Its name leads nowhere until publish(), before which nothing else may have that name.
    template <typename T> T &add(std::unique_ptr<T> node) {
        T &added = *node;
        nodes_.emplace(&added.object, std::move(node));
        return added;
    }
    void publish(NamedNode &node);

    // The node that has this name, a template's being its cells'; whether or not the name leads to an object now.
    NamedNode *named(std::string_view qualified_name) const noexcept;
    // The node of a record; null for a record that is not, or no longer, an object of this application.
    Node *node_of(const kl_object_t *object) const noexcept;

    // Undoes add() and publish(): the node is gone.
    void discard(Node &node) noexcept;
    // As discard, but the record stays readable until reclaim(): without children, and found by nobody.
    void retire(Node &node) noexcept;
    void reclaim() noexcept;

private:
    std::unique_ptr<Node> take_out(Node &node) noexcept;
    void empty(Node &node) noexcept;

    kl_application_t &app_;
    std::unordered_map<const kl_object_t *, std::unique_ptr<Node>> nodes_;
    std::unordered_map<std::string_view, NamedNode *> names_; // the characters are the nodes'
    Node *retired_ = nullptr;
    ObjectList no_children_; // what a retired container lists
};

// What every room of the model works on.
struct ModelContext {
    kl_application_t &app;
    DataManager &data;
    Log &log;
    ObjectRegistry &objects;
};

} // namespace kelhost
