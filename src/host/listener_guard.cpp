// listener_guard.cpp: calls an event listener so that neither a Lua error nor an exception of its own leaves it.
#include "listener_guard.h"

#include <cxxabi.h>

#include <lua.hpp>

#include "runtime.h"

namespace kelhost {

namespace {

// What lua_cpcall carries to a listener.
struct ListenerCall {
    io_listener_t listener;
    kl_io_mgr_t *mgr;
    kl_event_t *event;
    void *user_data;
    bool threw = false;

    // A Lua error goes past this, by a jump or, in LuaJIT, as an exception that is none of C++'s and has no type. An
    // exception of C++ must not pass through Lua.
    void call() {
        try {
            listener(mgr, event, user_data);
        } catch (...) {
            if (abi::__cxa_current_exception_type() == nullptr) throw;
            threw = true;
        }
    }

    static int body(lua_State *L) {
        static_cast<ListenerCall *>(lua_touserdata(L, 1))->call();
        return 0;
    }
};

} // namespace

void call_listener(void *runtime, io_listener_t listener, kl_io_mgr_t *mgr, kl_event_t *event, void *user_data) {
    auto &owner = *static_cast<Runtime *>(runtime);
    ListenerCall call{.listener = listener, .mgr = mgr, .event = event, .user_data = user_data};
    lua_State *const L = owner.lua.state();
    const int height = lua_gettop(L);
    const char *why = nullptr;
    if (lua_cpcall(L, ListenerCall::body, &call) != 0)
        why = lua_isstring(L, -1) != 0 ? lua_tostring(L, -1) : luaL_typename(L, -1);
    else if (call.threw)
        why = "an exception";
    if (why != nullptr) owner.log.format(KL_LOG_ERROR, "A listener of event \"%s\" failed: %s", event->name, why);
    lua_settop(L, height);
}

} // namespace kelhost
