// measurement.cpp: compiles an operation's texts into Lua functions, and runs those between two readings of a clock.
#include "measurement.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "floors.h"

namespace bench {

namespace {

// What the texts of an operation know. Gives functions that run it; f is the second argument, or `function`.
constexpr char around_texts[] = R"(
local floor, name, container_name, calls_at_most = ...
local handle, container = keldom.get_object(name), keldom.get_object(container_name)
local few, panel, grid = keldom.get_object("side.few"), keldom.get_object("side.panel"), keldom.get_table("side.grid")
local meta, center = debug_metatable, kel.CENTER
local names, clones, data = {}, {}, {}
for i = 1, calls_at_most do names[i], clones[i] = "new" .. i, false end
for _, count in ipairs {1, 10, 100} do
    data[count] = {}
    for i = 1, count do data[count]["v" .. i] = i + 1 end
end
local f = floor or @function

local function text_of(value, ...)
    local text = tostring(value)
    if type(value) == "table" then
        local texts = {}
        for key, element in pairs(value) do
            if #texts == 200 then break end -- of long lists the length and a part
            texts[#texts + 1] = (type(element) == "string" and "" or key .. "=") .. text_of(element)
        end
        table.sort(texts)
        text = #value .. "{" .. table.concat(texts, " ") .. "}"
    end
    if select("#", ...) == 0 then return text end
    return text .. " " .. text_of(...)
end

local function before(calls) @before end
local function after(calls) @after end
return {
    before = before,
    run = function(calls) @run end,
    empty = function(calls) @empty end,
    after = after,
    describe = function()
        handle:set_bounds(100, 50, 41, 21)
        handle:show()
        panel:set_value("v1", -1, "v2", -1, "v10", -1, "v100", -1)
        before(1)
        local i = 1
        local text = text_of(@once) .. " " .. text_of(@effect)
        after(1)
        return text
    end
}
)";

std::string with_names(std::string_view call) {
    const std::size_t sign = call.find('$');
    if (sign == std::string_view::npos) return std::string(call);
    const std::size_t end = call.find(')', sign);
    const int count = std::atoi(std::string(call.substr(sign + 1, end - sign - 1)).c_str());
    std::string text(call.substr(0, sign));
    for (int i = 1; i <= count; ++i) text += (i == 1 ? "'v" : ", 'v") + std::to_string(i) + "'";
    return text.append(call.substr(end));
}

void fill_in(std::string &chunk, std::string_view place, const std::string &text) {
    chunk.replace(chunk.find(place), place.size(), text);
}

std::string chunk_of(const Operation &operation) {
    std::string chunk = around_texts;
    const std::string collect = "collectgarbage() collectgarbage()"; // the second one frees what the first one ended
    const std::string call = operation.call != nullptr ? with_names(operation.call) : "nil";
    fill_in(chunk, "@function", operation.function);
    fill_in(chunk, "@before", operation.before);
    fill_in(chunk, "@after", operation.after);
    fill_in(chunk, "@run", operation.call != nullptr ? "for i = 1, calls do " + call + " end" : collect);
    fill_in(chunk, "@empty", operation.call != nullptr ? "for i = 1, calls do end" : collect);
    fill_in(chunk, "@once", call);
    fill_in(chunk, "@effect", operation.effect);
    return chunk;
}

// [-0, +0] Returns a reference to the table of functions.
int compile(lua_State *L, const SampleModel &sample, const Operation &operation, lua_CFunction floor) {
    const std::string chunk = chunk_of(operation);
    if (luaL_loadbuffer(L, chunk.data(), chunk.size(), operation.name) != 0) {
        std::fprintf(stderr, "%s\n", lua_tostring(L, -1));
        std::exit(1);
    }
    if (floor != nullptr)
        lua_pushcfunction(L, floor);
    else
        lua_pushnil(L);
    lua_pushstring(L, sample.control.c_str());
    lua_pushstring(L, sample.container.c_str());
    lua_pushinteger(L, most_calls);
    call_lua(L, 4, 1);
    return luaL_ref(L, LUA_REGISTRYINDEX);
}

} // namespace

void call_lua(lua_State *L, int arguments, int results) {
    if (lua_pcall(L, arguments, results, 0) == 0) return;
    std::fprintf(stderr, "%s\n", lua_tostring(L, -1));
    std::exit(1);
}

Measurement::Measurement(SampleModel &sample, const Operation &operation)
    : sample_(sample), L_(sample.application->lua()) {
    register_floors(L_);
    luaL_getmetatable(L_, "control_object");
    lua_setglobal(L_, "debug_metatable");
    total_ = compile(L_, sample, operation, nullptr);
    floor_ = compile(L_, sample, operation, operation.floor);
    const std::string found = description(total_);
    const std::string expected = description(floor_);
    if (found == expected) return;
    std::fprintf(stderr, "%s: the operation gives %s\nits floor gives %s\n", operation.name, found.c_str(),
                 expected.c_str());
    std::exit(1);
}

Measurement::~Measurement() {
    luaL_unref(L_, LUA_REGISTRYINDEX, total_);
    luaL_unref(L_, LUA_REGISTRYINDEX, floor_);
}

std::string Measurement::description(int functions) {
    lua_rawgeti(L_, LUA_REGISTRYINDEX, functions);
    lua_getfield(L_, -1, "describe");
    call_lua(L_, 0, 1);
    std::string text = lua_tostring(L_, -1);
    lua_pop(L_, 2);
    sample_.application->pump();
    return text;
}

void Measurement::run_field(int functions, const char *field, int calls) {
    lua_rawgeti(L_, LUA_REGISTRYINDEX, functions);
    lua_getfield(L_, -1, field);
    lua_pushinteger(L_, calls);
    call_lua(L_, 1, 0);
    lua_pop(L_, 1);
}

std::int64_t Measurement::run(int functions, Clock clock, int calls) {
    const auto timed = [&](const char *field) {
        lua_gc(L_, LUA_GCCOLLECT, 0);
        lua_gc(L_, LUA_GCCOLLECT, 0);
        lua_gc(L_, LUA_GCSTOP, 0);
        if (std::string_view(field) == "run") run_field(functions, "before", calls);
        const std::uint64_t start = clock();
        run_field(functions, field, calls);
        return static_cast<std::int64_t>(clock() - start);
    };
    const std::int64_t empty = timed("empty");
    const std::int64_t found = timed("run");
    run_field(functions, "after", calls);
    sample_.application->pump(); // the host lets go of what was deleted
    return found - empty;
}

Reading Measurement::measure(Clock clock, int calls) {
    const std::int64_t total = run(total_, clock, calls);
    return {total, run(floor_, clock, calls)};
}

} // namespace bench
