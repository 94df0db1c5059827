// description.cpp: Lua values as text.
#include "description.h"

#include <algorithm>
#include <cstdio>

std::string number_text(double number) {
    char text[64];
    std::snprintf(text, sizeof text, "%.14g", number);
    return text;
}

const char *metatable_name(int type) {
    switch (type) {
    case control_code:
        return "control_object";
    case table_code:
        return "table_object";
    case group_code:
        return "group_object";
    case layer_code:
        return "layer_object";
    case instance_code:
        return "layer_instance_object";
    case screen_code:
        return "screen_object";
    default:
        return "keldom_object";
    }
}

static std::string table_text(const Value &table) {
    std::vector<std::string> entries;
    for (const auto &[key, value] : table.entries)
        entries.push_back("[" + value_text(key) + "] = " + value_text(value));
    std::sort(entries.begin(), entries.end());
    std::string text;
    for (const std::string &entry : entries) text += (text.empty() ? "" : ", ") + entry;
    return "{" + text + "}";
}

static std::string plain_text(const Value &value) {
    switch (value.type) {
    case Value::none:
        return "none";
    case Value::nil:
        return "nil";
    case Value::boolean:
        return value.number_value != 0 ? "true" : "false";
    case Value::number:
        return number_text(value.number_value);
    case Value::string:
        return '"' + value.text + '"';
    case Value::table:
        return table_text(value);
    case Value::handle:
        return metatable_name(value.handle_type) + (" \"" + value.text + '"');
    case Value::foreign:
        return "userdata";
    case Value::function:
        return "function";
    }
    return "";
}

std::string value_text(const Value &value) { return plain_text(value) + (value.is_argument ? " (argument 1)" : ""); }
