// application.cpp: the host's public face over the runtime.
#include <kelhost/application.h>

#include <charconv>
#include <utility>

#include "app_file.h"
#include "file.h"
#include "runtime.h"
#include "sandbox.h"
#include "validate.h"

namespace kelhost {

namespace {

// Splits the compiler's "script:12: what" for a chunk that is called "script".
Diagnostic to_diagnostic(const std::string &file, std::string_view message) {
    Diagnostic diagnostic{.file = file, .line = 0, .column = 0, .path = {}, .message = std::string(message)};
    constexpr std::string_view start = "script:";
    if (!message.starts_with(start)) return diagnostic;
    const char *const end = message.data() + message.size();
    const auto [rest, fault] = std::from_chars(message.data() + start.size(), end, diagnostic.line);
    constexpr std::string_view separator = ": ";
    const std::string_view text(rest, static_cast<std::size_t>(end - rest));
    if (fault == std::errc() && text.starts_with(separator)) diagnostic.message = text.substr(separator.size());
    return diagnostic;
}

// The compiler's message for a script's code; empty when it may be run.
std::string fault_of(const std::string &code, const Sandbox &sandbox) {
    if (is_bytecode(code)) return sandbox.bytecode ? std::string() : std::string(bytecode_refused);
    return LuaHost::syntax_error(code, "script");
}

} // namespace

Application::Application(std::unique_ptr<Runtime> runtime) : runtime_(std::move(runtime)) {}

Application::~Application() = default;

std::unique_ptr<Application> Application::load(const std::string &path, Options options, Diagnostics &faults) {
    const std::size_t faults_before = faults.size();
    const std::optional<ApplicationDescription> description = read_application_file(path, faults);
    if (!description) return nullptr;
    validate(*description, faults);
    if (faults.size() != faults_before) return nullptr;
    return std::unique_ptr<Application>(new Application(std::make_unique<Runtime>(*description, std::move(options))));
}

std::unique_ptr<Application> Application::create(const ApplicationDescription &description, Options options,
                                                 Diagnostics &faults) {
    const std::size_t faults_before = faults.size();
    validate(description, faults);
    if (faults.size() != faults_before) return nullptr;
    return std::unique_ptr<Application>(new Application(std::make_unique<Runtime>(description, std::move(options))));
}

// ---- Running ----

StartResult Application::start() { return runtime_->start(); }

const std::string &Application::start_failure() const noexcept { return runtime_->start_failure; }

bool Application::run_script(const std::string &file) {
    if (!runtime_->is_running()) return false;
    const Runtime::Use use(*runtime_);
    return runtime_->lua.run_file(file, file);
}

bool Application::run_code(std::string_view code, const std::string &chunk_name) {
    if (!runtime_->is_running()) return false;
    const Runtime::Use use(*runtime_);
    return runtime_->lua.run_code(code, chunk_name);
}

bool Application::call(int (*function)(lua_State *L), void *argument, const std::string &name) {
    if (!runtime_->is_running()) return false;
    const Runtime::Use use(*runtime_);
    return runtime_->lua.call(function, argument, name);
}

void Application::interrupt() noexcept { runtime_->interrupt(); }

Diagnostics Application::check_scripts() const {
    Diagnostics found;
    for (const std::string &script : runtime_->description.scripts) {
        const std::string path = join_path(runtime_->description.folder, script);
        std::string why;
        const std::optional<std::string> code = read_file(path, why);
        const std::string message = code ? fault_of(*code, runtime_->options.sandbox) : "Cannot read script: " + why;
        if (!message.empty()) found.push_back(to_diagnostic(path, message));
    }
    return found;
}

void Application::queue_event(const std::string &name, const std::string &target) {
    if (!runtime_->stopped) runtime_->io.queue(name, target);
}

void Application::trigger_event(const std::string &name, const std::string &target) {
    if (!runtime_->is_running()) return;
    const Runtime::Use use(*runtime_);
    runtime_->io.trigger(name, target);
}

std::size_t Application::pump() {
    if (!runtime_->is_running()) return 0;
    const Runtime::Use use(*runtime_);
    const std::size_t delivered = runtime_->io.pump();
    if (!runtime_->lua.running()) runtime_->model.reclaim();
    return delivered;
}

void Application::stop() { runtime_->stop(); }

// ---- Looking inside ----

const ApplicationDescription &Application::description() const noexcept { return runtime_->description; }

kl_application_t *Application::record() noexcept { return &runtime_->record; }

lua_State *Application::lua() noexcept { return runtime_->lua.state(); }

const std::vector<ScriptError> &Application::script_errors() const noexcept { return runtime_->lua.errors(); }

std::size_t Application::warnings() const noexcept { return runtime_->log.warnings(); }

int Application::hold_depth() const noexcept { return runtime_->data.hold_depth(); }

std::optional<Value> Application::variable(std::string_view key) const {
    const DataManager::Variable *const found = runtime_->data.find(key);
    return found != nullptr ? std::optional(found->value) : std::nullopt;
}

std::optional<DataType> Application::variable_type(std::string_view key) const {
    const DataManager::Variable *const found = runtime_->data.find(key);
    return found != nullptr ? std::optional(found->type) : std::nullopt;
}

std::vector<std::string> Application::keys(std::string_view prefix) const { return runtime_->data.keys(prefix); }

bool Application::set_variable(std::string_view key, const Value &value) {
    return !runtime_->stopped && runtime_->data.write(key, to_input(value)) != WriteResult::refused;
}

kl_object_t *Application::find(std::string_view qualified_name) const { return runtime_->model.find(qualified_name); }

const DrawHints *Application::draw_hints(const kl_object_t *object) const { return runtime_->model.draw_hints(object); }

} // namespace kelhost
