// test_numbers.cpp: fractions, large numbers, infinities, what is no number, and zero's sign, in each place that takes
// a number.
#include "harness.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include <lua.hpp>
#include <support/number_facts.h>

using namespace conformance;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
const double not_a_number = std::nan("");

const double numbers[] = {
    0.0,           -0.0,          0.5,           -0.5,         2.9,           -2.9,
    127.0,         257.0,         -255.0,        32767.0,      32768.0,       -32769.0,
    40000.0,       65636.0,       65536.5,       131172.0,     2147483647.0,  2147483648.0,
    -2147483648.0, -2147483648.5, -2147483649.0, 4294967301.0, 10000000000.0, 9007199254740993.0,
    9.3e18,        -9.3e18,       1e300,         -1e300,       5e-324,        infinite,
    -infinite,     not_a_number,
};

// As the recorder's lines show it.
std::string text_of(double number) {
    if (std::isnan(number)) return "nan"; // C libraries differ in the sign that they print
    char text[32];
    std::snprintf(text, sizeof text, "%.14g", number);
    return text;
}

// A control at x 10, y 20, width 100, height 80, and the number `n`.
struct Numbers : Session {
    explicit Numbers(double number) {
        results("LEFT, CENTER, RIGHT, BOTTOM = 1, 2, 3, 3"
                " ok = keldom.get_object('main.ok') list = keldom.get_object('main.list')");
        lua_pushnumber(lua(), number);
        lua_setglobal(lua(), "n");
    }

    // The values that the call writes, by the last part of their keys: "width 60, x 30".
    std::string written(const std::string &call) {
        CHECK(results(call) == Lines{});
        std::string text;
        for (const std::string &line : calls()) {
            const std::size_t end = line.find("\" = ");
            if (!line.starts_with("set ") || end == std::string::npos) continue;
            const std::size_t dot = line.rfind('.', end);
            text += (text.empty() ? "" : ", ") + line.substr(dot + 1, end - dot - 1) + " " + line.substr(end + 4);
        }
        return text;
    }
};

int cut(int number) { return static_cast<std::int16_t>(number); }

} // namespace

TEST_CASE("a number is handed to the host as it is by every setter that does not compute with it") {
    for (double number : numbers) {
        CAPTURE(number);
        Numbers session(number);
        const std::string text = text_of(number);
        CHECK(session.written("ok:set_x(n)") == "kld_x " + text);
        CHECK(session.written("ok:set_x(n, LEFT)") == "kld_x " + text);
        CHECK(session.written("ok:set_height(n)") == "kld_height " + text);
        CHECK(session.written("ok:set_position(n, 3)") == "kld_x " + text + ", kld_y 3");
        CHECK(session.written("ok:set_size(4, n)") == "kld_width 4, kld_height " + text);
        CHECK(session.written("ok:set_bounds(1, 2, n, n)")
              == "kld_x 1, kld_y 2, kld_width " + text + ", kld_height " + text);
        CHECK(session.written("ok:set_hidden(n)") == "kld_hidden " + text);
        CHECK(session.written("ok:hide(n)") == "kld_hidden " + text);
        CHECK(session.written("ok:set_value('count', n)") == "count " + text);
        CHECK(session.written("ok:set_data({count = n})") == "count " + text);
    }
}

TEST_CASE("a number as a variable's name is the text that Lua makes of it") {
    for (double number : numbers) {
        CAPTURE(number);
        Numbers session(number);
        const std::string text = session.results("return tostring(n)").at(0);
        const std::string key = "\"main.ok." + text.substr(1);
        CHECK(session.results("return ok:key(n)") == Lines{key});
        CHECK(session.results("return list:cell_key(1, 2, n)")
              == Lines{"\"main.list." + text.substr(1, text.size() - 2) + ".1.2\""});
        CHECK(session.results("return ok:get_value(n)") == Lines{"nil"});
        CHECK(session.calls() == Lines{"get " + key + " -> none"});
        CHECK(session.results("ok:set_value(n, 5)") == Lines{});
        CHECK(session.calls() == Lines{"hold", "set " + key + " = 5", "release"});
    }
}

TEST_CASE("a number as a key of get_data stays a number, which must be one") {
    int kept = 0; // hosts differ in the names that variables may have
    for (double number : numbers) {
        CAPTURE(number);
        Numbers session(number);
        session.results("ok:set_value(tostring(n), 5)");
        if (std::isnan(number)) {
            CHECK(session.error("ok:get_data(n)") == "table index is NaN");
        } else {
            const Lines value = session.results("return ok:get_value(n)");
            CHECK(session.results("return ok:get_data(n)[n]") == value);
            kept += value == Lines{"5"};
        }
    }
    CHECK(kept > 5);
}

TEST_CASE("a cell's row and column are cut toward zero, as wide as the machine's integers are") {
    for (double number : numbers) {
        CAPTURE(number);
        Numbers session(number);
        const std::string row = std::to_string(number_facts::to_row(number));
        CHECK(session.results("return list:cell_key(n, 3, 'text'), list:cell_key(3, n, 'text')")
              == Lines{"\"main.list.text." + row + ".3\"", "\"main.list.text.3." + row + "\""});
    }
}

TEST_CASE("a position that is computed with is cut to its low 16 bits, and its result is too") {
    for (double number : numbers) {
        CAPTURE(number);
        Numbers session(number);
        const int wanted = number_facts::to_coordinate(number);
        CHECK(session.written("ok:set_x(n, CENTER)") == "kld_x " + std::to_string(cut(wanted - 50)));
        CHECK(session.written("ok:set_y(n, BOTTOM)") == "kld_y " + std::to_string(cut(wanted - 80)));
    }
}

TEST_CASE("a size with an anchor is handed on as it is, and moves the object by its low 16 bits") {
    for (double number : numbers) {
        CAPTURE(number);
        const int change = cut(100 - number_facts::to_coordinate(number));
        const std::string width = "kld_width " + text_of(number);
        for (auto [anchor, share] : {
                 std::pair{"CENTER", change / 2},
                 std::pair{"RIGHT",  change    }
        }) {
            Numbers session(number);
            const std::string x = ", kld_x " + std::to_string(cut(10 + share));
            CHECK(session.written(std::string("ok:set_width(n, ") + anchor + ")") == width + (change != 0 ? x : ""));
        }
    }
}

TEST_CASE("of an anchor the low 8 bits of the integer count") {
    for (double number : numbers) {
        CAPTURE(number);
        Numbers session(number);
        const std::string call = "ok:set_x(100, n)";
        switch (number_facts::to_anchor(number)) {
        case 1:
            CHECK(session.written(call) == "kld_x 100");
            break;
        case 2:
            CHECK(session.written(call) == "kld_x 50");
            break;
        case 3:
            CHECK(session.written(call) == "kld_x 0");
            break;
        default:
            CHECK(session.error(call) == "Argument 3 must be kel.LEFT, kel.CENTER or kel.RIGHT");
        }
    }
}

TEST_CASE("hidden is whether the integer of what the host keeps is another than 0") {
    for (double number : numbers) {
        CAPTURE(number);
        Numbers session(number);
        session.results("ok:set_hidden(n)");
        session.results("kept = ok:get_value('kld_hidden')");
        lua_getglobal(session.lua(), "kept");
        const bool hidden = number_facts::to_integer(lua_tonumber(session.lua(), -1)) != 0;
        lua_pop(session.lua(), 1);
        CHECK(session.results("return ok:get_hidden()") == Lines{hidden ? "true" : "false"});
    }
}
