// build_description.cpp: from bricks to an application, and from picks to the values that they stand for.
#include "random_case.h"

#include <algorithm>
#include <array>
#include <iterator>

static constexpr std::array own_names{"main", "ok", "bar", "list", "row", "home", "a.b", "ok-1", "7", "x_2"};
enum { main_name = 0, home_name = 5 }; // places in own_names
static constexpr std::array variable_names{"kld_x",     "kld_y",    "kld_width", "kld_height", "kld_hidden",
                                           "kld_alpha", "kld_rows", "kld_cols",  "text",       "7"};
static constexpr std::array texts{"abc", "",     "2",       "main",    " 3 ",     "0x2",
                                  "1e1", "ok-1", "nothing", "main.ok", "lost.ok", "259"};
static constexpr std::array numbers{0.0,   1.0,      2.0,     3.0,   10.0,     60.0,    51.0,    100.0,   -1.0,
                                    4.0,   257.0,    258.0,   259.0, -255.0,   40000.0, 65536.0, 65636.0, 161.0,
                                    -61.0, -32768.0, 32767.0, 99.0,  131172.0, 0.5,     2.5,     -2.5,    -1000.0};

template <typename Container> static const auto &picked(const Container &container, int pick) {
    return container[static_cast<std::size_t>(pick) % container.size()];
}

namespace {

class Builder {
public:
    Description build(const std::vector<Brick> &bricks) {
        for (const Brick &brick : bricks)
            if (brick.kind < Brick::misleading_name) add(brick);
        name_all();
        for (const Brick &brick : bricks)
            if (brick.kind >= Brick::misleading_name) add_data(brick);
        return app_;
    }

private:
    using Test = bool (*)(const Object &);

    static bool is_layer(const Object &object) { return object.type == layer_code; }
    static bool is_screen(const Object &object) { return object.type == screen_code; }
    static bool is_table(const Object &object) { return object.type == table_code; }
    static bool is_instance(const Object &object) { return object.type == instance_code; }
    static bool holds_controls(const Object &object) { return object.type == layer_code || object.type == group_code; }
    static bool has_list(const Object &object) { return holds_controls(object) || is_screen(object); }

    Object &at(ObjectIndex index) { return app_.objects[static_cast<std::size_t>(index)]; }

    ObjectIndex pick(Test test, int pick) const {
        std::vector<ObjectIndex> found;
        for (std::size_t i = 0; i < app_.objects.size(); ++i)
            if (test(app_.objects[i])) found.push_back(static_cast<ObjectIndex>(i));
        return found.empty() ? nobody : picked(found, pick);
    }

    // Something that can stand in a list or cell of the owner. Only younger than the owner, so that nothing ever
    // contains itself.
    ObjectIndex pick_entry(ObjectIndex owner, int pick) const {
        std::vector<ObjectIndex> found;
        for (std::size_t i = static_cast<std::size_t>(owner) + 1; i < app_.objects.size(); ++i)
            if (app_.objects[i].type <= group_code || app_.objects[i].type >= first_invalid_code)
                found.push_back(static_cast<ObjectIndex>(i));
        return found.empty() ? nobody : picked(found, pick);
    }

    ObjectIndex create(int type, int name) {
        Object object;
        object.type = type;
        object.name = picked(own_names, name);
        app_.objects.push_back(object);
        return static_cast<ObjectIndex>(app_.objects.size() - 1);
    }

    void list(ObjectIndex owner, ObjectIndex object) {
        if (owner != nobody) at(owner).list.push_back(object);
    }

    // In a map every key stands once.
    static void put(std::vector<std::pair<std::string, ObjectIndex>> &map, std::string key, ObjectIndex object) {
        auto taken = [&](const auto &entry) { return entry.first == key; };
        while (std::any_of(map.begin(), map.end(), taken)) key += "_again";
        map.emplace_back(key, object);
    }

    // What holds something is made when it is not there yet, so that a brick alone stands for something.
    ObjectIndex pick_or_make(Test test, int index, Brick::Kind kind, int name) {
        if (pick(test, index) == nobody) {
            Brick made;
            made.kind = kind;
            made.name = name;
            add(made);
        }
        return pick(test, index);
    }

    void add(const Brick &brick) {
        switch (brick.kind) {
        case Brick::layer:
            return put(app_.layer_map, picked(own_names, brick.name), create(layer_code, brick.name));
        case Brick::screen:
            return put(app_.screen_map, picked(own_names, brick.name), create(screen_code, brick.name));
        case Brick::absent_layer:
            create(layer_code, brick.name);
            return;
        case Brick::instance:
            return add_instance(pick_or_make(is_screen, brick.owner, Brick::screen, home_name),
                                pick_or_make(is_layer, brick.pick, Brick::layer, main_name));
        case Brick::instance_again:
            return add_again(pick(is_screen, brick.owner), pick(is_instance, brick.pick));
        case Brick::null_entry:
            return list(pick(has_list, brick.owner), nobody);
        case Brick::lost_control:
            create(control_code, brick.name);
            return;
        case Brick::odd_cell:
            return add_odd_cell(pick(is_table, brick.owner), brick);
        default:
            return add_to(pick_or_make(holds_controls, brick.owner, Brick::layer, main_name), brick);
        }
    }

    void add_to(ObjectIndex owner, const Brick &brick) {
        switch (brick.kind) {
        case Brick::control:
            return list(owner, create(control_code, brick.name));
        case Brick::group:
            return list(owner, create(group_code, brick.name));
        case Brick::table:
            return add_table(owner, brick);
        case Brick::template_cell:
            return add_template(owner, brick);
        case Brick::listed_again:
            return add_again(owner, pick_entry(owner, brick.pick));
        case Brick::invalid_type:
            return list(owner, create(brick.pick % 2 ? first_invalid_code : 200, brick.name));
        default:
            return;
        }
    }

