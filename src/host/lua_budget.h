// lua_budget.h: bounds what one call from the host into Lua may use: memory through the state's allocator, instructions
// through a hook; and, where Lua does not see to it, the C stack.
#pragma once

#include <csignal>
#include <cstddef>
#include <cstdint>

#include <lua.hpp>

#include <kelhost/options.h>

namespace kelhost {

class LuaBudget {
public:
    explicit LuaBudget(const Limits &limits) noexcept : limits_(limits) {}
    LuaBudget(const LuaBudget &) = delete;
    LuaBudget &operator=(const LuaBudget &) = delete;

    // Makes a state that allocates through this object, which must outlive it. Null when memory is out.
    lua_State *new_state() noexcept;

    // [-0, +0] Watches the state and every coroutine that scripts make in it. After the libraries are open. May raise.
    void watch(lua_State *L);

    // Bracket a call into Lua that is not inside another one. Outside the bracket nothing is bounded, so that the
    // host's own use of the state does not fail. begin: L is the state's main thread; the memory bound is lifted at
    // first.
    void begin(lua_State *L) noexcept;
    void end() noexcept { running_ = false; }

    // Lets the call that is under way end at its next check, as if its instructions were spent. Where these are not
    // bounded nothing checks. Calls that begin later end so too, until it is forgotten. Fit for a signal handler.
    void interrupt() noexcept { interrupted_ = 1; }
    void forget_interruption() noexcept { interrupted_ = 0; }

    // Bracket work that must not fail for the bound itself: preparing a call, describing an error.
    void lift_memory_bound() noexcept { lifted_ = true; }
    void restore_memory_bound() noexcept { lifted_ = false; }

    // Whether so much of the bound is in use that garbage should be collected before a call: Lua 5.1 fails an
    // allocation without trying that first.
    bool needs_room() const noexcept { return limits_.memory_bytes != 0 && memory_ > limits_.memory_bytes / 2; }

    // Whether the bound, rather than the machine, refused memory since begin().
    bool refused_memory() const noexcept { return refused_memory_; }

    std::size_t memory_bytes() const noexcept { return memory_; } // in use now

private:
    static void *allocate(void *self, void *block, std::size_t old_bytes, std::size_t new_bytes);
    static void on_hook(lua_State *L, lua_Debug *reason);
    static int make_watched_coroutine(lua_State *L);
    static int guarded_xpcall(lua_State *L);
    static int guarded_message_handler(lua_State *L);
    void wrap_field(lua_State *L, const char *name, lua_CFunction wrapper);
    void charge(lua_State *L, std::uint64_t instructions, int level);
    bool exhausted() const noexcept { return interrupted_ != 0 || instructions_ >= limits_.instructions; }
    bool spent() const noexcept { return running_ && exhausted(); }
    void push_reason(lua_State *L) const;
    void set_hook(lua_State *L, int period) const noexcept;
    void check_c_stack(lua_State *L) const;

    Limits limits_;
    std::size_t memory_ = 0;
    std::uint64_t instructions_ = 0;
    std::uintptr_t c_stack_begin_ = 0; // where the call into Lua is
    volatile std::sig_atomic_t interrupted_ = 0;
    bool running_ = false;
    bool lifted_ = false;
    bool refused_memory_ = false;
};

} // namespace kelhost
