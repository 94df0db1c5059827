// data_operations.cpp: decodes operations, and the list of values that they write.
#include "data_operations.h"

#include <limits>

#include "byte_reader.h"

namespace fuzz {

namespace {

using kelhost::DataType;
using Value = kelhost::Input;

constexpr std::size_t most_operations = 100;
constexpr const char *keys[] = {"a", "a.b", "a.b.c", "a.bc", "ab", "b", "", "z.kld_x"};
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double no_number = std::numeric_limits<double>::quiet_NaN();

KnownValue boolean(bool value) {
    Value input;
    input.kind = Value::Kind::boolean;
    input.boolean = value;
    return {value ? "true" : "false", input, true, value ? 1.0 : 0.0};
}

KnownValue number(const char *text, double value) {
    Value input;
    input.kind = Value::Kind::number;
    input.number = value;
    return {text, input, true, value};
}

KnownValue text(const char *shown, std::string_view text, bool is_number = false, double value = 0) {
    Value input;
    input.kind = Value::Kind::text;
    input.text = text;
    return {shown, input, is_number, value};
}

KnownValue nothing() {
    Value input;
    input.text = "nil";
    return {"nil", input, false, 0};
}

Reaction reaction(ByteReader &bytes) {
    Reaction made;
    made.kind = static_cast<Reaction::Kind>(bytes.below(4));
    made.key = bytes.pick(keys);
    made.number = static_cast<int>(bytes.below(8));
    made.times = static_cast<int>(bytes.byte());
    return made;
}

std::string to_text(const Reaction &reaction) {
    constexpr const char *kinds[] = {"does nothing", "writes", "erases", "removes listener"};
    std::string text = kinds[static_cast<std::size_t>(reaction.kind)];
    text += reaction.kind == Reaction::Kind::remove_listener ? " " + std::to_string(reaction.number)
                                                             : " \"" + reaction.key + "\"";
    return text + ", " + std::to_string(reaction.times) + " times";
}

} // namespace

const std::vector<KnownValue> &known_values() {
    static const std::string long_text(100, 'x');
    static const std::string long_number = std::string(100, '0') + "7";
    static const std::vector<KnownValue> values = {
        number("0", 0),
        number("1", 1),
        number("-1", -1),
        number("0.5", 0.5),
        number("-0.5", -0.5),
        number("-0", -0.0),
        number("127", 127),
        number("128", 128),
        number("-128", -128),
        number("-129", -129),
        number("255", 255),
        number("256", 256),
        number("32767", 32767),
        number("32768", 32768),
        number("-32769", -32769),
        number("65535.9", 65535.9),
        number("65536", 65536),
        number("2147483647", 2147483647.0),
        number("2147483648", 2147483648.0),
        number("-2147483648", -2147483648.0),
        number("-2147483649", -2147483649.0),
        number("4294967295", 4294967295.0),
        number("4294967296", 4294967296.0),
        number("1e308", 1e308),
        number("1e-9", 1e-9),
        number("inf", infinity),
        number("-inf", -infinity),
        number("nan", no_number),
        boolean(true),
        boolean(false),
        nothing(),
        text("\"\"", ""),
        text("\"12\"", "12", true, 12),
        text("\" 5 \"", " 5 ", true, 5),
        text("\"0x10\"", "0x10", true, 16),
        text("\"1e3\"", "1e3", true, 1000),
        text("\"-1.5\"", "-1.5", true, -1.5),
        text("\"1e999\"", "1e999", true, infinity),
        text("\"-0\"", "-0", true, -0.0),
        text("\"12x\"", "12x"),
        text("\"1 2\"", "1 2"),
        text("\"12\\0\"", {"12\0", 3}),
        text("\"hello\"", "hello"),
        text("a long text", long_text),
        text("\"00...7\"", long_number, true, 7),
        text("\"0\"", "0", true, 0),
    };
    return values;
}

std::vector<Operation> decode_operations(Input input) {
    ByteReader bytes(input);
    std::vector<Operation> operations;
    while (!bytes.at_end() && operations.size() < most_operations) {
        Operation made;
        made.kind = static_cast<Operation::Kind>(bytes.below(12));
        made.key = bytes.pick(keys);
        made.type = static_cast<DataType>(bytes.below(kelhost::data_type_count));
        made.value = bytes.below(known_values().size());
        made.number = static_cast<int>(bytes.below(8)) - 1;
        if (made.kind == Operation::Kind::add_listener) made.reaction = reaction(bytes);
        operations.push_back(made);
    }
    return operations;
}

std::string to_text(const Operation &operation) {
    constexpr const char *kinds[] = {"create",          "write",
                                     "set bytes of",    "erase",
                                     "erase all below", "hold",
                                     "release",         "restore hold depth",
                                     "force",           "add listener of",
                                     "remove listener", "list below"};
    const std::string key = " \"" + operation.key + "\"";
    const std::string value = std::string(" = ") + known_values()[operation.value].text;
    const std::string type = std::string(" ") + data_type_name(operation.type);
    std::string text = kinds[static_cast<std::size_t>(operation.kind)];
    switch (operation.kind) {
    case Operation::Kind::create:
    case Operation::Kind::set_bytes:
        return text + key + type + value;
    case Operation::Kind::write:
        return text + key + value;
    case Operation::Kind::erase:
    case Operation::Kind::erase_prefix:
    case Operation::Kind::list:
        return text + key;
    case Operation::Kind::add_listener:
        return text + key + " that " + to_text(operation.reaction);
    case Operation::Kind::restore_hold_depth:
    case Operation::Kind::remove_listener:
        return text + " " + std::to_string(operation.number);
    case Operation::Kind::hold:
    case Operation::Kind::release:
    case Operation::Kind::force:
        return text;
    }
    return text;
}

} // namespace fuzz