    void add_again(ObjectIndex owner, ObjectIndex object) {
        if (owner != nobody && object != nobody) list(owner, object);
    }

    void add_instance(ObjectIndex screen, ObjectIndex layer) {
        if (screen == nobody || layer == nobody) return;
        ObjectIndex instance = create(instance_code, 0);
        at(instance).layer = layer;
        at(instance).screen = screen;
        at(instance).name = "";
        list(screen, instance);
    }

    // Cells of a column are alike, as if made from one template. One more row and column wait beyond the bounds.
    void add_table(ObjectIndex owner, const Brick &brick) {
        ObjectIndex table = create(table_code, brick.name);
        list(owner, table);
        at(table).rows = brick.rows;
        at(table).cols = brick.cols;
        std::vector<std::vector<ObjectIndex>> cells;
        for (int y = 0; y <= brick.rows; ++y) {
            cells.emplace_back();
            for (int x = 0; x <= brick.cols; ++x) cells.back().push_back(create(control_code, brick.pick + x));
        }
        at(table).cells = cells;
    }

    void add_template(ObjectIndex owner, const Brick &brick) {
        ObjectIndex made = create(template_code, brick.name);
        if (brick.pick % 2) list(owner, made);
    }

    void add_odd_cell(ObjectIndex table, const Brick &brick) {
        if (table == nobody) return;
        ObjectIndex object = pick_entry(table, brick.pick);
        if (object == nobody) return;
        auto &row = at(table).cells[static_cast<std::size_t>(brick.rows) % at(table).cells.size()];
        row[static_cast<std::size_t>(brick.cols) % row.size()] = object;
    }

    // The first object of a name is what the name finds. Some that have none can be found all the same.
    void name_all() {
        Oracle oracle(app_, false);
        for (std::size_t i = 1; i < app_.objects.size(); ++i) {
            ObjectIndex object = static_cast<ObjectIndex>(i);
            std::string name = oracle.name_of(object).value_or("lost." + app_.objects[i].name);
            app_.names.try_emplace(name, object);
        }
    }

    void add_data(const Brick &brick) {
        std::string name = picked_name(app_, brick.owner);
        if (brick.kind == Brick::misleading_name) {
            if (app_.objects.size() > 1) app_.names[name] = 1 + brick.pick % static_cast<int>(app_.objects.size() - 1);
            return;
        }
        std::string key = picked(variable_names, brick.name);
        if (brick.owner % 8) key = name + "." + key;
        if (brick.owner % 8 == 7) key = name + picked(own_names, brick.name); // only looks like the object's
        if (brick.kind == Brick::cell_variable)
            key += "." + std::to_string(brick.rows) + "." + std::to_string(brick.cols);
        if (brick.pick % 3 == 0 && brick.kind == Brick::variable) return add_geometry(name, brick);
        app_.variables[key] = picked_number_or_text(brick.pick);
        if (brick.pick % 7 == 0) app_.variables[key] = Value::of_boolean(brick.rows % 2);
    }

    void add_geometry(const std::string &name, const Brick &brick) {
        for (int i = 0; i < 4; ++i) // all but one, now and then
            if (brick.pick / 3 % 8 != i)
                app_.variables[name + "." + variable_names[static_cast<std::size_t>(i)]] =
                    Value::of(picked(numbers, brick.pick + brick.name * i));
    }

    Description app_;
};

Value picked_table(int pick) {
    Value table = Value::of_type(Value::table);
    // One text for a key at most, because the order of several is Lua's own affair. Other keys are passed over.
    if (pick % 5)
        table.entries.emplace_back(Value::of(std::string(picked(variable_names, pick))),
                                   picked_number_or_text(pick / 2));
    if (pick % 3 == 0) table.entries.emplace_back(Value::of_boolean(true), Value::of(1));
    return table;
}

} // namespace

Description build_description(const std::vector<Brick> &bricks) { return Builder().build(bricks); }

std::string picked_name(const Description &description, int pick) {
    if (description.names.empty()) return picked(texts, pick);
    auto found = description.names.begin();
    std::advance(found, pick % static_cast<int>(description.names.size()));
    return found->first;
}

std::string picked_key(const Description &description, int pick) {
    std::string variable = picked(variable_names, pick / 3);
    return pick % 8 ? picked_name(description, pick) + "." + variable : variable;
}

Value picked_number_or_text(int pick) {
    if (pick % 4 == 3) return Value::of(std::string(picked(texts, pick / 4)));
    return Value::of(picked(numbers, pick));
}

Value resolve_argument(const Argument &argument, const Description &description, const Values &handles) {
    switch (argument.kind) {
    case Argument::handle:
        return handles.empty() ? Value{} : picked(handles, argument.pick);
    case Argument::name:
        return Value::of(picked_name(description, argument.pick));
    case Argument::variable:
        return Value::of(std::string(picked(variable_names, argument.pick)));
    case Argument::text:
        return Value::of(std::string(picked(texts, argument.pick)));
    case Argument::number:
        return Value::of(picked(numbers, argument.pick));
    case Argument::boolean:
        return Value::of_boolean(argument.pick % 2);
    case Argument::table:
        return picked_table(argument.pick);
    case Argument::foreign:
        return Value::of_type(Value::foreign, argument.pick % foreign_count);
    case Argument::function:
        return Value::of_type(Value::function);
    default:
        return Value{};
    }
}
