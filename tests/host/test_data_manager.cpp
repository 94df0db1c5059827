// test_data_manager.cpp: variables and what writing does to them; listeners and holds are test_data_changes.cpp's.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include <kel/kel.h>
#include <kelhost/memory.h>

#include "data_manager.h"
#include "io_manager.h"
#include "support/block_ledger.h"
#include "support/captured_log.h"

using kelhost::DataManager;
using kelhost::DataType;
using kelhost::FailingAllocations;
using kelhost::Input;
using kelhost::IoManager;
using kelhost::Value;
using kelhost::WriteResult;

namespace {

struct Bench {
    BlockLedger ledger;
    CapturedLog captured;
    IoManager io_manager{captured.log};
    DataManager data{captured.log, io_manager};
    kl_data_mgr_t *mgr = data.record();

    // A variable as "type value"; "-" when there is none.
    std::string shown(const char *key) const {
        const auto *variable = data.find(key);
        if (variable == nullptr) return "-";
        return std::string(kelhost::data_type_name(variable->type)) + " " + kelhost::to_text(variable->value);
    }
};

Input boolean(bool value) {
    Input input;
    input.kind = Input::Kind::boolean;
    input.boolean = value;
    return input;
}
Input number(double value) {
    Input input;
    input.kind = Input::Kind::number;
    input.number = value;
    return input;
}
Input text(std::string_view value) {
    Input input;
    input.kind = Input::Kind::text;
    input.text = value;
    return input;
}
Input other(std::string_view what) {
    Input input;
    input.text = what;
    return input;
}

constexpr double infinite = std::numeric_limits<double>::infinity();

const std::vector<DataType> integer_types = {DataType::i8,  DataType::u8,  DataType::i16,
                                             DataType::u16, DataType::i32, DataType::u32};

} // namespace

// Creating

TEST_CASE("a variable that is created has its type and value") {
    Bench bench;
    CHECK(bench.data.create("main.ok.kld_x", DataType::i16, Value(-7.0)));
    CHECK(bench.data.create("main.ok.text", DataType::string, Value(std::string("OK"))));
    CHECK(bench.data.create("rate", DataType::f64, Value(0.25)));
    CHECK(bench.shown("main.ok.kld_x") == "i16 -7");
    CHECK(bench.shown("main.ok.text") == "string OK");
    CHECK(bench.shown("rate") == "f64 0.25");
    CHECK(bench.data.find("main.ok") == nullptr);
    CHECK(bench.data.find("main.ok.kld_xx") == nullptr);
}

TEST_CASE("a key is created once, and keeps what it has") {
    Bench bench;
    CHECK(bench.data.create("mode", DataType::i32, Value(1.0)));
    CHECK_FALSE(bench.data.create("mode", DataType::string, Value(std::string("auto"))));
    CHECK(bench.shown("mode") == "i32 1");
}

TEST_CASE("creating asks no policy") {
    Bench bench;
    bench.data.set_key_policy([](std::string_view) { return std::optional<std::string>("never"); });
    CHECK(bench.data.create("mode", DataType::i32, Value(1.0)));
}

TEST_CASE("creating with a value that does not fit its type converts as a write does") {
    Bench bench;
    CHECK(bench.data.create("a", DataType::u8, Value(300.0)));
    CHECK(bench.captured.take() == "warning: Value 300 for a (u8) is out of range, 255 is written");
    CHECK(bench.data.create("b", DataType::i16, Value(std::string("12"))));
    CHECK(bench.data.create("c", DataType::string, Value(1.5)));
    CHECK_FALSE(bench.data.create("d", DataType::i16, Value(std::string("x"))));
    CHECK(bench.captured.take() == "warning: Cannot write \"x\" to d (i16): not a number");
    CHECK(bench.shown("a") == "u8 255");
    CHECK(bench.shown("b") == "i16 12");
    CHECK(bench.shown("c") == "string 1.5");
    CHECK(bench.shown("d") == "-");
}

// Writing numbers

TEST_CASE("each integer type holds both ends of its range, without a word") {
    for (const DataType type : integer_types) {
        CAPTURE(kelhost::data_type_name(type));
        Bench bench;
        bench.data.create("v", type, Value(1.0));
        CHECK(bench.data.write("v", number(kelhost::smallest_value(type))) == WriteResult::changed);
        CHECK(std::get<double>(bench.data.find("v")->value) == kelhost::smallest_value(type));
        CHECK(bench.data.write("v", number(kelhost::largest_value(type))) == WriteResult::changed);
        CHECK(std::get<double>(bench.data.find("v")->value) == kelhost::largest_value(type));
        CHECK(bench.data.find("v")->type == type);
    }
}

