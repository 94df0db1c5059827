// lua_host.h: the Lua state of one application, and the calls from the host into scripts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <lua.hpp>

#include <kelhost/application.h>

#include "lua_budget.h"

namespace kelhost {

class LuaHost {
public:
    explicit LuaHost(Runtime &runtime);
    ~LuaHost(); // close()
    LuaHost(const LuaHost &) = delete;
    LuaHost &operator=(const LuaHost &) = delete;

    // Makes the state with the sandbox's libraries, the `kel` module and print. False when memory is out.
    bool open();
    // Finalizers that run here still reach the runtime.
    void close() noexcept;
    lua_State *state() const noexcept { return state_; } // null unless open

    // The runtime that owns a state, in its coroutines too; null for a foreign state. Never raises.
    static Runtime *runtime_of(lua_State *L) noexcept;

    // Each runs a chunk or function in protected mode: an error is logged with its traceback and remembered, and hold
    // brackets that the script left open are released. False when it failed. The state must be open.
    // run_file: a text or, where the sandbox allows it, precompiled file. name: what messages call it.
    bool run_file(const std::string &path, const std::string &name);
    // chunk_name stands before the line in messages.
    bool run_code(std::string_view code, const std::string &chunk_name);
    // Calls a C function with a light userdata. name: what messages call it.
    bool call(lua_CFunction function, void *argument, const std::string &name);
    // Calls the handler's function, looked up now, with {name = ..., target = ...}.
    bool call_handler(const HandlerDescription &handler, const kl_event_t &event);

    // Ends the call into scripts that is under way, see Application::interrupt().
    void interrupt() noexcept { budget_.interrupt(); }
    void forget_interruption() noexcept { budget_.forget_interruption(); }

    // Whether a call into scripts is under way.
    bool running() const noexcept { return depth_ > 0; }

    // The compiler's message for a piece of code, "chunk_name:line: ..."; empty when it compiles.
    static std::string syntax_error(std::string_view code, const std::string &chunk_name);

    const std::vector<ScriptError> &errors() const noexcept { return errors_; }

private:
    struct Job;
    static int set_up(lua_State *L);
    static int protect(lua_State *L);
    static int collect_traceback(lua_State *L);
    void make_room(lua_State *L, int collector);
    bool run_chunk(std::string_view code, const std::string &chunk_name);
    bool perform(Job &job);
    bool call_protected(Job &job) noexcept;
    void restore_holds(int depth) noexcept;
    void report(ScriptError error) noexcept;
    void log_error(const ScriptError &error) noexcept;
    void prepare_report() noexcept;

    Runtime &runtime_;
    LuaBudget budget_;
    lua_State *state_ = nullptr;
    int depth_ = 0;                   // calls into scripts, one inside the other
    std::vector<ScriptError> errors_; // with room for one more
    std::string memory_message_;      // "not enough memory"
};

} // namespace kelhost
