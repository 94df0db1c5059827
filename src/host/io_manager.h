// io_manager.h: delivers events to listeners, at once or from a queue. The kl_io_mgr_t of the reference host.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include <kel/kel.h>

#include "log.h"

namespace kelhost {

class IoManager {
public:
    explicit IoManager(Log &log);
    ~IoManager();
    IoManager(const IoManager &) = delete;
    IoManager &operator=(const IoManager &) = delete;

    kl_io_mgr_t *record() noexcept { return &record_; }

    // Events that carry nothing but a target; "" is none.
    void trigger(const std::string &name, const std::string &target);
    void queue(const std::string &name, const std::string &target);
    // As queue, but an event of the same name and target that waits already is enough.
    void queue_once(const std::string &name, const std::string &target);

    // Delivers until nothing waits; returns how many events and callbacks were delivered. An endless chain of events that
    // queue events is cut after `most` deliveries with a warning, and the rest stays queued.
    std::size_t pump(std::size_t most = 100000);

    // ... private members are this file's implementer's to choose
private:
    struct Record : kl_io_mgr_t {
        IoManager *self = nullptr;
    };
    Record record_;
    Log &log_;
};

} // namespace kelhost
