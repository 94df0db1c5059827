// script_program.h: what an input of the script fuzzer stands for: pieces of Lua code, and what the host does between
// them.
#pragma once

#include <string>
#include <vector>

#include "fuzzer.h"

namespace fuzz {

// How far scripts reach the metatables of handles.
enum class Metatables : std::uint8_t {
    closed,   // as in the default sandbox
    readable, // metamethods can be called by hand
    writable  // their fields and the chains can be changed, but for finalizers
};

struct Step {
    enum class Kind : std::uint8_t { code, pump, queue, trigger, write, collect, fail_allocation };
    Kind kind = Kind::code;
    std::string text; // code: Lua; queue, trigger: the event's target; write: the variable's key
    int number = 0;   // write: the value; fail_allocation: which request of the next code fails
};

struct ScriptProgram {
    Metatables metatables = Metatables::closed;
    bool errors_return = false; // kl_lua_error
    bool little_memory = false; // the Lua state has hardly more than it starts with
    std::vector<Step> steps;
};

ScriptProgram decode_script(Input input);
std::string to_text(const ScriptProgram &program);

// The methods that programs call, with blanks between them.
std::string method_names();

} // namespace fuzz
