/* recording_services.c: what the recording host does for Lua states, its clones and deletions, and its events. */
#include "recording_internal.h"

#include <lauxlib.h>
#include <lua.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int add_event_listener(kl_io_mgr_t *mgr, const char *event_name, io_listener_t listener, void *user_data);
static int rem_event_listener(kl_io_mgr_t *mgr, io_listener_t listener, void *user_data);

/* The slots that no plug-in calls stay null, so that calling one does not pass unnoticed. */
static kl_io_mgr_t io_mgr = {
    .nbytes = sizeof io_mgr, .add_event_listener = add_event_listener, .rem_event_listener = rem_event_listener};

typedef struct subscription {
    char *event_name;
    io_listener_t listener;
    void *user_data;
} subscription_t;

static struct {
    const void *lua_registry; /* tells the application's state and its coroutines from others */
    int obeys_delete;
    char *clone_name;
    host_pointers_t subscriptions;
    host_pointers_t listener_names; /* subscription_t of every listener that was ever seen */
} host;

/* ---- Lua ---- */

void host_check_state(const char *who, lua_State *L) {
    if (host.lua_registry && lua_topointer(L, LUA_REGISTRYINDEX) != host.lua_registry)
        host_violation("%s in a Lua state of another application", who);
}

/* A Lua value as lines show it. Converts nothing in place. */
const char *host_describe_value(char *room, size_t nbytes, lua_State *L, int index) {
    switch (lua_type(L, index)) {
    case LUA_TNONE:
        return "none";
    case LUA_TNUMBER:
        snprintf(room, nbytes, LUA_NUMBER_FMT, lua_tonumber(L, index));
        return room;
    case LUA_TBOOLEAN:
        return lua_toboolean(L, index) ? "true" : "false";
    case LUA_TSTRING:
        return host_quoted(room, nbytes, lua_tostring(L, index));
    default:
        return lua_typename(L, lua_type(L, index));
    }
}

kl_application_t *kl_lua_get_app(lua_State *L) {
    host_line(RECORDING_SHOW_GET_APP, "kl_lua_get_app()");
    host_check_state("kl_lua_get_app", L);
    return host_fails(RECORDING_GET_APP) ? NULL : recording_app();
}

void kl_lua_error(lua_State *L, const char *format, ...) {
    host_count(RECORDING_LUA_ERROR);
    host_check_state("kl_lua_error", L);
    va_list arguments;
    va_start(arguments, format);
    const char *text = host_note_error(format, arguments);
    va_end(arguments);
    if (host_errors_return()) return;
    lua_pushstring(L, text); /* the text stays the record's: lua_error does not come back */
    lua_error(L);
}

/* ---- Clone and delete ---- */

void recording_obey_delete(int obey) { host.obeys_delete = obey; }

void recording_answer_clone(const char *new_name) {
    free(host.clone_name);
    host.clone_name = new_name ? host_copy(new_name) : NULL;
}

int kl_lua_clone_object(lua_State *L, kl_application_t *app, int source_index, int name_index, int parent_index,
                        int data_index, const char **new_name) {
    char rooms[4][HOST_TEXT_ROOM];
    host_line(0, "kl_lua_clone_object(%s, %s, %s, %s)", host_describe_value(rooms[0], HOST_TEXT_ROOM, L, source_index),
              host_describe_value(rooms[1], HOST_TEXT_ROOM, L, name_index),
              host_describe_value(rooms[2], HOST_TEXT_ROOM, L, parent_index),
              host_describe_value(rooms[3], HOST_TEXT_ROOM, L, data_index));
    host_check_state("kl_lua_clone_object", L);
    if (app != recording_app()) host_violation("kl_lua_clone_object for another application");
    if (source_index != 1 || name_index != 2 || parent_index != 3 || data_index != 4)
        host_violation("kl_lua_clone_object with indexes %d, %d, %d, %d instead of 1, 2, 3, 4", source_index,
                       name_index, parent_index, data_index);
    if (!new_name) host_violation("kl_lua_clone_object without a place for the name");
    if (new_name && *new_name) host_violation("kl_lua_clone_object with a place for the name that is not null");
    if (host_fails(RECORDING_CLONE_OBJECT) || !new_name) return 0;
    if (host_life()) {
        free(host.clone_name);
        host.clone_name = host_life()->clone(L);
    }
    if (!host.clone_name) return 0;
    *new_name = host.clone_name;
    return 1;
}

