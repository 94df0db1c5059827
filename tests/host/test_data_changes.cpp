// test_data_changes.cpp: who is told about changed variables: listeners, holds, bound events, misses.
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include <kel/kel.h>

#include "data_manager.h"
#include "io_manager.h"
#include "support/captured_log.h"

using kelhost::DataManager;
using kelhost::DataType;
using kelhost::Input;
using kelhost::IoManager;
using kelhost::Value;
using kelhost::WriteResult;

namespace {

// A data manager with the variables a, b and c (i32, 0) and text (string, ""), and a record of who was told what.
struct Bench {
    CapturedLog captured;
    IoManager io_manager{captured.log};
    DataManager data{captured.log, io_manager};
    kl_data_mgr_t *mgr = data.record();
    std::string told;

    Bench() {
        for (const char *key : {"a", "b", "c"}) data.create(key, DataType::i32, Value(0.0));
        data.create("text", DataType::string, Value(std::string()));
    }

    std::string take() { return std::exchange(told, {}); }
    WriteResult write(const char *key, double number) {
        Input input;
        input.kind = Input::Kind::number;
        input.number = number;
        return data.write(key, input);
    }
    WriteResult write_text(const char *key, std::string_view text) {
        Input input;
        input.kind = Input::Kind::text;
        input.text = text;
        return data.write(key, input);
    }
    std::string value(std::string_view key) const {
        const auto *variable = data.find(key);
        return variable != nullptr ? kelhost::to_text(variable->value) : std::string("gone");
    }
    // Subscribes a listener that writes down "NAME:KEY=VALUE ", then does more.
    int listen(const std::string &name, const std::string &key = {},
               std::function<void(std::string_view)> further = {}) {
        auto listener = [this, name, further](std::string_view changed) {
            told += name + ":" + std::string(changed) + "=" + value(changed) + " ";
            if (further) further(changed);
        };
        return key.empty() ? data.add_listener(listener) : data.add_listener(key, listener);
    }
    std::string delivered_events() {
        std::string seen;
        const auto note = [](kl_io_mgr_t *, kl_event_t *event, void *user_data) {
            *static_cast<std::string *>(user_data) += std::string(event->name) + ">" + event->target + " ";
        };
        for (const char *name : {"kel.changed", "other"})
            io_manager.record()->add_event_listener(io_manager.record(), name, note, &seen);
        io_manager.pump();
        io_manager.record()->rem_event_listener(io_manager.record(), note, &seen);
        return seen;
    }
};

// A listener of C with what it does beside being written down.
struct CListener {
    Bench &bench;
    std::string name;
    std::function<void(const char *)> further = {};

    static void call(kl_data_mgr_t *mgr, const char *key, void *user_data) {
        auto &self = *static_cast<CListener *>(user_data);
        CHECK(mgr == self.bench.mgr);
        self.bench.told += self.name + ":" + key + " ";
        if (self.further) self.further(key);
    }
    int listen(const char *key) { return bench.mgr->add_change_listener(bench.mgr, key, call, this); }
    int listen_to_misses() { return bench.mgr->add_miss_listener(bench.mgr, call, this); }
    int remove() { return bench.mgr->rem_change_listener(bench.mgr, call, this); }
};

} // namespace

// At once

TEST_CASE("without a hold a change is told at once, with the new value in place") {
    Bench bench;
    bench.listen("x");
    CHECK(bench.write("a", 5) == WriteResult::changed);
    CHECK(bench.take() == "x:a=5 ");
    CHECK(bench.write_text("text", "hello") == WriteResult::changed);
    CHECK(bench.take() == "x:text=hello ");
}

TEST_CASE("writing the same value, or a value that is refused, tells nobody") {
    Bench bench;
    bench.listen("x");
    CHECK(bench.write("a", 0) == WriteResult::unchanged);
    CHECK(bench.write_text("text", "") == WriteResult::unchanged);
    CHECK(bench.write_text("a", "no number") == WriteResult::refused);
    CHECK(bench.captured.take() == "warning: Cannot write \"no number\" to a (i32): not a number");
    CHECK(bench.told.empty());
}

