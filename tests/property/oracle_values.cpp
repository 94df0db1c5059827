// oracle_values.cpp: keys, values, properties and anchors, as the oracle expects them.
#include "oracle.h"

#include <algorithm>
#include <cstdint>
#include <map>

static const char *const no_data_manager = "Invalid argument, cannot access data manager";

std::string Oracle::key_of(const std::string &variable) const {
    return at(1).handle_type == application_code ? variable : at(1).text + "." + variable;
}

Value Oracle::read(const std::string &variable) {
    Value value;
    if (has_data_manager())
        read_variable(key_of(variable), value);
    else
        raise(no_data_manager);
    return value;
}

// ---- Keys and values ----

int Oracle::key() {
    if (at(1).type != Value::handle) return 0;
    if (!is_string(at(2))) return log("Argument 2 must be a string"), 0;
    return give(Value::of(key_of(string_of(at(2)))));
}

int Oracle::cell_key() {
    if (!get_dom_object()) return 0;
    if (!is_number(at(2))) return log("Argument 2 must be a number"), 0;
    if (!is_number(at(3))) return log("Argument 3 must be a number"), 0;
    if (!is_string(at(4))) return log("Argument 3 must be a string"), 0;
    return give(Value::of(at(1).text + "." + string_of(at(4)) + "." + std::to_string(integer_of(at(2))) + "."
                          + std::to_string(integer_of(at(3)))));
}

int Oracle::get_value() {
    if (!get_dom_object()) return 0;
    int n = top();
    if (n < 2) return log("This function expects at least 2 arguments (self, key, ...)"), 0;
    for (int i = 2; i <= n; ++i) {
        Value value;
        if (!has_data_manager())
            raise(no_data_manager);
        else if (is_string(at(i)))
            value = read(string_of(at(i)));
        give(value);
    }
    return n - 1;
}

int Oracle::get_data() {
    if (!get_dom_object()) return 0;
    int n = top();
    if (n < 2) return log("This function expects at least 2 arguments (self, key, ...)"), 0;
    std::map<std::string, std::pair<Value, Value>> entries; // by the key's text
    for (int i = 2; i <= n + 1; ++i) {                      // the last pass is for the table itself
        Value value;
        if (!has_data_manager())
            raise(no_data_manager);
        else if (is_string(at(i)))
            value = read(string_of(at(i)));
        if (i <= n && at(i).type == Value::nil) throw Unwind{"table index is nil"}; // Lua's own
        if (value.type == Value::nil)
            entries.erase(value_text(at(i)));
        else
            entries[value_text(at(i))] = {at(i), value};
    }
    Value table = Value::of_type(Value::table);
    for (const auto &[text, entry] : entries) table.entries.push_back(entry);
    return give(table);
}

int Oracle::set_value() {
    if (!get_dom_object()) return 0;
    int n = top();
    if (n < 3) return log("This function expects at least 3 arguments (self, k, v, ...)"), 0;
    if (!has_data_manager()) return raise(no_data_manager), 0;
    line("hold_change_listener()");
    for (int i = 2; i < n; i += 2)
        if (is_string(at(i))) write_variable(key_of(string_of(at(i))), at(i + 1));
    line("release_change_listener()");
    return 0;
}

int Oracle::set_data() {
    if (!get_dom_object()) return 0;
    if (!has_data_manager()) {
        raise(no_data_manager);
        return give(Value{});
    }
    Value table = at(top());
    if (table.type != Value::table) return raise("Argument must be a table"), 0;
    line("hold_change_listener()");
    for (const auto &[name, value] : table.entries)
        if (is_string(name)) write_variable(key_of(string_of(name)), value);
    line("release_change_listener()");
    return 0;
}

int Oracle::get_variables() {
    if (top() != 1) return raise("This function should have exactly one argument"), 0;
    if (!has_application()) return raise("Invalid argument, no application pointer"), 0;
    ObjectIndex object = object_from_stack();
    if (object == nobody) return log("No such object in DOM"), 0;
    std::optional<Name> name = qualified_name(object);
    if (!name) return log("DOM Object has no qualified name"), 0;
    std::size_t q = name->text.size();
    --live_names_; // freed before anything can raise
    if (!has_data_manager()) return raise(no_data_manager), 0;
    line("find_for_prefix(\"" + name->text + "\")");
    std::vector<std::string> keys;
    if (!fails(Fault::find_keys)) {
        for (const auto &[key, value] : app_.variables)
            if (key.size() > q && key.starts_with(name->text)) keys.push_back(key);
    }
    for (std::size_t i = 0; i < keys.size();) {
        if (keys[i].find('.', q + 1) == std::string::npos) {
            ++i;
            continue;
        }
        keys[i] = keys.back();
        keys.pop_back();
    }
    Value array = Value::of_type(Value::table);
    for (std::size_t i = 0; i < keys.size(); ++i)
        array.entries.emplace_back(Value::of(static_cast<double>(i + 1)), Value::of(keys[i]));
    return give(array);
}

// ---- Properties ----

int Oracle::get_properties(const Variables &variables, bool as_boolean) {
    if (!get_dom_object()) return 0;
    for (const std::string &variable : variables) give(read(variable));
    if (!as_boolean) return static_cast<int>(variables.size());
    return give(Value::of_boolean(integer_of(stack_.back()) != 0));
}

long Oracle::read_integer(const std::string &variable) { return integer_of(read(variable)); }

