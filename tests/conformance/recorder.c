/* recorder.c: stands between the plug-in and the host. */
#include "recorder.h"

#include <math.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <lauxlib.h>
#include <lua.h>

/* The plug-in calls these names: see redirect.h. */
char *kc_kelal_strdup(const char *string);
void *kc_kelal_realloc(void *block, size_t nbytes);
void kc_kelal_free(void *block);
void kc_kel_app_log(kl_application_t *app, int level, const char *format, ...);
kl_object_t *kc_kl_application_find_object(kl_application_t *app, const char *name, int flags);
kl_darray_t *kc_kl_darray_create(int element_size, int capacity, int flags);
int kc_kl_darray_add(kl_darray_t *array, const void *element, int position);
void kc_kl_darray_free(kl_darray_t *array);
kl_application_t *kc_kl_lua_get_app(lua_State *L);
void kc_kl_lua_error(lua_State *L, const char *format, ...);
int kc_kl_lua_get_data_value(lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index, int reserved);
int kc_kl_lua_set_data_value(lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index, int value_index);
int kc_kl_lua_clone_object(lua_State *L, kl_application_t *app, int source_index, int name_index, int parent_index,
                           int data_index, const char **new_name);
int kc_kl_lua_delete_object(lua_State *L, kl_application_t *app, int name_index);

enum { longest_line = 1024, most_failures = 16 };

typedef struct failure {
    const char *function;
    int which; /* calls left before the one that fails; -1 fails every one */
} failure_t;

static struct {
    char **lines;
    int count, capacity;
    failure_t failures[most_failures];
    int failure_count;
    int error_returns, hide_application;
    int live_blocks, live_lists, open_holds;
    int violations;
    char last_violation[longest_line];
    kl_application_t *app;
    kl_data_mgr_t *data_mgr;
    char **(*find_for_prefix)(kl_data_mgr_t *mgr, const char *prefix, int *count);
    void (*hold)(kl_data_mgr_t *mgr);
    void (*release)(kl_data_mgr_t *mgr);
    lua_State *running; /* which entered the plug-in last: each of its functions asks for the application first */
    int (*refuse)(kc_request_t kind);
    void (*moment)(lua_State *L);
} recorder;

/* ---- lines ---- */

static void add_line(const char *text) {
    if (recorder.count == recorder.capacity) {
        recorder.capacity = recorder.capacity ? 2 * recorder.capacity : 64;
        recorder.lines = realloc(recorder.lines, (size_t)recorder.capacity * sizeof *recorder.lines);
        if (!recorder.lines) abort();
    }
    char *copy = malloc(strlen(text) + 1);
    if (!copy) abort();
    strcpy(copy, text);
    recorder.lines[recorder.count++] = copy;
}

#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
static void
add(const char *format, ...) {
    char line[longest_line];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    add_line(line);
}

int kc_call_count(void) { return recorder.count; }
const char *kc_call(int index) { return recorder.lines[index]; }

void kc_forget_calls(void) {
    for (int i = 0; i < recorder.count; ++i) free(recorder.lines[i]);
    recorder.count = 0;
}

void kc_violation(const char *text) {
    ++recorder.violations;
    snprintf(recorder.last_violation, sizeof recorder.last_violation, "%s", text);
}

static void expect(int holds, const char *what) {
    if (!holds) kc_violation(what);
}

int kc_violations(void) { return recorder.violations; }
const char *kc_last_violation(void) { return recorder.last_violation; }

/* ---- failures ---- */

void kc_fail(const char *function, int which) {
    int i = 0;
    while (i < recorder.failure_count && strcmp(recorder.failures[i].function, function) != 0) ++i;
    if (i == most_failures) abort();
    recorder.failures[i].function = function;
    recorder.failures[i].which = which;
    if (i == recorder.failure_count) ++recorder.failure_count;
}

void kc_mend(void) { recorder.failure_count = 0; }

static int fails(const char *function) {
    for (int i = 0; i < recorder.failure_count; ++i) {
        failure_t *failure = &recorder.failures[i];
        if (strcmp(failure->function, function) != 0) continue;
        if (failure->which < 0) return 1;
        if (failure->which-- > 0) return 0;
        recorder.failures[i] = recorder.failures[--recorder.failure_count];
        return 1;
    }
    return 0;
}

/* Whether the test, or who counts requests, lets the call fail. */
static int refused(const char *function, kc_request_t kind) {
    return fails(function) || (recorder.refuse && recorder.refuse(kind));
}

void kc_set_refuse(int (*refuse)(kc_request_t kind)) { recorder.refuse = refuse; }
int kc_host_request_fails(void) { return recorder.refuse && recorder.refuse(KC_HOST); }

/* ---- moments ---- */

static void moment(void) {
    if (recorder.moment && recorder.running) recorder.moment(recorder.running);
}

static void moment_in(lua_State *L) {
    recorder.running = L;
    moment();
}

