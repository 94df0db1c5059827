// options.h: how an application is to be run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <kel/kel.h>

#include <kelhost/log.h>

namespace kelhost {

// What scripts may reach beyond the safe part of Lua's libraries. All closed by default.
struct Sandbox {
    bool io = false;         // the io library
    bool os = false;         // os.execute, os.exit, os.getenv, os.remove, os.rename, os.tmpname, os.setlocale
    bool modules = false;    // require, the package library with loadlib; what it finds may be bytecode or native code
    bool debug = false;      // the debug library, with which a script can undo its limits; getmetatable of a userdata
    bool newproxy = false;   // newproxy, and getmetatable of a userdata
    bool bytecode = false;   // precompiled chunks for load, loadstring, loadfile and dofile
    bool load_files = false; // loadfile and dofile
};

// Bounds on one call from the host into Lua (a script or a handler). 0 is no bound.
struct Limits {
    std::uint64_t instructions = 0; // of Lua's virtual machine, checked every thousand. One step of a library function,
                                    // such as a long string.find, counts nothing, nor do finalizers (__gc).
    std::size_t memory_bytes = 0;   // of the Lua state as a whole
};

// What kl_lua_error does. Engines differ; plug-ins must bear both.
enum class ErrorMode : std::uint8_t {
    unwinds, // raises a Lua error, as lua_error does
    returns  // logs the message at KL_LOG_ERROR and returns to the plug-in
};

// A plug-in to load: a shared object's path, or an entry point that is linked into the program.
struct Plugin {
    std::string path;
    int (*entry)(kl_plugin_state_t *state) = nullptr; // used when not null
    std::string args;                                 // passed to the plug-in's init
};

struct Options {
    Sandbox sandbox;
    Limits limits;
    ErrorMode error_mode = ErrorMode::unwinds;
    std::vector<Plugin> plugins;
    int log_level = KL_LOG_WARNING;               // lines above this level are dropped
    LogSink log;                                  // empty: standard error, "warning: text"
    std::function<void(std::string_view)> output; // what scripts print, line ends included; empty: standard output
    // Told what the application is at whenever that changes, such as `handler "start" for "kel.started"`, and "" when
    // it is at nothing any more. Must not throw.
    std::function<void(std::string_view)> activity;
};

} // namespace kelhost
