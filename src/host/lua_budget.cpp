// lua_budget.cpp: accounts for a Lua state's memory and instructions, and ends scripts that go over their bounds.
// Entries that Lua calls hold no object with a destructor: Lua raises errors by longjmp.
#include "lua_budget.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace kelhost {

namespace {

constexpr int check_period = 1000;
// A coroutine's instructions count for themselves, so one that ends early is never checked. It is checked more often,
// and making one costs as much as what may go unseen.
constexpr int coroutine_check_period = 100;

// The place of the caller's frame on the C stack.
std::uintptr_t c_stack_place() noexcept { return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)); }

#if defined(LUAJIT_VERSION)
// Lua 5.1 ends a script that nests calls through C functions too deeply, such as a string.gsub in the function that it
// calls. LuaJIT lets it overflow the C stack, so each call is looked at. The bound is about what Lua 5.1 lets scripts
// use.
constexpr int watched_calls = LUA_MASKCALL;
#else
constexpr int watched_calls = 0;
#endif
constexpr std::uintptr_t most_c_stack_bytes = std::uintptr_t{2} * 1024 * 1024;

const char budget_key = 0; // its address is the registry key

LuaBudget *budget_of(lua_State *L) noexcept {
    lua_pushlightuserdata(L, const_cast<char *>(&budget_key));
    lua_rawget(L, LUA_REGISTRYINDEX);
    auto *budget = static_cast<LuaBudget *>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    return budget;
}

} // namespace

lua_State *LuaBudget::new_state() noexcept { return lua_newstate(allocate, this); }

void *LuaBudget::allocate(void *self, void *block, std::size_t old_bytes, std::size_t new_bytes) {
    auto &budget = *static_cast<LuaBudget *>(self);
    if (new_bytes == 0) {
        std::free(block);
        budget.memory_ -= old_bytes;
        return nullptr;
    }
    const std::size_t others = budget.memory_ - old_bytes;
    const std::size_t bound = budget.limits_.memory_bytes;
    const bool bounded = bound != 0 && budget.running_ && !budget.lifted_;
    if (bounded && new_bytes > old_bytes && (others > bound || new_bytes > bound - others)) {
        budget.refused_memory_ = true;
        return nullptr;
    }
    void *const grown = std::realloc(block, new_bytes);
    if (grown != nullptr) budget.memory_ = others + new_bytes;
    return grown;
}

void LuaBudget::watch(lua_State *L) {
    // Collected only when twice as much is in use, the state would need a bound twice as high as what scripts hold.
    if (limits_.memory_bytes != 0) lua_gc(L, LUA_GCSETPAUSE, 100);
    if (limits_.instructions == 0 && watched_calls == 0) return;
#if defined(LUAJIT_VERSION)
    luaJIT_setmode(L, 0, LUAJIT_MODE_ENGINE | LUAJIT_MODE_OFF); // compiled code calls no hook
#endif
    lua_pushlightuserdata(L, const_cast<char *>(&budget_key));
    lua_pushlightuserdata(L, this);
    lua_rawset(L, LUA_REGISTRYINDEX);
    set_hook(L, check_period);
    if (limits_.instructions == 0) return;
    lua_getglobal(L, LUA_COLIBNAME);
    wrap_field(L, "create", make_watched_coroutine);
    wrap_field(L, "wrap", make_watched_coroutine);
    lua_pop(L, 1);
    lua_pushvalue(L, LUA_GLOBALSINDEX);
    wrap_field(L, "xpcall", guarded_xpcall);
    lua_pop(L, 1);
}

void LuaBudget::begin(lua_State *L) noexcept {
    running_ = true;
    lifted_ = true;
    refused_memory_ = false;
    instructions_ = 0;
    c_stack_begin_ = c_stack_place();
    if (limits_.instructions != 0) set_hook(L, check_period);
}

// Has instructions counted, where they are bounded, each so many of them; and calls seen, where they have to be.
void LuaBudget::set_hook(lua_State *L, int period) const noexcept {
    const auto count =
        static_cast<int>(std::min<std::uint64_t>(static_cast<std::uint64_t>(period), limits_.instructions));
    lua_sethook(L, on_hook, watched_calls | (count != 0 ? LUA_MASKCOUNT : 0), count);
}

