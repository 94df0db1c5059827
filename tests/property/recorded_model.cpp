// recorded_model.cpp: the recording host's model, made from a description.
#include "recorded_model.h"

#include "recording_host.h"

template <typename Record> static Record *as(void *record) { return static_cast<Record *>(record); }

static void *make_record(const Object &object, const std::vector<void *> &records) {
    const char *name = object.name.c_str();
    switch (object.type) {
    case application_code:
        return recording_app();
    case group_code:
        return recording_make_group(name);
    case layer_code:
        return recording_make_layer(name);
    case screen_code:
        return recording_make_screen(name);
    case instance_code:
        return recording_make_instance(as<kl_screen_t>(records.at(static_cast<std::size_t>(object.screen))),
                                       as<kl_layer_t>(records.at(static_cast<std::size_t>(object.layer))));
    case table_code: {
        kl_group_t *workshop = recording_make_group("workshop"); // tables are only made in a list
        kl_table_t *table = recording_add_table(workshop, name, object.rows, object.cols);
        recording_list_take_out(workshop, table);
        return table;
    }
    default:
        return recording_make_control(static_cast<kl_object_type_t>(object.type), name);
    }
}

static void fill(const Object &object, void *record, const std::vector<void *> &records) {
    for (ObjectIndex entry : object.list)
        recording_list_append(record, entry == nobody ? nullptr : records[static_cast<std::size_t>(entry)]);
    for (std::size_t y = 0; y < object.cells.size(); ++y)
        for (std::size_t x = 0; x < object.cells[y].size(); ++x)
            recording_set_cell(as<kl_table_t>(record), static_cast<int>(y), static_cast<int>(x),
                               records[static_cast<std::size_t>(object.cells[y][x])]);
}

void write_recorded_variable(const std::string &key, const Value &value) {
    if (value.type == Value::number) recording_set_number(key.c_str(), value.number_value);
    if (value.type == Value::string) recording_set_string(key.c_str(), value.text.c_str());
    if (value.type == Value::boolean) recording_set_boolean(key.c_str(), value.number_value != 0);
}

std::vector<void *> build_recorded_model(const Description &description) {
    std::vector<void *> records;
    for (const Object &object : description.objects) records.push_back(make_record(object, records));
    for (std::size_t i = 0; i < records.size(); ++i) fill(description.objects[i], records[i], records);
    auto record = [&](ObjectIndex object) { return records[static_cast<std::size_t>(object)]; };
    for (const auto &[key, object] : description.screen_map)
        recording_put_screen(key.c_str(), as<kl_screen_t>(record(object)));
    for (const auto &[key, object] : description.layer_map)
        recording_put_layer(key.c_str(), as<kl_layer_t>(record(object)));
    for (const auto &[name, object] : description.names) recording_resolve(name.c_str(), record(object));
    for (const auto &[key, value] : description.variables) write_recorded_variable(key, value);
    return records;
}
