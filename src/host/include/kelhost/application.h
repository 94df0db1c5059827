// application.h: a running application.
//
//     kelhost::Options options;
//     options.plugins = {{.path = "luakeldom.so"}};
//     kelhost::Diagnostics faults;
//     auto app = kelhost::Application::load("examples/thermostat", std::move(options), faults);
//     if (app && app->start() == kelhost::StartResult::started) {
//         app->queue_event("press", "settings.ok");
//         app->pump();
//     }
//
// Applications are independent of each other; one thread uses an application at a time.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <kelhost/description.h>
#include <kelhost/diagnostic.h>
#include <kelhost/options.h>

struct lua_State;

namespace kelhost {

struct Runtime;

// A script, handler or piece of code that failed.
struct ScriptError {
    std::string message;   // "scripts/home.lua:12: what went wrong"
    std::string traceback; // Lua's: "stack traceback:", then one level a line; empty when no script ran
};

enum class StartResult : std::uint8_t {
    started,
    plugin_failed, // a plug-in could not be loaded or refused to start; start_failure() says why. Nothing was run.
    script_failed  // a script failed, see script_errors(); the application runs all the same
};

class Application {
public:
    // Reads and checks an application file. path: the file, or the folder that holds it as app.json.
    // Returns null with every fault that was found in `faults`; nothing is kept then. Scripts are not run yet.
    static std::unique_ptr<Application> load(const std::string &path, Options options, Diagnostics &faults);

    // The same from a description made in memory.
    static std::unique_ptr<Application> create(const ApplicationDescription &description, Options options,
                                               Diagnostics &faults);

    ~Application(); // stops
    Application(const Application &) = delete;
    Application &operator=(const Application &) = delete;

    // Loads the plug-ins, makes the Lua state, delivers "kel.internalinit", runs the scripts in order, subscribes the
    // handlers, queues "kel.started" and pumps. To be called once: any further call does nothing and gives
    // plugin_failed.
    StartResult start();

    // Why start() gave plugin_failed; empty otherwise.
    const std::string &start_failure() const noexcept;

    // Run a file or a piece of code in the Lua state. chunk_name stands before the line in messages. False when it
    // failed: it is logged and appended to script_errors(). Only after start(); before it and after stop() they do
    // nothing and are false.
    bool run_script(const std::string &file);
    bool run_code(std::string_view code, const std::string &chunk_name);

    // Calls a C function with `argument`, a light userdata, in the Lua state, under the same rules as a piece of code.
    // name: what messages call it.
    bool call(int (*function)(lua_State *L), void *argument, const std::string &name);

    // Ends the call that is under way: start(), pump() and so on. The script that runs, and any that would run next in
    // that call, fails with the error "interrupted"; it cannot go on by catching that. A script does not notice in the
    // midst of a library function, or without a bound on instructions (see Limits), however high: without one nothing
    // is checked. Events that wait are dropped with a warning, callbacks that wait stay: handlers that queue each other
    // end for good. Nothing happens when no call is under way. May be called in a signal handler.
    void interrupt() noexcept;

    // Compiles every script of the application without running it; what does not compile is a diagnostic with its line.
    Diagnostics check_scripts() const;

    // Queue an event, or deliver it at once. target: an object's qualified name, or "" for nobody in particular. What
    // is queued before start() is delivered by it; what is triggered before it, by nobody.
    void queue_event(const std::string &name, const std::string &target = {});
    void trigger_event(const std::string &name, const std::string &target = {});

    // Delivers waiting events, and those they bring about, until none waits. Returns how many were delivered.
    std::size_t pump();

    // Ends the application: plug-ins are told, the Lua state is closed, then the plug-ins go. Further calls do nothing.
    // What runs in the application (a script, a listener) cannot stop it: that is logged as an error and changes
    // nothing.
    void stop();

    // Looking inside.
    const ApplicationDescription &description() const noexcept;
    kl_application_t *record() noexcept; // as plug-ins see it
    lua_State *lua() noexcept;           // null before start() and after stop()
    const std::vector<ScriptError> &script_errors() const noexcept;
    std::size_t warnings() const noexcept; // lines logged at KL_LOG_WARNING and KL_LOG_ERROR, dropped ones included
    int hold_depth() const noexcept;       // open hold_change_listener brackets

    // Data variables by key, such as "main.ok.kld_x". keys() are sorted.
    std::optional<Value> variable(std::string_view key) const;
    std::optional<DataType> variable_type(std::string_view key) const;
    std::vector<std::string> keys(std::string_view prefix = {}) const;
    bool set_variable(std::string_view key, const Value &value); // false when refused; the log says why

    // Objects by qualified name; null when there is none. The hints of a cell are its template's.
    kl_object_t *find(std::string_view qualified_name) const;
    const DrawHints *draw_hints(const kl_object_t *object) const;

private:
    explicit Application(std::unique_ptr<Runtime> runtime);
    std::unique_ptr<Runtime> runtime_;
};

} // namespace kelhost
