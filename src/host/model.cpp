// model.cpp: the objects of the application, as the rest of the host sees them.
#include "model.h"

#include <new>

#include "build_objects.h"
#include "clone_objects.h"
#include "follow_variables.h"
#include "key_policy.h"
#include "remove_objects.h"
#include "string_map.h"

namespace kelhost {

Model::Model(kl_application_t &app, DataManager &data, Log &log) : objects_(app), context_{app, data, log, objects_} {}

Model::~Model() {
    if (!listener_) return; // never built
    context_.data.remove_listener(*listener_);
    context_.data.set_key_policy(nullptr);
    kl_application_t &app = context_.app;
    app.screen_map->entries.clear();
    app.layer_map->entries.clear();
    app.name = app.path = nullptr;
    app.default_screen = nullptr;
}

void Model::build(const ApplicationDescription &description) {
    listener_ = context_.data.add_listener([this](std::string_view key) { follow_variable(context_, key); });
    context_.data.set_key_policy([this](std::string_view key) { return refuses_key(key); });
    name_ = description.name;
    path_ = description.folder;
    context_.app.name = name_.data();
    context_.app.path = path_.data();
    build_objects(context_, description);
}

kl_object_t *Model::find(std::string_view qualified_name) const noexcept {
    const NamedNode *node = objects_.named(qualified_name);
    return node == nullptr ? nullptr : node->resolved;
}

namespace {

// The node that an object has its name and looks from: a cell's are its template's.
const NamedNode *naming_node(const ObjectRegistry &objects, const kl_object_t *object) noexcept {
    Node *const node = objects.node_of(object);
    const auto *cell = as<CellNode>(node);
    return cell == nullptr ? as<NamedNode>(node) : &cell->made_from;
}

int length(std::string_view text) noexcept { return static_cast<int>(text.size()); }

} // namespace

std::string Model::qualified_name(const kl_object_t *object) const {
    const Node *self = objects_.node_of(object);
    if (self == nullptr || self->kind == NodeKind::cell_template) return {};
    return naming_node(objects_, object)->qualified_name;
}

const DrawHints *Model::draw_hints(const kl_object_t *object) const noexcept {
    static const DrawHints none;
    const NamedNode *node = naming_node(objects_, object);
    if (node == nullptr) return nullptr;
    return node->draw == nullptr ? &none : node->draw.get();
}

std::optional<std::string> Model::refuses_key(std::string_view key) const {
    return kelhost::refuses_key(objects_, key);
}

const std::string *Model::clone(std::string_view source, std::string_view name, std::string_view parent) {
    try {
        const NamedNode *made = clone_object(context_, source, name, parent);
        return made == nullptr ? nullptr : &made->qualified_name;
    } catch (const std::bad_alloc &) {
        context_.log.format(KL_LOG_WARNING, "Cannot clone %.*s as \"%.*s\" into %.*s: out of memory", length(source),
                            source.data(), length(name), name.data(), length(parent), parent.data());
        return nullptr;
    }
}

bool Model::remove(std::string_view name) {
    try {
        return remove_object(context_, name);
    } catch (const std::bad_alloc &) {
        context_.log.format(KL_LOG_WARNING, "Cannot delete %.*s: out of memory", length(name), name.data());
        return false;
    }
}

void Model::reclaim() noexcept { objects_.reclaim(); }

} // namespace kelhost
