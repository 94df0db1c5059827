// show_case.cpp: a random case as people read it.
#include "random_case.h"

#include <ostream>

#include "rehearsal.h"

static std::string joined(const std::vector<std::string> &parts) {
    std::string text;
    for (const std::string &part : parts) text += (text.empty() ? "" : ", ") + part;
    return text;
}

static std::string object_text(const Description &app, ObjectIndex index) {
    if (index == nobody) return "null";
    static const char *const kinds[] = {"control", "table",          "template", "group",
                                        "layer",   "layer instance", "screen",   "application"};
    const Object &object = app.objects[static_cast<std::size_t>(index)];
    std::string kind = object.type < first_invalid_code ? kinds[object.type] : "type " + std::to_string(object.type);
    std::string text = "#" + std::to_string(index) + " " + kind + " \"" + object.name + "\"";
    if (object.type == instance_code)
        text += " of " + object_text(app, object.layer) + " on " + object_text(app, object.screen);
    return text;
}

static std::string contents_text(const Object &object) {
    std::string text;
    for (ObjectIndex entry : object.list) text += (text.empty() ? " " : ", ") + ("#" + std::to_string(entry));
    for (const auto &row : object.cells) {
        text += " |";
        for (ObjectIndex cell : row) text += " #" + std::to_string(cell);
    }
    if (object.type == table_code)
        text = " " + std::to_string(object.rows) + " x " + std::to_string(object.cols) + " of" + text;
    for (std::size_t at = 0; (at = text.find("#-1", at)) != std::string::npos;) text.replace(at, 3, "null");
    return text;
}

static void show_application(const Description &app, std::ostream &out) {
    for (std::size_t i = 1; i < app.objects.size(); ++i) {
        std::string contents = contents_text(app.objects[i]);
        out << "  " << object_text(app, static_cast<ObjectIndex>(i)) << (contents.empty() ? "" : ":" + contents)
            << "\n";
    }
    for (const auto &[key, object] : app.screen_map) out << "  screen map: " << key << " -> #" << object << "\n";
    for (const auto &[key, object] : app.layer_map) out << "  layer map: " << key << " -> #" << object << "\n";
    for (const auto &[name, object] : app.names) out << "  find \"" << name << "\" -> #" << object << "\n";
    for (const auto &[key, value] : app.variables) out << "  " << key << " = " << value_text(value) << "\n";
}

static const char *fault_text(Fault fault) {
    static const char *const texts[] = {
        "",           "kelal_strdup",          "kelal_realloc",         "kl_darray_create",
        "the lookup", "kl_lua_get_data_value", "kl_lua_set_data_value", "find_for_prefix"};
    return texts[static_cast<int>(fault)];
}

static std::string call_text(const Action &action) {
    std::vector<std::string> arguments;
    for (const Value &value : action.arguments)
        arguments.push_back(value.type == Value::handle ? "<" + value_text(value) + ">" : value_text(value));
    std::string text =
        (action.place.empty() ? "metatable" : action.place) + "." + action.function + "(" + joined(arguments) + ")";
    const Circumstances &how = action.circumstances;
    if (how.without_application) text += " -- no application";
    if (how.without_data_manager) text += " -- no data manager";
    if (how.fault != Fault::none)
        text += std::string(" -- ") + fault_text(how.fault) + " fails, call " + std::to_string(how.nth);
    if (action.function == "clone")
        text += how.clone_succeeds ? " -- clone made: \"" + how.clone_name + "\"" : " -- clone refused";
    return text;
}

std::string action_text(const Action &action, const Description &app) {
    switch (action.event) {
    case Step::call:
        return call_text(action);
    case Step::collect:
        return "collectgarbage()";
    case Step::host_removes:
        return "-- the host removes " + object_text(app, action.object);
    case Step::host_renames:
        return "-- the host lets \"" + action.text + "\" find " + object_text(app, action.object);
    case Step::host_writes:
        return "-- the host writes " + action.text + " = " + value_text(action.value);
    case Step::host_forgets:
        return "-- the host removes variable " + action.text;
    default:
        return "-- the host makes " + object_text(app, action.object) + " " + std::to_string(action.rows) + " x "
               + std::to_string(action.cols);
    }
}

void showValue(const RandomCase &random_case, std::ostream &out) {
    Description app = build_description(random_case.bricks);
    out << "\nan application, with errors that " << (random_case.errors_return ? "return" : "unwind") << ":\n";
    show_application(app, out);
    out << "the script (handles by metatable and name):\n";
    rehearse(random_case, app, [&](const Action &action, const Outcome &expected, int) {
        if (action.is_preparation) return true;
        out << "  " << action_text(action, app);
        if (action.event == Step::call) out << "  --> " << joined(expected.results);
        out << "\n";
        return true;
    });
}
