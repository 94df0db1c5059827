// lifecycle_fixture.h: a model with something of each kind to clone and delete.
#pragma once

#include <string>
#include <string_view>

#include "model_fixture.h"

// Layers "main" and "popup", screen "home" with "main", and something of each kind on "main".
inline kelhost::ApplicationDescription sample() {
    auto ok = control("ok", {10, 20, 100, 40});
    ok.hidden = true;
    ok.draw.fill = "#102030";
    ok.variables = {
        {"text",  DataType::string, "OK"},
        {"ratio", DataType::f64,    0.5 }
    };

    auto row = cell_template("row", {
                                        {"text", DataType::string, "-"}
    });
    row.width = 30;
    row.height = 10;
    row.draw.align = "center";
    auto list = table("list", 2, 2,
                      {
                          row, cell_template("head", {{"on", DataType::u8, 0.0}}
                            )
    });
    list.geometry = {1, 2, 60, 20};
    list.cells = cells({
        {"head", "row"},
        {"row",  "row"}
    });
    list.variables = {
        {"title", DataType::string, "List"}
    };

    auto bar = group("bar", {control("ok", {1, 1, 2, 2}), group("inner", {control("leaf")}), list});
    bar.geometry = {5, 6, 0, 0};
    bar.variables = {
        {"open", DataType::u8, 1.0}
    };

    auto description = application({ok, bar, group("other"), list});
    description.layers.push_back({"popup", {}, {}, {{"mode", DataType::u8, 1.0}}, {}, {control("close")}});
    return description;
}

struct Lifecycle : ModelFixture {
    Lifecycle() { build(sample()); }

    // The clone's qualified name, or "refused".
    std::string clone(std::string_view source, std::string_view name, std::string_view parent) {
        const std::string *made = model.clone(source, name, parent);
        return made == nullptr ? "refused" : *made;
    }

    // Everything that scripts can see of the model.
    std::string snapshot() {
        std::string text;
        for (const auto &key : data.keys("")) text += key + "=" + variable(key) + "\n";
        for (const char *layer : {"main", "popup"}) text += tree(find(layer), list_of(layer));
        return text;
    }

    std::string tree(kl_object_t *object, kl_darray_t *list) {
        std::string text = model.qualified_name(object) + "{";
        for (int position = 0; position < kl_darray_size(list); ++position) {
            auto &child = **static_cast<kl_control_t **>(kl_darray_item(list, position));
            CHECK(child.zindex == position);
            CHECK(find(model.qualified_name(&child.object)) == &child.object);
            text += described(child) + " ";
        }
        return text + "}\n";
    }

    std::string described(kl_control_t &record) {
        if (record.object.type == KL_OBJECT_TYPE_GROUP) {
            return tree(&record.object, reinterpret_cast<kl_group_t &>(record).control_list);
        }
        std::string text = model.qualified_name(&record.object);
        if (record.object.type == KL_OBJECT_TYPE_TABLE)
            text += "[" + names_in(reinterpret_cast<kl_table_t &>(record)) + "]";
        return text;
    }
};
