// test_closest_name.cpp: guesses at what a misspelt name was meant to be.
#include <doctest/doctest.h>

#include <initializer_list>
#include <string>

#include <kelhost/closest_name.h>

using namespace kelhost;

namespace {

std::string guess(std::string_view wanted, std::initializer_list<std::string_view> names) {
    ClosestName closest(wanted);
    for (const std::string_view name : names) closest.offer(name);
    return closest.found();
}

} // namespace

TEST_CASE("a letter added, dropped, changed or swapped with its neighbour is one difference") {
    CHECK(guess("widdth", {"height", "width"}) == "width");
    CHECK(guess("widh", {"height", "width"}) == "width");
    CHECK(guess("wodth", {"height", "width"}) == "width");
    CHECK(guess("wdith", {"height", "width"}) == "width");
    CHECK(guess("dwiht", {"height", "width"}) == ""); // two, and only one in three letters may differ
}

TEST_CASE("upper and lower case are the same letter") {
    CHECK(guess("WIDTH", {"height", "width"}) == "width");
    CHECK(guess("X", {"y", "x"}) == "x");
}

TEST_CASE("up to a third of the letters may differ, and no more than three") {
    CHECK(guess("ab", {"ac"}) == "");
    CHECK(guess("abc", {"abd"}) == "abd");
    CHECK(guess("abcde", {"abcxy"}) == "");
    CHECK(guess("abcdef", {"abcdxy"}) == "abcdxy");
    CHECK(guess("abcdefghijkl", {"abcdefghixyz"}) == "abcdefghixyz");
    CHECK(guess("abcdefghijkl", {"abcdefghwxyz"}) == "");
}

TEST_CASE("the closest name is found, the first of equals") {
    CHECK(guess("button", {"buttons2", "buttons", "butter"}) == "buttons");
    CHECK(guess("button_3", {"button_1", "button_2"}) == "button_1");
}

TEST_CASE("names with dots are compared component by component") {
    CHECK(guess("mian.ok", {"main.no", "main.ok"}) == "main.ok");
    CHECK(guess("mian.okk.lable", {"main.ok", "main.ok.label.text", "main.ok.label"}) == "main.ok.label");
    CHECK(guess("main.ok", {"main.a", "main.no", "main", "main.ok.text"}) == "");
    CHECK(guess("main", {"main.ok"}) == "");
    CHECK(guess("main.", {"main"}) == "main"); // a dot too many is no other name
}

TEST_CASE("names longer than anybody mistypes are not compared") {
    const std::string longest(64, 'a');
    CHECK(guess(longest, {std::string(63, 'a')}) == std::string(63, 'a'));
    CHECK(guess(longest + "a", {longest}) == "");
    CHECK(guess(longest, {longest + "a"}) == "");
    CHECK(guess("", {"a", ""}) == "");
}

TEST_CASE("the guess reads as a question, and without one what was expected is said") {
    ClosestName near("wdith");
    near.offer("width");
    CHECK(near.text("a member") == ", did you mean \"width\"?");
    ClosestName far("depth_of_it");
    far.offer("width");
    CHECK(far.text("a member") == ", expected a member");
}
