// test_lifecycle.cpp: cloning and deleting in turns.
#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include <kelhost/memory.h>

#include "lifecycle_fixture.h"

using kelhost::memory_counts;

namespace {

// What the model must be like, as plain names and keys.
struct Expected {
    std::map<std::string, char> objects;          // name to C, T, G, L, S, I, or c for a cell
    std::map<std::string, std::string> tables_of; // cells' names to their table
    std::set<std::string> keys;

    static bool is_below(const std::string &name, const std::string &top) { return name.starts_with(top + "."); }

    // The cells' names that stand beside the object, as those of a table do.
    std::vector<std::string> cells_of(const std::string &table) const {
        std::vector<std::string> names;
        for (const auto &[cell, owner] : tables_of) {
            if (owner == table) names.push_back(cell);
        }
        return names;
    }

    bool is_free(const std::string &name) const { return !objects.contains(name) && !keys.contains(name); }

    bool can_clone(const std::string &source, const std::string &parent, const std::string &name) const {
        const auto from = objects.find(source);
        const auto into = objects.find(parent);
        if (from == objects.end() || std::string("CTG").find(from->second) == std::string::npos) return false;
        if (into == objects.end() || std::string("LG").find(into->second) == std::string::npos) return false;
        if (parent == source || is_below(parent, source)) return false;
        const std::string made = parent + "." + name;
        if (!is_free(made)) return false;
        for (const auto &cell : cells_of(source)) {
            const std::string moved = parent + cell.substr(cell.rfind('.'));
            if (!is_free(moved) || moved == made) return false;
        }
        return true;
    }

    void clone(const std::string &source, const std::string &parent, const std::string &name) {
        std::vector<std::pair<std::string, std::string>> moves{
            {source, parent + "." + name}
        };
        for (const auto &cell : cells_of(source)) moves.emplace_back(cell, parent + cell.substr(cell.rfind('.')));
        const auto moved = [&](const std::string &old) {
            for (const auto &[from, to] : moves) {
                if (old == from || is_below(old, from)) return to + old.substr(from.size());
            }
            return std::string();
        };
        for (const auto &[old, kind] : std::map(objects)) {
            if (const auto made = moved(old); !made.empty()) objects[made] = kind;
        }
        for (const auto &[cell, table] : std::map(tables_of)) {
            if (const auto made = moved(cell); !made.empty()) tables_of[made] = moved(table);
        }
        for (const auto &key : std::set(keys)) {
            if (const auto made = moved(key); !made.empty()) keys.insert(made);
        }
    }

    bool can_remove(const std::string &name) const {
        const auto found = objects.find(name);
        return found != objects.end() && std::string("CTG").find(found->second) != std::string::npos;
    }

    void remove(const std::string &name) {
        auto tops = cells_of(name);
        tops.push_back(name);
        for (const auto &top : tops) {
            std::erase_if(objects, [&](const auto &one) { return one.first == top || is_below(one.first, top); });
            std::erase_if(tables_of, [&](const auto &one) { return one.first == top || is_below(one.first, top); });
            std::erase_if(keys, [&](const auto &key) { return is_below(key, top); });
        }
    }
};

} // namespace

TEST_CASE_FIXTURE(Lifecycle, "random clones and deletions do to the model what they do to a list of names") {
    CHECK(write("main.row.shared", 1.0));
    CHECK(write("main.taken", 1.0));
    Expected expected;
    expected.objects = {
        {"main",                'L'},
        {"popup",               'L'},
        {"home",                'S'},
        {"home.main",           'I'},
        {"main.ok",             'C'},
        {"main.bar",            'G'},
        {"main.bar.ok",         'C'},
        {"main.bar.inner",      'G'},
        {"main.bar.list",       'T'},
        {"main.other",          'G'},
        {"main.list",           'T'},
        {"popup.close",         'C'},
        {"main.bar.inner.leaf", 'C'}
    };
    expected.tables_of = {
        {"main.row",      "main.list"    },
        {"main.head",     "main.list"    },
        {"main.bar.row",  "main.bar.list"},
        {"main.bar.head", "main.bar.list"}
    };
    for (const auto &[cell, table] : expected.tables_of) expected.objects[cell] = 'c';
    for (const auto &key : data.keys("")) expected.keys.insert(key);

    std::mt19937 random(20240229);
    const auto below = [&](std::size_t count) { return random() % count; };
    const auto any_object = [&] {
        auto one = expected.objects.begin();
        std::advance(one, static_cast<std::ptrdiff_t>(below(expected.objects.size())));
        return one->first;
    };
    const char *names[] = {"ok", "bar", "list", "row", "head", "taken", "a", "b",
                           "c",  "d",   "e",    "f",   "g",    "h",     "i", "j"};
    int cloned = 0, deleted = 0, refused = 0;
    for (int step = 0; step < 2000; ++step) {
        const std::string source = any_object();
        if (expected.objects.size() < 150 && below(6) < 5) {
            std::string parent = any_object();
            while (below(8) > 0 && std::string("LG").find(expected.objects[parent]) == std::string::npos) {
                parent = any_object(); // mostly something that can be one
            }
            const std::string name = names[below(std::size(names))];
            INFO("step ", step, ": clone ", source, " as ", name, " into ", parent);
            const bool fits = expected.can_clone(source, parent, name)
                              && std::count(parent.begin(), parent.end(), '.') < 20; // far from the deepest nesting
            if (!fits && expected.can_clone(source, parent, name)) continue;
            CHECK(clone(source, name, parent) == (fits ? parent + "." + name : "refused"));
            CHECK(warnings().empty() == fits);
            if (fits) expected.clone(source, parent, name);
            ++(fits ? cloned : refused);
        } else {
            INFO("step ", step, ": delete ", source);
            const bool can = expected.can_remove(source) && (below(8) == 0 || expected.objects.size() > 120);
            if (!can && expected.can_remove(source)) continue;
            CHECK(model.remove(source) == can);
            CHECK(warnings().empty() == can);
            if (can) expected.remove(source);
            ++(can ? deleted : refused);
        }
        if (below(10) == 0) model.reclaim();

        const auto keys_now = data.keys("");
        REQUIRE(std::equal(keys_now.begin(), keys_now.end(), expected.keys.begin(), expected.keys.end()));
        for (const auto &[name, kind] : expected.objects) {
            INFO(name);
            REQUIRE(find(name) != nullptr);
            REQUIRE(model.qualified_name(find(name)) == name);
        }
        for (const char *name : names) {
            const std::string gone = source + "." + name;
            REQUIRE((find(gone) != nullptr) == expected.objects.contains(gone));
        }
        if (step % 50 == 0) snapshot(); // every list in order
    }
    CHECK(cloned > 150);
    CHECK(deleted > 50);
    CHECK(refused > 200);
}

TEST_CASE_FIXTURE(Lifecycle, "cloning and deleting over and over leaves no blocks behind") {
    CHECK(clone("main.bar", "copy", "main") == "main.copy"); // the layer's list has grown for it
    CHECK(model.remove("main.copy"));
    model.reclaim();
    const auto blocks = memory_counts().live_blocks;
    const auto bytes = memory_counts().live_bytes;
    const std::string before = snapshot();
    for (int turn = 0; turn < 50; ++turn) {
        CHECK(clone("main.bar", "copy", "main") == "main.copy");
        CHECK(model.remove("main.copy"));
        model.reclaim();
    }
    CHECK(memory_counts().live_blocks == blocks);
    CHECK(memory_counts().live_bytes == bytes);
    CHECK(snapshot() == before);
}
