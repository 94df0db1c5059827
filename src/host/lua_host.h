// lua_host.h: the Lua state of one application: libraries, sandbox, limits, and the calls from the host into scripts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <lua.hpp>

#include <kelhost/application.h>

namespace kelhost {

class LuaHost {
public:
    explicit LuaHost(Runtime &runtime);
    ~LuaHost();
    LuaHost(const LuaHost &) = delete;
    LuaHost &operator=(const LuaHost &) = delete;

    // Makes the state with the sandbox's libraries, the `kel` module and print. False when memory is out.
    bool open();
    void close();
    lua_State *state() noexcept { return state_; }

    // The runtime that owns a state, in its coroutines too; null for a foreign state. Never raises.
    static Runtime *runtime_of(lua_State *L) noexcept;

    // Each runs a chunk or function in protected mode: an error is logged with its traceback and remembered, and hold
    // brackets that the script left open are released. False when it failed.
    bool run_file(const std::string &file);
    bool run_code(std::string_view code, const std::string &chunk_name);
    bool call_handler(const std::string &function, const kl_event_t &event);

    // The compiler's message for a piece of code; empty when it compiles.
    static std::string syntax_error(std::string_view code, const std::string &chunk_name);

    const std::vector<ScriptError> &errors() const noexcept { return errors_; }

private:
    Runtime &runtime_;
    lua_State *state_ = nullptr;
    std::vector<ScriptError> errors_;
};

} // namespace kelhost
