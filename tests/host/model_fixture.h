// model_fixture.h: a model with its managers and log, without Lua, and words for describing applications.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include "data_manager.h"
#include "io_manager.h"
#include "model.h"
#include "string_map.h"
#include "support/block_ledger.h"
#include "support/captured_log.h"

using kelhost::DataType;
using kelhost::ElementDescription;
using kelhost::ElementKind;
using kelhost::Value;

// ---- Describing

inline ElementDescription element(ElementKind kind, std::string name) {
    ElementDescription made;
    made.kind = kind;
    made.name = std::move(name);
    return made;
}

inline ElementDescription control(std::string name, kelhost::Geometry geometry = {}) {
    auto made = element(ElementKind::control, std::move(name));
    made.geometry = geometry;
    return made;
}

inline ElementDescription group(std::string name, std::vector<ElementDescription> children = {}) {
    auto made = element(ElementKind::group, std::move(name));
    made.children = std::move(children);
    return made;
}

inline kelhost::TemplateDescription cell_template(std::string name,
                                                  std::vector<kelhost::VariableDescription> variables = {}) {
    kelhost::TemplateDescription made;
    made.name = std::move(name);
    made.variables = std::move(variables);
    return made;
}

inline ElementDescription table(std::string name, int rows, int cols,
                                std::vector<kelhost::TemplateDescription> templates) {
    auto made = element(ElementKind::table, std::move(name));
    made.rows = rows;
    made.cols = cols;
    made.templates = std::move(templates);
    return made;
}

// Cells that each have a template's name and no variables of their own.
inline std::vector<std::vector<kelhost::CellDescription>>
cells(const std::vector<std::vector<std::string>> &template_names) {
    std::vector<std::vector<kelhost::CellDescription>> made;
    for (const auto &row : template_names) {
        made.emplace_back();
        for (const auto &name : row) made.back().push_back({name, {}});
    }
    return made;
}

// An application with one layer "main", of that size, and one screen "home" that shows it.
inline kelhost::ApplicationDescription application(std::vector<ElementDescription> children) {
    kelhost::ApplicationDescription made;
    made.name = "sample";
    made.width = 480;
    made.height = 272;
    made.layers.push_back({"main", {}, {}, {}, {}, std::move(children)});
    kelhost::LayerInstanceDescription instance;
    instance.layer = "main";
    made.screens.push_back({"home", {}, {std::move(instance)}});
    return made;
}

// ---- Running

// The parts of a host that a model works on. Ends with no warning unread and no block left.
struct ModelFixture {
    ModelFixture() {
        app.screen_map = &screens;
        app.layer_map = &layers;
    }

    void build(const kelhost::ApplicationDescription &description) { model.build(description); }
    void build(std::vector<ElementDescription> children) { build(application(std::move(children))); }

    // What was warned of since this was last asked.
    std::string warnings() { return log.take(); }

    kl_object_t *find(std::string_view name) { return model.find(name); }
    template <typename Record> Record &record(std::string_view name) {
        kl_object_t *object = model.find(name);
        REQUIRE_MESSAGE(object != nullptr, name);
        return *reinterpret_cast<Record *>(object);
    }
    kl_control_t &control_record(std::string_view name) { return record<kl_control_t>(name); }
    kl_table_t &table_record(std::string_view name) { return record<kl_table_t>(name); }

    // What a layer or group lists.
    kl_darray_t *list_of(std::string_view name) {
        kl_object_t *container = &control_record(name).object;
        if (container->type == KL_OBJECT_TYPE_LAYER) return reinterpret_cast<kl_layer_t *>(container)->control_list;
        return reinterpret_cast<kl_group_t *>(container)->control_list;
    }

    // "i16 10", or "none" for a variable that does not exist.
    std::string variable(std::string_view key) {
        const auto *found = data.find(key);
        if (found == nullptr) return "none";
        return std::string(kelhost::data_type_name(found->type)) + " " + kelhost::to_text(found->value);
    }
    bool write(std::string_view key, const Value &value) {
        return data.write(key, kelhost::to_input(value)) != kelhost::WriteResult::refused;
    }
    // All keys with this start, each followed by a space.
    std::string keys(std::string_view prefix) {
        std::string text;
        for (const auto &key : data.keys(prefix)) text += key + " ";
        return text;
    }

    BlockLedger ledger;
    CapturedLog log;
    kelhost::IoManager io{log.log};
    kelhost::DataManager data{log.log, io};
    kl_string_map_t screens, layers;
    kl_application_t app{};
    kelhost::Model model{app, data, log.log};
};

// ---- Looking at records

// The names of the objects in a list, each followed by a space, as a plug-in's walk finds them.
inline std::string names_in(kl_darray_t *list) {
    std::string names;
    kl_darray_iter_t walk;
    kl_darray_iterator_init(&walk, list, 0);
    for (void *slot = walk.first(&walk, -1, -1); slot != nullptr; slot = walk.next(&walk, -1, -1)) {
        names += (*static_cast<kl_control_t **>(slot))->name;
        names += ' ';
    }
    return names;
}

// The names of a table's cells, "a b/c d" for two rows of two.
inline std::string names_in(const kl_table_t &table) {
    std::string names;
    for (int row = 0; row < table.rows; ++row) {
        if (row > 0) names += '/';
        for (int col = 0; col < table.cols; ++col) {
            if (col > 0) names += ' ';
            names += table.controls[row][col]->name;
        }
    }
    return names;
}

inline std::string rect_text(const kl_render_rect_t &rect) {
    return std::to_string(rect.left) + "," + std::to_string(rect.top) + "," + std::to_string(rect.right) + ","
           + std::to_string(rect.bottom);
}

inline std::string size_text(const kl_render_size_t &size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}