void kc_set_moment(void (*at_moment)(lua_State *L)) { recorder.moment = at_moment; }

/* ---- what tests set and ask ---- */

void kc_set_error_returns(int returns) { recorder.error_returns = returns; }
void kc_hide_application(int hide) { recorder.hide_application = hide; }
int kc_is_application_hidden(void) { return recorder.hide_application; }
void kc_hide_data_manager(int hide) { recorder.app->linfo->data_mgr = hide ? NULL : recorder.data_mgr; }
int kc_live_blocks(void) { return recorder.live_blocks; }
int kc_live_lists(void) { return recorder.live_lists; }
int kc_open_holds(void) { return recorder.open_holds; }

void kc_close_holds(void) {
    for (; recorder.open_holds > 0; --recorder.open_holds) recorder.release(recorder.data_mgr);
}

/* ---- the data manager's operations ---- */

static char **watched_find_for_prefix(kl_data_mgr_t *mgr, const char *prefix, int *count) {
    moment();
    add("prefix \"%s\"", prefix);
    if (refused("find_for_prefix", KC_KEYS)) {
        *count = 0;
        return NULL;
    }
    char **keys = recorder.find_for_prefix(mgr, prefix, count);
    if (keys) ++recorder.live_blocks; /* the plug-in's to free */
    moment();
    return keys;
}

static void watched_hold(kl_data_mgr_t *mgr) {
    moment();
    add("hold");
    recorder.hold(mgr);
    ++recorder.open_holds;
    moment();
}

static void watched_release(kl_data_mgr_t *mgr) {
    moment();
    add("release");
    expect(recorder.open_holds > 0, "a release without a hold");
    recorder.open_holds -= recorder.open_holds > 0;
    recorder.release(mgr);
    moment();
}

void kc_recorder_start(kl_application_t *app) {
    kc_forget_calls();
    kc_mend();
    recorder.error_returns = recorder.hide_application = 0;
    recorder.live_blocks = recorder.live_lists = recorder.open_holds = recorder.violations = 0;
    recorder.running = NULL;
    recorder.app = app;
    recorder.data_mgr = app->linfo->data_mgr;
    recorder.find_for_prefix = recorder.data_mgr->find_for_prefix;
    recorder.hold = recorder.data_mgr->hold_change_listener;
    recorder.release = recorder.data_mgr->release_change_listener;
    recorder.data_mgr->find_for_prefix = watched_find_for_prefix;
    recorder.data_mgr->hold_change_listener = watched_hold;
    recorder.data_mgr->release_change_listener = watched_release;
}

void kc_recorder_stop(void) {
    recorder.app->linfo->data_mgr = recorder.data_mgr;
    recorder.data_mgr->find_for_prefix = recorder.find_for_prefix;
    recorder.data_mgr->hold_change_listener = recorder.hold;
    recorder.data_mgr->release_change_listener = recorder.release;
    recorder.hide_application = recorder.error_returns = 0;
    kc_mend();
    kc_forget_calls();
    free(recorder.lines);
    recorder.lines = NULL;
    recorder.capacity = 0;
}

/* ---- the allocator and lists ---- */

char *kc_kelal_strdup(const char *string) {
    moment();
    expect(string != NULL, "kelal_strdup of null");
    char *copy = refused("kelal_strdup", KC_STRDUP) ? NULL : kelal_strdup(string);
    recorder.live_blocks += copy != NULL;
    moment();
    return copy;
}

void *kc_kelal_realloc(void *block, size_t nbytes) {
    moment();
    expect(block != NULL, "kelal_realloc of null");
    void *moved = refused("kelal_realloc", KC_REALLOC) ? NULL : kelal_realloc(block, nbytes);
    moment();
    return moved;
}

/* Collections end here too: no moment for another one. */
void kc_kelal_free(void *block) {
    recorder.live_blocks -= block != NULL;
    kelal_free(block);
}

kl_darray_t *kc_kl_darray_create(int element_size, int capacity, int flags) {
    moment();
    expect(element_size == (int)sizeof(kl_object_t *), "a list's elements are not pointers");
    expect(capacity == 0 || capacity == 1, "a list's capacity is neither 0 nor 1");
    expect(flags == 0, "a list's flags are not 0");
    kl_darray_t *array = refused("kl_darray_create", KC_LIST) ? NULL : kl_darray_create(element_size, capacity, flags);
    recorder.live_lists += array != NULL;
    moment();
    return array;
}

int kc_kl_darray_add(kl_darray_t *array, const void *element, int position) {
    moment();
    expect(array != NULL, "an element is added to no list");
    expect(position == -1, "an element is not appended");
    int index = refused("kl_darray_add", KC_ELEMENT) ? -1 : kl_darray_add(array, element, position);
    moment();
    return index;
}

