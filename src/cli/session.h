// session.h: an application that a command runs: loaded with the plug-in, its log shown, ended in order.
#pragma once

#include "commands.h"

#include "output.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <kelhost/application.h>

#include "watchdog.h"

namespace kelhost {

// Where the lines go that an application logs and prints.
struct SessionSinks {
    LogSink log = report_log;
    std::function<void(std::string_view)> output = print;
};

class Session {
public:
    explicit Session(const SessionArguments &arguments, SessionSinks sinks = {});
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Reads the application and finds the plug-in. False, after a message for each fault, when that cannot be.
    bool load();

    // Runs the application's scripts. False, after a message, when the plug-in refused; a script's failure is not that.
    bool start();

    Application &app() { return *app_; } // only after load()

    // Loads and starts the application anew, then ends the old one. False, after messages, when that cannot be; the old
    // one is as it was then.
    bool reload();

    // Ends the script that runs, the application's own at its start too. For interruptible sessions. Fit for a signal
    // handler.
    void interrupt() noexcept;

    // Ends the application, and reports the errors that the log level kept from the log.
    void stop();

    // After stop(): `failed` when anything in Lua failed, or with `strict` when a warning was logged.
    ExitStatus verdict(bool strict) const;

private:
    std::unique_ptr<Application> open();
    bool start(Application &app);
    void report_unlogged_errors() const;

    const SessionArguments arguments_;
    const int level_; // least important one that is shown
    Watchdog watchdog_;
    const SessionSinks sinks_;
    std::unique_ptr<Application> app_;
    std::atomic<Application *> active_ = nullptr; // whose scripts run when any do
    std::size_t host_warnings_ = 0;               // in lines that no application wrote
};

} // namespace kelhost