TEST_CASE("each integer type clamps what lies beyond its range, with a warning") {
    for (const DataType type : integer_types) {
        const std::string name = kelhost::data_type_name(type);
        CAPTURE(name);
        Bench bench;
        bench.data.create("v", type, Value(1.0));
        const double above = kelhost::largest_value(type) + 1;
        const double below = kelhost::smallest_value(type) - 1;
        const std::string largest = kelhost::to_text(Value(kelhost::largest_value(type)));
        const std::string smallest = kelhost::to_text(Value(kelhost::smallest_value(type)));

        CHECK(bench.data.write("v", number(above)) == WriteResult::changed);
        CHECK(bench.captured.take()
              == "warning: Value " + kelhost::to_text(Value(above)) + " for v (" + name + ") is out of range, "
                     + largest + " is written");
        CHECK(bench.shown("v") == name + " " + largest);
        CHECK(bench.data.write("v", number(below)) == WriteResult::changed);
        CHECK(bench.captured.take()
              == "warning: Value " + kelhost::to_text(Value(below)) + " for v (" + name + ") is out of range, "
                     + smallest + " is written");
        CHECK(bench.shown("v") == name + " " + smallest);
    }
}

TEST_CASE("the warning about a clamped value names key, type and value") {
    Bench bench;
    bench.data.create("main.ok.kld_x", DataType::i16, Value(0.0));
    bench.data.write("main.ok.kld_x", number(40000));
    CHECK(bench.captured.take() == "warning: Value 40000 for main.ok.kld_x (i16) is out of range, 32767 is written");
    bench.data.write("main.ok.kld_x", text(" -4e4"));
    CHECK(bench.captured.take()
          == "warning: Value \" -4e4\" for main.ok.kld_x (i16) is out of range, -32768 is written");
}

TEST_CASE("fractions are cut toward zero for integers, before the range is looked at") {
    Bench bench;
    bench.data.create("i8", DataType::i8, Value(5.0));
    bench.data.create("u8", DataType::u8, Value(5.0));
    bench.data.write("i8", number(2.99));
    CHECK(bench.shown("i8") == "i8 2");
    bench.data.write("i8", number(-2.99));
    CHECK(bench.shown("i8") == "i8 -2");
    bench.data.write("i8", number(127.9));
    CHECK(bench.shown("i8") == "i8 127");
    bench.data.write("i8", number(-128.9));
    CHECK(bench.shown("i8") == "i8 -128");
    bench.data.write("u8", number(-0.9));
    CHECK(bench.shown("u8") == "u8 0"); // and not -0
    bench.data.write("i8", number(-0.0));
    CHECK(bench.shown("i8") == "i8 0");
}

TEST_CASE("infinity is clamped for integers") {
    Bench bench;
    bench.data.create("v", DataType::u16, Value(5.0));
    CHECK(bench.data.write("v", number(infinite)) == WriteResult::changed);
    CHECK(bench.captured.take() == "warning: Value inf for v (u16) is out of range, 65535 is written");
    CHECK(bench.data.write("v", number(-infinite)) == WriteResult::changed);
    CHECK(bench.captured.take() == "warning: Value -inf for v (u16) is out of range, 0 is written");
}

