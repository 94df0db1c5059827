// test_out_of_memory.cpp: what the managers do when the C++ heap is out, and that common writes do not touch it.
// Replaces the global operator new of this program, to count requests and to make the k-th one fail.
#include <cstddef>
#include <cstdlib>
#include <new>
#include <optional>
#include <string>

#include <doctest/doctest.h>

#include <kel/kel.h>

#include "data_manager.h"
#include "failing_new.h"
#include "io_manager.h"
#include "log.h"

void *operator new(std::size_t nbytes) {
    ++new_requests;
    if (new_requests_until_failure > 0 && --new_requests_until_failure == 0) throw std::bad_alloc();
    void *block = std::malloc(nbytes > 0 ? nbytes : 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void operator delete(void *block) noexcept { std::free(block); }
void operator delete(void *block, std::size_t) noexcept { std::free(block); }

using kelhost::DataManager;
using kelhost::DataType;
using kelhost::Input;
using kelhost::IoManager;
using kelhost::Log;
using kelhost::Value;

namespace {

const std::string long_text(100, 'x');

struct Bench {
    Log log{[](const kelhost::LogEntry &) {}, KL_LOG_TRACE2};
    IoManager io_manager{log};
    DataManager data{log, io_manager};
    kl_data_mgr_t *mgr = data.record();
    kl_io_mgr_t *io = io_manager.record();
};

// Runs `attempt` on fresh managers with the first request failing, then the second, and so on, until none fails any
// more. Each result must be -1 with nothing to see of it, the last one 0.
template <typename Attempt, typename Unchanged> std::size_t fail_each_request(Attempt attempt, Unchanged is_unchanged) {
    for (std::size_t request = 1; request < 100; ++request) {
        CAPTURE(request);
        Bench bench;
        bench.data.create("main.text", DataType::string, Value(long_text));
        bench.data.create("main.number", DataType::i32, Value(1.0));
        bench.data.add_listener([](std::string_view) {});
        int result = 77;
        bool failed = false;
        {
            const FailingNew failing(request);
            result = attempt(bench);
            failed = FailingNew::has_failed();
        }
        if (!failed) {
            CHECK(result == 0);
            return request - 1;
        }
        CHECK(result == -1);
        CHECK(is_unchanged(bench));
    }
    FAIL("it fails for ever");
    return 0;
}

double number_of(const Bench &bench, const char *key) {
    const auto *variable = bench.data.find(key);
    return variable != nullptr ? std::get<double>(variable->value) : -99;
}

} // namespace

TEST_CASE("creating a variable through C fails cleanly at each request") {
    const std::size_t points = fail_each_request(
        [](Bench &bench) { return bench.mgr->create_data_entry_typed(bench.mgr, "main.a_rather_long_key", 2); },
        [](Bench &bench) { return bench.data.find("main.a_rather_long_key") == nullptr; });
    CHECK(points >= 2); // the key and the entry
}

TEST_CASE("subscribing, binding and queueing fail cleanly at each request") {
    const auto ignore_change = [](kl_data_mgr_t *, const char *, void *) {};
    const auto ignore_event = [](kl_io_mgr_t *, kl_event_t *, void *) {};
    const auto listeners = [](Bench &bench) {
        kl_data_metrics_t metrics;
        bench.mgr->get_metrics(bench.mgr, &metrics);
        return metrics.listeners;
    };
    CHECK(fail_each_request(
              [&](Bench &bench) {
                  return bench.mgr->add_change_listener(bench.mgr, long_text.c_str(), ignore_change, nullptr);
              },
              [&](Bench &bench) { return listeners(bench) == 1; })
          >= 1);
    CHECK(fail_each_request(
              [&](Bench &bench) {
                  return bench.io->add_event_listener(bench.io, long_text.c_str(), ignore_event, nullptr);
              },
              [&](Bench &bench) { return bench.io->rem_event_listener(bench.io, ignore_event, nullptr) != 0; })
          >= 2);
    CHECK(fail_each_request([&](Bench &bench) { return bench.io->add_pointer_event(bench.io, long_text.c_str()); },
                            [&](Bench &bench) { return bench.io->is_pointer_event(bench.io, long_text.c_str()) == 0; })
          >= 2);

    std::string name = long_text;
    std::string target = long_text;
    const kl_event_t event = {name.data(), target.data(), nullptr, 0, static_cast<std::uint32_t>(name.size()),
                              name.data()};
    const auto nothing_waits = [](Bench &bench) { return bench.io_manager.pump() == 0; };
    CHECK(fail_each_request([&](Bench &bench) { return bench.io->queue_event(bench.io, &event); }, nothing_waits) >= 3);
    CHECK(
        fail_each_request([&](Bench &bench) { return bench.io->queue_compress_event(bench.io, &event); }, nothing_waits)
        >= 3);
    CHECK(fail_each_request([&](Bench &bench) { return bench.io->trigger_event(bench.io, &event); }, nothing_waits)
          >= 3);
}

TEST_CASE("binding an event fails cleanly at each request") {
    CHECK(fail_each_request(
              [](Bench &bench) { return bench.mgr->bind_event(bench.mgr, "main.number.long.key", long_text.c_str()); },
              [](Bench &bench) {
                  bench.data.write("main.number.long.key", kelhost::to_input(Value(5.0)));
                  return bench.io_manager.pump() == 0;
              })
          >= 3);
}

TEST_CASE("a watched write that runs out of memory leaves the variable as it was, and one that does not is told") {
    const char *const key = "main.a_rather_long_key";
    for (std::size_t request = 1; request < 100; ++request) {
        CAPTURE(request);
        Bench bench;
        bench.data.create(key, DataType::string, Value(long_text));
        int told = 0;
        bench.data.add_listener([&told](std::string_view) { ++told; });
        const std::string fresh = long_text + long_text;
        int result = 77;
        bool failed = false;
        {
            const FailingNew failing(request);
            result =
                bench.mgr->set_data(bench.mgr, key, "string", fresh.data(), static_cast<std::uint32_t>(fresh.size()));
            failed = FailingNew::has_failed();
        }
        const std::string &value = std::get<std::string>(bench.data.find(key)->value);
        CHECK(value == (result == 0 ? fresh : long_text));
        CHECK(told == (result == 0 ? 1 : 0));
        if (!failed) {
            CHECK(result == 0);
            CHECK(request > 2);
            return;
        }
        // The next write works as if nothing had been.
        told = 0;
        CHECK(bench.mgr->set_data(bench.mgr, key, "string", "next", 4) == 0);
        CHECK(told == 1);
        CHECK(bench.data.hold_depth() == 0);
    }
    FAIL("it fails for ever");
}

TEST_CASE("a write that creates fails cleanly at each request") {
    CHECK(fail_each_request(
              [](Bench &bench) {
                  const double number = 5;
                  return bench.mgr->set_data(bench.mgr, "main.a_rather_long_key", "f64", &number, sizeof number);
              },
              [](Bench &bench) { return number_of(bench, "main.a_rather_long_key") == -99; })
          >= 3);
}

TEST_CASE("a write without listeners asks for no memory, held or not") {
    Bench bench;
    bench.data.create("main.text", DataType::string, Value(long_text));
    bench.data.create("main.a_rather_long_key", DataType::i16, Value(1.0));
    Input number;
    number.kind = Input::Kind::number;
    Input text;
    text.kind = Input::Kind::text;
    const std::size_t before = new_requests;
    for (int round = 0; round < 3; ++round) {
        bench.data.hold();
        number.number = round + 10;
        bench.data.write("main.a_rather_long_key", number);
        bench.data.release();
        number.number = round + 20;
        bench.data.write("main.a_rather_long_key", number);
        text.text = std::string_view(long_text).substr(static_cast<std::size_t>(round) + 1);
        bench.data.write("main.text", text);
    }
    CHECK(new_requests == before);
    CHECK(number_of(bench, "main.a_rather_long_key") == 22);
}

TEST_CASE("a watched number asks for no memory once the first change was told") {
    Bench bench;
    bench.data.create("main.a_rather_long_key", DataType::i16, Value(1.0));
    int told = 0;
    bench.data.add_listener([&told](std::string_view) { ++told; });
    Input number;
    number.kind = Input::Kind::number;
    bench.data.write("main.a_rather_long_key", number);
    number.number = 5;
    bench.data.write("main.a_rather_long_key", number);
    const std::size_t before = new_requests;
    for (int value = 10; value < 20; ++value) {
        number.number = value;
        bench.data.write("main.a_rather_long_key", number);
    }
    CHECK(new_requests == before);
    CHECK(told == 12);
}
