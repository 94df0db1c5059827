// session.cpp: from the command line's words to a running application and back to an exit status.
#include "session.h"

#include "plugin_path.h"

#include <cstdint>
#include <limits>
#include <utility>

namespace kelhost {

Session::Session(const SessionArguments &arguments, SessionSinks sinks)
    : arguments_(arguments), level_(log_level_from_name(arguments.log_level).value_or(KL_LOG_WARNING)),
      watchdog_(arguments.timeout), sinks_(std::move(sinks)) {
    set_host_log_sink([this](const LogEntry &entry) {
        if (entry.level == KL_LOG_ERROR || entry.level == KL_LOG_WARNING) ++host_warnings_;
        if (entry.level <= level_) report_log(entry);
    });
}

Session::~Session() {
    app_.reset();
    set_host_log_sink({});
}

bool Session::load() {
    app_ = open();
    return app_ != nullptr;
}

// Null, after a message for each fault, when the application or the plug-in cannot be had.
std::unique_ptr<Application> Session::open() {
    const PluginSearch search = find_plugin(arguments_.plugin);
    Options options;
    options.log_level = level_;
    options.log = sinks_.log;
    options.output = sinks_.output;
    options.limits = arguments_.limits;
    options.activity = [this](std::string_view what) noexcept { watchdog_.tell(what); };
    if (search.plugin) options.plugins.push_back(*search.plugin);
    if (arguments_.interruptible && options.limits.instructions == 0)
        options.limits.instructions = std::numeric_limits<std::uint64_t>::max(); // so that something checks
    Diagnostics faults;
    std::unique_ptr<Application> app = Application::load(arguments_.path, std::move(options), faults);
    if (app == nullptr) report_faults(faults, faults.empty() ? arguments_.path : faults.front().file);
    if (!search.plugin) report_error(explain(search));
    return search.plugin ? std::move(app) : nullptr;
}

bool Session::start() { return start(*app_); }

bool Session::start(Application &app) {
    active_ = &app;
    if (app.start() != StartResult::plugin_failed) return true;
    active_ = app_.get();
    report_error(app.start_failure());
    return false;
}

bool Session::reload() {
    std::unique_ptr<Application> fresh = open();
    if (fresh == nullptr || !start(*fresh)) return false;
    stop();
    app_ = std::move(fresh);
    return true;
}

void Session::interrupt() noexcept {
    if (Application *const app = active_) app->interrupt();
}

void Session::stop() {
    app_->stop();
    report_unlogged_errors();
}

ExitStatus Session::verdict(bool strict) const {
    if (!app_->script_errors().empty()) return failed;
    const std::size_t warnings = app_->warnings() + host_warnings_;
    if (!strict || warnings == 0) return succeeded;
    report_error(counted(warnings, "warning") + " logged, and --strict allows none");
    return failed;
}

// A level above errors silences the log, but never the reason for an exit status.
void Session::report_unlogged_errors() const {
    if (level_ >= KL_LOG_ERROR) return;
    for (const ScriptError &error : app_->script_errors())
        report_error(error.traceback.empty() ? error.message : error.message + "\n" + error.traceback);
}

} // namespace kelhost
