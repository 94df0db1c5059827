// oracle.cpp: the oracle's channels and host, Lua's conversions, and which function is answered where.
#include "oracle.h"

#include <cstdlib>
#include <stdexcept>

// ---- Lua's conversions ----

static bool parse_number(const std::string &text, double &number) {
    char *end = nullptr;
    number = std::strtod(text.c_str(), &end); // reads hexadecimal too, as Lua does
    if (end == text.c_str()) return false;
    while (*end == ' ') ++end;
    return *end == '\0';
}

bool is_string(const Value &value) { return value.type == Value::string || value.type == Value::number; }

bool is_number(const Value &value) {
    double ignored = 0;
    return value.type == Value::number || (value.type == Value::string && parse_number(value.text, ignored));
}

std::string string_of(const Value &value) {
    return value.type == Value::number ? number_text(value.number_value) : value.text;
}

long integer_of(const Value &value) {
    double number = 0;
    if (value.type == Value::number) number = value.number_value;
    if (value.type == Value::string && !parse_number(value.text, number)) number = 0;
    return static_cast<long>(number);
}

// ---- The channels and the host ----

void Oracle::log(const std::string &text) {
    line(std::string("kel_app_log(") + (has_application() ? "app" : "null") + ", 1, \"" + text + "\")");
}

void Oracle::raise(const std::string &text) {
    line("kl_lua_error(\"" + text + "\")");
    if (!errors_return_) throw Unwind{text};
}

bool Oracle::fails(Fault fault) { return circumstances_.fault == fault && ++faults_seen_ == circumstances_.nth; }

static std::string quoted(const std::string &text) { return '"' + text + '"'; }

std::string host_text(const Value &value) {
    switch (value.type) {
    case Value::table:
        return "table";
    case Value::handle:
    case Value::foreign:
        return "userdata";
    default:
        return value_text(value);
    }
}

ObjectIndex Oracle::find_object(const std::string &name) {
    line("kl_application_find_object(" + quoted(name) + ", 0)");
    if (fails(Fault::find_object)) return nobody;
    auto found = app_.names.find(name);
    return found == app_.names.end() ? nobody : found->second;
}

bool Oracle::read_variable(const std::string &key, Value &value) {
    line("kl_lua_get_data_value(" + quoted(key) + ")");
    if (fails(Fault::read_variable)) return false;
    auto found = app_.variables.find(key);
    if (found == app_.variables.end()) return false;
    value = found->second;
    return true;
}

void Oracle::write_variable(const std::string &key, const Value &value) {
    line("kl_lua_set_data_value(" + quoted(key) + ", " + host_text(value) + ")");
    if (!fails(Fault::write_variable)) set_variable(key, value);
}

void Oracle::set_variable(const std::string &key, const Value &value) {
    if (is_string(value) || value.type == Value::boolean) app_.variables[key] = value;
}

std::optional<Oracle::List> Oracle::create_list(int capacity) {
    line("kl_darray_create(pointer, " + std::to_string(capacity) + ", 0)");
    if (fails(Fault::make_list)) return std::nullopt;
    return List{};
}

// ---- What the host does by itself ----

void Oracle::remove(ObjectIndex object) {
    for (Object &owner : app_.objects) std::erase(owner.list, object);
    auto is_it = [object](const auto &entry) { return entry.second == object; };
    std::erase_if(app_.screen_map, is_it);
    std::erase_if(app_.layer_map, is_it);
    std::erase_if(app_.names, is_it);
}

void Oracle::resolve(const std::string &name, ObjectIndex object) {
    app_.names.erase(name);
    if (object != nobody) app_.names[name] = object;
}

void Oracle::resize_table(ObjectIndex table, int rows, int cols) {
    app_.objects[static_cast<std::size_t>(table)].rows = rows;
    app_.objects[static_cast<std::size_t>(table)].cols = cols;
}

// ---- Calls ----

Outcome Oracle::call(const std::string &place, const std::string &function, const Values &arguments,
                     const Circumstances &circumstances) {
    circumstances_ = circumstances;
    faults_seen_ = 0;
    lines_.clear();
    stack_ = arguments;
    results_.clear();
    Outcome outcome;
    try {
        int count = dispatch(place, function);
        results_.assign(stack_.end() - count, stack_.end());
        for (const Value &value : results_) outcome.results.push_back(value_text(value));
    } catch (const Unwind &error) {
        outcome.results.push_back("error: " + error.text);
    }
    outcome.lines = lines_;
    return outcome;
}

Value Oracle::at(int position) const {
    if (position < 1 || position > top()) return Value::of_type(Value::none);
    return stack_[static_cast<std::size_t>(position - 1)];
}

void Oracle::replace(int position, const Value &value) { stack_.at(static_cast<std::size_t>(position - 1)) = value; }

int Oracle::give(const Value &value) {
    stack_.push_back(value);
    return 1;
}

int Oracle::dispatch(const std::string &place, const std::string &function) {
    int count = navigate(place, function);
    if (count < 0) count = handle_values(function);
    if (count < 0) count = set_properties(function);
    if (count < 0) throw std::logic_error("the oracle does not know " + function);
    return count;
}

int Oracle::navigate(const std::string &place, const std::string &function) {
    if (place == "keldom") {
        if (function == "get_object") return get_object();
        if (function == "get_application") return get_application();
        if (function == "get_screens") return get_all(true);
        if (function == "get_layers") return get_all(false);
        return get_typed();
    }
    if (function == "get_children") return get_relatives(false);
    if (function == "get_parents") return get_relatives(true);
    if (function == "get_layer") return get_layer();
    if (function == "get_name") return get_name_or_type(true);
    if (function == "get_type") return get_name_or_type(false);
    if (function == "__tostring") return to_text();
    if (function == "__eq") return equals();
    if (function == "__gc") return collect_handle();
    if (function == "clone") return clone();
    if (function == "delete") return remove_by_handle();
    return -1;
}

int Oracle::handle_values(const std::string &function) {
    if (function == "key") return key();
    if (function == "cell_key") return cell_key();
    if (function == "get_value") return get_value();
    if (function == "get_data") return get_data();
    if (function == "set_value") return set_value();
    if (function == "set_data") return set_data();
    if (function == "get_variables") return get_variables();
    if (function == "get_x") return get_properties({"kld_x"}, false);
    if (function == "get_y") return get_properties({"kld_y"}, false);
    if (function == "get_width") return get_properties({"kld_width"}, false);
    if (function == "get_height") return get_properties({"kld_height"}, false);
    if (function == "get_alpha") return get_properties({"kld_alpha"}, false);
    if (function == "get_rows") return get_properties({"kld_rows"}, false);
    if (function == "get_cols") return get_properties({"kld_cols"}, false);
    if (function == "get_hidden") return get_properties({"kld_hidden"}, true);
    if (function == "get_position") return get_properties({"kld_x", "kld_y"}, false);
    if (function == "get_size") return get_properties({"kld_width", "kld_height"}, false);
    if (function == "get_bounds") return get_properties({"kld_x", "kld_y", "kld_width", "kld_height"}, false);
    return -1;
}
