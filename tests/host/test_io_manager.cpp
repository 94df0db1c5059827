// test_io_manager.cpp: events and callbacks: who is called, in which order, with what.
#include <chrono>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include <kel/kel.h>

#include "io_manager.h"
#include "support/captured_log.h"

using kelhost::IoManager;

namespace {

// An I/O manager, and listeners that write down what they are called with: "NAME:EVENT>TARGET " each.
struct Bench {
    CapturedLog captured;
    IoManager manager{captured.log};
    kl_io_mgr_t *io = manager.record();
    std::string calls;

    std::string take() { return std::exchange(calls, {}); }
};

struct Listener {
    Bench &bench;
    std::string name;
    std::function<void(kl_event_t &)> further = {}; // what it does beside

    static void call(kl_io_mgr_t *mgr, kl_event_t *event, void *user_data) {
        auto &self = *static_cast<Listener *>(user_data);
        CHECK(mgr == self.bench.io);
        self.bench.calls +=
            self.name + ":" + event->name + ">" + (event->target != nullptr ? event->target : "-") + " ";
        if (self.further) self.further(*event);
    }
    int subscribe(const char *event_name) { return bench.io->add_event_listener(bench.io, event_name, call, this); }
    int unsubscribe() { return bench.io->rem_event_listener(bench.io, call, this); }
};

struct Work {
    Bench &bench;
    std::string name;
    std::function<void()> further = {};

    static void call(kl_io_mgr_t *mgr, void *user_data) {
        auto &self = *static_cast<Work *>(user_data);
        CHECK(mgr == self.bench.io);
        self.bench.calls += "callback:" + self.name + " ";
        if (self.further) self.further();
    }
    int queue() { return bench.io->queue_callback(bench.io, call, this); }
    int trigger() { return bench.io->trigger_callback(bench.io, call, this); }
};

// An event of C, with strings that live as long as it does.
struct CEvent {
    std::string name;
    std::string target;
    std::string bytes;
    kl_event_t record() {
        return {name.data(), target.empty() ? nullptr : target.data(), nullptr,
                0,           static_cast<std::uint32_t>(bytes.size()), bytes.empty() ? nullptr : bytes.data()};
    }
};

} // namespace

TEST_CASE("the record states its size and offers every operation") {
    Bench bench;
    CHECK(bench.io->nbytes == sizeof(kl_io_mgr_t));
    CHECK(&IoManager::of(bench.io) == &bench.manager);
    CHECK(bool(bench.io->init));
    CHECK(bool(bench.io->fini));
    CHECK(bool(bench.io->add_event_listener));
    CHECK(bool(bench.io->rem_event_listener));
    CHECK(bool(bench.io->trigger_event));
    CHECK(bool(bench.io->trigger_callback));
    CHECK(bool(bench.io->queue_event));
    CHECK(bool(bench.io->queue_compress_event));
    CHECK(bool(bench.io->queue_callback));
    CHECK(bool(bench.io->event_loop));
    CHECK(bool(bench.io->add_pointer_event));
    CHECK(bool(bench.io->rem_pointer_event));
    CHECK(bool(bench.io->is_pointer_event));
    CHECK(bench.io->init(bench.io, nullptr) == 0);
}

TEST_CASE("a triggered event reaches the listeners of its name, in the order of subscription") {
    Bench bench;
    Listener a{bench, "a"};
    Listener b{bench, "b"};
    Listener c{bench, "c"};
    CHECK(b.subscribe("press") == 0);
    CHECK(a.subscribe("press") == 0);
    CHECK(c.subscribe("release") == 0);
    bench.manager.trigger("press", "main.ok");
    CHECK(bench.take() == "b:press>main.ok a:press>main.ok ");
    bench.manager.trigger("release", "");
    CHECK(bench.take() == "c:release>- ");
}

TEST_CASE("an event that nobody listens to is delivered to nobody") {
    Bench bench;
    Listener a{bench, "a"};
    a.subscribe("press");
    bench.manager.trigger("pres", "");
    bench.manager.trigger("press2", "");
    bench.manager.trigger("", "");
    CHECK(bench.calls.empty());
}

