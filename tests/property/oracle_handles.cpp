// oracle_handles.cpp: qualified names, handles, look-ups, relatives, clone and delete, as the oracle expects them.
#include "oracle.h"

static const char *const no_application = "Invalid argument, no application pointer";
static const char *const no_object = "No such object in DOM";
static const char *const one_argument = "This function should have exactly one argument";
static const char *const no_handle = "Argument must be a keldom_object";

static bool is_handle(const Value &value) {
    return value.type == Value::handle
           || (value.type == Value::foreign && static_cast<int>(value.number_value) >= first_lenient_foreign);
}

static bool is_sanitary(const std::string &text) {
    return text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._")
           == std::string::npos;
}

// ---- Names ----

std::optional<Oracle::Name> Oracle::duplicate(const std::string &text) {
    line("kelal_strdup(\"" + text + "\")");
    if (fails(Fault::duplicate_text)) return std::nullopt;
    ++live_names_;
    return Name{text, text.size() + 1};
}

std::optional<Oracle::Name> Oracle::join(const Name &pre, const std::string &post) {
    std::size_t wanted = pre.text.size() + post.size() + 2;
    line("kelal_realloc(block of " + std::to_string(pre.block) + ", " + std::to_string(wanted) + ")");
    if (fails(Fault::resize_text)) {
        --live_names_;
        return std::nullopt;
    }
    return Name{pre.text + "." + post, wanted};
}

std::optional<Oracle::Name> Oracle::qualified_name(ObjectIndex index) {
    const Object &object = app_.objects[static_cast<std::size_t>(index)];
    switch (object.type) {
    case application_code:
        return duplicate("");
    case screen_code:
    case layer_code:
        return duplicate(object.name);
    case instance_code: {
        std::optional<Name> name = duplicate(app_.objects[static_cast<std::size_t>(object.screen)].name);
        return name ? join(*name, app_.objects[static_cast<std::size_t>(object.layer)].name) : std::nullopt;
    }
    case control_code:
    case table_code:
    case template_code:
    case group_code:
        return qualified_control_name(index);
    default:
        return std::nullopt;
    }
}

std::optional<Oracle::Name> Oracle::qualified_control_name(ObjectIndex control) {
    ObjectIndex container = find_parent_under(layer_traverser(), control, 1);
    if (container == nobody) return std::nullopt;
    std::optional<Name> name = qualified_name(container);
    if (!name) return std::nullopt;
    if (app_.objects[static_cast<std::size_t>(container)].type == table_code)
        name->text = name->text.substr(0, name->text.rfind('.'));
    return join(*name, app_.objects[static_cast<std::size_t>(control)].name);
}

std::optional<std::string> Oracle::name_of(ObjectIndex object) {
    int live_names = live_names_;
    circumstances_ = Circumstances{};
    std::optional<Name> name = qualified_name(object);
    live_names_ = live_names;
    return name ? std::optional<std::string>(name->text) : std::nullopt;
}

// ---- Handles ----

// The container's part is copied from the name of the first of those that stand in it.
std::optional<Oracle::Name> Oracle::sibling_name(const std::string &first_name, ObjectIndex first, ObjectIndex object) {
    std::optional<Name> name = duplicate(first_name);
    if (!name) return std::nullopt;
    name->text.resize(first_name.size() - app_.objects[static_cast<std::size_t>(first)].name.size() - 1);
    return join(*name, app_.objects[static_cast<std::size_t>(object)].name);
}

int Oracle::push_object(ObjectIndex object) { return push_named(object, qualified_name(object)); }

int Oracle::push_named(ObjectIndex object, const std::optional<Name> &name) {
    if (!name) {
        log("Object has no qualified name");
        return 0;
    }
    Value handle = Value::of_type(Value::handle);
    handle.text = name->text;
    handle.handle_type = app_.objects[static_cast<std::size_t>(object)].type;
    return give(handle);
}

int Oracle::push_list(const List &list, ObjectIndex container) {
    Value array = Value::of_type(Value::table);
    const bool together = container != nobody && names_together(container, list);
    ObjectIndex first = nobody;
    std::string first_name;
    for (ObjectIndex object : list) {
        const bool is_sibling = together && app_.objects[static_cast<std::size_t>(object)].type <= group_code;
        if (!push_named(object, is_sibling && first != nobody ? sibling_name(first_name, first, object)
                                                              : qualified_name(object)))
            return 0;
        if (is_sibling && first == nobody) {
            first = object;
            first_name = stack_.back().text;
        }
        array.entries.emplace_back(Value::of(static_cast<double>(array.entries.size() + 1)), stack_.back());
        stack_.pop_back();
    }
    return give(array);
}

