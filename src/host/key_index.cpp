// key_index.cpp: what qualified names and keys lead to in a description.
#include "key_index.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "cell_key.h"
#include "model.h"

namespace kelhost {

namespace {

Owner owner_of(ElementKind kind) {
    if (kind == ElementKind::table) return Owner::table;
    return kind == ElementKind::group ? Owner::group : Owner::control;
}

std::string qualified(const std::string &container, const std::string &name) {
    return container.empty() ? name : container + '.' + name;
}

// "main.ok.kld_x" -> "main.ok" and "kld_x"; "mode" -> "" and "mode"
std::pair<std::string_view, std::string_view> cut_last(std::string_view key) {
    const std::size_t dot = key.rfind('.');
    if (dot == std::string_view::npos) return {{}, key};
    return {key.substr(0, dot), key.substr(dot + 1)};
}

const TemplateDescription *find_template(const ElementDescription &table, std::string_view name) {
    const auto found = std::find_if(table.templates.begin(), table.templates.end(),
                                    [name](const TemplateDescription &candidate) { return candidate.name == name; });
    return found != table.templates.end() ? &*found : nullptr;
}

} // namespace

KeyIndex::KeyIndex(const ApplicationDescription &description) {
    objects_.emplace("", Object{Owner::application, &description.variables});
    for (const LayerDescription &layer : description.layers) {
        objects_.emplace(layer.name, Object{Owner::layer, &layer.variables});
        add_elements(layer.children, layer.name, 0);
    }
    for (const ScreenDescription &screen : description.screens) {
        objects_.emplace(screen.name, Object{Owner::screen, &screen.variables});
        for (const LayerInstanceDescription &instance : screen.layers)
            objects_.emplace(qualified(screen.name, instance.layer),
                             Object{Owner::layer_instance, &instance.variables});
    }
}

bool KeyIndex::knows(std::string_view target) {
    if (target.empty() || target.front() == '.') return false;
    if (find(target) != nullptr) return true;
    const auto [owner, variable] = cut_last(target);
    const Object *object = find(owner);
    return (object != nullptr && has_variable(*object, variable)) || is_cell_key(target);
}

void KeyIndex::offer_names(std::string_view target, ClosestName &closest) const {
    for (const auto &[name, object] : objects_) closest.offer(name);
    const auto offer_variables = [&](std::string_view name) {
        const Object *object = find(name);
        if (object == nullptr || object->variables == nullptr) return;
        const auto offer = [&](std::string_view own) { closest.offer(qualified(std::string(name), std::string(own))); };
        for (const HostVariable &variable : host_variables_of(object->owner)) offer(variable.name);
        for (const VariableDescription &variable : *object->variables) offer(variable.name);
    };
    offer_variables("");
    if (const auto [owner, variable] = cut_last(target); !owner.empty()) offer_variables(owner);
}

void KeyIndex::add_elements(const std::vector<ElementDescription> &elements, const std::string &container, int depth) {
    if (depth > deepest_nesting) return;
    for (const ElementDescription &element : elements) {
        std::string name = qualified(container, element.name);
        // Templates give their names to cells, which may come while the application runs.
        for (const TemplateDescription &cell : element.templates)
            objects_.emplace(qualified(container, cell.name), Object{Owner::cell});
        add_elements(element.children, name, depth + 1);
        const bool is_table = element.kind == ElementKind::table;
        objects_.emplace(std::move(name),
                         Object{owner_of(element.kind), &element.variables, is_table ? &element : nullptr});
    }
}

const KeyIndex::Object *KeyIndex::find(std::string_view name) const noexcept {
    const auto found = objects_.find(name);
    return found != objects_.end() ? &found->second : nullptr;
}

bool KeyIndex::has_variable(const Object &object, std::string_view name) {
    if (host_variable(object.owner, name) != nullptr) return true;
    return object.variables != nullptr && has_own_variable(*object.variables, name);
}

bool KeyIndex::has_own_variable(const Variables &variables, std::string_view name) {
    const auto [entry, is_new] = variable_names_.try_emplace(&variables);
    if (is_new)
        for (const VariableDescription &variable : variables) entry->second.insert(variable.name);
    return entry->second.contains(name);
}

bool KeyIndex::is_cell_key(std::string_view target) {
    const std::optional<CellKey> key = split_cell_key(target);
    const Object *object = key ? find(key->table) : nullptr;
    if (object == nullptr || object->table == nullptr) return false;
    const std::optional<int> row = cell_position(key->row);
    const std::optional<int> col = cell_position(key->col);
    const ElementDescription &table = *object->table;
    if (!row || !col || *row >= table.rows || *col >= table.cols) return false;
    return has_cell_variable(table, static_cast<std::size_t>(*row), static_cast<std::size_t>(*col), key->variable);
}

bool KeyIndex::has_cell_variable(const ElementDescription &table, std::size_t row, std::size_t col,
                                 std::string_view name) {
    const TemplateDescription *made_from = table.templates.empty() ? nullptr : &table.templates.front();
    if (!table.cells.empty()) {
        if (row >= table.cells.size() || col >= table.cells[row].size()) return false;
        const CellDescription &cell = table.cells[row][col];
        if (has_own_variable(cell.variables, name)) return true;
        made_from = find_template(table, cell.template_name);
    }
    return made_from != nullptr && has_own_variable(made_from->variables, name);
}

} // namespace kelhost
