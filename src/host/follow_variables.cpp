// follow_variables.cpp: keeps the records of objects in step with the property variables that scripts write.
// A record's field follows its variable one way; nothing here writes a field's value back, but for a table's refused
// size.
#include "follow_variables.h"

#include <string>
#include <variant>

#include "geometry.h"
#include "table_grid.h"

namespace kelhost {

namespace {

// One row a property: how the number of its variable goes into a record.
template <typename Record> struct Property {
    std::string_view variable;
    void (*apply)(Record &record, double number) noexcept;
};

template <typename Record, std::size_t count>
void apply(const Property<Record> (&properties)[count], Record &record, std::string_view variable, double number) {
    for (const Property<Record> &property : properties) {
        if (property.variable == variable) return property.apply(record, number);
    }
}

template <typename Record> void set_hidden(Record &record, double number) noexcept {
    const std::uint16_t others = record.flags & static_cast<std::uint16_t>(~flag_hidden);
    record.flags = number == 0 ? others : static_cast<std::uint16_t>(others | flag_hidden);
}

void set_x(kl_control_t &control, double number) noexcept {
    control.rect = make_rect(to_coordinate(number), control.rect.top, control.size);
}

void set_y(kl_control_t &control, double number) noexcept {
    control.rect = make_rect(control.rect.left, to_coordinate(number), control.size);
}

void set_width(kl_control_t &control, double number) noexcept {
    control.size.width = to_coordinate(number);
    control.rect = make_rect(control.rect.left, control.rect.top, control.size);
}

void set_height(kl_control_t &control, double number) noexcept {
    control.size.height = to_coordinate(number);
    control.rect = make_rect(control.rect.left, control.rect.top, control.size);
}

void set_width(kl_layer_t &layer, double number) noexcept {
    layer.size.width = to_coordinate(number);
    layer.viewport = make_rect(0, 0, layer.size);
}

void set_height(kl_layer_t &layer, double number) noexcept {
    layer.size.height = to_coordinate(number);
    layer.viewport = make_rect(0, 0, layer.size);
}

void set_x(kl_layer_instance_t &instance, double number) noexcept { instance.x = to_coordinate(number); }
void set_y(kl_layer_instance_t &instance, double number) noexcept { instance.y = to_coordinate(number); }

void set_alpha(kl_layer_instance_t &instance, double number) noexcept {
    instance.alpha = to_field<std::uint8_t>(number);
}

constexpr Property<kl_control_t> control_properties[] = {
    {"kld_x",      set_x     },
    {"kld_y",      set_y     },
    {"kld_width",  set_width },
    {"kld_height", set_height},
    {"kld_hidden", set_hidden},
};

constexpr Property<kl_layer_t> layer_properties[] = {
    {"kld_width",  set_width },
    {"kld_height", set_height},
};

constexpr Property<kl_layer_instance_t> layer_instance_properties[] = {
    {"kld_x",      set_x     },
    {"kld_y",      set_y     },
    {"kld_alpha",  set_alpha },
    {"kld_hidden", set_hidden},
};

void show(NamedNode &node, std::string_view variable, double number) noexcept {
    if (kl_control_t *control = control_of(node)) {
        apply(control_properties, *control, variable, number);
    } else if (auto *layer = as<LayerNode>(&node)) {
        apply(layer_properties, layer->record, variable, number);
    } else if (auto *instance = as<LayerInstanceNode>(&node)) {
        apply(layer_instance_properties, instance->record, variable, number);
    }
}

// An object's property by its key: "main.ok.kld_x".
struct ObjectProperty {
    NamedNode *node = nullptr; // null when the key is no property of an object
    std::string_view variable;
};

ObjectProperty property_of(const ObjectRegistry &objects, std::string_view key) noexcept {
    const std::size_t dot = key.rfind('.');
    if (dot == std::string_view::npos) return {};
    const std::string_view variable = key.substr(dot + 1);
    if (!variable.starts_with("kld_")) return {};
    return {objects.named(key.substr(0, dot)), variable};
}

} // namespace

void show_variable(const ObjectRegistry &objects, std::string_view key, const Value &value) noexcept {
    const auto [node, variable] = property_of(objects, key);
    const double *number = std::get_if<double>(&value);
    if (node != nullptr && number != nullptr) show(*node, variable, *number);
}

void follow_variable(ModelContext &context, std::string_view key) noexcept {
    const auto [node, variable] = property_of(context.objects, key);
    if (node == nullptr) return;
    auto *table = as<TableNode>(node);
    if (table != nullptr && (variable == "kld_rows" || variable == "kld_cols")) {
        follow_size_variables(context, *table);
        return;
    }
    const auto *changed = context.data.find(key);
    const double *number = changed == nullptr ? nullptr : std::get_if<double>(&changed->value);
    if (number != nullptr) show(*node, variable, *number);
}

} // namespace kelhost
