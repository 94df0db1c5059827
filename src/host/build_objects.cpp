// build_objects.cpp: makes all objects and variables of an application from its description.
#include "build_objects.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cell_key.h"
#include "geometry.h"
#include "staging.h"
#include "string_map.h"
#include "table_grid.h"

namespace kelhost {

namespace {

std::shared_ptr<const DrawHints> share_hints(const DrawHints &hints) {
    const bool none =
        hints.fill.empty() && hints.color.empty() && hints.text.empty() && hints.font_size == 0 && hints.align.empty();
    return none ? nullptr : std::make_shared<const DrawHints>(hints);
}

std::uint16_t flags_of(bool hidden) noexcept { return hidden ? flag_hidden : std::uint16_t{0}; }

void link_to_application(kl_string_map_t &map, const std::string &name, kl_object_t &object) {
    map.entries.insert({name, &object});
}

class Builder {
public:
    explicit Builder(ModelContext &context) : context_(context) {}

    void build_layer(const LayerDescription &description);
    void build_screen(const ScreenDescription &description);
    void create_variable(std::string_view owner, std::string_view name, DataType type, const Value &value);
    void create_variables(std::string_view owner, const std::vector<VariableDescription> &variables);

private:
    template <typename T, typename... Arguments> T &make(Arguments &&...arguments);

    void build_element(const ElementDescription &element, ContainerNode &container);
    void build_control(const ElementDescription &element, ContainerNode &container);
    void build_group(const ElementDescription &element, ContainerNode &container);
    void build_table(const ElementDescription &element, ContainerNode &container);
    void build_template(const TemplateDescription &description, TableNode &table);
    void build_cells(const ElementDescription &element, TableNode &table);
    void create_cell_variables(const ElementDescription &element, const TableNode &table);
    void add_child(NamedNode &node, const ElementDescription &element, ContainerNode &container);
    void build_instance(const LayerInstanceDescription &description, ScreenNode &screen);

    void create_number(std::string_view owner, std::string_view name, DataType type, double number) {
        create_variable(owner, name, type, number);
    }
    void create_position(std::string_view owner, double x, double y);
    void create_size(std::string_view owner, double width, double height);

