// test_string_map.cpp: the string map through its C operations.
#include <string>

#include <doctest/doctest.h>

#include "string_map.h"

namespace {

struct Visits {
    std::string seen;
    void *stop_at = nullptr;
    int result = 0; // at stop_at
};

int visit(const char *key, void *value, void *user_data) {
    auto &visits = *static_cast<Visits *>(user_data);
    visits.seen += key;
    visits.seen += ' ';
    return value == visits.stop_at ? visits.result : 0;
}

int things[4];

kl_string_map_t three_entries() {
    kl_string_map_t map;
    map.entries["zebra"] = &things[0];
    map.entries["apple"] = &things[1];
    map.entries["mango"] = &things[2];
    return map;
}

} // namespace

TEST_CASE("get gives what is stored under the key") {
    kl_string_map_t map = three_entries();
    CHECK(kl_string_map_get(&map, "zebra") == &things[0]);
    CHECK(kl_string_map_get(&map, "apple") == &things[1]);
    CHECK(kl_string_map_get(&map, "mango") == &things[2]);
}

TEST_CASE("get gives null for a key that is not there") {
    kl_string_map_t map = three_entries();
    CHECK(kl_string_map_get(&map, "") == nullptr);
    CHECK(kl_string_map_get(&map, "zebr") == nullptr);
    CHECK(kl_string_map_get(&map, "Zebra") == nullptr);
    kl_string_map_t empty;
    CHECK(kl_string_map_get(&empty, "zebra") == nullptr);
}

TEST_CASE("the map keeps its own copy of a key") {
    kl_string_map_t map;
    std::string key = "luastate";
    map.entries[key] = &things[3];
    key = "something else";
    CHECK(kl_string_map_get(&map, "luastate") == &things[3]);
}

TEST_CASE("a walk goes in the order of insertion") {
    kl_string_map_t map = three_entries();
    Visits visits;
    CHECK(kl_string_map_traverse(&map, visit, &visits, 1) == 0);
    CHECK(visits.seen == "zebra apple mango ");
}

TEST_CASE("replacing a value keeps its place") {
    kl_string_map_t map = three_entries();
    map.entries["zebra"] = &things[3];
    Visits visits;
    kl_string_map_traverse(&map, visit, &visits, 1);
    CHECK(visits.seen == "zebra apple mango ");
    CHECK(kl_string_map_get(&map, "zebra") == &things[3]);
}

TEST_CASE("a walk keeps the order when an entry in the middle has gone") {
    kl_string_map_t map = three_entries();
    map.entries.erase("apple");
    map.entries["kiwi"] = &things[3];
    Visits visits;
    kl_string_map_traverse(&map, visit, &visits, 1);
    CHECK(visits.seen == "zebra mango kiwi ");
}

TEST_CASE("a result other than 0 ends the walk and is its result, a negative one too") {
    kl_string_map_t map = three_entries();
    for (const int result : {1, -5}) {
        CAPTURE(result);
        Visits visits{"", &things[1], result};
        CHECK(kl_string_map_traverse(&map, visit, &visits, 1) == result);
        CHECK(visits.seen == "zebra apple ");
    }
}

TEST_CASE("a walk over an empty map visits nothing and gives 0") {
    kl_string_map_t map;
    Visits visits{"", nullptr, 7};
    CHECK(kl_string_map_traverse(&map, visit, &visits, 1) == 0);
    CHECK(visits.seen.empty());
}
