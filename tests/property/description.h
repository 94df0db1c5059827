// description.h: an application and Lua values as plain data. What the oracle computes on and the recording host is
// built from; neither record nor type of the host's is in it.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

// Type codes as scripts see them.
enum TypeCode {
    control_code,
    table_code,
    template_code,
    group_code,
    layer_code,
    instance_code,
    screen_code,
    application_code,
    first_invalid_code
};

// Index of an object in Description::objects. The application is object 0; nobody stands for a null entry.
using ObjectIndex = int;
inline constexpr ObjectIndex the_application = 0;
inline constexpr ObjectIndex nobody = -1;

struct Object {
    int type = control_code;
    std::string name;
    std::vector<ObjectIndex> list;               // of a layer, group (controls) or screen (instances)
    std::vector<std::vector<ObjectIndex>> cells; // of a table: all there are, also beyond its bounds
    int rows = 0;
    int cols = 0;
    ObjectIndex layer = nobody; // of a layer instance
    ObjectIndex screen = nobody;
};

// A Lua value.
struct Value {
    enum Type { none, nil, boolean, number, string, table, handle, foreign, function };

    Type type = nil;
    double number_value = 0;                      // of a boolean too; of a foreign value, which one it is
    std::string text;                             // a string; a handle's qualified name
    int handle_type = 0;                          // a handle's type code
    int slot = -1;                                // where a handle is kept; -1: a new one
    bool is_argument = false;                     // a result that is the very value of argument 1
    std::vector<std::pair<Value, Value>> entries; // of a table

    static Value of(double number) { return with(Value::number, number, ""); }
    static Value of(const std::string &text) { return with(Value::string, 0, text); }
    static Value of_boolean(bool value) { return with(Value::boolean, value ? 1 : 0, ""); }
    static Value of_type(Type type, double which = 0) { return with(type, which, ""); }

private:
    static Value with(Type type, double number, const std::string &text) {
        Value value;
        value.type = type;
        value.number_value = number;
        value.text = text;
        return value;
    }
};
using Values = std::vector<Value>;

// Foreign values from this one on pass for handles, although there is no handle's record in them.
inline constexpr int first_lenient_foreign = 4;
inline constexpr int foreign_count = 7;

struct Description {
    std::vector<Object> objects{
        Object{application_code, "", {}, {}, 0, 0, nobody, nobody}
    };
    std::vector<std::pair<std::string, ObjectIndex>> screen_map; // in visiting order
    std::vector<std::pair<std::string, ObjectIndex>> layer_map;
    std::map<std::string, ObjectIndex> names; // what a qualified name resolves to
    std::map<std::string, Value> variables;
};

// What goes wrong in a call: the nth request of one kind (from 1) is refused.
enum class Fault {
    none,
    duplicate_text,
    resize_text,
    make_list,
    find_object,
    read_variable,
    write_variable,
    find_keys
};

struct Circumstances {
    bool without_application = false;
    bool without_data_manager = false;
    Fault fault = Fault::none;
    unsigned nth = 1;
    bool clone_succeeds = false;
    std::string clone_name;
};

// What a call is seen to do. A call that raises has the one result "error: <text>".
struct Outcome {
    std::vector<std::string> results;
    std::vector<std::string> lines; // calls of the host, in order
};

// "%.14g", as Lua writes numbers.
std::string number_text(double number);

// A value as results show it: "text", 12, control_object "main.ok", {1, 2, ["key"] = true}.
std::string value_text(const Value &value);

// The metatable that a handle of a type has.
const char *metatable_name(int type);
