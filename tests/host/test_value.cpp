// test_value.cpp: the types of variables: names, ranges, and how values read as text; and how a fault reads as text.
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include <kelhost/diagnostic.h>
#include <kelhost/value.h>

using kelhost::DataType;
using kelhost::Diagnostic;
using kelhost::to_text;
using kelhost::Value;

TEST_CASE("each type has its name, in the order of the format index") {
    const std::vector<std::string> names = {"i8", "u8", "i16", "u16", "i32", "u32", "f64", "string"};
    REQUIRE(names.size() == kelhost::data_type_count);
    for (std::size_t index = 0; index < names.size(); ++index) {
        CAPTURE(index);
        const auto type = static_cast<DataType>(index);
        CHECK(kelhost::data_type_name(type) == names[index]);
        CHECK(kelhost::data_type_from_name(names[index]) == type);
    }
}

TEST_CASE("an unknown name is no type") {
    for (const char *name : {"", "i", "i64", "I8", "float", "strin", "string "}) {
        CAPTURE(name);
        CHECK_FALSE(kelhost::data_type_from_name(name).has_value());
    }
}

TEST_CASE("each number type has its range") {
    struct Row {
        DataType type;
        double smallest;
        double largest;
    };
    const std::vector<Row> rows = {
        {DataType::i8,  -128,                    127                   },
        {DataType::u8,  0,                       255                   },
        {DataType::i16, -32768,                  32767                 },
        {DataType::u16, 0,                       65535                 },
        {DataType::i32, -2147483648.0,           2147483647.0          },
        {DataType::u32, 0,                       4294967295.0          },
        {DataType::f64, -1.7976931348623157e308, 1.7976931348623157e308},
    };
    for (const Row &row : rows) {
        CAPTURE(kelhost::data_type_name(row.type));
        CHECK(kelhost::smallest_value(row.type) == row.smallest);
        CHECK(kelhost::largest_value(row.type) == row.largest);
    }
}

TEST_CASE("numbers read as a script would print them") {
    CHECK(to_text(Value(0.0)) == "0");
    CHECK(to_text(Value(-0.0)) == "-0");
    CHECK(to_text(Value(40000.0)) == "40000");
    CHECK(to_text(Value(-32768.0)) == "-32768");
    CHECK(to_text(Value(4294967295.0)) == "4294967295");
    CHECK(to_text(Value(21.5)) == "21.5");
    CHECK(to_text(Value(0.1)) == "0.1");
    CHECK(to_text(Value(1.0 / 3)) == "0.33333333333333");
    CHECK(to_text(Value(1e15)) == "1e+15");
    CHECK(to_text(Value(-1.2345678901234e-300)) == "-1.2345678901234e-300");
}

TEST_CASE("what is no finite number reads the same everywhere") {
    CHECK(to_text(Value(std::numeric_limits<double>::infinity())) == "inf");
    CHECK(to_text(Value(-std::numeric_limits<double>::infinity())) == "-inf");
    CHECK(to_text(Value(std::nan(""))) == "nan");
    CHECK(to_text(Value(-std::nan(""))) == "nan");
}

TEST_CASE("a string reads as it is") {
    CHECK(to_text(Value(std::string("22 \"C\""))) == "22 \"C\"");
    CHECK(to_text(Value(std::string())).empty());
}

TEST_CASE("a fault with a line reads as file, line, column and message") {
    CHECK(to_text(Diagnostic{"app.json", 3, 14, "", "unexpected end"}) == "app.json:3:14: unexpected end");
    CHECK(to_text(Diagnostic{"app.json", 3, 0, "", "unexpected end"}) == "app.json:3: unexpected end");
}

TEST_CASE("a fault with a path reads as file, path and message") {
    CHECK(to_text(Diagnostic{"app.json", 0, 0, "$.layers[0].name", "is empty"})
          == "app.json: $.layers[0].name: is empty");
}

TEST_CASE("a fault without a place reads as file and message") {
    CHECK(to_text(Diagnostic{"app.json", 0, 0, "", "No such file or directory"})
          == "app.json: No such file or directory");
}

TEST_CASE("a fault of an application made in memory does without the file") {
    CHECK(to_text(Diagnostic{"", 0, 0, "$.layers[0].name", "is empty"}) == "$.layers[0].name: is empty");
    CHECK(to_text(Diagnostic{"", 2, 5, "", "unexpected end"}) == "2:5: unexpected end");
    CHECK(to_text(Diagnostic{"", 0, 0, "", "has no screens"}) == "has no screens");
}
