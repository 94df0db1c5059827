// run.cpp: `kel run`: starts an application, then runs what the command line adds to it: scripts, code, events.
#include "commands.h"
#include "output.h"
#include "plugin_path.h"
#include "readable.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <kelhost/application.h>
#include <kelhost/closest_name.h>

namespace kelhost {

namespace {

constexpr const char *footer =
    R"(Scripts run first, then pieces of code, then events, each in the order given; after each one, waiting events
are delivered. A failure is reported and the rest is run all the same.

Log levels, most important first: always, error, warning, info, event1, action, diag1, diag2, event2, trace1, trace2.

Examples:
  kel run examples/thermostat
  kel run examples/thermostat --event press:climate.target.warmer --event press:climate.mode.cool
  kel run examples/thermostat --script examples/thermostat/extra/look_around.lua
  kel run examples/thermostat --exec 'print(keldom.get_object("week.plan"))' --strict
  kel run examples/thermostat --log-level trace2 2>log.txt

Exit status: 0 success; 1 a script, a handler or a piece of code failed, or with --strict a warning was logged;
2 bad usage or bad input.)";

struct Arguments {
    std::string path;
    std::vector<std::string> scripts;
    std::vector<std::string> code;
    std::vector<std::string> events;
    std::string log_level = "warning";
    std::string plugin;
    bool strict = false;
};

struct Event {
    std::string name;
    std::string target; // "" for nobody in particular
};

Event parse_event(const std::string &text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) return {text, {}};
    return {text.substr(0, colon), text.substr(colon + 1)};
}

std::string check_event(const std::string &text) {
    const bool complete = !text.empty() && text.front() != ':' && text.back() != ':';
    return complete ? std::string() : "expected NAME or NAME:TARGET, found \"" + text + "\"";
}

std::string check_log_level(const std::string &text) {
    if (log_level_from_name(text)) return {};
    std::string names;
    for (int level = KL_LOG_ALWAYS; level <= KL_LOG_TRACE2; ++level) {
        if (!names.empty()) names += ", ";
        names += log_level_name(level);
    }
    return "no log level \"" + text + "\"; there are " + names;
}

// Offers the names of all objects that a script or an event can name now, made by scripts or not.
void offer_objects(const Application &app, ClosestName &closest) {
    for (const ScreenDescription &screen : app.description().screens) closest.offer(screen.name);
    std::string last;
    for (const std::string &key : app.keys()) {
        std::string owner = key.substr(0, std::min(key.rfind('.'), key.size()));
        if (owner == key || owner == last || app.find(owner) == nullptr) continue;
        closest.offer(owner);
        last = std::move(owner);
    }
}

class Run {
public:
    explicit Run(const Arguments &arguments)
        : arguments_(arguments), level_(log_level_from_name(arguments.log_level).value_or(KL_LOG_WARNING)) {}

    ExitStatus execute() {
        if (!load()) return bad_input;
        set_host_log_sink([this](const LogEntry &entry) { log_of_host(entry); });
        const ExitStatus status = run();
        app_->stop();
        set_host_log_sink({});
        report_unlogged_errors();
        return status == succeeded ? verdict() : status;
    }

private:
    // Names all bad input at once.
    bool load() {
        const PluginSearch search = find_plugin(arguments_.plugin);
        Options options;
        options.log_level = level_;
        options.log = report_log;
        options.output = print;
        if (search.plugin) options.plugins.push_back(*search.plugin);
        Diagnostics faults;
        app_ = Application::load(arguments_.path, std::move(options), faults);
        if (app_ == nullptr) report_faults(faults, faults.empty() ? arguments_.path : faults.front().file);
        if (!search.plugin) report_error(explain(search));
        return scripts_are_readable() && app_ != nullptr && search.plugin.has_value();
    }

    bool scripts_are_readable() const {
        bool readable = true;
        for (const std::string &script : arguments_.scripts) {
            const std::string fault = why_unreadable(script);
            if (fault.empty()) continue;
            report_error(std::string("script ").append(script).append(": ").append(fault));
            readable = false;
        }
        return readable;
    }

