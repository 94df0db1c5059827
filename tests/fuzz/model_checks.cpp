// model_checks.cpp: walks the records as a plug-in sees them, and asks the host for each by name.
#include "model_checks.h"

#include <string>

#include "fuzzer.h"

namespace fuzz {

namespace {

class Walk {
public:
    explicit Walk(kelhost::Runtime &runtime) : runtime_(runtime) {}

    void layer(const std::string &name, kl_layer_t &layer) {
        require_named(layer.object, name);
        children(layer.control_list, name);
    }
    void screen(const std::string &name, kl_screen_t &screen);

private:
    void require_named(kl_object_t &object, const std::string &name) {
        require(runtime_.model.find(name) == &object, name + " does not lead to its object");
        require(runtime_.model.qualified_name(&object) == name, name + ": its object has another name");
    }
    void children(kl_darray_t *list, const std::string &container);
    void child(kl_control_t &control, const std::string &container);
    void table(kl_table_t &table, const std::string &name, const std::string &container);
    void require_size(const std::string &key, unsigned size);

    kelhost::Runtime &runtime_;
};

void Walk::screen(const std::string &name, kl_screen_t &screen) {
    require_named(screen.object, name);
    for (int index = 0; index < kl_darray_size(screen.layer_list); ++index) {
        auto &instance = **static_cast<kl_layer_instance_t **>(kl_darray_item(screen.layer_list, index));
        require(instance.screen == &screen, name + ": an instance is another screen's");
        require_named(instance.object, name + "." + instance.layer->name);
    }
}

void Walk::children(kl_darray_t *list, const std::string &container) {
    for (int index = 0; index < kl_darray_size(list); ++index) {
        kl_control_t *control = *static_cast<kl_control_t **>(kl_darray_item(list, index));
        require(control != nullptr, container + " lists nothing");
        child(*control, container);
    }
}

void Walk::child(kl_control_t &control, const std::string &container) {
    const std::string name = container + "." + control.name;
    require_named(control.object, name);
    if (control.object.type == KL_OBJECT_TYPE_GROUP)
        children(reinterpret_cast<kl_group_t &>(control).control_list, name);
    if (control.object.type == KL_OBJECT_TYPE_TABLE) table(reinterpret_cast<kl_table_t &>(control), name, container);
}

void Walk::table(kl_table_t &table, const std::string &name, const std::string &container) {
    require_size(name + ".kld_rows", table.rows);
    require_size(name + ".kld_cols", table.cols);
    for (int row = 0; row < table.rows; ++row) {
        for (int col = 0; col < table.cols; ++col) {
            kl_control_t *cell = table.controls[row][col];
            require(cell != nullptr, name + " has no cell where one is counted");
            const std::string shared = container + "." + cell->name;
            require(runtime_.model.qualified_name(&cell->object) == shared, shared + ": a cell has another name");
            const kl_object_t *first = runtime_.model.find(shared);
            require(first != nullptr && reinterpret_cast<const kl_control_t *>(first)->name == cell->name,
                    shared + " does not lead to a cell of its template");
        }
    }
}

void Walk::require_size(const std::string &key, unsigned size) {
    const auto *variable = runtime_.data.find(key);
    require(variable != nullptr, "there is no " + key);
    require(kelhost::to_text(variable->value) == std::to_string(size),
            key + " is " + kelhost::to_text(variable->value) + ", but the grid has " + std::to_string(size));
}

} // namespace

void require_whole(kelhost::Runtime &runtime) {
    require(runtime.data.hold_depth() == 0, "changes are still held");
    Walk walk(runtime);
    for (const auto &[name, layer] : runtime.layers.entries) walk.layer(name, *static_cast<kl_layer_t *>(layer));
    for (const auto &[name, screen] : runtime.screens.entries) walk.screen(name, *static_cast<kl_screen_t *>(screen));
    for (const std::string &key : runtime.data.keys(""))
        require(!runtime.model.refuses_key(key), "variable " + key + " belongs to nothing");
}

} // namespace fuzz