int kl_lua_delete_object(lua_State *L, kl_application_t *app, int name_index) {
    char room[HOST_TEXT_ROOM];
    host_line(0, "kl_lua_delete_object(%s)", host_describe_value(room, sizeof room, L, name_index));
    host_check_state("kl_lua_delete_object", L);
    if (app != recording_app()) host_violation("kl_lua_delete_object for another application");
    if (name_index != 2) host_violation("kl_lua_delete_object with index %d instead of 2", name_index);
    if (host_fails(RECORDING_DELETE_OBJECT)) return 0;
    if (host_life()) return host_life()->remove(lua_type(L, 2) == LUA_TSTRING ? lua_tostring(L, 2) : "");
    if (!host.obeys_delete || lua_type(L, name_index) != LUA_TSTRING) return 1;
    void *object = host_resolved(lua_tostring(L, name_index));
    if (object) recording_remove(object);
    return object != NULL;
}

/* ---- Events ---- */

static subscription_t *new_subscription(host_pointers_t *list, const char *event_name, io_listener_t listener,
                                        void *user_data) {
    subscription_t *subscription = (subscription_t *)host_append(list, host_alloc(sizeof(subscription_t)));
    subscription->event_name = host_copy(event_name);
    subscription->listener = listener;
    subscription->user_data = user_data;
    return subscription;
}

static void free_subscription(host_pointers_t *list, int index) {
    subscription_t *subscription = (subscription_t *)list->items[index];
    free(subscription->event_name);
    free(subscription);
    host_take_out(list, index);
}

/* Functions have no names at run time: the first listener ever seen is number 1. */
static int listener_number(io_listener_t listener) {
    for (int i = 0; i < host.listener_names.count; ++i)
        if (((subscription_t *)host.listener_names.items[i])->listener == listener) return i + 1;
    new_subscription(&host.listener_names, "", listener, NULL);
    return host.listener_names.count;
}

static const char *describe_user_data(const void *user_data) {
    if (user_data == recording_app()) return "app";
    return user_data ? "something else" : "null";
}

static int add_event_listener(kl_io_mgr_t *mgr, const char *event_name, io_listener_t listener, void *user_data) {
    char room[HOST_TEXT_ROOM];
    host_line(0, "add_event_listener(%s, listener %d, %s)", host_quoted(room, sizeof room, event_name),
              listener_number(listener), describe_user_data(user_data));
    if (mgr != &io_mgr) host_violation("add_event_listener of another I/O manager");
    if (host_fails(RECORDING_ADD_EVENT_LISTENER) || !event_name) return -1;
    new_subscription(&host.subscriptions, event_name, listener, user_data);
    return 0;
}

static int rem_event_listener(kl_io_mgr_t *mgr, io_listener_t listener, void *user_data) {
    host_line(0, "rem_event_listener(listener %d, %s)", listener_number(listener), describe_user_data(user_data));
    if (mgr != &io_mgr) host_violation("rem_event_listener of another I/O manager");
    if (host_fails(RECORDING_REM_EVENT_LISTENER)) return -1;
    int result = -1;
    for (int i = host.subscriptions.count - 1; i >= 0; --i) {
        const subscription_t *subscription = (const subscription_t *)host.subscriptions.items[i];
        if (subscription->listener != listener || subscription->user_data != user_data) continue;
        free_subscription(&host.subscriptions, i);
        result = 0;
    }
    return result;
}

int recording_subscriptions(void) { return host.subscriptions.count; }

io_listener_t recording_listener(int index) { return ((subscription_t *)host.subscriptions.items[index])->listener; }

int recording_deliver(const char *event_name) {
    char name[HOST_TEXT_ROOM];
    snprintf(name, sizeof name, "%s", event_name);
    kl_event_t event = {name, NULL, NULL, 0, 0, NULL};
    host_pointers_t called = {NULL, 0, 0}; /* listeners may remove themselves */
    for (int i = 0; i < host.subscriptions.count; ++i) {
        const subscription_t *subscription = (const subscription_t *)host.subscriptions.items[i];
        if (strcmp(subscription->event_name, event_name) == 0)
            new_subscription(&called, event_name, subscription->listener, subscription->user_data);
    }
    int count = called.count;
    for (int i = 0; i < count; ++i) {
        const subscription_t *subscription = (const subscription_t *)called.items[i];
        subscription->listener(&io_mgr, &event, subscription->user_data);
    }
    while (called.count) free_subscription(&called, called.count - 1);
    host_free_all(&called);
    return count;
}

void recording_share_state(lua_State *L) {
    kl_string_map_t *shared_data_map = recording_app()->shared_data_map;
    host_map_clear(shared_data_map);
    if (L) host_map_append(shared_data_map, "luastate", L);
    host.lua_registry = L ? lua_topointer(L, LUA_REGISTRYINDEX) : NULL;
}

kl_io_mgr_t *host_io_mgr(void) { return &io_mgr; }

void host_end_services(void) {
    free(host.clone_name);
    while (host.subscriptions.count) free_subscription(&host.subscriptions, host.subscriptions.count - 1);
    host_free_all(&host.subscriptions);
    while (host.listener_names.count) free_subscription(&host.listener_names, host.listener_names.count - 1);
    host_free_all(&host.listener_names);
    memset(&host, 0, sizeof host);
}