TEST_CASE("a value that is clamped to the one that is there tells nobody") {
    Bench bench;
    bench.data.create("byte", DataType::u8, Value(255.0));
    bench.listen("x");
    CHECK(bench.write("byte", 300) == WriteResult::unchanged);
    CHECK(bench.captured.take() == "warning: Value 300 for byte (u8) is out of range, 255 is written");
    CHECK(bench.told.empty());
}

TEST_CASE("a listener of one variable is told of that one alone") {
    Bench bench;
    bench.listen("x", "b");
    bench.write("a", 1);
    bench.write("b", 2);
    bench.data.create("bb", DataType::i32, Value(0.0));
    bench.write("bb", 3);
    CHECK(bench.take() == "x:b=2 ");
}

TEST_CASE("listeners are told in the order of subscription, C and C++ ones, of one and of every variable") {
    Bench bench;
    CListener c_one{bench, "c1"};
    CListener c_every{bench, "c*"};
    bench.listen("one", "a");
    c_every.listen(nullptr);
    bench.listen("every");
    c_one.listen("a");
    bench.write("a", 1);
    CHECK(bench.take() == "one:a=1 c*:a every:a=1 c1:a ");
    bench.write("b", 1);
    CHECK(bench.take() == "c*:b every:b=1 ");
}

TEST_CASE("a variable that a write creates is told of; one that create makes is not") {
    Bench bench;
    bench.listen("x");
    bench.data.create("silent", DataType::i32, Value(1.0));
    bench.write("loud", 0);
    CHECK(bench.take() == "x:loud=0 ");
    CHECK(bench.mgr->create_data_entry_typed(bench.mgr, "typed", 0) == 0);
    CHECK(bench.told.empty());
}

TEST_CASE("a listener may subscribe to a variable that does not exist yet") {
    Bench bench;
    bench.listen("x", "later");
    bench.write("later", 3);
    CHECK(bench.take() == "x:later=3 ");
}

TEST_CASE("numbers of listeners differ, and removing one leaves the others") {
    Bench bench;
    const int first = bench.listen("x");
    const int second = bench.listen("y", "a");
    CHECK(first != second);
    bench.data.remove_listener(first);
    bench.data.remove_listener(first);
    bench.data.remove_listener(12345);
    bench.write("a", 1);
    CHECK(bench.take() == "y:a=1 ");
    bench.data.remove_listener(second);
    bench.write("a", 2);
    CHECK(bench.told.empty());
    CHECK(bench.listen("z") != first);
}

TEST_CASE("rem_change_listener ends every subscription of listener and user data") {
    Bench bench;
    CListener one{bench, "one"};
    CListener two{bench, "two"};
    CHECK(one.listen("a") == 0);
    CHECK(one.listen(nullptr) == 0);
    CHECK(one.listen_to_misses() == 0);
    CHECK(two.listen("a") == 0);
    CHECK(one.remove() == 0);
    CHECK(one.remove() == -1);
    bench.write("a", 1);
    bench.data.read("nosuch");
    CHECK(bench.take() == "two:a ");
}

// Listeners that change the listeners

TEST_CASE("a listener may remove itself while it is called, and the others are called all the same") {
    Bench bench;
    CListener first{bench, "first"};
    first.further = [&](const char *) { CHECK(first.remove() == 0); };
    first.listen(nullptr);
    int number = 0;
    number = bench.listen("second", {}, [&](std::string_view) { bench.data.remove_listener(number); });
    bench.listen("third");
    bench.write("a", 1);
    CHECK(bench.take() == "first:a second:a=1 third:a=1 ");
    bench.write("a", 2);
    CHECK(bench.take() == "third:a=2 ");
}

TEST_CASE("a listener that has removed itself inside the call is gone from then on") {
    Bench bench;
    CListener listener{bench, "x"};
    int second_removal = 0;
    kl_data_metrics_t metrics = {};
    listener.further = [&](const char *) {
        listener.remove();
        second_removal = listener.remove();
        bench.mgr->get_metrics(bench.mgr, &metrics);
    };
    listener.listen(nullptr);
    bench.listen("y");
    bench.write("a", 1);
    CHECK(bench.take() == "x:a y:a=1 ");
    CHECK(second_removal == -1);
    CHECK(metrics.listeners == 1);
}