void LuaBudget::on_hook(lua_State *L, lua_Debug *reason) {
    LuaBudget *const budget = budget_of(L);
    if (budget == nullptr || !budget->running_) return;
    if (reason->event == LUA_HOOKCOUNT)
        budget->charge(L, static_cast<std::uint64_t>(lua_gethookcount(L)), 0);
    else
        budget->check_c_stack(L);
}

// Either way that a stack may grow.
void LuaBudget::check_c_stack(lua_State *L) const {
    const std::uintptr_t here = c_stack_place();
    if (std::max(here, c_stack_begin_) - std::min(here, c_stack_begin_) < most_c_stack_bytes) return;
    lua_pushliteral(L, "C stack overflow");
    lua_error(L);
}

// level: of the Lua function to blame, as lua_getstack counts.
void LuaBudget::charge(lua_State *L, std::uint64_t instructions, int level) {
    instructions_ += instructions;
    if (!exhausted()) return;
    // Whoever catches the error gets no further than one instruction.
    set_hook(L, 1);
    luaL_where(L, level);
    push_reason(L);
    lua_concat(L, 2);
    lua_error(L);
}

// [-0, +1]
void LuaBudget::push_reason(lua_State *L) const {
    if (interrupted_ != 0) {
        lua_pushliteral(L, "interrupted");
        return;
    }
    char number[24] = {};
    std::to_chars(number, number + sizeof number - 1, limits_.instructions);
    lua_pushfstring(L, "instruction limit of %s reached", number);
}

// Puts a function with the upvalues (what stood there, the budget) into a field of the table on top of the stack.
void LuaBudget::wrap_field(lua_State *L, const char *name, lua_CFunction wrapper) {
    lua_getfield(L, -1, name);
    lua_pushlightuserdata(L, this);
    lua_pushcclosure(L, wrapper, 2);
    lua_setfield(L, -2, name);
}

// Upvalues: Lua's own maker, the budget. Checks the argument itself, so that a fault is reported with the script's
// line.
int LuaBudget::make_watched_coroutine(lua_State *L) {
    luaL_argcheck(L, lua_isfunction(L, 1) && !lua_iscfunction(L, 1), 1, "Lua function expected");
    auto &budget = *static_cast<LuaBudget *>(lua_touserdata(L, lua_upvalueindex(2)));
    if (budget.running_) budget.charge(L, coroutine_check_period, 1);
    lua_settop(L, 1);
    lua_pushvalue(L, lua_upvalueindex(1));
    lua_insert(L, 1);
    lua_call(L, 1, 1);
    const bool wrapped = !lua_isthread(L, 1); // then the coroutine is the function's first upvalue
    if (wrapped) lua_getupvalue(L, 1, 1);
    if (lua_State *const coroutine = lua_tothread(L, -1)) budget.set_hook(coroutine, coroutine_check_period);
    lua_settop(L, 1);
    return 1;
}

// xpcall(function, handler). Lua calls no hook while it handles the error that a hook raised: a handler could run for
// ever.
int LuaBudget::guarded_xpcall(lua_State *L) {
    luaL_checkany(L, 2);
    lua_settop(L, 2);
    lua_pushvalue(L, lua_upvalueindex(2));
    lua_pushcclosure(L, guarded_message_handler, 2); // upvalues: the script's handler, the budget
    lua_insert(L, 1);
    const int status = lua_pcall(L, 0, LUA_MULTRET, 1);
    lua_pushboolean(L, status == 0);
    lua_replace(L, 1);
    return lua_gettop(L);
}

int LuaBudget::guarded_message_handler(lua_State *L) {
    if (static_cast<LuaBudget *>(lua_touserdata(L, lua_upvalueindex(2)))->spent()) return 1;
    lua_pushvalue(L, lua_upvalueindex(1));
    lua_insert(L, 1);
    lua_call(L, lua_gettop(L) - 1, 1);
    return 1;
}

} // namespace kelhost
