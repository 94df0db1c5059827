// plugin_session.h: an application in the recording host with the plug-in, on which actions are done for real.
#pragma once

#include <lua.hpp>

#include "recording_host.h"
#include "rehearsal.h"

class PluginSession {
public:
    PluginSession(const Description &description, bool errors_return);
    ~PluginSession();
    PluginSession(const PluginSession &) = delete;
    PluginSession &operator=(const PluginSession &) = delete;

    Outcome perform(const Action &action);

    // Names of handles that Lua has not collected yet.
    int live_names() const;

    // What else must not be, or nothing: lists left alive, holds left open, breaches of the contract.
    std::string complaint() const;

    // Ends the Lua state and the plug-in; what they leave behind, or nothing.
    std::string close();

private:
    void open_library(const char *name, lua_CFunction open);
    Outcome call(const Action &action);
    void host_acts(const Action &action);
    void arrange(const Circumstances &circumstances);
    void heal();
    void push_function(const Action &action);
    void push(const Value &value);
    void push_foreign(int which);
    void collect();
    void keep_handles(int index);
    void keep(int index);
    std::string text_of(int index);
    std::string handle_text(int index);
    std::string table_text(int index);

    lua_State *L = nullptr;
    kl_plugin_state_t plugin_{};
    std::vector<void *> records_; // of the description's objects
    int kept_ = 0;                // handles in the registry's table "kept"
    bool list_refused_ = false;   // in the last call
};