TEST_CASE("a listener that another removes is not called any more, in the same batch either") {
    Bench bench;
    CListener victim{bench, "victim"};
    bench.listen("x", "a", [&](std::string_view) { victim.remove(); });
    victim.listen("a");
    victim.listen("b");
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.data.release();
    CHECK(bench.take() == "x:a=1 ");
}

TEST_CASE("a listener that is added while one is called does not get that change") {
    Bench bench;
    bool done = false;
    bench.listen("x", {}, [&](std::string_view) {
        if (std::exchange(done, true)) return;
        for (int count = 0; count < 40; ++count) bench.listen("n");
    });
    bench.listen("y");
    bench.write("a", 1);
    CHECK(bench.take() == "x:a=1 y:a=1 ");
    bench.write("a", 2);
    std::string expected = "x:a=2 y:a=2 ";
    for (int count = 0; count < 40; ++count) expected += "n:a=2 ";
    CHECK(bench.take() == expected);
}

// Holds

TEST_CASE("held changes wait for the release and are told once each, in the order of first writes") {
    Bench bench;
    bench.listen("x");
    bench.data.hold();
    bench.write("c", 1);
    bench.write("a", 1);
    bench.write("c", 2);
    bench.write("b", 1);
    bench.write("a", 3);
    CHECK(bench.told.empty());
    CHECK(bench.value("c") == "2"); // reading does not wait
    bench.data.release();
    CHECK(bench.take() == "x:c=2 x:a=3 x:b=1 ");
    bench.data.hold();
    bench.data.release();
    CHECK(bench.told.empty());
}

TEST_CASE("nested holds tell at the last release") {
    Bench bench;
    bench.listen("x");
    CHECK(bench.data.hold_depth() == 0);
    bench.mgr->hold_change_listener(bench.mgr);
    bench.write("a", 1);
    bench.mgr->hold_change_listener(bench.mgr);
    CHECK(bench.data.hold_depth() == 2);
    bench.write("b", 1);
    bench.mgr->release_change_listener(bench.mgr);
    CHECK(bench.data.hold_depth() == 1);
    CHECK(bench.told.empty());
    bench.mgr->release_change_listener(bench.mgr);
    CHECK(bench.data.hold_depth() == 0);
    CHECK(bench.take() == "x:a=1 x:b=1 ");
}

TEST_CASE("a variable whose value is back at the release is not told of") {
    Bench bench;
    bench.write_text("text", "a text that needs a block of its own");
    bench.listen("x");
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.write_text("text", "another");
    bench.write("a", 0);
    bench.write_text("text", "a text that needs a block of its own");
    bench.data.release();
    CHECK(bench.take() == "x:b=1 ");
}

TEST_CASE("a variable that was created while held is told of, whatever its value") {
    Bench bench;
    bench.listen("x");
    bench.data.hold();
    bench.write("new", 0);
    bench.write("new", 5);
    bench.write("new", 0);
    bench.data.release();
    CHECK(bench.take() == "x:new=0 ");
}

TEST_CASE("the value before counts anew for each hold") {
    Bench bench;
    bench.listen("x");
    bench.data.hold();
    bench.write("a", 1);
    bench.data.release();
    bench.take();
    bench.data.hold();
    bench.write("a", 0);
    bench.data.release();
    CHECK(bench.take() == "x:a=0 ");
}

TEST_CASE("a release without a hold is ignored with a warning") {
    Bench bench;
    bench.listen("x");
    bench.mgr->release_change_listener(bench.mgr);
    CHECK(bench.captured.take() == "warning: Change notifications are released without being held");
    CHECK(bench.data.hold_depth() == 0);
    bench.write("a", 1);
    CHECK(bench.take() == "x:a=1 ");
    bench.data.hold();
    bench.write("a", 2);
    CHECK(bench.told.empty());
    bench.data.release();
    CHECK(bench.take() == "x:a=2 ");
}

TEST_CASE("restoring the hold depth releases what is open beyond it") {
    Bench bench;
    bench.listen("x");
    bench.data.hold();
    const int before = bench.data.hold_depth();
    bench.data.hold();
    bench.data.hold();
    bench.write("a", 1);
    bench.data.restore_hold_depth(before);
    CHECK(bench.data.hold_depth() == 1);
    CHECK(bench.told.empty());
    bench.data.restore_hold_depth(5);
    CHECK(bench.data.hold_depth() == 1);
    bench.data.restore_hold_depth(0);
    CHECK(bench.data.hold_depth() == 0);
    CHECK(bench.take() == "x:a=1 ");
    bench.data.restore_hold_depth(-3);
    CHECK(bench.data.hold_depth() == 0);
}