TEST_CASE("the event's name is copied when a listener subscribes") {
    Bench bench;
    Listener a{bench, "a"};
    char name[] = "press";
    a.subscribe(name);
    std::strcpy(name, "xxxxx");
    bench.manager.trigger("press", "");
    CHECK(bench.take() == "a:press>- ");
}

TEST_CASE("a listener subscribed twice is called twice") {
    Bench bench;
    Listener a{bench, "a"};
    a.subscribe("press");
    a.subscribe("press");
    bench.manager.trigger("press", "");
    CHECK(bench.take() == "a:press>- a:press>- ");
}

TEST_CASE("subscribing without a name or a listener fails") {
    Bench bench;
    Listener a{bench, "a"};
    CHECK(bench.io->add_event_listener(bench.io, nullptr, Listener::call, &a) != 0);
    CHECK(bench.io->add_event_listener(bench.io, "press", nullptr, &a) != 0);
    bench.manager.trigger("press", "");
    CHECK(bench.calls.empty());
}

TEST_CASE("removing ends every subscription of listener and user data, whatever the event") {
    Bench bench;
    Listener a{bench, "a"};
    Listener b{bench, "b"};
    a.subscribe("press");
    a.subscribe("release");
    b.subscribe("press");
    CHECK(a.unsubscribe() == 0);
    bench.manager.trigger("press", "");
    bench.manager.trigger("release", "");
    CHECK(bench.take() == "b:press>- ");
}

TEST_CASE("removing a listener that is not there says so") {
    Bench bench;
    Listener a{bench, "a"};
    Listener b{bench, "b"};
    a.subscribe("press");
    CHECK(b.unsubscribe() != 0);
    CHECK(a.unsubscribe() == 0);
    CHECK(a.unsubscribe() != 0);
}

TEST_CASE("a listener that removes itself is called for that event alone, and the others are called all the same") {
    Bench bench;
    Listener a{bench, "a"};
    Listener b{bench, "b"};
    int result = -1;
    a.further = [&](kl_event_t &) { result = a.unsubscribe(); };
    a.subscribe("press");
    b.subscribe("press");
    bench.manager.trigger("press", "");
    CHECK(result == 0);
    CHECK(bench.take() == "a:press>- b:press>- ");
    bench.manager.trigger("press", "");
    CHECK(bench.take() == "b:press>- ");
}

TEST_CASE("a listener that removes itself inside the call is gone for a second removal there") {
    Bench bench;
    Listener a{bench, "a"};
    std::vector<int> results;
    a.further = [&](kl_event_t &) {
        results.push_back(a.unsubscribe());
        results.push_back(a.unsubscribe());
    };
    a.subscribe("press");
    bench.manager.trigger("press", "");
    REQUIRE(results.size() == 2);
    CHECK(results[0] == 0);
    CHECK(results[1] != 0);
}

TEST_CASE("a listener that is removed by another does not get the event any more") {
    Bench bench;
    Listener a{bench, "a"};
    Listener b{bench, "b"};
    Listener c{bench, "c"};
    b.further = [&](kl_event_t &) {
        a.unsubscribe();
        c.unsubscribe();
    };
    a.subscribe("press");
    b.subscribe("press");
    c.subscribe("press");
    bench.manager.trigger("press", "");
    CHECK(bench.take() == "a:press>- b:press>- ");
    bench.manager.trigger("press", "");
    CHECK(bench.take() == "b:press>- ");
}

TEST_CASE("a listener that is added during a delivery gets the next event and not that one") {
    Bench bench;
    Listener a{bench, "a"};
    std::vector<Listener> added(40, Listener{bench, "n"}); // enough for the subscriptions to move
    a.further = [&](kl_event_t &) {
        for (Listener &listener : added) listener.subscribe("press");
        a.further = nullptr;
    };
    Listener last{bench, "last"};
    a.subscribe("press");
    last.subscribe("press");
    bench.manager.trigger("press", "");
    CHECK(bench.take() == "a:press>- last:press>- ");
    bench.manager.trigger("press", "");
    std::string expected = "a:press>- last:press>- ";
    for (std::size_t count = 0; count < added.size(); ++count) expected += "n:press>- ";
    CHECK(bench.take() == expected);
}