void Oracle::write_list(const Variables &variables) {
    if (!has_data_manager()) return raise(no_data_manager);
    line("hold_change_listener()");
    int index = 2;
    for (const std::string &variable : variables) {
        if (!variable.empty()) write_variable(key_of(variable), at(index));
        ++index;
    }
    line("release_change_listener()");
}

static int16_t cut(long value) { return static_cast<int16_t>(static_cast<uint16_t>(value)); }

static std::string not_an_integer(int position) {
    return "Argument " + std::to_string(position) + " must be an integer";
}

static std::string not_an_anchor(int position, bool horizontal) {
    return "Argument " + std::to_string(position) + " must be "
           + (horizontal ? "kel.LEFT, kel.CENTER or kel.RIGHT" : "kel.TOP, kel.CENTER or kel.BOTTOM");
}

// 2 or 3; or 0, when nothing is to be adjusted or the anchor was refused.
int Oracle::checked_anchor(int position, const std::string &message) {
    Value value = at(position);
    if (value.type == Value::none || value.type == Value::nil) return 0;
    if (!is_number(value)) return raise(not_an_integer(position)), 0;
    int anchor = static_cast<int8_t>(static_cast<uint8_t>(integer_of(value)));
    if (anchor < 1 || anchor > 3) return raise(message), 0;
    return anchor == 1 ? 0 : anchor;
}

void Oracle::anchored_move(int value, int anchor_position, bool horizontal) {
    int anchor = checked_anchor(anchor_position, not_an_anchor(anchor_position, horizontal));
    if (!anchor) return;
    if (!is_number(at(value))) return raise(not_an_integer(value));
    int16_t wanted = cut(integer_of(at(value)));
    int16_t extent = cut(read_integer(horizontal ? "kld_width" : "kld_height"));
    int16_t moved = cut(wanted - (anchor == 2 ? extent / 2 : extent));
    replace(value, Value::of(static_cast<double>(moved)));
}

void Oracle::anchored_resize(int value, int anchor_position, bool horizontal, std::string &slot) {
    int anchor = checked_anchor(anchor_position, not_an_anchor(anchor_position, horizontal));
    if (!anchor) return;
    int16_t extent = cut(read_integer(horizontal ? "kld_width" : "kld_height"));
    if (!is_number(at(value))) return raise(not_an_integer(value));
    int16_t wanted = cut(integer_of(at(value)));
    int16_t change = cut(extent - wanted);
    if (change == 0) return;
    const char *place = horizontal ? "kld_x" : "kld_y";
    int16_t moved = cut(cut(read_integer(place)) + (anchor == 2 ? change / 2 : change));
    replace(anchor_position, Value::of(static_cast<double>(moved)));
    slot = place;
}

namespace {
struct Setter {
    const char *function;
    int least;
    const char *warning;
    std::vector<std::string> variables;
};
} // namespace

static const Setter *setter_named(const std::string &function) {
    static const std::vector<Setter> setters{
        {"set_hidden",   2, "2 arguments (self, hidden)",                 {"kld_hidden"}                               },
        {"show",         1, "1 argument (self)",                          {"kld_hidden"}                               },
        {"hide",         1, "1 argument (self)",                          {"kld_hidden"}                               },
        {"set_alpha",    2, "2 arguments (self, alpha)",                  {"kld_alpha"}                                },
        {"set_rows",     2, "2 arguments (self, rows)",                   {"kld_rows"}                                 },
        {"set_cols",     2, "2 arguments (self, cols)",                   {"kld_cols"}                                 },
        {"set_position", 3, "3 arguments (self, x, y)",                   {"kld_x", "kld_y"}                           },
        {"set_bounds",   5, "5 arguments (self, x, y, width, height)",    {"kld_x", "kld_y", "kld_width", "kld_height"}},
        {"set_x",        2, "2 arguments (self, x)",                      {"kld_x"}                                    },
        {"set_y",        2, "2 arguments (self, y)",                      {"kld_y"}                                    },
        {"set_width",    2, "2 arguments (self, width)",                  {"kld_width", ""}                            },
        {"set_height",   2, "2 arguments (self, height)",                 {"kld_height", ""}                           },
        {"set_size",     3, "at least 3 arguments (self, width, height)", {"kld_width", "kld_height", "", ""}          },
    };
    auto found =
        std::find_if(setters.begin(), setters.end(), [&](const Setter &setter) { return function == setter.function; });
    return found == setters.end() ? nullptr : &*found;
}

int Oracle::set_properties(const std::string &function) {
    const Setter *setter = setter_named(function);
    if (!setter) return -1;
    Variables variables = setter->variables;
    if (!get_dom_object()) return 0;
    if (top() < setter->least) return log(std::string("This function expects ") + setter->warning), 0;
    if (function == "show") give(Value::of_boolean(false));
    if (function == "hide") give(Value::of_boolean(true));
    if (at(1).handle_type == control_code || at(1).handle_type == table_code) {
        if (function == "set_x") anchored_move(2, 3, true);
        if (function == "set_y") anchored_move(2, 3, false);
        if (function == "set_width") anchored_resize(2, 3, true, variables[1]);
        if (function == "set_height") anchored_resize(2, 3, false, variables[1]);
        if (function == "set_position") {
            anchored_move(2, 4, true);
            anchored_move(3, 5, false);
        }
        if (function == "set_size") {
            anchored_resize(2, 4, true, variables[2]);
            anchored_resize(3, 5, false, variables[3]);
        }
    }
    write_list(variables);
    return 0;
}
