// plugin_session.cpp: calls the plug-in's functions, and does what the host does by itself.
#include "plugin_session.h"

#include <algorithm>
#include <new>

#include "recorded_model.h"

// ---- Beginning and end ----

PluginSession::PluginSession(const Description &description, bool errors_return) {
    recording_begin();
    recording_errors_return(errors_return);
    recording_obey_delete(1);
    L = luaL_newstate();
    if (!L) throw std::bad_alloc();
    lua_gc(L, LUA_GCSTOP, 0); // only when a case says so
    open_library("", luaopen_base);
    open_library(LUA_STRLIBNAME, luaopen_string);
    lua_newtable(L);
    lua_setfield(L, LUA_REGISTRYINDEX, "kept");
    recording_share_state(L);
    recording_load_plugin(&plugin_, nullptr);
    recording_deliver("kel.internalinit");
    records_ = build_recorded_model(description);
    recording_show(RECORDING_SHOW_ALLOCATOR | RECORDING_SHOW_ARRAYS);
}

void PluginSession::open_library(const char *name, lua_CFunction open) {
    lua_pushcfunction(L, open);
    lua_pushstring(L, name);
    lua_call(L, 1, 0);
}

PluginSession::~PluginSession() {
    if (L) close();
    recording_end();
}

int PluginSession::live_names() const { return recording_live_blocks() - 1; } // the plug-in's own name

std::string PluginSession::complaint() const {
    if (recording_live_arrays() != 0) return std::to_string(recording_live_arrays()) + " lists left alive";
    if (recording_open_holds() != 0) return std::to_string(recording_open_holds()) + " holds left open";
    if (lua_gettop(L) != 0) return "values left on the stack";
    for (int i = 0; i < recording_violation_count(); ++i) {
        std::string violation = recording_violation(i);
        // Whether a list was made is looked at after the walk that fills it.
        if (!list_refused_ || violation != "kl_darray_add of a null array") return "breach of contract: " + violation;
    }
    return "";
}

std::string PluginSession::close() {
    heal();
    recording_forget_violations();
    int lines = recording_log_count() + recording_error_count();
    lua_close(L);
    L = nullptr;
    recording_unload_plugin(&plugin_);
    if (recording_log_count() + recording_error_count() != lines) return "complaints while the Lua state is closed";
    if (recording_violation_count() != 0) return std::string("breach of contract: ") + recording_violation(0);
    if (recording_live_blocks() != 0) return std::to_string(recording_live_blocks()) + " blocks left at the end";
    return "";
}

void PluginSession::collect() {
    lua_gc(L, LUA_GCCOLLECT, 0);
    lua_gc(L, LUA_GCCOLLECT, 0);
    lua_gc(L, LUA_GCSTOP, 0);
}

// ---- Actions ----

static recording_call_t refused_call(Fault fault) {
    switch (fault) {
    case Fault::duplicate_text:
        return RECORDING_STRDUP;
    case Fault::resize_text:
        return RECORDING_REALLOC;
    case Fault::make_list:
        return RECORDING_DARRAY_CREATE;
    case Fault::find_object:
        return RECORDING_FIND_OBJECT;
    case Fault::read_variable:
        return RECORDING_GET_DATA_VALUE;
    case Fault::write_variable:
        return RECORDING_SET_DATA_VALUE;
    case Fault::find_keys:
        return RECORDING_FIND_FOR_PREFIX;
    case Fault::none:
        break;
    }
    return RECORDING_CALL_COUNT;
}

void PluginSession::arrange(const Circumstances &circumstances) {
    recording_forget_violations();
    recording_fail_always(RECORDING_GET_APP, circumstances.without_application);
    recording_without_data_mgr(circumstances.without_data_manager);
    if (circumstances.fault != Fault::none) recording_fail(refused_call(circumstances.fault), circumstances.nth);
    recording_answer_clone(circumstances.clone_succeeds ? circumstances.clone_name.c_str() : nullptr);
    list_refused_ = circumstances.fault == Fault::make_list;
}

void PluginSession::heal() {
    for (int call = 0; call < RECORDING_CALL_COUNT; ++call) {
        recording_fail(static_cast<recording_call_t>(call), 0);
        recording_fail_always(static_cast<recording_call_t>(call), 0);
    }
    recording_without_data_mgr(0);
}

Outcome PluginSession::perform(const Action &action) {
    if (action.event == Step::call) return call(action);
    host_acts(action);
    return {};
}

void PluginSession::host_acts(const Action &action) {
    void *record = action.object == nobody ? nullptr : records_[static_cast<std::size_t>(action.object)];
    switch (action.event) {
    case Step::collect:
        return collect();
    case Step::host_removes:
        return recording_remove(record);
    case Step::host_renames:
        return recording_resolve(action.text.c_str(), record);
    case Step::host_writes:
        return write_recorded_variable(action.text, action.value);
    case Step::host_forgets:
        return recording_remove_variable(action.text.c_str());
    default:
        return recording_resize_table(static_cast<kl_table_t *>(record), action.rows, action.cols);
    }
}

static bool is_compared(const std::string &line) {
    return !line.starts_with("kelal_free(")
           && (!line.starts_with("kl_darray_") || line.starts_with("kl_darray_create("));
}

