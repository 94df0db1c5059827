// test_json_reader.cpp: texts that are cut, broken, deep or long: none may do harm, each gets one clear fault.
#include <doctest/doctest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "application_text.h"
#include "file.h"
#include "model.h"
#include "support/machine.h"

using namespace kelhost;

namespace {

const std::string complete = std::string(KEL_TEST_FOLDER) + "/good_applications/complete/app.json";

std::string bytes_of(const std::string &path) {
    std::string why;
    const auto bytes = read_file(path, why);
    REQUIRE_MESSAGE(bytes, path, ": ", why);
    return *bytes;
}

std::string repeated(std::string_view text, int count) {
    std::string all;
    for (int index = 0; index < count; ++index) all += text;
    return all;
}

std::string nested_groups(int depth) {
    return with_children(repeated(R"({"type": "group", "name": "g", "children": [)", depth)
                         + R"({"type": "control", "name": "leaf"})" + repeated("]}", depth));
}

} // namespace

TEST_CASE("what is not JSON gives nothing but its one diagnostic") {
    Diagnostics faults;
    CHECK_FALSE(parse_application("{\n  \"name\": tru\n}", "folder/app.json", faults));
    REQUIRE(faults.size() == 1);
    CHECK(faults[0].file == "folder/app.json");
    CHECK(faults[0].line == 2);
    CHECK(faults[0].column == 11);
    CHECK(faults[0].path == "");
    CHECK(faults[0].message == "found \"tru\", expected a value");
}

TEST_CASE("a byte order mark is passed over and counts as no column") {
    const std::string mark = "\xEF\xBB\xBF";
    CHECK(faults_of_shape(mark + with_children("")) == "");
    CHECK(faults_of_shape(mark + "{]") == "app.json:1:2: found \"]\", expected a member name in double quotes\n");
    CHECK(faults_of_shape(mark) == "app.json: found an empty file, expected an application in JSON\n");
}

TEST_CASE("long texts are cut in messages, whole characters at a time") {
    const std::string a50 = repeated("a", 50);
    CHECK(
        faults_of_shape("{\"" + a50 + repeated("é", 6) + "\": 1, " + with_children("").substr(1))
        == "app.json: $[\"" + a50 + "ééééé...\"]: unknown member \"" + a50
               + "ééééé...\", expected \"$schema\", \"name\", \"size\", \"default_screen\", \"variables\", \"layers\", "
                 "\"screens\", \"scripts\" or \"handlers\"\n");
}

TEST_CASE("a file that is cut off anywhere gives one diagnostic at its end") {
    const std::string text = bytes_of(complete);
    const std::size_t end = text.rfind('}');
    for (std::size_t length = 1; length <= end; ++length) {
        INFO(length);
        Diagnostics faults;
        CHECK_FALSE(parse_application(text.substr(0, length), "app.json", faults));
        REQUIRE(faults.size() == 1);
        const auto lines = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length), '\n');
        CHECK(faults[0].line >= lines); // a word that is cut off may end the line before
        CHECK(faults[0].line <= lines + 1);
        CHECK(faults[0].column >= 1);
    }
}

TEST_CASE("a file with any byte changed gives a description or one diagnostic with a line") {
    const std::string text = bytes_of(complete);
    for (std::size_t offset = 0; offset < text.size(); offset += 3) {
        for (const char byte : {'\0', '"', '}', ',', '\xFF', '\n'}) {
            INFO(offset, " ", static_cast<int>(byte));
            std::string changed = text;
            changed[offset] = byte;
            Diagnostics faults;
            const auto app = parse_application(changed, "app.json", faults);
            const bool is_refused = faults.size() == 1 && faults[0].line > 0 && faults[0].column > 0;
            CHECK((app.has_value() != is_refused));
            if (app) validate(*app, faults);
        }
    }
}

TEST_CASE("groups nest as deep as the model allows") {
    CHECK(all_faults(nested_groups(deepest_nesting)) == "");
    const ApplicationDescription app = read_good(nested_groups(deepest_nesting));
    const std::vector<ElementDescription> *children = &app.layers.at(0).children;
    for (int level = 0; level < deepest_nesting; ++level) children = &children->at(0).children;
    CHECK(children->at(0).name == "leaf");
}

TEST_CASE("groups beside each other do not count as nested") {
    std::string children;
    for (int index = 0; index < 2 * deepest_nesting; ++index)
        children += (index == 0 ? "" : ",") + (R"({"type": "group", "name": "g)" + std::to_string(index) + "\"}");
    CHECK(all_faults(with_children(children)) == "");
}

TEST_CASE("a group below the deepest level is one fault and is not looked into") {
    const std::string path = "$.layers[0]" + repeated(".children[0]", deepest_nesting + 1);
    const std::string expected =
        "app.json: " + path + ": found a group inside 32 others, expected groups nested at most 32 deep\n";
    CHECK(faults_of_shape(nested_groups(deepest_nesting + 1)) == expected);
    CHECK(all_faults(nested_groups(many(100000))) == expected);
}

TEST_CASE("text of any depth is read with a bounded stack") {
    const int depth = many(1000000);
    CHECK(faults_of_shape(repeated("[", depth))
          == "app.json:1:" + std::to_string(depth + 1) + ": found the end of the file, expected a value\n");
    CHECK(faults_of_shape(repeated("[", depth) + repeated("]", depth))
          == "app.json: $: found an array, expected an object\n");
    CHECK(faults_of_shape(R"({"name": )" + repeated("{\"a\":", depth) + "1" + repeated("}", depth) + ", "
                          + with_children("").substr(1 + sizeof R"("name": "test",)" - 1))
          == "app.json: $.name: found an object, expected a string\n");
}

TEST_CASE("a hundred thousand variables are read, in their order") {
    const int count = many(100000);
    std::string variables;
    for (int index = 0; index < count; ++index)
        variables += (index == 0 ? "\"v" : ", \"v") + std::to_string(index) + "\": " + std::to_string(index);
    const std::string text =
        R"({"name": "many", "size": {"width": 1, "height": 1}, "layers": [], "screens": [], "variables": {)" + variables
        + "}}";
    Diagnostics faults;
    const auto app = parse_application(text, "app.json", faults);
    REQUIRE(app);
    validate(*app, faults);
    CHECK(to_lines(faults) == "");
    CHECK(app->variables.size() == static_cast<std::size_t>(count));
    CHECK(app->variables.back().name == "v" + std::to_string(count - 1));
}