TEST_CASE("a listener that subscribes while changes are held is told of the writes that follow") {
    Bench bench;
    bench.data.hold();
    bench.write("a", 1);
    bench.listen("x");
    bench.write("a", 2);
    bench.write("b", 1);
    bench.data.release();
    CHECK(bench.take() == "x:a=2 x:b=1 ");
}

TEST_CASE("a listener that goes while changes are held is not told") {
    Bench bench;
    const int number = bench.listen("x");
    bench.data.hold();
    bench.write("a", 1);
    bench.data.remove_listener(number);
    bench.data.release();
    CHECK(bench.told.empty());
}

TEST_CASE("force_notifications tells now although changes are held, and they are not told again") {
    Bench bench;
    bench.listen("x");
    bench.data.hold();
    bench.write("a", 1);
    bench.mgr->force_notifications(bench.mgr);
    CHECK(bench.take() == "x:a=1 ");
    CHECK(bench.data.hold_depth() == 1);
    bench.write("b", 1);
    bench.write("a", 2);
    CHECK(bench.told.empty());
    bench.data.release();
    CHECK(bench.take() == "x:b=1 x:a=2 ");
    bench.mgr->force_notifications(bench.mgr);
    CHECK(bench.told.empty());
}

TEST_CASE("after force_notifications the value before is the one that was told") {
    Bench bench;
    bench.listen("x");
    bench.data.hold();
    bench.write("a", 1);
    bench.mgr->force_notifications(bench.mgr);
    bench.take();
    bench.write("a", 0);
    bench.data.release();
    CHECK(bench.take() == "x:a=0 ");
}

// Listeners that write

TEST_CASE("what a listener writes is told after the batch in which it was called") {
    Bench bench;
    bench.listen("x", {}, [&](std::string_view key) {
        if (key == "a") bench.write("c", 9);
    });
    bench.listen("y");
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.data.release();
    CHECK(bench.take() == "x:a=1 y:a=1 x:b=1 y:b=1 x:c=9 y:c=9 ");
}

TEST_CASE("a write of a listener to a variable that is still to be told joins in with that") {
    Bench bench;
    bench.listen("x", {}, [&](std::string_view key) {
        if (key == "a") bench.write("b", 7);
    });
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.data.release();
    CHECK(bench.take() == "x:a=1 x:b=7 ");
}

TEST_CASE("a listener that takes back a change before it is told keeps it from being told") {
    Bench bench;
    bench.listen("x", {}, [&](std::string_view key) {
        if (key == "a") bench.write("b", 0);
    });
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.data.release();
    CHECK(bench.take() == "x:a=1 ");
}

TEST_CASE("a listener that corrects the variable it is told of is told again, once") {
    Bench bench;
    bench.listen("limit", "a", [&](std::string_view) {
        if (bench.value("a") == "500") bench.write("a", 100);
    });
    bench.listen("x");
    bench.write("a", 500);
    CHECK(bench.take() == "limit:a=500 x:a=100 limit:a=100 x:a=100 ");
}

TEST_CASE("a listener's own hold does not nest deliveries") {
    Bench bench;
    bench.listen("x", "a", [&](std::string_view) {
        bench.data.hold();
        bench.write("b", 1);
        bench.write("c", 1);
        bench.data.release();
        bench.told += "(end) ";
    });
    bench.listen("y");
    bench.write("a", 1);
    CHECK(bench.take() == "x:a=1 (end) y:a=1 y:b=1 y:c=1 ");
}

TEST_CASE("a hold that a listener leaves open holds what was written in it, not the batch") {
    Bench bench;
    bench.listen("x", "a", [&](std::string_view) {
        bench.data.hold();
        bench.write("c", 1);
    });
    bench.listen("y");
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.data.release();
    CHECK(bench.take() == "x:a=1 y:a=1 y:b=1 ");
    CHECK(bench.data.hold_depth() == 1);
    bench.data.restore_hold_depth(0);
    CHECK(bench.take() == "y:c=1 ");
}

