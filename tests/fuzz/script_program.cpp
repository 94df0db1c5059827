// script_program.cpp: writes Lua programs from bytes. The programs use what the harness's prelude sets up: M, every
// method by its name; G, getmetatable; v, a list of handles and whatever else is put there; h, which in loops is what
// they are at.
#include "script_program.h"

#include <initializer_list>
#include <string_view>

#include "byte_reader.h"

namespace fuzz {

namespace {

constexpr std::size_t most_steps = 30;
constexpr int deepest_expression = 4;
constexpr int deepest_statement = 3;

constexpr const char *objects[] = {"main.ok",     "main.bar",       "main.list", "main",
                                   "home",        "home.main",      "main.row",  "main.new",
                                   "main.bar.ok", "main.bar.inner", "popup",     "main.bar.list",
                                   "main.head",   "main.bar.new.a", "popup.new", "main.bar.row"};
constexpr const char *own_names[] = {"new", "ok", "bar", "list", "row", "a", "b", "other"};
constexpr const char *parents[] = {"main", "main.bar", "popup", "main.bar.inner", "main.new", "popup.new"};
constexpr const char *variables[] = {"kld_x",    "kld_y",    "kld_width", "kld_height", "kld_alpha", "kld_hidden",
                                     "kld_rows", "kld_cols", "text",      "ratio",      "mode",      "title",
                                     "text.0.0", "text.1.2", "new_one",   "level"};
constexpr const char *odd_texts[] = {
    "''",
    "'.'",
    "'main.'",
    "'.ok'",
    "'main-ok'",
    "'main..ok'",
    "'a\\0b'",
    "'0'",
    "'0x10'",
    "' 5 '",
    "'nan'",
    "'1e999'",
    "'%s%n%d'",
    "'\\195\\164'",
    "'\\255'",
    "'-1'",
    "'main.ok.kld_x'",
    "string.rep('x', 300)",
    "string.rep('main.', 200)",
    "'kld_x\\0'",
};
constexpr const char *numbers[] = {"0",     "1",      "2",     "3",      "4",     "10",    "-1",         "0.5",
                                   "2.5",   "-1.5",   "127",   "128",    "255",   "257",   "259",        "300",
                                   "32767", "-32768", "32768", "40000",  "65535", "65536", "2147483647", "-2147483648",
                                   "1e10",  "1e15",   "1e308", "-1e308", "0/0",   "1/0",   "-1/0",       "-0"};
constexpr const char *metamethods[] = {"__gc", "__eq", "__tostring", "__index"};
constexpr const char *changeable[] = {"__index", "__eq", "__tostring", "__newindex", "__call", "__mode"};

// A function and the arguments that make sense for it: n a number, a an anchor, k a variable's name, q a key, o an
// object's name or handle, s an object's own name, p a parent's name, d data, v any value.
struct Function {
    const char *name;
    const char *arguments;
};

// Of handles; the first argument, not listed, is one.
constexpr Function methods[] = {
    {"get_name",      ""    },
    {"get_type",      ""    },
    {"get_parents",   ""    },
    {"get_children",  ""    },
    {"get_variables", ""    },
    {"get_value",     "kkk" },
    {"set_value",     "kvkv"},
    {"get_data",      "kk"  },
    {"set_data",      "d"   },
    {"key",           "k"   },
    {"get_hidden",    ""    },
    {"get_x",         ""    },
    {"get_y",         ""    },
    {"get_width",     ""    },
    {"get_height",    ""    },
    {"get_position",  ""    },
    {"get_size",      ""    },
    {"get_bounds",    ""    },
    {"set_hidden",    "v"   },
    {"set_x",         "na"  },
    {"set_y",         "na"  },
    {"set_width",     "na"  },
    {"set_height",    "na"  },
    {"set_position",  "nnaa"},
    {"set_size",      "nnaa"},
    {"set_bounds",    "nnnn"},
    {"hide",          ""    },
    {"show",          ""    },
    {"clone",         "spd" },
    {"delete",        ""    },
    {"get_rows",      ""    },
    {"get_cols",      ""    },
    {"set_rows",      "n"   },
    {"set_cols",      "n"   },
    {"cell_key",      "nnk" },
    {"get_layer",     ""    },
    {"get_alpha",     ""    },
    {"set_alpha",     "n"   },
};
constexpr Function functions[] = {
    {"keldom.get_application",    ""    },
    {"keldom.get_object",         "o"   },
    {"keldom.get_layers",         ""    },
    {"keldom.get_screens",        ""    },
    {"keldom.get_control",        "o"   },
    {"keldom.get_table",          "o"   },
    {"keldom.get_group",          "o"   },
    {"keldom.get_layer_instance", "o"   },
    {"keldom.get_layer",          "o"   },
    {"keldom.get_screen",         "o"   },
    {"kel.get_value",             "qq"  },
    {"kel.set_value",             "qvqv"},
    {"kel.log",                   "s"   },
    {"kel.queue_event",           "so"  },
    {"print",                     "vv"  },
    {"tostring",                  "v"   },
    {"setmetatable",              "dd"  },
    {"pcall",                     "vvv" },
    {"xpcall",                    "vv"  },
    {"setfenv",                   "vd"  },
    {"getfenv",                   "v"   },
    {"unpack",                    "v"   },
    {"next",                      "vv"  },
    {"loadstring",                "v"   },
};
constexpr const char *anchors[] = {"nil", "kel.CENTER", "kel.RIGHT", "kel.LEFT", "4", "'2'"};
constexpr const char *collections[] = {"collect", "step", "stop", "restart", "count"};
constexpr const char *lists[] = {"M.get_children(", "M.get_parents(", "M.get_variables(", "keldom.get_layers(",
                                 "keldom.get_screens("};

// The parts come from the bytes, so their order counts: a list's is the written one, a sum's is the compiler's choice.
std::string joined(std::initializer_list<std::string> parts) {
    std::string text;
    for (const std::string &part : parts) text += part;
    return text;
}

std::string quoted(const char *name) { return std::string("'") + name + "'"; }

class Writer {
public:
    Writer(ByteReader &bytes, Metatables metatables) : bytes_(bytes), metatables_(metatables) {}