TEST_CASE("a listener that subscribes itself again inside the call is called for the next event") {
    Bench bench;
    Listener a{bench, "a"};
    a.further = [&](kl_event_t &) {
        a.unsubscribe();
        a.subscribe("press");
    };
    a.subscribe("press");
    bench.manager.trigger("press", "1");
    bench.manager.trigger("press", "2");
    CHECK(bench.take() == "a:press>1 a:press>2 ");
}

TEST_CASE("an event triggered by a listener is delivered inside the first one") {
    Bench bench;
    Listener a{bench, "a"};
    Listener b{bench, "b"};
    Listener inner{bench, "inner"};
    a.further = [&](kl_event_t &) { bench.manager.trigger("release", "x"); };
    inner.further = [&](kl_event_t &) { b.unsubscribe(); };
    a.subscribe("press");
    b.subscribe("press");
    inner.subscribe("release");
    bench.manager.trigger("press", "");
    CHECK(bench.take() == "a:press>- inner:release>x ");
    bench.manager.trigger("release", "");
    CHECK(bench.take() == "inner:release>- ");
}

TEST_CASE("triggers that trigger without end are cut with a warning") {
    Bench bench;
    int count = 0;
    Listener a{bench, "a"};
    a.further = [&](kl_event_t &) {
        ++count;
        bench.manager.trigger("press", "");
    };
    a.subscribe("press");
    bench.manager.trigger("press", "");
    CHECK(count == 50);
    CHECK(bench.captured.take()
          == "warning: Event \"press\" is not delivered: 50 deliveries inside each other already");
    a.further = nullptr;
    bench.take();
    bench.manager.trigger("press", "");
    CHECK(bench.take() == "a:press>- ");
}

TEST_CASE("listeners get a C event's target, format and data as copies that they may write to") {
    Bench bench;
    char name[] = "press";
    char target[] = "main.ok";
    char format[] = "u1";
    char data[] = {'x', '\0', 'y'};
    std::string seen;
    Listener a{bench, "a"};
    a.further = [&](kl_event_t &event) {
        CHECK(event.name != name);
        CHECK(event.target != target);
        CHECK(event.format != format);
        CHECK(event.data != data);
        CHECK(event.format == std::string("u1"));
        CHECK(event.nbytes == 3);
        seen.assign(static_cast<char *>(event.data), event.nbytes);
        event.name[0] = 'P';
        event.target = nullptr;
    };
    Listener b{bench, "b"};
    a.subscribe("press");
    b.subscribe("press");
    kl_event_t event = {name, target, format, 0, sizeof data, data};
    CHECK(bench.io->trigger_event(bench.io, &event) == 0);
    CHECK(seen == std::string("x\0y", 3));
    CHECK(name == std::string("press"));
    CHECK(bench.take() == "a:press>main.ok b:Press>main.ok ");
}

TEST_CASE("an event without target, format and data has nulls there") {
    Bench bench;
    Listener a{bench, "a"};
    int calls = 0;
    a.further = [&](kl_event_t &event) {
        ++calls;
        CHECK(event.target == nullptr);
        CHECK(event.format == nullptr);
        CHECK(event.data == nullptr);
        CHECK(event.nbytes == 0);
    };
    a.subscribe("press");
    bench.manager.trigger("press", "");
    char name[] = "press";
    const kl_event_t event = {name, nullptr, nullptr, 0, 0, nullptr};
    bench.io->trigger_event(bench.io, &event);
    bench.io->queue_event(bench.io, &event);
    bench.manager.pump();
    CHECK(calls == 3);
}

