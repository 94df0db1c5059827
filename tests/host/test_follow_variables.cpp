// test_follow_variables.cpp: records of objects follow the property variables that scripts write.
#include <limits>
#include <string>

#include <doctest/doctest.h>

#include "model_fixture.h"

TEST_CASE_FIXTURE(ModelFixture, "a control's record follows its position, size and visibility") {
    build({control("ok", {1, 2, 3, 4}), control("other", {1, 2, 3, 4}), group("bar", {control("ok")}),
           table("list", 0, 0, {})});
    for (const char *name : {"main.ok", "main.bar.ok", "main.list"}) {
        INFO(name);
        const auto &record = control_record(name);
        const std::string prefix = std::string(name) + ".";
        CHECK(write(prefix + "kld_x", 11.0));
        CHECK(record.rect.left == 11);
        CHECK(write(prefix + "kld_y", -12.0));
        CHECK(write(prefix + "kld_width", 30.0));
        CHECK(write(prefix + "kld_height", 40.0));
        CHECK(rect_text(record.rect) == "11,-12,41,28");
        CHECK(size_text(record.size) == "30x40");
        CHECK(write(prefix + "kld_x", 100.0));
        CHECK(rect_text(record.rect) == "100,-12,130,28");
        CHECK(write(prefix + "kld_hidden", 2.0));
        CHECK(record.flags == 1);
        CHECK(write(prefix + "kld_hidden", 0.0));
        CHECK(record.flags == 0);
    }
    CHECK(rect_text(control_record("main.other").rect) == "1,2,4,6");

    CHECK(write("main.bar.kld_x", 7.0));
    CHECK(write("main.bar.kld_hidden", 1.0));
    CHECK(rect_text(control_record("main.bar").rect) == "7,0,7,0");
    CHECK(control_record("main.bar").flags == 1);
}

TEST_CASE_FIXTURE(ModelFixture, "a layer's and a layer instance's records follow their variables") {
    build({control("ok")});
    CHECK(write("main.kld_width", 100.0));
    CHECK(write("main.kld_height", 50.0));
    CHECK(size_text(record<kl_layer_t>("main").size) == "100x50");
    CHECK(rect_text(record<kl_layer_t>("main").viewport) == "0,0,100,50");

    CHECK(write("home.main.kld_x", 5.0));
    CHECK(write("home.main.kld_y", 6.0));
    CHECK(write("home.main.kld_alpha", 77.0));
    CHECK(write("home.main.kld_hidden", 1.0));
    const auto &instance = record<kl_layer_instance_t>("home.main");
    CHECK(instance.x == 5);
    CHECK(instance.y == 6);
    CHECK(instance.alpha == 77);
    CHECK(instance.flags == 1);
    CHECK(write("home.main.kld_hidden", 0.0));
    CHECK(instance.flags == 0);
}

TEST_CASE_FIXTURE(ModelFixture, "records follow a batch at its end") {
    build({control("ok")});
    data.hold();
    CHECK(write("main.ok.kld_x", 5.0));
    CHECK(control_record("main.ok").rect.left == 0);
    data.release();
    CHECK(control_record("main.ok").rect.left == 5);
}

TEST_CASE_FIXTURE(ModelFixture, "variables that are no property, or hold no number, leave records alone") {
    build({control("ok", {1, 2, 3, 4}), group("bar"), table("list", 1, 1, {cell_template("row")})});
    CHECK(write("main.ok.kld_z", 5.0));
    CHECK(write("main.ok.x", 5.0));
    CHECK(write("kld_x", 5.0));
    CHECK(write("home.kld_x", 5.0));
    CHECK(write("main.ok.kld_rows", 5.0));
    CHECK(write("main.bar.kld_width", "wide"));
    CHECK(write("main.row.kld_x", 9.0));
    CHECK(write("main.list.kld_x.0.0", 9.0));
    CHECK(rect_text(control_record("main.ok").rect) == "1,2,4,6");
    CHECK(rect_text(control_record("main.bar").rect) == "0,0,0,0");
    CHECK(rect_text(control_record("main.row").rect) == "0,0,0,0");
    CHECK(write("main.bar.kld_height", std::numeric_limits<double>::quiet_NaN()));
    CHECK(control_record("main.bar").size.height == 0);
}

TEST_CASE_FIXTURE(ModelFixture, "a property that a script makes wider than a coordinate is cut there") {
    build({group("bar")});
    CHECK(write("main.bar.kld_width", 100000.0));
    CHECK(variable("main.bar.kld_width") == "i32 100000");
    CHECK(control_record("main.bar").size.width == 32767);
}

TEST_CASE_FIXTURE(ModelFixture, "a property that was made anew with another type gives its field the nearest number") {
    build({table("list", 1, 1, {cell_template("row")})});
    const auto write_anew = [&](const char *key, double number) {
        data.erase(key);
        CHECK(write(key, number));
        CHECK(variable(key).starts_with("f64 "));
    };
    write_anew("home.main.kld_alpha", 1e300);
    CHECK(record<kl_layer_instance_t>("home.main").alpha == 255);
    write_anew("home.main.kld_alpha", -1e300);
    CHECK(record<kl_layer_instance_t>("home.main").alpha == 0);
    write_anew("home.main.kld_x", 1e300);
    CHECK(record<kl_layer_instance_t>("home.main").x == 32767);
    write_anew("main.list.kld_rows", -1e300);
    CHECK(table_record("main.list").rows == 0);
    write_anew("main.list.kld_cols", std::numeric_limits<double>::infinity());
    CHECK(table_record("main.list").cols == 65535);
}
