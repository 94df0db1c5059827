// lua_host.cpp: runs chunks and handlers so that no error of theirs takes the host down.
// Every call goes: perform (C++) -> protect (inside lua_cpcall) -> the job's body (inside lua_pcall with a message
// handler). What runs inside Lua holds no object with a destructor, as Lua raises errors by longjmp; the job outlives
// the call.
#include "lua_host.h"

#include <algorithm>
#include <cstdlib>

#include "file.h"
#include "kel_module.h"
#include "listener_guard.h"
#include "runtime.h"
#include "sandbox.h"

namespace kelhost {

namespace {

const char runtime_key = 0;   // its address is the registry key of the runtime
const char traceback_key = 0; // and of debug.traceback

constexpr char out_of_memory[] = "not enough memory";
constexpr char traceback_start[] = "stack traceback:";

void set_registry(lua_State *L, const char *key) { // [-1, +0]
    lua_pushlightuserdata(L, const_cast<char *>(key));
    lua_insert(L, -2);
    lua_rawset(L, LUA_REGISTRYINDEX);
}

void get_registry(lua_State *L, const char *key) noexcept { // [-0, +1]
    lua_pushlightuserdata(L, const_cast<char *>(key));
    lua_rawget(L, LUA_REGISTRYINDEX);
}

// Reached only by an error outside every protected call, of which the host makes none.
int panic(lua_State *L) {
    Runtime *const runtime = LuaHost::runtime_of(L);
    const char *const message = lua_tostring(L, -1);
    Log &log = runtime != nullptr ? runtime->log : host_log();
    log.format(KL_LOG_ERROR, "Unprotected Lua error: %s", message != nullptr ? message : "(no message)");
    std::abort();
}

// Assigns without an exception; a text that finds no memory stays empty.
void assign(std::string &text, const char *begin, std::size_t length) noexcept {
    try {
        text.assign(begin, length);
    } catch (...) {
        text.clear();
    }
}

// Whether a line of a traceback is a C function's that Lua knows no name of: LuaJIT gives an address instead.
bool is_nameless_frame(std::string_view line) noexcept {
    return line == "\n\t[C]: ?" || line.starts_with("\n\t[C]: at 0x");
}

// The host's own functions are at the bottom of the stack.
void remove_host_frames(std::string &traceback) noexcept {
    for (;;) {
        const std::size_t line = traceback.rfind('\n');
        if (line == std::string::npos || !is_nameless_frame(std::string_view(traceback).substr(line))) return;
        traceback.resize(line);
    }
}

// The first line of a script may be for the system's shell; its end stays, so that lines count as in the file.
std::string_view without_shell_line(std::string_view code) noexcept {
    if (!code.starts_with('#')) return code;
    const std::size_t end = code.find('\n');
    return end == std::string_view::npos ? std::string_view() : code.substr(end);
}

int collect_garbage(lua_State *L) {
    lua_gc(L, LUA_GCCOLLECT, 0);
    return 0;
}

// Gives the text, or nil when the value has no such method or the method failed.
int call_tostring_method(lua_State *L) {
    if (luaL_callmeta(L, 1, "__tostring") == 0) lua_pushnil(L);
    return 1;
}

} // namespace

// One protected call: what to run, and what became of it.
struct LuaHost::Job {
    LuaHost &host;
    lua_CFunction body; // gets the job as its argument
    // A chunk.
    std::string_view code{};
    const char *chunk_name = nullptr;
    // A C function.
    lua_CFunction callee = nullptr;
    void *callee_argument = nullptr;
    // A handler.
    const HandlerDescription *handler = nullptr;
    const kl_event_t *event = nullptr;

    bool failed = false;
    bool never_ran = false; // the failure has no place in a script that a traceback could show
    bool over_memory_limit = false;
    ScriptError error{};