TEST_CASE("an event of C keeps a target that is the empty string, the application's name") {
    Bench bench;
    Listener a{bench, "a"};
    a.subscribe("press");
    char name[] = "press";
    char target[] = "";
    const kl_event_t event = {name, target, nullptr, 0, 0, nullptr};
    bench.io->trigger_event(bench.io, &event);
    CHECK(bench.take() == "a:press> ");
}

TEST_CASE("events that make no sense are refused") {
    Bench bench;
    char name[] = "press";
    const kl_event_t nameless = {nullptr, nullptr, nullptr, 0, 0, nullptr};
    const kl_event_t without_data = {name, nullptr, nullptr, 0, 4, nullptr};
    for (const kl_event_t *event : {&nameless, &without_data, static_cast<const kl_event_t *>(nullptr)}) {
        CHECK(bench.io->trigger_event(bench.io, event) != 0);
        CHECK(bench.io->queue_event(bench.io, event) != 0);
        CHECK(bench.io->queue_compress_event(bench.io, event) != 0);
    }
    CHECK(bench.manager.pump() == 0);
}

TEST_CASE("queued events and callbacks wait for the pump and are delivered first in, first out") {
    Bench bench;
    Listener a{bench, "a"};
    a.subscribe("press");
    a.subscribe("release");
    Work work{bench, "w"};
    CEvent c_event{"release", "two", ""};
    const kl_event_t record = c_event.record();
    bench.manager.queue("press", "one");
    CHECK(bench.io->queue_event(bench.io, &record) == 0);
    CHECK(work.queue() == 0);
    bench.manager.queue("press", "three");
    CHECK(bench.calls.empty());
    CHECK(bench.manager.pump() == 4);
    CHECK(bench.take() == "a:press>one a:release>two callback:w a:press>three ");
    CHECK(bench.manager.pump() == 0);
    CHECK(bench.calls.empty());
}

TEST_CASE("a queued event of C is copied") {
    Bench bench;
    std::string data_seen;
    Listener a{bench, "a"};
    a.further = [&](kl_event_t &event) { data_seen.assign(static_cast<char *>(event.data), event.nbytes); };
    a.subscribe("press");
    {
        CEvent c_event{"press", "main.ok", "payload"};
        const kl_event_t record = c_event.record();
        bench.io->queue_event(bench.io, &record);
        c_event.bytes.assign("0000000");
        c_event.target.assign("xxxxxxx");
    }
    bench.manager.pump();
    CHECK(bench.take() == "a:press>main.ok ");
    CHECK(data_seen == "payload");
}

TEST_CASE("the pump delivers what listeners queue while it is under way, after what waits already") {
    Bench bench;
    Listener a{bench, "a"};
    a.further = [&](kl_event_t &event) {
        if (event.target == std::string("1")) bench.manager.queue("press", "1b");
    };
    a.subscribe("press");
    bench.manager.queue("press", "1");
    bench.manager.queue("press", "2");
    CHECK(bench.manager.pump() == 3);
    CHECK(bench.take() == "a:press>1 a:press>2 a:press>1b ");
}

TEST_CASE("an endless chain is cut with a warning, and the rest stays queued") {
    Bench bench;
    int count = 0;
    Listener a{bench, "a"};
    a.further = [&](kl_event_t &) {
        ++count;
        bench.manager.queue("press", "");
        if (count == 1) bench.manager.queue("press", "");
    };
    a.subscribe("press");
    bench.manager.queue("press", "");
    CHECK(bench.manager.pump(10) == 10);
    CHECK(count == 10);
    CHECK(bench.captured.take()
          == "warning: Stopped after delivering 10 events, 2 still wait: do events queue each other?");
    a.further = nullptr;
    CHECK(bench.manager.pump(2) == 2); // exactly as many as wait is no reason to warn
    CHECK(bench.manager.pump() == 0);
}

