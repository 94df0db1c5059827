// watchdog.h: ends the process, after one message, where a script is out of every other bound's reach: when it takes
// too long, such as in a library function that does not return, or when it overflows the C stack there.
#pragma once

#include <memory>
#include <string_view>

namespace kelhost {

class Watchdog {
public:
    // seconds: most that the process may be busy without a break; 0 is no bound. One at a time.
    explicit Watchdog(double seconds);
    ~Watchdog();
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;

    // What the process is at from now on, for the message; "" for nothing, which ends the count of seconds.
    // The first kilobyte counts.
    void tell(std::string_view activity) noexcept;

private:
    struct Guard;
    std::unique_ptr<Guard> guard_;
};

} // namespace kelhost