    std::string statement(int depth);

private:
    std::string expression(int depth);
    std::string sensible(char kind, int depth);
    std::string arguments(std::string_view kinds, int depth);
    std::string call(int depth);
    std::string method_call(int depth);
    std::string table(int depth);
    std::string function(int depth);
    std::string with_metatable(int depth);
    std::string change_of_metatable();
    std::string slot() { return "v[" + std::to_string(1 + bytes_.below(12)) + "]"; }
    std::string handle() { return bytes_.below(4) == 0 ? "h" : slot(); }
    std::string object() { return bytes_.below(2) == 0 ? handle() : quoted(bytes_.pick(objects)); }
    std::string key() {
        return bytes_.below(4) == 0 ? variable() : joined({quoted(bytes_.pick(objects)), "..'.'..", variable()});
    }
    std::string variable() { return quoted(bytes_.pick(variables)); }
    std::string body(int depth) { return "function(h) " + statement(depth + 1) + " end"; }

    ByteReader &bytes_;
    Metatables metatables_;
};

std::string Writer::expression(int depth) {
    if (depth >= deepest_expression) return slot();
    switch (bytes_.below(16)) {
    case 0:
        return "nil";
    case 1:
    case 2:
        return slot();
    case 3:
        return handle();
    case 4:
        return bytes_.pick(numbers);
    case 5:
        return quoted(bytes_.pick(objects));
    case 6:
        return variable();
    case 7:
        return bytes_.pick(odd_texts);
    case 8:
        return bytes_.below(2) == 0 ? "true" : "false";
    case 9:
        return table(depth);
    case 10:
        return function(depth);
    case 11:
        return call(depth);
    case 12:
    case 13:
        return method_call(depth);
    case 14:
        return joined({bytes_.below(2) == 0 ? "coroutine.create(" : "coroutine.wrap(", body(depth), ")"});
    default:
        return with_metatable(depth);
    }
}

std::string Writer::sensible(char kind, int depth) {
    switch (kind) {
    case 'n':
        return bytes_.pick(numbers);
    case 'a':
        return bytes_.pick(anchors);
    case 'k':
        return variable();
    case 'q':
        return key();
    case 'o':
        return object();
    case 's':
        return quoted(bytes_.pick(own_names));
    case 'p':
        return quoted(bytes_.pick(parents));
    case 'd':
        return table(depth + 1);
    default:
        return expression(depth + 1);
    }
}

// As they make sense; or any, and as many as it comes.
std::string Writer::arguments(std::string_view kinds, int depth) {
    const std::size_t how = bytes_.below(8);
    std::string list;
    if (how == 0) {
        for (std::size_t left = bytes_.below(6); left > 0; --left) list += ", " + expression(depth + 1);
        return list;
    }
    if (how == 1 && !kinds.empty()) kinds.remove_suffix(1);
    for (const char kind : kinds) list += ", " + sensible(kind, depth);
    return list;
}

std::string Writer::call(int depth) {
    const Function &called = bytes_.pick(functions);
    const std::string list = arguments(called.arguments, depth);
    return joined({called.name, "(", list.empty() ? list : list.substr(2), ")"});
}

std::string Writer::method_call(int depth) {
    const Function &called = bytes_.pick(methods);
    const std::string self = bytes_.below(8) == 0 ? expression(depth + 1) : handle();
    return joined({"M.", called.name, "(", self, arguments(called.arguments, depth), ")"});
}

std::string Writer::table(int depth) {
    std::string text = "{";
    for (std::size_t left = bytes_.below(4); left > 0; --left) {
        const std::size_t how = bytes_.below(4);
        if (how == 0) text += joined({"[", expression(depth + 1), " or 1] = "});
        if (how > 1) text += joined({"[", variable(), "] = "});
        text += joined({expression(depth + 1), ", "});
    }
    return text + "}";
}

std::string Writer::function(int depth) {
    switch (bytes_.below(4)) {
    case 0:
        return joined({"M.", bytes_.pick(methods).name});
    case 1:
        return bytes_.pick(functions).name;
    default:
        return body(depth);
    }
}

// What operators and metamethods make of values.
std::string Writer::with_metatable(int depth) {
    const std::string value = expression(depth + 1);
    switch (bytes_.below(8)) {
    case 0:
        return joined({"(", value, " == ", expression(depth + 1), ")"});
    case 1:
        return joined({"(", value, " < ", expression(depth + 1), ")"});
    case 2:
        return joined({"#(", value, ")"});
    case 3:
        return joined({"tostring(", value, ")"});
    case 4:
        return joined({"(", value, ")[", expression(depth + 1), "]"});
    case 5:
        return joined({"setmetatable({}, {__index = ", function(depth), ", __tostring = ", function(depth), "})"});
    case 6:
        // A metatable as a value would be one that the program can change.
        if (metatables_ == Metatables::readable) return joined({"(G(", value, ") == nil)"});
        return joined({"G(", value, ")"});
    default:
        if (metatables_ == Metatables::closed) return joined({"getmetatable(", value, ")"});
        return joined({"G(", slot(), ").", bytes_.pick(metamethods), "(", value, ", ", expression(depth + 1), ")"});
    }
}

std::string Writer::change_of_metatable() {
    if (metatables_ != Metatables::writable) return "local _ = " + with_metatable(0);
    switch (bytes_.below(4)) {
    case 0:
        return joined({"setmetatable(G(", slot(), "), ", expression(1), ")"});
    case 1:
        return joined({"setmetatable(G(", slot(), ").__index, ", expression(1), ")"});
    default:
        return joined({"G(", slot(), ").", bytes_.pick(changeable), " = ", expression(1)});
    }
}

std::string Writer::statement(int depth) {
    const int in = depth + 1;
    if (depth >= deepest_statement) return "local _ = " + method_call(depth);
    switch (bytes_.below(18)) {
    case 0:
        return joined({slot(), " = ", expression(0)});
    case 1:
    case 2:
        return joined({slot(), " = ", method_call(0)});
    case 3:
    case 4:
        return "local _ = " + method_call(0);
    case 5:
        return "local _ = " + call(0);
    case 6:
    case 7:
        return joined({"for _, h in pairs(", bytes_.pick(lists), handle(), ") or {}) do ", statement(in), " ",
                       statement(in), " end"});
    case 8:
        return joined({"pcall(function() ", statement(in), " end) ", statement(in)});
    case 9:
        return joined({"xpcall(function() ", statement(in), " end, function(h) ", statement(in), " error(",
                       expression(1), ") end)"});
    case 10:
        return joined({"do error(", expression(0), ") end"});
    case 11:
        return joined({"coroutine.wrap(function(h) ", statement(in), " coroutine.yield(", expression(1), ") ",
                       statement(in), " end)(", handle(), ")"});
    case 12:
        return joined({slot(), " = coroutine.wrap(function(h) while true do ", statement(in), " h = coroutine.yield(",
                       expression(1), ") end end)"});
    case 13:
        return joined({slot(), "(", expression(1), ")"});
    case 14:
        return joined({"collectgarbage('", bytes_.pick(collections), "')"});
    case 15:
        return joined({bytes_.below(2) == 0 ? "on_press" : "on_changed", " = ", body(depth)});
    case 16:
        // A handle that outlives its object, whose name another kind then takes.
        return joined({"M.delete(", handle(), ") ", slot(), " = M.clone(", slot(), arguments("spd", 1), ")"});
    default:
        return change_of_metatable();
    }
}

Step step(ByteReader &bytes, Metatables metatables) {
    switch (bytes.below(12)) {
    case 7:
        return {Step::Kind::pump, "", 0};
    case 8:
        return {bytes.below(2) == 0 ? Step::Kind::queue : Step::Kind::trigger, bytes.pick(objects), 0};
    case 9: {
        std::string key = bytes.pick(objects);
        key = key + "." + bytes.pick(variables);
        return {Step::Kind::write, key, static_cast<int>(bytes.byte()) - 100};
    }
    case 10:
        return {Step::Kind::collect, "", 0};
    case 11:
        return {Step::Kind::fail_allocation, "", static_cast<int>(bytes.byte())};
    default:
        return {Step::Kind::code, Writer(bytes, metatables).statement(0), 0};
    }
}

std::string to_text(const Step &step) {
    switch (step.kind) {
    case Step::Kind::code:
        return step.text;
    case Step::Kind::pump:
        return "-- pump";
    case Step::Kind::queue:
        return "-- queue press " + step.text;
    case Step::Kind::trigger:
        return "-- trigger press " + step.text;
    case Step::Kind::write:
        return "-- write " + step.text + " = " + std::to_string(step.number);
    case Step::Kind::collect:
        return "-- collect garbage";
    case Step::Kind::fail_allocation:
        return "-- in what follows request " + std::to_string(step.number) + " fails";
    }
    return {};
}

} // namespace

ScriptProgram decode_script(Input input) {
    ByteReader bytes(input);
    ScriptProgram program;
    const std::size_t how = bytes.byte();
    constexpr Metatables reach[] = {Metatables::closed, Metatables::closed, Metatables::readable, Metatables::writable};
    program.metatables = reach[how % 4];
    program.errors_return = (how & 4U) != 0;
    program.little_memory = (how & 24U) == 24 && program.metatables != Metatables::writable;
    while (!bytes.at_end() && program.steps.size() < most_steps)
        program.steps.push_back(step(bytes, program.metatables));
    return program;
}

std::string method_names() {
    std::string names;
    for (const Function &method : methods) names += std::string(method.name) + " ";
    return names;
}

std::string to_text(const ScriptProgram &program) {
    constexpr const char *reach[] = {"closed", "readable", "writable"};
    std::string text = std::string("-- metatables ") + reach[static_cast<std::size_t>(program.metatables)];
    text += program.errors_return ? ", errors return" : ", errors unwind";
    text += program.little_memory ? ", little memory\n" : "\n";
    for (const Step &step : program.steps) text += to_text(step) + "\n";
    return text;
}

} // namespace fuzz