    static Job &argument(lua_State *L) { return *static_cast<Job *>(lua_touserdata(L, 1)); }
    static int chunk_body(lua_State *L);
    static int function_body(lua_State *L);
    static int handler_body(lua_State *L);
    void find_cause(int status) noexcept;
    std::string in_words() const;
    void blame_memory_limit() noexcept;
    bool push_function(lua_State *L) const;
    int refuse_handler(lua_State *L);
    void describe_error(lua_State *L);
};

LuaHost::LuaHost(Runtime &runtime) : runtime_(runtime), budget_(runtime.options.limits) { prepare_report(); }

LuaHost::~LuaHost() { close(); }

// ---- The state ----

bool LuaHost::open() {
    state_ = budget_.new_state();
    if (state_ == nullptr) return false;
    lua_atpanic(state_, panic);
    if (lua_cpcall(state_, set_up, this) == 0) {
        runtime_.io.guard_listeners(call_listener, &runtime_);
        return true;
    }
    close();
    return false;
}

int LuaHost::set_up(lua_State *L) {
    auto &host = *static_cast<LuaHost *>(lua_touserdata(L, 1));
    lua_pushlightuserdata(L, &host.runtime_);
    set_registry(L, &runtime_key);
    push_traceback_function(L);
    set_registry(L, &traceback_key);
    open_libraries(L, host.runtime_.options.sandbox);
    open_kel_module(L);
    host.budget_.watch(L);
    return 0;
}

void LuaHost::close() noexcept {
    if (state_ == nullptr) return;
    runtime_.io.guard_listeners(nullptr, nullptr);
    lua_close(state_);
    state_ = nullptr;
}

Runtime *LuaHost::runtime_of(lua_State *L) noexcept {
    get_registry(L, &runtime_key);
    auto *const runtime = static_cast<Runtime *>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    return runtime;
}

// ---- What runs, in words ----

std::string LuaHost::Job::in_words() const {
    if (handler == nullptr)
        return (chunk_name[0] == '@' ? "script \"" : "code \"") + std::string(chunk_name + 1) + "\"";
    const std::string text = "handler \"" + handler->function + "\" for \"" + handler->event + "\"";
    return handler->target.empty() ? text : text + " of \"" + handler->target + "\"";
}

void LuaHost::Job::find_cause(int status) noexcept {
    if (status == LUA_ERRMEM && host.budget_.refused_memory()) over_memory_limit = true;
}

// Lua's own message, which stays when there is no memory for a better one, says neither what ran nor that there is a
// limit.
void LuaHost::Job::blame_memory_limit() noexcept {
    try {
        const std::size_t limit = host.runtime_.options.limits.memory_bytes;
        error.message = in_words() + ": memory limit of " + std::to_string(limit) + " bytes reached";
    } catch (...) {
        return;
    }
}

// ---- Inside Lua ----

int LuaHost::Job::chunk_body(lua_State *L) {
    Job &job = argument(L);
    job.never_ran = true;
    const int status = luaL_loadbuffer(L, job.code.data(), job.code.size(), job.chunk_name);
    job.find_cause(status);
    if (status != 0) return lua_error(L);
    job.never_ran = false;
    lua_call(L, 0, 0);
    return 0;
}

int LuaHost::Job::function_body(lua_State *L) {
    const Job &job = argument(L);
    lua_pushcfunction(L, job.callee);
    lua_pushlightuserdata(L, job.callee_argument);
    lua_call(L, 1, 0);
    return 0;
}

// [-0, +1] Pushes what the handler's function name stands for. False when it is no function.
bool LuaHost::Job::push_function(lua_State *L) const {
    const char *begin = handler->function.c_str();
    lua_pushvalue(L, LUA_GLOBALSINDEX);
    for (;;) {
        const std::string_view rest = begin;
        const std::size_t dot = rest.find('.');
        lua_pushlstring(L, begin, rest.substr(0, dot).size());
        lua_gettable(L, -2);
        lua_remove(L, -2);
        if (dot == std::string_view::npos) return lua_isfunction(L, -1);
        if (!lua_istable(L, -1)) return false;
        begin += dot + 1;
    }
}

int LuaHost::Job::refuse_handler(lua_State *L) {
    never_ran = true;
    const char *const found = luaL_typename(L, -1);
    const char *const name = handler->event.c_str();
    const char *const function = handler->function.c_str();
    if (handler->target.empty())
        lua_pushfstring(L, "handler for \"%s\": no function \"%s\", found %s", name, function, found);
    else
        lua_pushfstring(L, "handler for \"%s\" of \"%s\": no function \"%s\", found %s", name, handler->target.c_str(),
                        function, found);
    return lua_error(L);
}

int LuaHost::Job::handler_body(lua_State *L) {
    Job &job = argument(L);
    if (!job.push_function(L)) return job.refuse_handler(L);
    lua_createtable(L, 0, 2);
    lua_pushstring(L, job.event->name);
    lua_setfield(L, -2, "name");
    if (job.event->target != nullptr) {
        lua_pushstring(L, job.event->target);
        lua_setfield(L, -2, "target");
    }
    lua_call(L, 1, 0);
    return 0;
}

// The message handler. Upvalue: the job. The error object passes through as it is.
int LuaHost::collect_traceback(lua_State *L) {
    Job &job = *static_cast<Job *>(lua_touserdata(L, lua_upvalueindex(1)));
    if (job.never_ran) return 1;
    job.host.budget_.lift_memory_bound();
    get_registry(L, &traceback_key);
    lua_pushstring(L, "");
    lua_pushinteger(L, 2); // the level that raised the error
    lua_call(L, 2, 1);
    std::size_t length = 0;
    const char *text = lua_tolstring(L, -1, &length);
    if (*text == '\n') { // the end of the message's line
        ++text;
        --length;
    }
    assign(job.error.traceback, text, length);
    job.host.budget_.restore_memory_bound();
    lua_settop(L, 1);
    return 1;
}

// [-0, +0] Makes a message of the error object on top of the stack.
void LuaHost::Job::describe_error(lua_State *L) {
    const int object = lua_gettop(L);
    const int type = lua_type(L, object);
    host.budget_.lift_memory_bound();
    if (!lua_isstring(L, object)) {
        lua_pushcfunction(L, call_tostring_method);
        lua_pushvalue(L, object);
        host.budget_.restore_memory_bound();
        if (lua_pcall(L, 1, 1, 0) != 0) lua_settop(L, object); // what the method failed with is another story
        host.budget_.lift_memory_bound();
    }
    if (!lua_isstring(L, -1)) lua_pushfstring(L, "(error object is a %s value)", lua_typename(L, type));
    if (lua_objlen(L, -1) == 0) lua_pushstring(L, "(error message is empty)");
    std::size_t length = 0;
    const char *const text = lua_tolstring(L, -1, &length);
    assign(error.message, text, length);
    host.budget_.restore_memory_bound();
    lua_settop(L, object);
}

// [-0, +0] collector: the place of collect_garbage on the stack; to make it now may be too late. A finalizer that fails
// is not the fault of the script that is about to run.
void LuaHost::make_room(lua_State *L, int collector) {
    lua_pushvalue(L, collector);
    if (lua_pcall(L, 0, 0, 0) == 0) return;
    const char *const message = lua_tostring(L, -1);
    runtime_.log.format(KL_LOG_WARNING, "A finalizer failed: %s", message != nullptr ? message : luaL_typename(L, -1));
    lua_pop(L, 1);
}

int LuaHost::protect(lua_State *L) {
    Job &job = Job::argument(L);
    lua_pushcfunction(L, collect_garbage);
    const int collector = lua_gettop(L);
    if (job.host.budget_.needs_room()) job.host.make_room(L, collector);
    lua_pushlightuserdata(L, &job);
    lua_pushcclosure(L, collect_traceback, 1);
    lua_pushcfunction(L, job.body);
    lua_pushlightuserdata(L, &job);
    job.host.budget_.restore_memory_bound();
    const int status = lua_pcall(L, 1, 0, collector + 1);
    job.failed = status != 0;
    job.find_cause(status);
    if (status == LUA_ERRMEM) job.host.make_room(L, collector); // what the script alone held is of no use any more
    if (job.failed) job.describe_error(L);
    return 0;
}

// ---- Around Lua ----

bool LuaHost::call_protected(Job &job) noexcept {
    if (lua_cpcall(state_, protect, &job) != 0) { // memory ran out around the script, or a finalizer failed
        job.failed = true;
        std::size_t length = 0;
        const char *const text = lua_tolstring(state_, -1, &length);
        if (text != nullptr && job.error.message.empty()) assign(job.error.message, text, length);
        lua_pop(state_, 1);
    }
    return !job.failed;
}

bool LuaHost::perform(Job &job) {
    const Runtime::Activity activity(runtime_, runtime_.options.activity ? job.in_words() : std::string());
    const int holds = runtime_.data.hold_depth();
    if (depth_ == 0 && runtime_.uses == 0) forget_interruption(); // of a call that is over
    if (depth_++ == 0) budget_.begin(state_);
    const bool succeeded = call_protected(job);
    if (--depth_ == 0) budget_.end();
    if (job.over_memory_limit) job.blame_memory_limit();
    if (!succeeded) report(std::move(job.error));
    restore_holds(holds);
    if (depth_ == 0) runtime_.model.reclaim();
    return succeeded;
}

void LuaHost::report(ScriptError error) noexcept {
    if (error.message.empty()) error.message.swap(memory_message_);
    remove_host_frames(error.traceback);
    if (error.traceback == traceback_start) error.traceback.clear();
    log_error(error);
    if (errors_.size() < errors_.capacity()) errors_.push_back(std::move(error));
    prepare_report();
}

// With the traceback on further lines, or without it where there is no memory to put them together.
void LuaHost::log_error(const ScriptError &error) noexcept {
    std::string_view text = error.message.empty() ? std::string_view(out_of_memory) : error.message;
    std::string with_traceback;
    try {
        if (!error.traceback.empty()) text = with_traceback = error.message + "\n" + error.traceback;
    } catch (...) { // the message alone
    }
    runtime_.log.write(KL_LOG_ERROR, text);
}

// Makes what report() needs beforehand: when it is called there may be no memory. Without any now either, further
// errors are logged, and those that are remembered already tell that something failed.
void LuaHost::prepare_report() noexcept {
    constexpr std::size_t at_first = 8;
    try {
        if (memory_message_.empty()) memory_message_ = out_of_memory;
        if (errors_.size() == errors_.capacity()) errors_.reserve(std::max(at_first, 2 * errors_.size()));
    } catch (...) {
        return;
    }
}

void LuaHost::restore_holds(int depth) noexcept {
    DataManager &data = runtime_.data;
    const int open = data.hold_depth() - depth;
    if (open > 0) runtime_.log.format(KL_LOG_WARNING, "Script left %d change hold(s) open, released", open);
    for (int closed = open; closed < 0; ++closed) data.hold();
    try {
        data.restore_hold_depth(depth);
    } catch (...) {
        runtime_.log.write(KL_LOG_ERROR, out_of_memory);
    }
}

bool LuaHost::run_file(const std::string &path, const std::string &name) {
    std::string why;
    const std::optional<std::string> code = read_file(path, why);
    if (!code) {
        report({.message = "Cannot read script \"" + path + "\": " + why, .traceback = {}});
        return false;
    }
    return run_chunk(without_shell_line(*code), "@" + name);
}

bool LuaHost::run_code(std::string_view code, const std::string &chunk_name) {
    return run_chunk(code, "=" + chunk_name);
}

bool LuaHost::run_chunk(std::string_view code, const std::string &chunk_name) {
    if (!runtime_.options.sandbox.bytecode && is_bytecode(code)) {
        report({.message = chunk_name.substr(1) + ": " + bytecode_refused, .traceback = {}});
        return false;
    }
    Job job{.host = *this, .body = Job::chunk_body, .code = code, .chunk_name = chunk_name.c_str()};
    return perform(job);
}

bool LuaHost::call(lua_CFunction function, void *argument, const std::string &name) {
    const std::string chunk_name = "=" + name;
    Job job{.host = *this,
            .body = Job::function_body,
            .chunk_name = chunk_name.c_str(),
            .callee = function,
            .callee_argument = argument};
    return perform(job);
}

bool LuaHost::call_handler(const HandlerDescription &handler, const kl_event_t &event) {
    Job job{.host = *this, .body = Job::handler_body, .handler = &handler, .event = &event};
    return perform(job);
}

std::string LuaHost::syntax_error(std::string_view code, const std::string &chunk_name) {
    lua_State *const L = luaL_newstate();
    if (L == nullptr) return out_of_memory;
    const std::string name = "=" + chunk_name;
    const std::string_view text = without_shell_line(code);
    std::string message;
    if (luaL_loadbuffer(L, text.data(), text.size(), name.c_str()) != 0) message = lua_tostring(L, -1);
    lua_close(L);
    return message;
}

} // namespace kelhost