TEST_CASE("force_notifications inside a listener goes on after the batch, though changes are held") {
    Bench bench;
    bench.listen("x", "a", [&](std::string_view) {
        bench.data.hold();
        bench.write("c", 1);
        bench.mgr->force_notifications(bench.mgr);
        bench.told += "(end) ";
    });
    bench.listen("y");
    bench.write("a", 1);
    CHECK(bench.take() == "x:a=1 (end) y:a=1 y:c=1 ");
    bench.write("b", 1);
    CHECK(bench.told.empty());
    bench.data.release();
    CHECK(bench.take() == "y:b=1 ");
}

TEST_CASE("a listener that writes its variable again and again is cut with a warning") {
    Bench bench;
    int count = 0;
    const int number = bench.listen("x", "a", [&](std::string_view) { bench.write("a", ++count); });
    bench.write("a", -1);
    CHECK(count == 100);
    CHECK(bench.value("a") == "100");
    CHECK(bench.captured.take() == "warning: Listeners keep changing a, they are not told any more after 100 rounds");
    bench.data.remove_listener(number);
    bench.take();
    bench.listen("y");
    bench.write("b", 1);
    CHECK(bench.take() == "y:b=1 "); // what was cut does not come later
    bench.write("a", 1000);
    CHECK(bench.take() == "y:a=1000 ");
}

TEST_CASE("listeners that write each other's variables in turn are cut too") {
    Bench bench;
    int count = 0;
    bench.listen("x", "a", [&](std::string_view) { bench.write("b", ++count); });
    bench.listen("y", "b", [&](std::string_view) { bench.write("a", ++count); });
    bench.write("a", -1);
    CHECK(count == 100);
    CHECK(bench.captured.take() == "warning: Listeners keep changing a, they are not told any more after 100 rounds");
}

TEST_CASE("a long chain of variables is told to its end") {
    Bench bench;
    for (int index = 0; index < 60; ++index)
        bench.data.create("chain" + std::to_string(index), DataType::i32, Value(0.0));
    int told = 0;
    bench.data.add_listener([&](std::string_view key) {
        ++told;
        const int next = std::stoi(std::string(key.substr(5))) + 1;
        if (next < 60) bench.write(("chain" + std::to_string(next)).c_str(), 1);
    });
    bench.write("chain0", 1);
    CHECK(told == 60);
}

TEST_CASE("a listener that throws does not keep the others from being told") {
    Bench bench;
    bench.listen("x", {}, [](std::string_view) { throw std::runtime_error("out of paper"); });
    bench.listen("y");
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.data.release();
    CHECK(bench.take() == "x:a=1 y:a=1 x:b=1 y:b=1 ");
    CHECK(bench.captured.take()
          == "error: A listener of a failed: out of paper\nerror: A listener of b failed: out of paper");
}

// Erasing

TEST_CASE("erasing a variable drops what waits for it") {
    Bench bench;
    bench.listen("x");
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.write("c", 1);
    bench.data.erase("b");
    bench.data.release();
    CHECK(bench.take() == "x:a=1 x:c=1 ");
    bench.data.hold();
    bench.write("a", 2);
    bench.data.erase_prefix("");
    bench.data.release();
    CHECK(bench.told.empty());
}

TEST_CASE("erasing tells nobody") {
    Bench bench;
    bench.listen("x");
    bench.data.erase("a");
    bench.data.erase_prefix("b");
    CHECK(bench.told.empty());
}

TEST_CASE("a variable that is erased and made again while held is told of as a new one, in its new place") {
    Bench bench;
    bench.listen("x");
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.data.erase("a");
    bench.write("a", 0);
    bench.data.release();
    CHECK(bench.take() == "x:b=1 x:a=0 ");
}

TEST_CASE("a listener may erase the variable that it is told of; nobody is told of it after that") {
    Bench bench;
    bench.listen("x", "a", [&](std::string_view key) {
        bench.data.erase("a");
        bench.told += "(" + std::string(key) + ") ";
    });
    bench.listen("y");
    bench.write("a", 1);
    CHECK(bench.take() == "x:a=1 (a) ");
    CHECK(bench.value("a") == "gone");
}