    ModelContext &context_;
    std::string key_; // kept for its room: a large application has many keys to make
};

template <typename T, typename... Arguments> T &Builder::make(Arguments &&...arguments) {
    T &made = context_.objects.add(std::make_unique<T>(std::forward<Arguments>(arguments)...));
    context_.objects.publish(made);
    return made;
}

void Builder::create_variable(std::string_view owner, std::string_view name, DataType type, const Value &value) {
    key_.assign(owner);
    if (!owner.empty()) key_ += '.'; // the application's variables have their bare name
    key_ += name;
    context_.data.create(key_, type, value);
}

void Builder::create_variables(std::string_view owner, const std::vector<VariableDescription> &variables) {
    for (const auto &variable : variables) create_variable(owner, variable.name, variable.type, variable.value);
}

void Builder::create_position(std::string_view owner, double x, double y) {
    create_number(owner, "kld_x", DataType::i16, x);
    create_number(owner, "kld_y", DataType::i16, y);
}

void Builder::create_size(std::string_view owner, double width, double height) {
    create_number(owner, "kld_width", DataType::i16, width);
    create_number(owner, "kld_height", DataType::i16, height);
}

void Builder::build_layer(const LayerDescription &description) {
    auto &layer = make<LayerNode>(context_.app, description.name);
    const kl_render_size_t whole = context_.app.size;
    layer.draw = share_hints(description.draw);
    layer.record.size = make_size(description.width.value_or(whole.width), description.height.value_or(whole.height));
    layer.record.viewport = make_rect(0, 0, layer.record.size);
    link_to_application(*context_.app.layer_map, description.name, layer.object);

    create_size(description.name, layer.record.size.width, layer.record.size.height);
    create_variables(description.name, description.variables);
    for (const auto &child : description.children) build_element(child, layer);
}

void Builder::build_element(const ElementDescription &element, ContainerNode &container) {
    switch (element.kind) {
    case ElementKind::control:
        return build_control(element, container);
    case ElementKind::table:
        return build_table(element, container);
    case ElementKind::group:
        return build_group(element, container);
    }
}

// What controls, tables and groups have in common.
void Builder::add_child(NamedNode &node, const ElementDescription &element, ContainerNode &container) {
    const Geometry &place = element.geometry;
    kl_control_t &record = *control_of(node);
    if (element.kind != ElementKind::group) record.size = make_size(place.width, place.height);
    record.rect = make_rect(to_coordinate(place.x), to_coordinate(place.y), record.size);
    record.flags = flags_of(element.hidden);
    record.zindex = static_cast<std::uint16_t>(container.children.size());
    container.children.add(node.object);
    node.draw = share_hints(element.draw);

    create_position(node.qualified_name, place.x, place.y);
    if (element.kind != ElementKind::group) create_size(node.qualified_name, place.width, place.height);
    create_number(node.qualified_name, "kld_hidden", DataType::u8, element.hidden ? 1 : 0);
    create_variables(node.qualified_name, element.variables);
}

void Builder::build_control(const ElementDescription &element, ContainerNode &container) {
    add_child(make<ControlNode>(container, element.name), element, container);
}

void Builder::build_group(const ElementDescription &element, ContainerNode &container) {
    auto &group = make<GroupNode>(container, element.name);
    add_child(group, element, container);
    for (const auto &child : element.children) build_element(child, group);
}

void Builder::build_table(const ElementDescription &element, ContainerNode &container) {
    auto &table = make<TableNode>(container, element.name);
    add_child(table, element, container);
    create_number(table.qualified_name, "kld_rows", DataType::u16, element.rows);
    create_number(table.qualified_name, "kld_cols", DataType::u16, element.cols);
    for (const auto &description : element.templates) build_template(description, table);
    build_cells(element, table);
}

void Builder::build_template(const TemplateDescription &description, TableNode &table) {
    auto &made = make<TemplateNode>(table, description.name);
    made.draw = share_hints(description.draw);
    made.record.size = make_size(description.width, description.height);
    made.record.rect = make_rect(0, 0, made.record.size);
    made.variables = std::make_shared<const std::vector<VariableDescription>>(description.variables);
    table.add_template(made);
}

void Builder::build_cells(const ElementDescription &element, TableNode &table) {
    create_cell_variables(element, table); // first: a cell's own stand instead of the template's
    const auto choose = [&](int row, int col) -> TemplateNode & {
        if (element.cells.empty()) return *table.templates.front();
        const auto &cell = element.cells[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)];
        const std::string name = join_name(container_name(table.qualified_name), cell.template_name);
        return *as<TemplateNode>(context_.objects.named(name));
    };
    const GridSize size{static_cast<std::uint16_t>(element.rows), static_cast<std::uint16_t>(element.cols)};
    Staging staging(context_);
    set_grid(staging, table, size, choose, CellVariables::created);
    staging.keep();
}

void Builder::create_cell_variables(const ElementDescription &element, const TableNode &table) {
    for (std::size_t row = 0; row < element.cells.size(); ++row) {
        for (std::size_t col = 0; col < element.cells[row].size(); ++col) {
            for (const auto &variable : element.cells[row][col].variables) {
                context_.data.create(
                    make_cell_key(table.qualified_name, variable.name, static_cast<int>(row), static_cast<int>(col)),
                    variable.type, variable.value);
            }
        }
    }
}

void Builder::build_screen(const ScreenDescription &description) {
    auto &screen = make<ScreenNode>(context_.app, description.name);
    link_to_application(*context_.app.screen_map, description.name, screen.object);
    create_variables(description.name, description.variables);
    for (const auto &instance : description.layers) build_instance(instance, screen);
}

void Builder::build_instance(const LayerInstanceDescription &description, ScreenNode &screen) {
    LayerNode &layer = *as<LayerNode>(context_.objects.named(description.layer));
    auto &instance = make<LayerInstanceNode>(screen, layer);
    instance.record.flags = flags_of(description.hidden);
    instance.record.alpha = static_cast<std::uint16_t>(description.alpha);
    instance.record.x = to_coordinate(description.x);
    instance.record.y = to_coordinate(description.y);
    instance.record.index = instance.record.hwindex = screen.instances.size();
    screen.instances.add(instance.object);

    const std::string &name = instance.qualified_name;
    create_position(name, description.x, description.y);
    create_size(name, description.width.value_or(layer.record.size.width),
                description.height.value_or(layer.record.size.height));
    create_number(name, "kld_alpha", DataType::u8, description.alpha);
    create_number(name, "kld_hidden", DataType::u8, description.hidden ? 1 : 0);
    create_variables(name, description.variables);
}

ScreenNode *default_screen(ModelContext &context, const ApplicationDescription &description) noexcept {
    if (description.screens.empty()) return nullptr;
    const bool named = !description.default_screen.empty();
    return as<ScreenNode>(context.objects.named(named ? description.default_screen : description.screens.front().name));
}

} // namespace

void build_objects(ModelContext &context, const ApplicationDescription &description) {
    context.app.object.type = KL_OBJECT_TYPE_APP;
    context.app.size = make_size(description.width, description.height);

    Builder builder(context);
    builder.create_variables("", description.variables);
    for (const auto &layer : description.layers) builder.build_layer(layer);
    for (const auto &screen : description.screens) builder.build_screen(screen);

    ScreenNode *const first = default_screen(context, description);
    context.app.default_screen = first == nullptr ? nullptr : &first->record;
}

} // namespace kelhost