TEST_CASE("a pump inside a delivery of the pump leaves the rest to it") {
    Bench bench;
    std::size_t inner = 99;
    Listener a{bench, "a"};
    Listener b{bench, "b"};
    a.further = [&](kl_event_t &event) {
        if (event.target == std::string("1")) inner = bench.manager.pump();
    };
    a.subscribe("press");
    b.subscribe("press");
    bench.manager.queue("press", "1");
    bench.manager.queue("press", "2");
    CHECK(bench.manager.pump() == 2);
    CHECK(inner == 0);
    CHECK(bench.take() == "a:press>1 b:press>1 a:press>2 b:press>2 ");
}

TEST_CASE("a pump inside a triggered event delivers") {
    Bench bench;
    std::size_t delivered = 0;
    Listener a{bench, "a"};
    a.further = [&](kl_event_t &) { delivered = bench.manager.pump(); };
    Listener b{bench, "b"};
    a.subscribe("press");
    b.subscribe("release");
    bench.manager.queue("release", "");
    bench.manager.trigger("press", "");
    CHECK(delivered == 1);
    CHECK(bench.take() == "a:press>- b:release>- ");
}

TEST_CASE("event_loop pumps and returns how many were delivered") {
    Bench bench;
    Listener a{bench, "a"};
    a.subscribe("press");
    CHECK(bench.io->event_loop(bench.io) == 0);
    bench.manager.queue("press", "");
    bench.manager.queue("unheard", "");
    CHECK(bench.io->event_loop(bench.io) == 2);
    CHECK(bench.take() == "a:press>- ");
}

TEST_CASE("queue_once keeps one waiting event of a name and target") {
    Bench bench;
    Listener a{bench, "a"};
    a.subscribe("kel.changed");
    a.subscribe("press");
    bench.manager.queue_once("kel.changed", "main.ok.kld_x");
    bench.manager.queue_once("kel.changed", "main.ok.kld_y");
    bench.manager.queue_once("kel.changed", "");
    bench.manager.queue_once("press", "main.ok.kld_x");
    bench.manager.queue_once("kel.changed", "main.ok.kld_x");
    bench.manager.queue_once("kel.changed", "");
    CHECK(bench.manager.pump() == 4);
    CHECK(bench.take()
          == "a:kel.changed>main.ok.kld_x a:kel.changed>main.ok.kld_y a:kel.changed>- a:press>main.ok.kld_x ");
}

TEST_CASE("an event that was delivered, or is being delivered, does not count as waiting") {
    Bench bench;
    Listener a{bench, "a"};
    int count = 0;
    a.further = [&](kl_event_t &) {
        if (++count == 1) bench.manager.queue_once("press", "x");
    };
    a.subscribe("press");
    bench.manager.queue_once("press", "x");
    CHECK(bench.manager.pump() == 2);
    bench.manager.queue_once("press", "x");
    CHECK(bench.manager.pump() == 1);
}

TEST_CASE("queue_compress_event replaces the waiting event of the same name and target, in its place") {
    Bench bench;
    std::string data_seen;
    Listener a{bench, "a"};
    a.further = [&](kl_event_t &event) {
        data_seen += std::string(static_cast<char *>(event.data), event.nbytes) + " ";
    };
    a.subscribe("motion");
    for (const char *row : {"pad 1", "bar 2", "pad 3"}) {
        CEvent c_event{"motion", std::string(row, 3), std::string(row + 4)};
        const kl_event_t record = c_event.record();
        CHECK(bench.io->queue_compress_event(bench.io, &record) == 0);
    }
    CHECK(bench.manager.pump() == 2);
    CHECK(bench.take() == "a:motion>pad a:motion>bar ");
    CHECK(data_seen == "3 2 ");
}

TEST_CASE("a callback can be triggered at once, and a null one is refused") {
    Bench bench;
    Work work{bench, "w"};
    CHECK(work.trigger() == 0);
    CHECK(bench.take() == "callback:w ");
    CHECK(bench.io->trigger_callback(bench.io, nullptr, nullptr) != 0);
    CHECK(bench.io->queue_callback(bench.io, nullptr, nullptr) != 0);
    CHECK(bench.manager.pump() == 0);
}