    ExitStatus run() {
        if (app_->start() == StartResult::plugin_failed) {
            report_error(app_->start_failure());
            return bad_input;
        }
        for (const std::string &script : arguments_.scripts) {
            app_->run_script(script);
            app_->pump();
        }
        for (std::size_t i = 0; i < arguments_.code.size(); ++i) {
            app_->run_code(arguments_.code[i], code_name(i));
            app_->pump();
        }
        for (const std::string &event : arguments_.events)
            if (!send(parse_event(event))) return bad_input;
        return succeeded;
    }

    // What stands before the line number in messages about a piece of code.
    std::string code_name(std::size_t index) const {
        return arguments_.code.size() == 1 ? "--exec" : "--exec[" + std::to_string(index + 1) + "]";
    }

    bool send(const Event &event) {
        if (!event.target.empty() && !exists(event.target)) {
            report_error(unknown_target(event));
            return false;
        }
        if (!has_handler(event)) report_note("no handler is called for event " + in_words(event));
        app_->queue_event(event.name, event.target);
        app_->pump();
        return true;
    }

    bool exists(const std::string &target) const {
        return app_->find(target) != nullptr || app_->variable(target).has_value();
    }

    bool has_handler(const Event &event) const {
        const auto &handlers = app_->description().handlers;
        return std::any_of(handlers.begin(), handlers.end(), [&event](const HandlerDescription &handler) {
            return handler.event == event.name && (handler.target.empty() || handler.target == event.target);
        });
    }

    static std::string in_words(const Event &event) {
        return event.target.empty() ? "\"" + event.name + "\"" : "\"" + event.name + "\" on " + event.target;
    }

    std::string unknown_target(const Event &event) const {
        ClosestName closest(event.target);
        offer_objects(*app_, closest);
        return "event " + in_words(event) + ": there is no object of that name"
               + (closest.found().empty() ? "" : "; did you mean " + closest.found() + "?");
    }

    // Lines that no application wrote pass the same level and count as warnings of this run.
    void log_of_host(const LogEntry &entry) {
        if (entry.level == KL_LOG_ERROR || entry.level == KL_LOG_WARNING) ++host_warnings_;
        if (entry.level <= level_) report_log(entry);
    }

    // A level above errors silences the log, but never the reason for an exit status.
    void report_unlogged_errors() const {
        if (level_ >= KL_LOG_ERROR) return;
        for (const ScriptError &error : app_->script_errors())
            report_error(error.traceback.empty() ? error.message : error.message + "\n" + error.traceback);
    }

    ExitStatus verdict() const {
        if (!app_->script_errors().empty()) return failed;
        const std::size_t warnings = app_->warnings() + host_warnings_;
        if (!arguments_.strict || warnings == 0) return succeeded;
        report_error(counted(warnings, "warning") + " logged, and --strict allows none");
        return failed;
    }

    const Arguments &arguments_;
    const int level_; // least important one that is shown
    std::unique_ptr<Application> app_;
    std::size_t host_warnings_ = 0;
};

// An option that can be given several times, with one value each time.
CLI::Option *add_repeated(CLI::App &parser, const std::string &name, std::vector<std::string> &values,
                          const std::string &help) {
    return parser.add_option(name, values, help)->type_size(1)->allow_extra_args(false);
}

} // namespace

Command add_run_command(CLI::App &tool) {
    CLI::App *parser = tool.add_subcommand("run", "Run an application: its scripts, then what the options add");
    const auto arguments = std::make_shared<Arguments>();
    parser->add_option("APP", arguments->path, "Application file, or the folder that holds it as app.json")
        ->required()
        ->type_name("PATH");
    add_repeated(*parser, "--script", arguments->scripts, "Run a Lua file; may be given again")->type_name("FILE");
    add_repeated(*parser, "--exec", arguments->code, "Run a piece of Lua code; may be given again")->type_name("CODE");
    add_repeated(*parser, "--event", arguments->events,
                 "Send an event, to an object if one is named; may be given again")
        ->type_name("NAME[:TARGET]")
        ->check(CLI::Validator(check_event, ""));
    parser->add_option("--log-level", arguments->log_level, "Show log lines down to this level (default warning)")
        ->type_name("LEVEL")
        ->check(CLI::Validator(check_log_level, ""));
    parser->add_flag("--strict", arguments->strict, "Fail when a warning is logged");
    parser->add_option("--plugin", arguments->plugin, "The keldom plug-in, instead of the one near the tool")
        ->type_name("FILE");
    parser->footer(footer);
    return {parser, [arguments] { return Run(*arguments).execute(); }};
}

} // namespace kelhost