bool Oracle::get_dom_object() {
    if (!has_application()) {
        raise(no_application);
        return false;
    }
    if (is_handle(at(1))) return true;
    log(no_handle);
    return false;
}

ObjectIndex Oracle::object_from_stack() {
    Value argument = at(1);
    if (is_string(argument)) {
        if (is_sanitary(string_of(argument))) return find_object(string_of(argument));
        log("Argument must be a valid fully qualified name");
        return nobody;
    }
    if (!is_handle(argument)) {
        log("Argument must be a string or keldom_object");
        return nobody;
    }
    return argument.handle_type == application_code ? the_application : find_object(argument.text);
}

int Oracle::get_name_or_type(bool name) {
    if (!get_dom_object()) return 0;
    return give(name ? Value::of(at(1).text) : Value::of(static_cast<double>(at(1).handle_type)));
}

int Oracle::to_text() { return give(Value::of(is_handle(at(1)) ? at(1).text : std::string("nil"))); }

int Oracle::equals() {
    return give(Value::of_boolean(is_handle(at(1)) && is_handle(at(2)) && at(1).text == at(2).text));
}

// Only ever called with what is no handle.
int Oracle::collect_handle() {
    get_dom_object();
    return 0;
}

// ---- Look-ups ----

int Oracle::get_object() {
    if (top() != 1) return raise(one_argument), 0;
    if (!has_application()) return raise(no_application), 0;
    if (!is_string(at(1)) || !is_sanitary(string_of(at(1)))) return log("Argument must be a string"), 0;
    ObjectIndex object = find_object(string_of(at(1)));
    if (object == nobody) return log(no_object), 0;
    return push_object(object);
}

int Oracle::get_typed() {
    if (is_string(at(1))) return get_object();
    if (!is_handle(at(1))) return log(no_handle), 0;
    Value same = at(1);
    same.is_argument = true;
    return give(same);
}

int Oracle::get_application() {
    if (!has_application()) return log("Invalid call, no application pointer"), 0;
    return push_object(the_application);
}

int Oracle::get_all(bool screens) {
    if (!has_application()) return log("Invalid call, no application pointer"), 0;
    std::optional<List> list = create_list(1);
    auto add = [&](const std::string &, ObjectIndex object) {
        list->push_back(object);
        return 0;
    };
    if (screens)
        traverse(the_application, add);
    else
        traverse_map(app_.layer_map, add);
    return push_list(*list);
}

int Oracle::get_relatives(bool wants_parents) {
    if (top() != 1) return raise(one_argument), 0;
    if (!has_application()) return raise(no_application), 0;
    ObjectIndex object = object_from_stack();
    if (object == nobody) return log(no_object), 0;
    std::optional<List> list = wants_parents ? parents(object) : children(object);
    if (!list) return log(no_object), 0;
    return push_list(*list, wants_parents ? nobody : object);
}

int Oracle::get_layer() {
    if (!get_dom_object()) return 0;
    ObjectIndex object = find_object(at(1).text);
    if (object == nobody) return raise(no_object), 0;
    const Object &instance = app_.objects[static_cast<std::size_t>(object)];
    if (instance.type != instance_code) return raise("Object is not a layer instance"), 0;
    return push_object(instance.layer);
}

// ---- Clone and delete ----

int Oracle::clone() {
    if (!get_dom_object()) return 0;
    if (top() != 3 && top() != 4)
        return log("This function expects 3 or 4 arguments (self, name, parent_name, data(optional))"), 0;
    replace(1, Value::of(at(1).text));
    line("kl_lua_clone_object(" + host_text(at(1)) + ", " + host_text(at(2)) + ", " + host_text(at(3)) + ", "
         + host_text(at(4)) + ")");
    if (!circumstances_.clone_succeeds) return 0;
    ObjectIndex object = find_object(circumstances_.clone_name);
    if (object == nobody) return log(no_object), 0;
    return push_object(object);
}

// The host deletes what stands at position 2, when that is the name of something.
int Oracle::remove_by_handle() {
    if (!get_dom_object()) return 0;
    give(Value::of(at(1).text));
    line("kl_lua_delete_object(" + host_text(at(2)) + ")");
    if (at(2).type != Value::string) return 0;
    auto found = app_.names.find(at(2).text);
    if (found != app_.names.end()) remove(found->second);
    return 0;
}
