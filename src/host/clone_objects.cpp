// clone_objects.cpp: copies controls, tables and groups with all that they contain.
// All checks come before the first change; what is made is staged, so that running out of memory leaves nothing behind.
#include "clone_objects.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include "follow_variables.h"
#include "geometry.h"
#include "model.h"
#include "staging.h"
#include "table_grid.h"
#include "validate.h"
#include "wording.h"

namespace kelhost {

namespace {

// ---- Checks

// What is to be cloned, and the words for it in warnings.
struct Order {
    NamedNode *source = nullptr;
    ContainerNode *parent = nullptr;
    std::string name; // the clone's qualified name
    std::string text; // "main.ok as main.bar.ok", less as long as less is known
};

bool refuse(const ModelContext &context, const Order &order, const std::string &why) {
    context.log.write(KL_LOG_WARNING, "Cannot clone " + order.text + ": " + why);
    return false;
}

bool has_source(const ModelContext &context, Order &order, std::string_view source) {
    order.text = shown_name(source);
    order.source = context.objects.named(source);
    if (order.source == nullptr || order.source->resolved == nullptr) return refuse(context, order, "no such object");
    if (is_element(*order.source)) return true;
    return refuse(context, order,
                  std::string("it is ") + named_kind_text(*order.source)
                      + "; only controls, tables and groups can be cloned");
}

bool has_name(const ModelContext &context, Order &order, std::string_view name) {
    order.text += " as " + quoted(name);
    if (!name.empty() && is_valid_name(name)) return true;
    return refuse(context, order, R"(a name has letters, digits and "_" only)");
}

bool has_parent(const ModelContext &context, Order &order, std::string_view parent) {
    NamedNode *const node = context.objects.named(parent);
    order.parent = as<ContainerNode>(node);
    if (order.parent != nullptr) return true;
    order.text += " into " + shown_name(parent);
    if (node == nullptr || node->resolved == nullptr) return refuse(context, order, "no such parent");
    return refuse(context, order,
                  std::string("the parent is ") + named_kind_text(*node) + "; only layers and groups hold controls");
}

// Groups around a container, itself counted.
int depth_of(ContainerNode &container) noexcept {
    int depth = 0;
    for (kl_control_t *group = control_of(container); group != nullptr; group = group->parent) ++depth;
    return depth;
}

// Groups within each other in an object, itself counted.
int height_of(const ModelContext &context, NamedNode &node) noexcept {
    auto *group = as<GroupNode>(&node);
    if (group == nullptr) return 0;
    int highest = 0;
    for (int child = 0; child < group->children.size(); ++child) {
        auto *below = as<NamedNode>(context.objects.node_of(group->children.at(child)));
        highest = std::max(highest, height_of(context, *below));
    }
    return highest + 1;
}

bool holds(NamedNode &source, ContainerNode &parent) noexcept {
    const kl_control_t *const top = control_of(source);
    for (const kl_control_t *group = control_of(parent); group != nullptr; group = group->parent) {
        if (group == top) return true;
    }
    return false;
}

bool fits_parent(const ModelContext &context, const Order &order) {
    if (holds(*order.source, *order.parent)) return refuse(context, order, "a group cannot hold its own clone");
    const int depth = depth_of(*order.parent) + height_of(context, *order.source);
    if (depth <= deepest_nesting) return true;
    return refuse(context, order,
                  "groups would nest " + std::to_string(depth) + " deep, " + std::to_string(deepest_nesting)
                      + " is the most");
}

// Why the name cannot be a new object's; null when it can.
const char *refuses_new_name(const ModelContext &context, const std::string &name) {
    if (context.objects.named(name) != nullptr) return "is taken";
    if (context.data.find(name) != nullptr) return "is a variable's key";
    if (!context.data.keys(name + ".").empty()) return "has variables already";
    return nullptr;
}

std::string cell_name(const TemplateNode &made, const Order &order) {
    return join_name(order.parent->qualified_name, made.record.name);
}

bool has_free_names(const ModelContext &context, const Order &order) {
    if (const char *why = refuses_new_name(context, order.name)) {
        return refuse(context, order, std::string("the name ") + why);
    }
    auto *table = as<TableNode>(order.source);
    if (table == nullptr) return true; // what a group holds has names of its own below the group's
    for (const TemplateNode *made : table->templates) {
        const std::string name = cell_name(*made, order);
        const char *why = name == order.name ? "is the table's" : refuses_new_name(context, name);
        if (why != nullptr) return refuse(context, order, "its cells' name " + name + " " + why);
    }
    return true;
}

// ---- Copies

class Copier {
public:
    explicit Copier(Staging &staging) : staging_(staging), context_(staging.context()) {}