TEST_CASE("what is no number is refused for integers") {
    Bench bench;
    bench.data.create("v", DataType::i32, Value(5.0));
    CHECK(bench.data.write("v", number(std::nan(""))) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot write nan to v (i32): not a number");
    CHECK(bench.shown("v") == "i32 5");
}

TEST_CASE("f64 takes every number") {
    Bench bench;
    bench.data.create("v", DataType::f64, Value(0.0));
    for (const double value : {1.5, -1e308, 5e-324, infinite, -infinite}) {
        CAPTURE(value);
        CHECK(bench.data.write("v", number(value)) == WriteResult::changed);
        CHECK(std::get<double>(bench.data.find("v")->value) == value);
    }
    CHECK(bench.data.write("v", number(std::nan(""))) == WriteResult::changed);
    CHECK(std::isnan(std::get<double>(bench.data.find("v")->value)));
}

TEST_CASE("writing the value that is there is no change") {
    Bench bench;
    bench.data.create("n", DataType::i16, Value(5.0));
    bench.data.create("f", DataType::f64, Value(std::nan("")));
    bench.data.create("s", DataType::string, Value(std::string("x")));
    CHECK(bench.data.write("n", number(5)) == WriteResult::unchanged);
    CHECK(bench.data.write("n", number(5.5)) == WriteResult::unchanged);
    CHECK(bench.data.write("n", text("5")) == WriteResult::unchanged);
    CHECK(bench.data.write("f", number(std::nan(""))) == WriteResult::unchanged);
    CHECK(bench.data.write("s", text("x")) == WriteResult::unchanged);
    CHECK(bench.data.write("s", text("y")) == WriteResult::changed);
}

TEST_CASE("f64 tells the zeros apart, as a script can") {
    Bench bench;
    bench.data.create("f", DataType::f64, Value(0.0));
    CHECK(bench.data.write("f", number(-0.0)) == WriteResult::changed);
    CHECK(std::signbit(std::get<double>(bench.data.find("f")->value)));
    CHECK(bench.data.write("f", number(-0.0)) == WriteResult::unchanged);
}

// Writing booleans and other things

TEST_CASE("booleans are 0 and 1 for every number type") {
    for (int index = 0; index < static_cast<int>(DataType::string); ++index) {
        const auto type = static_cast<DataType>(index);
        CAPTURE(kelhost::data_type_name(type));
        Bench bench;
        bench.data.create("v", type, Value(5.0));
        CHECK(bench.data.write("v", boolean(true)) == WriteResult::changed);
        CHECK(std::get<double>(bench.data.find("v")->value) == 1);
        CHECK(bench.data.write("v", boolean(false)) == WriteResult::changed);
        CHECK(std::get<double>(bench.data.find("v")->value) == 0);
    }
}

TEST_CASE("a boolean is refused for a string") {
    Bench bench;
    bench.data.create("main.ok.text", DataType::string, Value(std::string("x")));
    CHECK(bench.data.write("main.ok.text", boolean(true)) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot write true to main.ok.text (string)");
    CHECK(bench.data.write("main.ok.text", boolean(false)) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot write false to main.ok.text (string)");
    CHECK(bench.shown("main.ok.text") == "string x");
}

TEST_CASE("what no variable can hold is refused, for numbers and strings") {
    Bench bench;
    bench.data.create("main.ok.kld_x", DataType::i16, Value(5.0));
    bench.data.create("main.ok.text", DataType::string, Value(std::string("x")));
    CHECK(bench.data.write("main.ok.kld_x", other("nil")) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot write nil to main.ok.kld_x (i16)");
    CHECK(bench.data.write("main.ok.text", other("table")) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot write table to main.ok.text (string)");
    CHECK(bench.shown("main.ok.kld_x") == "i16 5");
    CHECK(bench.shown("main.ok.text") == "string x");
}

// Writing texts

TEST_CASE("numbers become text for strings, as a script would print them") {
    Bench bench;
    bench.data.create("s", DataType::string, Value(std::string()));
    CHECK(bench.data.write("s", number(21)) == WriteResult::changed);
    CHECK(bench.shown("s") == "string 21");
    CHECK(bench.data.write("s", number(0.1)) == WriteResult::changed);
    CHECK(bench.shown("s") == "string 0.1");
    CHECK(bench.data.write("s", number(0.1)) == WriteResult::unchanged);
    CHECK(bench.data.write("s", number(1e100)) == WriteResult::changed);
    CHECK(bench.shown("s") == "string 1e+100");
}

TEST_CASE("texts that are numbers as a whole become numbers") {
    struct Row {
        const char *text;
        double number;
    };
    const std::vector<Row> rows = {
        {"5",                                                                           5       },
        {"-5",                                                                          -5      },
        {"+5",                                                                          5       },
        {"  5",                                                                         5       },
        {"5 \t\n",                                                                      5       },
        {" 5.25 ",                                                                      5.25    },
        {"1e3",                                                                         1000    },
        {"1E-1",                                                                        0.1     },
        {".5",                                                                          0.5     },
        {"5.",                                                                          5       },
        {"0x10",                                                                        16      },
        {"0XfF",                                                                        255     },
        {" 0x1f ",                                                                      31      },
        {"-0x10",                                                                       -16     },
        {"007",                                                                         7       },
        {"1e400",                                                                       infinite},
        {"123456789012345678901234567890123456789012345678901234567890",
         123456789012345678901234567890123456789012345678901234567890.0                         },
        {"                                                                          4", 4       },
    };
    for (const Row &row : rows) {
        CAPTURE(row.text);
        Bench bench;
        bench.data.create("v", DataType::f64, Value(77.0));
        CHECK(bench.data.write("v", text(row.text)) == WriteResult::changed);
        CHECK(std::get<double>(bench.data.find("v")->value) == row.number);
    }
}

TEST_CASE("texts that are no number as a whole are refused for every number type") {
    for (const char *wrong : {"", " ", "abc", "5x", "5 5", "1e", "0x", "--5", "5,5", "1..2", "five", "0x1g", "x10"}) {
        for (int index = 0; index < static_cast<int>(DataType::string); ++index) {
            const std::string name = kelhost::data_type_name(static_cast<DataType>(index));
            CAPTURE(wrong);
            CAPTURE(name);
            Bench bench;
            bench.data.create("v", static_cast<DataType>(index), Value(77.0));
            CHECK(bench.data.write("v", text(wrong)) == WriteResult::refused);
            CHECK(bench.captured.take()
                  == "warning: Cannot write \"" + std::string(wrong) + "\" to v (" + name + "): not a number");
            CHECK(bench.shown("v") == name + " 77");
        }
    }
}

TEST_CASE("a text with a zero byte in it is no number, and is kept whole by a string") {
    Bench bench;
    const std::string_view tricky("5\0", 2);
    bench.data.create("n", DataType::i16, Value(1.0));
    bench.data.create("s", DataType::string, Value(std::string()));
    CHECK(bench.data.write("n", text(tricky)) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot write \"5\\u0000\" to n (i16): not a number");
    CHECK(bench.data.write("s", text(tricky)) == WriteResult::changed);
    CHECK(std::get<std::string>(bench.data.find("s")->value) == tricky);
}

TEST_CASE("a text that is a part of a longer one is read to its own end") {
    Bench bench;
    const std::string_view longer = "12345";
    bench.data.create("n", DataType::i16, Value(1.0));
    CHECK(bench.data.write("n", text(longer.substr(0, 2))) == WriteResult::changed);
    CHECK(bench.shown("n") == "i16 12");
}

TEST_CASE("a text that says nan is refused for integers like the number") {
    Bench bench;
    bench.data.create("n", DataType::i16, Value(1.0));
    CHECK(bench.data.write("n", text("nan")) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot write \"nan\" to n (i16): not a number");
}

TEST_CASE("a long text is shortened in the warning") {
    Bench bench;
    bench.data.create("n", DataType::i16, Value(1.0));
    bench.data.write("n", text(std::string(5000, 'x')));
    const std::string line = bench.captured.take();
    CHECK(line.starts_with("warning: Cannot write \"xxxxx"));
    CHECK(line.ends_with("xxx...\" to n (i16): not a number"));
    CHECK(line.size() < 200);
}

TEST_CASE("a variable's own text can be written to it") {
    Bench bench;
    const std::string long_text(100, 'a');
    bench.data.create("s", DataType::string, Value(long_text + "b"));
    const std::string &own = std::get<std::string>(bench.data.find("s")->value);
    CHECK(bench.data.write("s", text(std::string_view(own).substr(1))) == WriteResult::changed);
    CHECK(bench.shown("s") == "string " + long_text.substr(1) + "b");
}

// Writing unknown keys

TEST_CASE("writing an unknown key creates a variable of the value's type") {
    Bench bench;
    CHECK(bench.data.write("a.b", boolean(true)) == WriteResult::changed);
    CHECK(bench.shown("a.b") == "u8 1");
    CHECK(bench.data.write("a.whole", number(-2147483648.0)) == WriteResult::changed);
    CHECK(bench.shown("a.whole") == "i32 -2147483648");
    CHECK(bench.data.write("a.large", number(2147483648.0)) == WriteResult::changed);
    CHECK(bench.shown("a.large") == "f64 2147483648");
    CHECK(bench.data.write("a.fraction", number(0.5)) == WriteResult::changed);
    CHECK(bench.shown("a.fraction") == "f64 0.5");
    CHECK(bench.data.write("a.infinite", number(infinite)) == WriteResult::changed);
    CHECK(bench.shown("a.infinite") == "f64 inf");
    CHECK(bench.data.write("a.nan", number(std::nan(""))) == WriteResult::changed);
    CHECK(bench.shown("a.nan") == "f64 nan");
    CHECK(bench.data.write("a.text", text("5")) == WriteResult::changed);
    CHECK(bench.shown("a.text") == "string 5");
}

TEST_CASE("an unknown key cannot be created from what no variable can hold") {
    Bench bench;
    CHECK(bench.data.write("a.b", other("nil")) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot create a.b from nil");
    CHECK(bench.shown("a.b") == "-");
}

TEST_CASE("a key that does not read like one is quoted in warnings") {
    Bench bench;
    CHECK(bench.data.write("", other("nil")) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot create \"\" from nil");
    CHECK(bench.data.write("a b", other("table")) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot create \"a b\" from table");
    CHECK(bench.data.write(std::string_view("a\0b", 3), other("nil")) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot create \"a\\u0000b\" from nil");
}

TEST_CASE("the policy decides about unknown keys, and gives the reason") {
    Bench bench;
    std::string asked;
    bench.data.set_key_policy([&asked](std::string_view key) {
        asked += std::string(key) + " ";
        return key.starts_with("main.ok.") ? std::nullopt : std::optional<std::string>("no object \"main.nosuch\"");
    });
    CHECK(bench.data.write("main.nosuch.kld_x", number(5)) == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot create main.nosuch.kld_x: no object \"main.nosuch\"");
    CHECK(bench.shown("main.nosuch.kld_x") == "-");
    CHECK(bench.data.write("main.ok.note", number(5)) == WriteResult::changed);
    CHECK(bench.data.write("main.ok.note", number(6)) == WriteResult::changed);
    CHECK(asked == "main.nosuch.kld_x main.ok.note ");
}

TEST_CASE("without a policy again every key may be created") {
    Bench bench;
    bench.data.set_key_policy([](std::string_view) { return std::optional<std::string>("never"); });
    bench.data.set_key_policy(nullptr);
    CHECK(bench.data.write("a.b", number(1)) == WriteResult::changed);
}

// Finding and erasing

TEST_CASE("keys are listed by prefix, sorted by byte value, without the prefix itself") {
    Bench bench;
    for (const char *key :
         {"main.ok.b", "main.ok", "main.okay.x", "main.ok.a", "mode", "main.ok.B", "main.ok.a1", "\xC3\xA4"})
        bench.data.create(key, DataType::i32, Value(0.0));
    using Keys = std::vector<std::string>;
    CHECK(bench.data.keys("main.ok.") == Keys{"main.ok.B", "main.ok.a", "main.ok.a1", "main.ok.b"});
    CHECK(bench.data.keys("main.ok") == Keys{"main.ok.B", "main.ok.a", "main.ok.a1", "main.ok.b", "main.okay.x"});
    CHECK(bench.data.keys("main.ok.a") == Keys{"main.ok.a1"});
    CHECK(bench.data.keys("main.ok.b").empty());
    CHECK(bench.data.keys("nosuch").empty());
    CHECK(bench.data.keys("")
          == Keys{"main.ok", "main.ok.B", "main.ok.a", "main.ok.a1", "main.ok.b", "main.okay.x", "mode", "\xC3\xA4"});
}

TEST_CASE("an erased variable is gone, and says whether it was there") {
    Bench bench;
    bench.data.create("a", DataType::i32, Value(0.0));
    bench.data.create("b", DataType::i32, Value(0.0));
    CHECK(bench.data.erase("a"));
    CHECK_FALSE(bench.data.erase("a"));
    CHECK(bench.shown("a") == "-");
    CHECK(bench.shown("b") == "i32 0");
}

TEST_CASE("erase_prefix takes every key that begins with it, the prefix itself too") {
    Bench bench;
    for (const char *key : {"main.list", "main.list.text.0.0", "main.list.text.0.1", "main.lis", "main.listing", "z"})
        bench.data.create(key, DataType::i32, Value(0.0));
    bench.data.erase_prefix("main.list.text.");
    CHECK(bench.data.keys("") == std::vector<std::string>{"main.lis", "main.list", "main.listing", "z"});
    bench.data.erase_prefix("main.list");
    CHECK(bench.data.keys("") == std::vector<std::string>{"main.lis", "z"});
    bench.data.erase_prefix("nosuch");
    CHECK(bench.data.keys("").size() == 2);
    bench.data.erase_prefix("");
    CHECK(bench.data.keys("").empty());
}

TEST_CASE("to_input turns a value into what writes it") {
    Bench bench;
    bench.data.create("n", DataType::i16, Value(0.0));
    bench.data.create("s", DataType::string, Value(std::string()));
    const Value seven(7.0);
    const Value word(std::string("word"));
    CHECK(bench.data.write("n", kelhost::to_input(seven)) == WriteResult::changed);
    CHECK(bench.data.write("s", kelhost::to_input(word)) == WriteResult::changed);
    CHECK(bench.shown("n") == "i16 7");
    CHECK(bench.shown("s") == "string word");
}

// The C interface

TEST_CASE("the record states its size, finds its manager and offers every operation") {
    Bench bench;
    CHECK(bench.mgr->nbytes == sizeof(kl_data_mgr_t));
    CHECK(&DataManager::of(bench.mgr) == &bench.data);
    CHECK(bool(bench.mgr->init));
    CHECK(bool(bench.mgr->fini));
    CHECK(bool(bench.mgr->set_data));
    CHECK(bool(bench.mgr->get_format));
    CHECK(bool(bench.mgr->get_data_value));
    CHECK(bool(bench.mgr->get_data));
    CHECK(bool(bench.mgr->release_data));
    CHECK(bool(bench.mgr->find_for_prefix));
    CHECK(bool(bench.mgr->get_type));
    CHECK(bool(bench.mgr->add_change_listener));
    CHECK(bool(bench.mgr->rem_change_listener));
    CHECK(bool(bench.mgr->hold_change_listener));
    CHECK(bool(bench.mgr->release_change_listener));
    CHECK(bool(bench.mgr->will_fire_event));
    CHECK(bool(bench.mgr->force_notifications));
    CHECK(bool(bench.mgr->get_largest_key));
    CHECK(bool(bench.mgr->traverse));
    CHECK(bool(bench.mgr->get_metrics));
    CHECK(bool(bench.mgr->bind_event));
    CHECK(bool(bench.mgr->add_miss_listener));
    CHECK(bool(bench.mgr->get_format_index));
    CHECK(bool(bench.mgr->create_data_entry_typed));
    CHECK(bench.mgr->init(bench.mgr, nullptr) == 0);
}

namespace {

template <typename Number> int set(Bench &bench, const char *key, const char *format, Number value) {
    return bench.mgr->set_data(bench.mgr, key, format, &value, sizeof value);
}
template <typename Number> Number get(Bench &bench, const char *key) {
    Number value{};
    CHECK(bench.mgr->get_data_value(bench.mgr, key, &value, sizeof value) == 0);
    return value;
}

// Writes a value through set_data into a new variable of its own format, and reads it back both ways.
template <typename Number> void check_round_trip(const char *format, Number value) {
    CAPTURE(format);
    Bench bench;
    CHECK(set(bench, "main.v", format, value) == 0);
    CHECK(bench.mgr->get_format(bench.mgr, "main.v") == std::string(format));
    CHECK(get<Number>(bench, "main.v") == value);
    std::uint32_t nbytes = 0;
    void *copy = bench.mgr->get_data(bench.mgr, "main.v", &nbytes);
    REQUIRE(copy != nullptr);
    CHECK(nbytes == sizeof(Number));
    CHECK(std::memcmp(copy, &value, sizeof value) == 0);
    bench.mgr->release_data(bench.mgr, copy);
}

} // namespace

TEST_CASE("each number format is written and read as its C type") {
    check_round_trip<std::int8_t>("i8", -128);
    check_round_trip<std::uint8_t>("u8", 255);
    check_round_trip<std::int16_t>("i16", -32768);
    check_round_trip<std::uint16_t>("u16", 65535);
    check_round_trip<std::int32_t>("i32", INT32_MIN);
    check_round_trip<std::uint32_t>("u32", UINT32_MAX);
    check_round_trip<double>("f64", 0.1);
}

TEST_CASE("a string is written up to its end or to its size, and read with its end") {
    Bench bench;
    CHECK(bench.mgr->set_data(bench.mgr, "s", "string", "hello", 6) == 0);
    CHECK(bench.shown("s") == "string hello");
    CHECK(bench.mgr->set_data(bench.mgr, "s", "string", "hello", 4) == 0);
    CHECK(bench.shown("s") == "string hell");
    CHECK(bench.mgr->set_data(bench.mgr, "s", "string", "", 0) == 0);
    CHECK(bench.shown("s") == "string ");
    CHECK(bench.mgr->set_data(bench.mgr, "s", "string", "abc\0def", 8) == 0);
    CHECK(bench.shown("s") == "string abc");

    char room[8] = "xxxxxxx";
    CHECK(bench.mgr->get_data_value(bench.mgr, "s", room, 4) == 0);
    CHECK(std::string(room) == "abc");
    CHECK(room[4] == 'x');
    std::uint32_t nbytes = 0;
    void *copy = bench.mgr->get_data(bench.mgr, "s", &nbytes);
    CHECK(nbytes == 4);
    CHECK(std::string(static_cast<char *>(copy)) == "abc");
    bench.mgr->release_data(bench.mgr, copy);
}

TEST_CASE("set_data converts to the variable's own type") {
    Bench bench;
    bench.data.create("n", DataType::i8, Value(0.0));
    bench.data.create("s", DataType::string, Value(std::string()));
    CHECK(set<double>(bench, "n", "f64", 2.75) == 0);
    CHECK(bench.shown("n") == "i8 2");
    CHECK(bench.mgr->set_data(bench.mgr, "n", "string", "-3", 3) == 0);
    CHECK(bench.shown("n") == "i8 -3");
    CHECK(set<std::uint16_t>(bench, "s", "u16", 500) == 0);
    CHECK(bench.shown("s") == "string 500");
    CHECK(set<std::int32_t>(bench, "n", "i32", 1000) == 0);
    CHECK(bench.captured.take() == "warning: Value 1000 for n (i8) is out of range, 127 is written");
    CHECK(bench.mgr->set_data(bench.mgr, "n", "string", "x", 2) == -1);
    CHECK(bench.captured.take() == "warning: Cannot write \"x\" to n (i8): not a number");
    CHECK(bench.shown("n") == "i8 127");
}

TEST_CASE("set_data creates what the policy allows, with the format that it was given") {
    Bench bench;
    bench.data.set_key_policy([](std::string_view key) {
        return key == "main.v" ? std::nullopt : std::optional<std::string>("no object \"x\"");
    });
    CHECK(set<std::uint16_t>(bench, "main.v", "u16", 3) == 0);
    CHECK(bench.shown("main.v") == "u16 3");
    CHECK(set<std::uint16_t>(bench, "x.v", "u16", 3) == -1);
    CHECK(bench.captured.take() == "warning: Cannot create x.v: no object \"x\"");
}

TEST_CASE("set_data refuses a format that there is not, and data of another size, with a warning") {
    Bench bench;
    bench.data.create("n", DataType::i16, Value(5.0));
    CHECK(set<std::int16_t>(bench, "n", "i17", 1) == -1);
    CHECK(bench.captured.take() == "warning: Cannot write to n: no format \"i17\"");
    CHECK(set<std::int32_t>(bench, "n", "i16", 1) == -1);
    CHECK(bench.captured.take() == "warning: Cannot write to n: 4 bytes, but i16 has 2");
    CHECK(bench.shown("n") == "i16 5");
}

TEST_CASE("nulls are refused and never read") {
    Bench bench;
    std::int16_t value = 1;
    kl_data_mgr_t *mgr = bench.mgr;
    CHECK(mgr->set_data(mgr, nullptr, "i16", &value, 2) == -1);
    CHECK(mgr->set_data(mgr, "n", nullptr, &value, 2) == -1);
    CHECK(mgr->set_data(mgr, "n", "i16", nullptr, 2) == -1);
    CHECK(mgr->get_format(mgr, nullptr) == nullptr);
    CHECK(mgr->get_data_value(mgr, nullptr, &value, 2) == -1);
    CHECK(mgr->get_data_value(mgr, "n", nullptr, 2) == -1);
    CHECK(mgr->get_data(mgr, nullptr, nullptr) == nullptr);
    CHECK(mgr->get_type(mgr, nullptr) == -1);
    CHECK(mgr->add_change_listener(mgr, "n", nullptr, nullptr) == -1);
    CHECK(mgr->rem_change_listener(mgr, nullptr, nullptr) == -1);
    CHECK(mgr->will_fire_event(mgr, nullptr) == 0);
    CHECK(mgr->traverse(mgr, nullptr, nullptr) == 0);
    CHECK(mgr->get_metrics(mgr, nullptr) == -1);
    CHECK(mgr->bind_event(mgr, nullptr, "e") == -1);
    CHECK(mgr->bind_event(mgr, "n", nullptr) == -1);
    CHECK(mgr->add_miss_listener(mgr, nullptr, nullptr) == -1);
    CHECK(mgr->get_format_index(mgr, nullptr) == -1);
    CHECK(mgr->create_data_entry_typed(mgr, nullptr, 0) == -1);
    mgr->release_data(mgr, nullptr);
    CHECK(bench.data.keys("").empty());
}

TEST_CASE("reading what does not exist fails") {
    Bench bench;
    std::int16_t value = 77;
    std::uint32_t nbytes = 9;
    CHECK(bench.mgr->get_format(bench.mgr, "n") == nullptr);
    CHECK(bench.mgr->get_type(bench.mgr, "n") == -1);
    CHECK(bench.mgr->get_data_value(bench.mgr, "n", &value, sizeof value) == -1);
    CHECK(value == 77);
    CHECK(bench.mgr->get_data(bench.mgr, "n", &nbytes) == nullptr);
    CHECK(nbytes == 0);
}

TEST_CASE("reading into too little room fails and writes nothing, into more room succeeds") {
    Bench bench;
    bench.data.create("n", DataType::i32, Value(1.0));
    bench.data.create("s", DataType::string, Value(std::string("abc")));
    char room[16] = "zzzzzzzzzzzzzzz";
    CHECK(bench.mgr->get_data_value(bench.mgr, "n", room, 3) == -1);
    CHECK(bench.mgr->get_data_value(bench.mgr, "s", room, 3) == -1);
    CHECK(std::string(room) == "zzzzzzzzzzzzzzz");
    CHECK(bench.mgr->get_data_value(bench.mgr, "s", room, sizeof room) == 0);
    CHECK(std::string(room) == "abc");
    CHECK(room[4] == 'z');
}

TEST_CASE("get_data without memory gives null and size 0") {
    Bench bench;
    bench.data.create("n", DataType::i32, Value(1.0));
    const FailingAllocations failing(0, true);
    std::uint32_t nbytes = 9;
    CHECK(bench.mgr->get_data(bench.mgr, "n", &nbytes) == nullptr);
    CHECK(nbytes == 0);
    CHECK(bench.mgr->get_data(bench.mgr, "n", nullptr) == nullptr);
}

TEST_CASE("get_data does without a place for the size") {
    Bench bench;
    bench.data.create("n", DataType::u8, Value(9.0));
    void *copy = bench.mgr->get_data(bench.mgr, "n", nullptr);
    REQUIRE(copy != nullptr);
    CHECK(*static_cast<std::uint8_t *>(copy) == 9);
    bench.mgr->release_data(bench.mgr, copy);
}

TEST_CASE("formats and types have the same numbers, in order") {
    Bench bench;
    const char *const formats[] = {"i8", "u8", "i16", "u16", "i32", "u32", "f64", "string"};
    for (int index = 0; index < 8; ++index) {
        CAPTURE(index);
        CHECK(bench.mgr->get_format_index(bench.mgr, formats[index]) == index);
        const std::string key = std::string("v") + formats[index];
        CHECK(bench.mgr->create_data_entry_typed(bench.mgr, key.c_str(), index) == 0);
        CHECK(bench.mgr->get_type(bench.mgr, key.c_str()) == index);
        CHECK(bench.mgr->get_format(bench.mgr, key.c_str()) == std::string(formats[index]));
        CHECK(bench.shown(key.c_str()) == std::string(formats[index]) + (index == 7 ? " " : " 0"));
    }
    CHECK(bench.mgr->get_format_index(bench.mgr, "i64") == -1);
    CHECK(bench.mgr->get_format_index(bench.mgr, "") == -1);
}

TEST_CASE("create_data_entry_typed refuses what exists, what has no object, and what is no format") {
    Bench bench;
    bench.data.set_key_policy([](std::string_view key) {
        return key == "main.v" ? std::nullopt : std::optional<std::string>("no object \"x\"");
    });
    CHECK(bench.mgr->create_data_entry_typed(bench.mgr, "main.v", 2) == 0);
    CHECK(bench.mgr->create_data_entry_typed(bench.mgr, "main.v", 3) == -1);
    CHECK(bench.shown("main.v") == "i16 0");
    CHECK(bench.mgr->create_data_entry_typed(bench.mgr, "x.v", 2) == -1);
    CHECK(bench.captured.take() == "warning: Cannot create x.v: no object \"x\"");
    CHECK(bench.mgr->create_data_entry_typed(bench.mgr, "main.v", 8) == -1);
    CHECK(bench.mgr->create_data_entry_typed(bench.mgr, "main.v", -1) == -1);
}

TEST_CASE("find_for_prefix gives the sorted keys in a block of the caller's") {
    Bench bench;
    for (const char *key : {"main.ok.b", "main.ok", "main.okay.x", "main.ok.a", "mode"})
        bench.data.create(key, DataType::i32, Value(0.0));
    const std::size_t blocks = kelhost::memory_counts().live_blocks;
    int count = 77;
    char **keys = bench.mgr->find_for_prefix(bench.mgr, "main.ok.", &count);
    REQUIRE(keys != nullptr);
    CHECK(kelhost::memory_counts().live_blocks == blocks + 1);
    REQUIRE(count == 2);
    CHECK(keys[0] == std::string("main.ok.a"));
    CHECK(keys[1] == std::string("main.ok.b"));
    kelal_free(keys);

    keys = bench.mgr->find_for_prefix(bench.mgr, "", &count);
    CHECK(count == 5);
    REQUIRE(keys != nullptr);
    CHECK(keys[4] == std::string("mode"));
    kelal_free(keys);
}

TEST_CASE("the keys of find_for_prefix stay while values are written") {
    Bench bench;
    bench.data.create("main.ok.text", DataType::string, Value(std::string()));
    int count = 0;
    char **keys = bench.mgr->find_for_prefix(bench.mgr, "main.ok", &count);
    REQUIRE(count == 1);
    bench.data.write("main.ok.text", text("a text that needs a block of its own"));
    CHECK(keys[0] == std::string("main.ok.text"));
    kelal_free(keys);
}

TEST_CASE("find_for_prefix gives null and count 0 when there is nothing, or no memory, or no question") {
    Bench bench;
    bench.data.create("main.ok", DataType::i32, Value(0.0));
    int count = 77;
    CHECK(bench.mgr->find_for_prefix(bench.mgr, "main.ok", &count) == nullptr);
    CHECK(count == 0);
    count = 77;
    CHECK(bench.mgr->find_for_prefix(bench.mgr, "x", &count) == nullptr);
    CHECK(count == 0);
    count = 77;
    CHECK(bench.mgr->find_for_prefix(bench.mgr, nullptr, &count) == nullptr);
    CHECK(count == 0);
    CHECK(bench.mgr->find_for_prefix(bench.mgr, "main", nullptr) == nullptr);
    const FailingAllocations failing(0);
    count = 77;
    CHECK(bench.mgr->find_for_prefix(bench.mgr, "main", &count) == nullptr);
    CHECK(count == 0);
}

TEST_CASE("the largest key is measured in bytes") {
    Bench bench;
    CHECK(bench.mgr->get_largest_key(bench.mgr) == 0);
    bench.data.create("z", DataType::i32, Value(0.0));
    bench.data.create("main.ok.kld_x", DataType::i32, Value(0.0));
    bench.data.create("n", DataType::i32, Value(0.0));
    CHECK(bench.mgr->get_largest_key(bench.mgr) == 13);
    bench.data.erase("main.ok.kld_x");
    CHECK(bench.mgr->get_largest_key(bench.mgr) == 1);
}

namespace {

struct Tour {
    std::string seen;
    std::string stop_at;
};

int visit(const char *key, const char *format, const void *data, void *user_data) {
    auto &tour = *static_cast<Tour *>(user_data);
    tour.seen += std::string(key) + ":" + format + "=";
    if (format == std::string("i16")) {
        std::int16_t number = 0;
        std::memcpy(&number, data, sizeof number);
        tour.seen += std::to_string(number);
    } else {
        tour.seen += static_cast<const char *>(data);
    }
    tour.seen += " ";
    return key == tour.stop_at ? 42 : 0;
}

} // namespace

TEST_CASE("traverse visits every variable in key order with its value in C") {
    Bench bench;
    bench.data.create("b", DataType::i16, Value(-2.0));
    bench.data.create("a", DataType::string, Value(std::string("text")));
    bench.data.create("c", DataType::i16, Value(3.0));
    Tour all;
    CHECK(bench.mgr->traverse(bench.mgr, visit, &all) == 0);
    CHECK(all.seen == "a:string=text b:i16=-2 c:i16=3 ");
    Tour part{"", "b"};
    CHECK(bench.mgr->traverse(bench.mgr, visit, &part) == 42);
    CHECK(part.seen == "a:string=text b:i16=-2 ");
}

TEST_CASE("the metrics count variables, the bytes of their values, and listeners") {
    Bench bench;
    bench.data.create("b", DataType::i16, Value(-2.0));
    bench.data.create("a", DataType::string, Value(std::string("text")));
    bench.data.create("f", DataType::f64, Value(1.0));
    const int number_of_listener = bench.data.add_listener([](std::string_view) {});
    const auto ignore = [](kl_data_mgr_t *, const char *, void *) {};
    bench.mgr->add_change_listener(bench.mgr, "b", ignore, nullptr);
    bench.mgr->add_miss_listener(bench.mgr, ignore, nullptr);
    kl_data_metrics_t metrics = {};
    CHECK(bench.mgr->get_metrics(bench.mgr, &metrics) == 0);
    CHECK(metrics.variables == 3);
    CHECK(metrics.nbytes == 2 + 5 + 8);
    CHECK(metrics.listeners == 3);
    bench.data.remove_listener(number_of_listener);
    CHECK(bench.mgr->get_metrics(bench.mgr, &metrics) == 0);
    CHECK(metrics.listeners == 2);
}