TEST_CASE("a listener may erase variables that are still to be told of") {
    Bench bench;
    bench.listen("x", {}, [&](std::string_view key) {
        if (key == "a") bench.data.erase("b");
    });
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.write("c", 1);
    bench.data.release();
    CHECK(bench.take() == "x:a=1 x:c=1 ");
}

TEST_CASE("a listener may erase its variable and make it again; that is told in the next round") {
    Bench bench;
    bool done = false;
    bench.listen("x", "a", [&](std::string_view) {
        if (std::exchange(done, true)) return;
        bench.data.erase("a");
        bench.write_text("a", "text now");
    });
    bench.listen("y");
    bench.write("a", 1);
    CHECK(bench.take() == "x:a=1 x:a=text now y:a=text now ");
}

TEST_CASE("many variables erased while one of them is told of leave nothing behind") {
    Bench bench;
    bench.data.hold();
    bench.listen("x", "m.0", [&](std::string_view) { bench.data.erase_prefix("m."); });
    bench.listen("y");
    for (int index = 0; index < 1000; ++index) bench.write(("m." + std::to_string(index)).c_str(), 1);
    bench.data.release();
    CHECK(bench.take() == "x:m.0=1 ");
    CHECK(bench.data.keys("m.").empty());
    bench.write("a", 1);
    CHECK(bench.take() == "y:a=1 ");
}

// Bound events

TEST_CASE("a bound event is queued with the key as its target when the variable changes") {
    Bench bench;
    CHECK(bench.mgr->bind_event(bench.mgr, "a", "kel.changed") == 0);
    bench.write("b", 1);
    CHECK(bench.delivered_events().empty());
    bench.write("a", 1);
    CHECK(bench.delivered_events() == "kel.changed>a ");
    bench.write("a", 1);
    CHECK(bench.delivered_events().empty());
}

TEST_CASE("changes that follow each other queue one event, which waits") {
    Bench bench;
    bench.mgr->bind_event(bench.mgr, "a", "kel.changed");
    bench.mgr->bind_event(bench.mgr, "b", "kel.changed");
    bench.write("a", 1);
    bench.write("b", 1);
    bench.write("a", 2);
    CHECK(bench.delivered_events() == "kel.changed>a kel.changed>b ");
}

TEST_CASE("a held change queues its event at the release, and none when the value is back") {
    Bench bench;
    bench.mgr->bind_event(bench.mgr, "a", "kel.changed");
    bench.mgr->bind_event(bench.mgr, "b", "kel.changed");
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.write("b", 0);
    CHECK(bench.delivered_events().empty());
    bench.data.release();
    CHECK(bench.delivered_events() == "kel.changed>a ");
}

TEST_CASE("a variable can have several events, and the same one binds once") {
    Bench bench;
    bench.mgr->bind_event(bench.mgr, "a", "other");
    bench.mgr->bind_event(bench.mgr, "a", "kel.changed");
    bench.mgr->bind_event(bench.mgr, "a", "other");
    bench.write("a", 1);
    CHECK(bench.delivered_events() == "other>a kel.changed>a ");
}

TEST_CASE("a variable may be bound before it exists") {
    Bench bench;
    bench.mgr->bind_event(bench.mgr, "later", "kel.changed");
    bench.write("later", 1);
    CHECK(bench.delivered_events() == "kel.changed>later ");
}

TEST_CASE("erasing a variable ends its bindings, and those of keys below an erased prefix") {
    Bench bench;
    for (const char *key : {"a", "m.x", "m.unborn", "n"}) bench.mgr->bind_event(bench.mgr, key, "kel.changed");
    bench.write("m.x", 1);
    bench.write("n", 1);
    bench.delivered_events();
    bench.data.erase("a");
    bench.data.erase_prefix("m.");
    for (const char *key : {"a", "m.x", "m.unborn", "n"}) bench.write(key, 5);
    CHECK(bench.delivered_events() == "kel.changed>n ");
}

TEST_CASE("a listener that erases the variable leaves no event for it, though it binds the key anew") {
    Bench bench;
    bench.mgr->bind_event(bench.mgr, "a", "kel.changed");
    bench.listen("x", "a", [&](std::string_view) {
        bench.data.erase("a");
        bench.mgr->bind_event(bench.mgr, "a", "other");
    });
    bench.write("a", 1);
    CHECK(bench.delivered_events().empty());
}