    NamedNode &copy(NamedNode &source, ContainerNode &parent, std::string_view name);
    void copy_variables(const std::string &from, const std::string &to);

private:
    ControlNode &copy_control(ControlNode &source, ContainerNode &parent, std::string_view name);
    GroupNode &copy_group(GroupNode &source, ContainerNode &parent, std::string_view name);
    TableNode &copy_table(TableNode &source, ContainerNode &parent, std::string_view name);
    void copy_template(TemplateNode &source, TableNode &table);

    Staging &staging_;
    ModelContext &context_;
};

void copy_look(const kl_control_t &from, kl_control_t &to) noexcept {
    to.flags = from.flags;
    to.size = from.size;
    to.rect = from.rect;
}

NamedNode &Copier::copy(NamedNode &source, ContainerNode &parent, std::string_view name) {
    NamedNode &made = [&]() -> NamedNode & {
        if (auto *group = as<GroupNode>(&source)) return copy_group(*group, parent, name);
        if (auto *table = as<TableNode>(&source)) return copy_table(*table, parent, name);
        return copy_control(static_cast<ControlNode &>(source), parent, name);
    }();
    made.draw = source.draw;
    copy_look(*control_of(source), *control_of(made));
    return made;
}

ControlNode &Copier::copy_control(ControlNode &, ContainerNode &parent, std::string_view name) {
    auto &made = staging_.make<ControlNode>(parent, name);
    staging_.publish(made);
    return made;
}

GroupNode &Copier::copy_group(GroupNode &source, ContainerNode &parent, std::string_view name) {
    auto &made = staging_.make<GroupNode>(parent, name);
    staging_.publish(made);
    for (int position = 0; position < source.children.size(); ++position) {
        auto &child = *as<NamedNode>(context_.objects.node_of(source.children.at(position)));
        NamedNode &copied = copy(child, made, child.own_name());
        control_of(copied)->zindex = control_of(child)->zindex;
        made.children.add(copied.object);
    }
    return made;
}

TableNode &Copier::copy_table(TableNode &source, ContainerNode &parent, std::string_view name) {
    auto &made = staging_.make<TableNode>(parent, name);
    staging_.publish(made);
    for (TemplateNode *one : source.templates) copy_template(*one, made);
    const auto alike = [&](int row, int col) -> TemplateNode & {
        return *made.templates[source.template_of(*source.record.controls[row][col]).index];
    };
    set_grid(staging_, made, {source.record.rows, source.record.cols}, alike, CellVariables::left_out);
    return made;
}

void Copier::copy_template(TemplateNode &source, TableNode &table) {
    auto &made = staging_.make<TemplateNode>(table, source.record.name);
    staging_.publish(made);
    made.draw = source.draw;
    made.variables = source.variables;
    copy_look(source.record, made.record);
    table.add_template(made);
}

// The source's records lag behind its variables while changes wait to be told. Nobody is told of the clone's variables,
// so its records take them as they are now.
void Copier::copy_variables(const std::string &from, const std::string &to) {
    const std::string prefix = from + ".";
    for (const std::string &key : context_.data.keys(prefix)) {
        const DataManager::Variable &variable = *context_.data.find(key);
        std::string made = join_name(to, std::string_view(key).substr(prefix.size()));
        show_variable(context_.objects, made, variable.value);
        staging_.create_variable(std::move(made), variable.type, variable.value);
    }
}

// All variables that the clone is to have stand below its name, but for those of its cells' names.
void copy_all_variables(Copier &copier, const Order &order) {
    copier.copy_variables(order.source->qualified_name, order.name);
    auto *table = as<TableNode>(order.source);
    if (table == nullptr) return;
    for (const TemplateNode *made : table->templates) {
        copier.copy_variables(made->qualified_name, cell_name(*made, order));
    }
}

NamedNode &make_clone(ModelContext &context, const Order &order, std::string_view name) {
    Staging staging(context);
    Copier copier(staging);
    NamedNode &clone = copier.copy(*order.source, *order.parent, name);
    copy_all_variables(copier, order);

    control_of(clone)->zindex = static_cast<std::uint16_t>(order.parent->children.size());
    order.parent->children.add(clone.object);
    for (Node *made : staging.keep()) {
        if (auto *table = as<TableNode>(made)) follow_size_variables(context, *table); // as with all variables above
    }
    return clone;
}

} // namespace

const NamedNode *clone_object(ModelContext &context, std::string_view source, std::string_view name,
                              std::string_view parent) {
    Order order;
    if (!has_source(context, order, source)) return nullptr;
    if (!has_name(context, order, name)) return nullptr;
    if (!has_parent(context, order, parent)) return nullptr;
    order.name = join_name(order.parent->qualified_name, name);
    order.text = order.source->qualified_name + " as " + order.name;
    if (!fits_parent(context, order)) return nullptr;
    if (!has_free_names(context, order)) return nullptr;
    return &make_clone(context, order, name);
}

} // namespace kelhost