void kc_kl_darray_free(kl_darray_t *array) {
    moment();
    expect(array != NULL, "no list is freed");
    recorder.live_lists -= array != NULL;
    kl_darray_free(array);
    moment();
}

/* ---- the log, errors, look-up ---- */

void kc_kel_app_log(kl_application_t *app, int level, const char *format, ...) {
    char text[longest_line];
    moment();
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (level == KL_LOG_WARNING)
        add("warning: %s", text);
    else
        add("log %d: %s", level, text);
    kel_app_log(app, level, "%s", text);
    moment();
}

void kc_kl_lua_error(lua_State *L, const char *format, ...) {
    char text[longest_line];
    moment_in(L);
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    add("error: %s", text);
    if (!recorder.error_returns) kl_lua_error(L, "%s", text);
}

kl_application_t *kc_kl_lua_get_app(lua_State *L) {
    moment_in(L);
    return recorder.hide_application ? NULL : kl_lua_get_app(L);
}

kl_object_t *kc_kl_application_find_object(kl_application_t *app, const char *name, int flags) {
    moment();
    add("find \"%s\"", name);
    expect(flags == 0, "find_object's flags are not 0");
    kl_object_t *object = fails("kl_application_find_object") ? NULL : kl_application_find_object(app, name, flags);
    moment();
    return object;
}

/* ---- values ---- */

/* The Lua value as a line shows it, written into `text` of longest_line bytes. */
static const char *value_text(lua_State *L, int index, char *text) {
    switch (lua_type(L, index)) {
    case LUA_TNUMBER:
        if (isnan(lua_tonumber(L, index))) /* C libraries differ in the sign that they print */
            snprintf(text, longest_line, "nan");
        else
            snprintf(text, longest_line, "%.14g", (double)lua_tonumber(L, index));
        break;
    case LUA_TSTRING:
        snprintf(text, longest_line, "\"%s\"", lua_tostring(L, index));
        break;
    case LUA_TBOOLEAN:
        snprintf(text, longest_line, "%s", lua_toboolean(L, index) ? "true" : "false");
        break;
    default:
        snprintf(text, longest_line, "%s", luaL_typename(L, index));
    }
    return text;
}

int kc_kl_lua_get_data_value(lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index, int reserved) {
    char key[longest_line / 2];
    char text[longest_line];
    moment_in(L);
    expect(key_index == -1 && reserved == -1, "get_data_value's key is not on top, or its fifth argument is not -1");
    expect(lua_type(L, -1) == LUA_TSTRING, "get_data_value's key is not a string");
    snprintf(key, sizeof key, "%s", lua_tostring(L, -1));
    int height = lua_gettop(L);
    int found = 0;
    if (fails("kl_lua_get_data_value"))
        lua_pop(L, 1);
    else
        found = kl_lua_get_data_value(L, app, mgr, key_index, reserved);
    expect(lua_gettop(L) == height - !found, "the host's get_data_value leaves the stack at a wrong height");
    add("get \"%s\" -> %s", key, found ? value_text(L, -1, text) : "none");
    moment();
    return found;
}

int kc_kl_lua_set_data_value(lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index, int value_index) {
    char text[longest_line];
    moment_in(L);
    expect(lua_type(L, key_index) == LUA_TSTRING, "set_data_value's key is not a string");
    add("set \"%s\" = %s", lua_tostring(L, key_index), value_text(L, value_index, text));
    int height = lua_gettop(L);
    int written = kl_lua_set_data_value(L, app, mgr, key_index, value_index);
    expect(lua_gettop(L) == height, "the host's set_data_value leaves the stack at another height");
    moment();
    return written;
}

/* ---- lifecycle ---- */

int kc_kl_lua_clone_object(lua_State *L, kl_application_t *app, int source_index, int name_index, int parent_index,
                           int data_index, const char **new_name) {
    char source[longest_line], name[longest_line], parent[longest_line];
    expect(source_index == 1 && name_index == 2 && parent_index == 3 && data_index == 4,
           "clone's positions are not 1 to 4");
    add("clone %s %s %s%s", value_text(L, 1, source), value_text(L, 2, name), value_text(L, 3, parent),
        lua_isnoneornil(L, 4) ? "" : " data");
    lua_gc(L, LUA_GCCOLLECT, 0); /* as a host may: nothing but the stack keeps the source's handle */
    recorder.running = L;
    int cloned = fails("kl_lua_clone_object") ? 0 : kl_lua_clone_object(L, app, 1, 2, 3, 4, new_name);
    moment();
    return cloned;
}

int kc_kl_lua_delete_object(lua_State *L, kl_application_t *app, int name_index) {
    char name[longest_line];
    moment_in(L);
    expect(name_index == 2, "delete's position is not 2");
    add("delete %s", value_text(L, 2, name));
    int deleted = fails("kl_lua_delete_object") ? 0 : kl_lua_delete_object(L, app, name_index);
    moment();
    return deleted;
}