TEST_CASE("will_fire_event says whether a change would be heard of") {
    Bench bench;
    const auto will_fire = [&](const char *key) { return bench.mgr->will_fire_event(bench.mgr, key); };
    CHECK(will_fire("a") == 0);
    bench.mgr->bind_event(bench.mgr, "a", "kel.changed");
    CHECK(will_fire("a") == 1);
    CHECK(will_fire("b") == 0);
    CListener one{bench, "one"};
    one.listen_to_misses();
    CHECK(will_fire("b") == 0);
    one.listen("b");
    CHECK(will_fire("b") == 1);
    CHECK(will_fire("c") == 0);
    one.remove();
    CHECK(will_fire("b") == 0);
    const int number = bench.listen("every");
    CHECK(will_fire("c") == 1);
    bench.data.remove_listener(number);
    CHECK(will_fire("c") == 0);
}

// Misses

TEST_CASE("miss listeners are told of reads of what does not exist") {
    Bench bench;
    CListener miss{bench, "miss"};
    CListener change{bench, "change"};
    miss.listen_to_misses();
    change.listen(nullptr);
    CHECK(bench.data.read("nosuch") == nullptr);
    CHECK(bench.take() == "miss:nosuch ");
    std::int32_t number = 0;
    CHECK(bench.mgr->get_data_value(bench.mgr, "nosuch2", &number, sizeof number) == -1);
    CHECK(bench.mgr->get_data(bench.mgr, "nosuch3", nullptr) == nullptr);
    CHECK(bench.take() == "miss:nosuch2 miss:nosuch3 ");
    CHECK(bench.data.read("a") != nullptr);
    CHECK(bench.data.find("nosuch") == nullptr);
    CHECK(bench.mgr->get_format(bench.mgr, "nosuch") == nullptr);
    CHECK(bench.told.empty());
}

TEST_CASE("a miss listener may make the variable, which is then read") {
    Bench bench;
    CListener miss{bench, "miss"};
    miss.further = [&](const char *key) { bench.data.create(key, DataType::i32, Value(42.0)); };
    miss.listen_to_misses();
    const auto *variable = bench.data.read("made");
    REQUIRE(variable != nullptr);
    CHECK(kelhost::to_text(variable->value) == "42");
    std::int32_t number = 0;
    CHECK(bench.mgr->get_data_value(bench.mgr, "made2", &number, sizeof number) == 0);
    CHECK(number == 42);
    CHECK(bench.take() == "miss:made miss:made2 ");
}

TEST_CASE("a miss listener that reads what is missing is not told of that, and may remove itself") {
    Bench bench;
    CListener miss{bench, "miss"};
    CListener second{bench, "second"};
    miss.further = [&](const char *) {
        bench.data.read("another");
        miss.remove();
    };
    miss.listen_to_misses();
    second.listen_to_misses();
    bench.data.read("nosuch");
    CHECK(bench.take() == "miss:nosuch second:nosuch ");
    bench.data.read("nosuch");
    CHECK(bench.take() == "second:nosuch ");
}

// The end

TEST_CASE("fini forgets who listens and what waits, and keeps the variables") {
    Bench bench;
    CListener one{bench, "one"};
    one.listen(nullptr);
    one.listen_to_misses();
    bench.mgr->bind_event(bench.mgr, "a", "kel.changed");
    bench.data.hold();
    bench.write("a", 1);
    bench.mgr->fini(bench.mgr);
    const int number = bench.listen("later");
    bench.data.release();
    bench.data.remove_listener(number);
    bench.write("a", 2);
    bench.data.read("nosuch");
    CHECK(bench.told.empty());
    CHECK(bench.delivered_events().empty());
    CHECK(bench.value("a") == "2");
    CHECK(bench.mgr->will_fire_event(bench.mgr, "a") == 0);
}

TEST_CASE("fini inside a listener ends what is being told") {
    Bench bench;
    CListener one{bench, "one"};
    CListener two{bench, "two"};
    one.further = [&](const char *) { bench.mgr->fini(bench.mgr); };
    one.listen(nullptr);
    two.listen(nullptr);
    bench.data.hold();
    bench.write("a", 1);
    bench.write("b", 1);
    bench.data.release();
    CHECK(bench.take() == "one:a ");
}
