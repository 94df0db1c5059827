// vars.cpp: `kel vars`: prints data variables, as columns or as JSON.
#include "vars.h"

#include "commands.h"
#include "in_quotes.h"
#include "look.h"
#include "object_names.h"
#include "output.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

namespace kelhost {

namespace {

using Json = nlohmann::ordered_json;

// "main.ok" means that object's variables and not those of "main.ok_too"; letters alone mean what begins with them.
std::vector<std::string> keys_under(const Application &app, const std::string &prefix) {
    if (prefix.empty()) return app.keys();
    std::vector<std::string> whole;
    if (app.variable(prefix)) whole.push_back(prefix);
    for (std::string &key : app.keys(prefix + ".")) whole.push_back(std::move(key));
    return whole.empty() ? app.keys(prefix) : whole;
}

// What a user can have meant: keys, and whatever they begin with as far as a dot.
std::vector<std::string> prefixes(const Application &app) {
    std::set<std::string> found;
    for (const std::string &key : app.keys()) {
        found.insert(key);
        for (std::size_t dot = key.find('.'); dot != std::string::npos; dot = key.find('.', dot + 1))
            found.insert(key.substr(0, dot));
    }
    return {found.begin(), found.end()};
}

Json to_json(DataType type, const Value &value) {
    if (const auto *text = std::get_if<std::string>(&value)) return *text;
    const double number = std::get<double>(value);
    return type == DataType::f64 ? Json(number) : Json(static_cast<std::int64_t>(number));
}

std::string to_column(const Value &value) {
    const auto *text = std::get_if<std::string>(&value);
    return text != nullptr ? in_quotes(*text) : to_text(value);
}

// Each variable that there is: the keys come from the application.
template <typename Visitor>
void for_each(const Application &app, const std::vector<std::string> &keys, const Visitor &visit) {
    for (const std::string &key : keys) visit(key, *app.variable_type(key), *app.variable(key));
}

// A string with bytes that are no UTF-8 has the replacement character in their place.
void print_json(const Application &app, const std::vector<std::string> &keys) {
    Json object = Json::object();
    for_each(app, keys, [&object](const std::string &key, DataType type, const Value &value) {
        object[key] = {
            {"type",        data_type_name(type)},
            { "value", to_json(type,               value)}
        };
    });
    print(object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

void print_columns(const Application &app, const std::vector<std::string> &keys) {
    constexpr std::size_t type_width = 6; // of "string"
    std::size_t key_width = 0;
    for (const std::string &key : keys) key_width = std::max(key_width, key.size());
    for_each(app, keys, [key_width](const std::string &key, DataType type, const Value &value) {
        const std::string name = data_type_name(type);
        print(key + std::string(key_width - key.size(), ' ') + "  " + name + std::string(type_width - name.size(), ' ')
              + "  " + to_column(value) + "\n");
    });
}

} // namespace

bool print_variables(const Application &app, const std::string &prefix, bool json) {
    const std::vector<std::string> keys = keys_under(app, prefix);
    if (keys.empty() && !prefix.empty()) {
        report_error("there is no variable whose key begins with \"" + prefix + "\"" + suggest(prefix, prefixes(app)));
        return false;
    }
    if (json)
        print_json(app, keys);
    else
        print_columns(app, keys);
    return true;
}

ExitStatus vars(const VarsArguments &arguments) {
    return look(arguments.look,
                [&](Application &app) { return print_variables(app, arguments.prefix, arguments.json); });
}

} // namespace kelhost