// Argument 1 stays at the bottom of the stack, to tell whether a result is the same value.
Outcome PluginSession::call(const Action &action) {
    int count = static_cast<int>(action.arguments.size());
    luaL_checkstack(L, count + LUA_MINSTACK, "too many arguments");
    if (action.arguments.empty())
        lua_pushnil(L);
    else
        push(action.arguments[0]);
    push_function(action);
    for (int i = 0; i < count; ++i) {
        if (i == 0)
            lua_pushvalue(L, 1);
        else
            push(action.arguments[static_cast<std::size_t>(i)]);
    }
    arrange(action.circumstances);
    int first_line = recording_line_count();
    bool failed = lua_pcall(L, count, LUA_MULTRET, 0) != 0;
    heal();
    Outcome outcome;
    for (int i = first_line; i < recording_line_count(); ++i)
        if (is_compared(recording_line(i))) outcome.lines.emplace_back(recording_line(i));
    int top = lua_gettop(L);
    luaL_checkstack(L, LUA_MINSTACK, "too many results");
    for (int i = 2; i <= top; ++i) {
        keep_handles(i);
        outcome.results.push_back(failed ? std::string("error: ") + lua_tostring(L, i) : text_of(i));
    }
    lua_settop(L, 0);
    return outcome;
}

// ---- Values ----

void PluginSession::push_function(const Action &action) {
    int top = lua_gettop(L);
    if (action.place == "keldom") {
        lua_getfield(L, LUA_GLOBALSINDEX, "keldom");
    } else {
        lua_getfield(L, LUA_REGISTRYINDEX, action.place.empty() ? "control_object" : action.place.c_str());
        if (!action.place.empty()) lua_getfield(L, -1, "__index");
    }
    lua_pushstring(L, action.function.c_str());
    lua_rawget(L, -2);
    lua_replace(L, top + 1);
    lua_settop(L, top + 1);
}

void PluginSession::push(const Value &value) {
    switch (value.type) {
    case Value::boolean:
        return lua_pushboolean(L, value.number_value != 0);
    case Value::number:
        return lua_pushnumber(L, value.number_value);
    case Value::string:
        return lua_pushstring(L, value.text.c_str());
    case Value::table:
        lua_newtable(L);
        for (const auto &[key, entry] : value.entries) {
            push(key);
            push(entry);
            lua_settable(L, -3);
        }
        return;
    case Value::handle:
        lua_getfield(L, LUA_REGISTRYINDEX, "kept");
        lua_rawgeti(L, -1, value.slot + 1);
        return lua_remove(L, -2);
    case Value::foreign:
        return push_foreign(static_cast<int>(value.number_value));
    case Value::function:
        return lua_pushcfunction(L, luaopen_base);
    default:
        return lua_pushnil(L);
    }
}

// Userdata of other libraries: 0 to 3 with a metatable that does not lead to the handles', 4 and 5 without one, 6 with
// one that leads there.
void PluginSession::push_foreign(int which) {
    if (which == 5) return lua_pushlightuserdata(L, this);
    lua_newuserdata(L, 64);
    if (which == 4) return;
    lua_newtable(L);
    if (which == 1) lua_pushcfunction(L, luaopen_base);
    if (which == 2) lua_pushstring(L, "text");
    if (which == 3) lua_newtable(L);
    if (which == 6) {
        lua_getfield(L, LUA_REGISTRYINDEX, "table_object");
        lua_getfield(L, -1, "__index");
        lua_remove(L, -2);
    }
    if (which != 0) lua_setfield(L, -2, "__index");
    lua_setmetatable(L, -2);
}

void PluginSession::keep(int index) {
    if (lua_type(L, index) != LUA_TUSERDATA || lua_rawequal(L, 1, index)) return;
    lua_getfield(L, LUA_REGISTRYINDEX, "kept");
    lua_pushvalue(L, index);
    lua_rawseti(L, -2, ++kept_);
    lua_pop(L, 1);
}

void PluginSession::keep_handles(int index) {
    keep(index);
    if (lua_type(L, index) != LUA_TTABLE) return;
    int count = static_cast<int>(lua_objlen(L, index));
    for (int i = 1; i <= count; ++i) {
        lua_rawgeti(L, index, i);
        keep(lua_gettop(L));
        lua_pop(L, 1);
    }
}

std::string PluginSession::text_of(int index) {
    switch (lua_type(L, index)) {
    case LUA_TSTRING:
        return '"' + std::string(lua_tostring(L, index)) + '"';
    case LUA_TNUMBER:
        return number_text(lua_tonumber(L, index));
    case LUA_TBOOLEAN:
        return lua_toboolean(L, index) ? "true" : "false";
    case LUA_TUSERDATA:
    case LUA_TLIGHTUSERDATA:
        return handle_text(index) + (lua_rawequal(L, 1, index) ? " (argument 1)" : "");
    case LUA_TTABLE:
        return table_text(index);
    default:
        return luaL_typename(L, index);
    }
}

std::string PluginSession::handle_text(int index) {
    std::string text = "userdata";
    int top = lua_gettop(L);
    bool has_metatable = lua_getmetatable(L, index) != 0;
    for (int type = 0; has_metatable && type < first_invalid_code; ++type) {
        lua_getfield(L, LUA_REGISTRYINDEX, metatable_name(type));
        if (!lua_rawequal(L, -1, top + 1)) continue;
        luaL_callmeta(L, index, "__tostring");
        text = std::string(metatable_name(type)) + " \"" + lua_tostring(L, -1) + '"';
        break;
    }
    lua_settop(L, top);
    return text;
}

std::string PluginSession::table_text(int index) {
    std::vector<std::string> entries;
    lua_pushnil(L);
    while (lua_next(L, index)) {
        int value = lua_gettop(L);
        entries.push_back("[" + text_of(value - 1) + "] = " + text_of(value));
        lua_pop(L, 1);
    }
    std::sort(entries.begin(), entries.end());
    std::string text;
    for (const std::string &entry : entries) text += (text.empty() ? "" : ", ") + entry;
    return "{" + text + "}";
}