TEST_CASE("a queued callback runs once for each time it was queued, and may queue itself") {
    Bench bench;
    Work work{bench, "w"};
    int again = 2;
    work.further = [&] {
        if (again-- > 0) work.queue();
    };
    work.queue();
    CHECK(bench.manager.pump() == 3);
    CHECK(bench.take() == "callback:w callback:w callback:w ");
}

TEST_CASE("an event is stamped with the milliseconds since the manager was made") {
    const auto start = std::chrono::steady_clock::now();
    const auto elapsed = [start] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
    };
    const auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(30)); };
    Bench bench;
    std::vector<std::int32_t> stamps;
    Listener a{bench, "a"};
    a.further = [&](kl_event_t &event) { stamps.push_back(event.timestamp); };
    a.subscribe("press");
    char name[] = "press";
    const kl_event_t event = {name, nullptr, nullptr, 123456789, 0, nullptr};

    bench.manager.trigger("press", "");
    const auto after_first = elapsed();
    pause();
    bench.io->trigger_event(bench.io, &event);
    bench.manager.queue("press", "");
    const auto after_queueing = elapsed();
    pause();
    bench.manager.pump();

    REQUIRE(stamps.size() == 3);
    CHECK(stamps[0] >= 0);
    CHECK(stamps[0] <= after_first);
    CHECK(stamps[1] >= stamps[0] + 29);
    CHECK(stamps[2] >= stamps[1]);
    CHECK(stamps[2] <= after_queueing); // when it was queued, not when it was delivered
}

TEST_CASE("press, motion and release are pointer events; others can be added and removed") {
    Bench bench;
    const auto is_pointer = [&](const char *name) { return bench.io->is_pointer_event(bench.io, name); };
    CHECK(is_pointer("press") == 1);
    CHECK(is_pointer("motion") == 1);
    CHECK(is_pointer("release") == 1);
    CHECK(is_pointer("key") == 0);
    CHECK(is_pointer("") == 0);

    CHECK(bench.io->add_pointer_event(bench.io, "hover") == 0);
    CHECK(bench.io->add_pointer_event(bench.io, "hover") == 0);
    CHECK(is_pointer("hover") == 1);
    CHECK(bench.io->rem_pointer_event(bench.io, "hover") == 0);
    CHECK(is_pointer("hover") == 0);
    CHECK(bench.io->rem_pointer_event(bench.io, "hover") != 0);
    CHECK(bench.io->rem_pointer_event(bench.io, "press") == 0);
    CHECK(is_pointer("press") == 0);

    CHECK(bench.io->add_pointer_event(bench.io, nullptr) != 0);
    CHECK(bench.io->rem_pointer_event(bench.io, nullptr) != 0);
    CHECK(is_pointer(nullptr) == 0);
}

TEST_CASE("fini forgets what waits and who listens") {
    Bench bench;
    Listener a{bench, "a"};
    a.subscribe("press");
    bench.manager.queue("press", "");
    bench.io->fini(bench.io);
    CHECK(bench.manager.pump() == 0);
    bench.manager.trigger("press", "");
    CHECK(bench.calls.empty());
    CHECK(a.unsubscribe() != 0);
}

TEST_CASE("fini inside a delivery ends that delivery") {
    Bench bench;
    Listener a{bench, "a"};
    Listener b{bench, "b"};
    a.further = [&](kl_event_t &) { bench.io->fini(bench.io); };
    a.subscribe("press");
    b.subscribe("press");
    bench.manager.queue("press", "1");
    bench.manager.queue("press", "2");
    CHECK(bench.manager.pump() == 1);
    CHECK(bench.take() == "a:press>1 ");
    bench.manager.trigger("press", "");
    CHECK(bench.calls.empty());
}

TEST_CASE("a callback that throws loses itself alone, and the pump works afterwards") {
    Bench bench;
    Work work{bench, "w"};
    work.further = [] { throw std::bad_alloc(); };
    work.queue();
    bench.manager.queue("press", "");
    CHECK(bench.io->event_loop(bench.io) == -1);
    CHECK(bench.io->event_loop(bench.io) == 1);
}
