// test_model_memory.cpp: a model that runs out of memory is what it was before: cloning, deleting and resizing are
// tried with each single request for memory failing once.
#include <cstddef>
#include <functional>
#include <string>

#include <doctest/doctest.h>

#include <kelhost/memory.h>

#include "failing_new.h"
#include "model_fixture.h"

namespace {

struct Memory : ModelFixture {
    Memory() {
        auto list = table("list", 2, 2,
                          {
                              cell_template("row", {{"a_longer_text", DataType::string, "a longer value"}}
                               )
        });
        build({group("bar", {control("ok"), group("inner", {control("a_name_too_long_to_be_stored_in_place")}), list}),
               list, group("other")});
    }

    std::string snapshot() {
        std::string text;
        for (const auto &key : data.keys("")) text += key + "=" + variable(key) + "\n";
        for (const char *name : {"main", "main.bar", "main.bar.inner", "main.other"})
            text += names_in(list_of(name)) + "\n";
        for (const char *name : {"main.list", "main.bar.list"}) text += names_in(table_record(name)) + "\n";
        return text;
    }

    // Does the work with the 1st, 2nd, ... request failing, until none fails. Counts those that failed the work, after
    // which everything must be as before and the warning be this one.
    int fail_each_request(const std::function<bool()> &work, const std::string &warning) {
        const std::string before = snapshot();
        const auto blocks = kelhost::memory_counts().live_blocks;
        for (std::size_t request = 1;; ++request) {
            CAPTURE(request);
            bool done = false, failed = false;
            {
                const FailingNew failing(request);
                done = work();
                failed = FailingNew::has_failed();
            }
            if (done) {
                CHECK_FALSE(failed);
                return static_cast<int>(request) - 1;
            }
            REQUIRE(failed);
            CHECK(warnings() == "warning: " + warning);
            CHECK(snapshot() == before);
            CHECK(kelhost::memory_counts().live_blocks == blocks);
        }
    }
};

} // namespace

TEST_CASE_FIXTURE(Memory, "a group whose clone runs out of memory is not cloned in part") {
    const int failures = fail_each_request([this] { return model.clone("main.bar", "copy", "main") != nullptr; },
                                           R"(Cannot clone main.bar as "copy" into main: out of memory)");
    CHECK(failures > 100);
    CHECK(find("main.copy.inner.a_name_too_long_to_be_stored_in_place") != nullptr);
    CHECK(names_in(table_record("main.copy.list")) == "row row/row row");
}

TEST_CASE_FIXTURE(Memory, "a table whose clone runs out of memory is not cloned in part") {
    const int failures = fail_each_request([this] { return model.clone("main.list", "list", "main.other") != nullptr; },
                                           R"(Cannot clone main.list as "list" into main.other: out of memory)");
    CHECK(failures > 30);
    CHECK(variable("main.other.list.a_longer_text.1.1") == "string a longer value");
}

TEST_CASE_FIXTURE(Memory, "a table that cannot grow for want of memory keeps its size, and its variables say so") {
    for (const double x : {1.0, 2.0}) { // after these the data manager has the room that it needs
        CHECK(write("main.bar.inner.a_name_too_long_to_be_stored_in_place.kld_x", x));
    }
    const auto resize = [this](const char *key, double number) {
        return [this, key, number] {
            write(key, number);
            return table_record("main.list").rows * table_record("main.list").cols != 4;
        };
    };
    SUBCASE("rows") {
        CHECK(fail_each_request(resize("main.list.kld_rows", 3.0),
                                "Cannot resize main.list to rows 3, cols 2: out of memory")
              > 10);
        CHECK(variable("main.list.a_longer_text.2.1") == "string a longer value");
    }
    SUBCASE("columns") {
        CHECK(fail_each_request(resize("main.list.kld_cols", 3.0),
                                "Cannot resize main.list to rows 2, cols 3: out of memory")
              > 10);
        CHECK(variable("main.list.a_longer_text.1.2") == "string a longer value");
    }
    SUBCASE("shrinking needs to know which variables go") {
        CHECK(fail_each_request(resize("main.list.kld_rows", 1.0),
                                "Cannot resize main.list to rows 1, cols 2: out of memory")
              > 1);
        CHECK(variable("main.list.a_longer_text.1.1") == "none");
    }
}

TEST_CASE_FIXTURE(Memory, "an object whose deletion runs out of memory is deleted in full or not at all") {
    const int failures = fail_each_request([this] { return model.remove("main.bar.list"); },
                                           "Cannot delete main.bar.list: out of memory");
    CHECK(failures > 0);
    CHECK(find("main.bar.list") == nullptr);
    CHECK(keys("main.bar.list.").empty());
}
