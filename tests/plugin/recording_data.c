/* recording_data.c: the recording host's data manager and the data variables in it. */
#include "recording_internal.h"

#include <lauxlib.h>
#include <lua.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static char **find_for_prefix(kl_data_mgr_t *mgr, const char *prefix, int *count);
static void hold_change_listener(kl_data_mgr_t *mgr);
static void release_change_listener(kl_data_mgr_t *mgr);

/* The slots that no plug-in calls stay null, so that calling one does not pass unnoticed. */
static kl_data_mgr_t data_mgr = {.nbytes = sizeof data_mgr,
                                 .find_for_prefix = find_for_prefix,
                                 .hold_change_listener = hold_change_listener,
                                 .release_change_listener = release_change_listener};

typedef struct variable {
    char *key;
    char *text;    /* of a string */
    char *shown;   /* as in lines */
    double number; /* of a number or boolean */
    int lua_type;
} variable_t;

static struct {
    host_pointers_t variables;
    host_pointers_t prefix_answer; /* keys */
    int has_prefix_answer;
    int open_holds;
} host;

int recording_open_holds(void) { return host.open_holds; }

void recording_answer_prefix(const char *const *keys, int count) {
    host_free_all(&host.prefix_answer);
    host.has_prefix_answer = keys != NULL;
    for (int i = 0; keys && i < count; ++i) host_append(&host.prefix_answer, host_copy(keys[i]));
}

static void check_managers(const char *who, const kl_application_t *app, const kl_data_mgr_t *mgr) {
    if (app != recording_app()) host_violation("%s for another application", who);
    if (mgr != recording_app()->linfo->data_mgr || !mgr)
        host_violation("%s with a data manager that is not the application's", who);
}

static variable_t *find_variable(const char *key) {
    for (int i = 0; i < host.variables.count; ++i) {
        variable_t *variable = (variable_t *)host.variables.items[i];
        if (strcmp(variable->key, key) == 0) return variable;
    }
    return NULL;
}

static void free_variable(variable_t *variable) {
    free(variable->key);
    free(variable->text);
    free(variable->shown);
    free(variable);
}

void recording_remove_variable(const char *key) {
    for (int i = host.variables.count - 1; i >= 0; --i) {
        variable_t *variable = (variable_t *)host.variables.items[i];
        if (strcmp(variable->key, key) != 0) continue;
        free_variable(variable);
        host_take_out(&host.variables, i);
    }
}

static variable_t *write_variable(const char *key, int lua_type) {
    variable_t *variable = find_variable(key);
    if (!variable) {
        variable = (variable_t *)host_append(&host.variables, host_alloc(sizeof(variable_t)));
        variable->key = host_copy(key);
    }
    free(variable->text);
    free(variable->shown);
    variable->text = variable->shown = NULL;
    variable->lua_type = lua_type;
    return variable;
}

void recording_set_number(const char *key, double value) {
    char shown[64];
    variable_t *variable = write_variable(key, LUA_TNUMBER);
    snprintf(shown, sizeof shown, LUA_NUMBER_FMT, value);
    variable->number = value;
    variable->shown = host_copy(shown);
}

void recording_set_string(const char *key, const char *value) {
    variable_t *variable = write_variable(key, LUA_TSTRING);
    variable->text = host_copy(value);
    variable->shown = (char *)host_alloc(strlen(value) + 3);
    sprintf(variable->shown, "\"%s\"", value);
}

void recording_set_boolean(const char *key, int value) {
    variable_t *variable = write_variable(key, LUA_TBOOLEAN);
    variable->number = value != 0;
    variable->shown = host_copy(value ? "true" : "false");
}

int host_variable_type(const char *key) {
    const variable_t *variable = find_variable(key);
    return variable ? variable->lua_type : LUA_TNIL;
}

void host_remove_variables(const char *prefix) {
    for (int i = host.variables.count - 1; i >= 0; --i) {
        variable_t *variable = (variable_t *)host.variables.items[i];
        if (strncmp(variable->key, prefix, strlen(prefix)) != 0) continue;
        free_variable(variable);
        host_take_out(&host.variables, i);
    }
}

static void set_like(const char *key, const variable_t *model) {
    if (model->lua_type == LUA_TSTRING) recording_set_string(key, model->text);
    if (model->lua_type == LUA_TNUMBER) recording_set_number(key, model->number);
    if (model->lua_type == LUA_TBOOLEAN) recording_set_boolean(key, model->number != 0);
}

void host_copy_variables(const char *prefix, const char *new_prefix) {
    int count = host.variables.count; /* without the copies */
    for (int i = 0; i < count; ++i) {
        const variable_t *variable = (const variable_t *)host.variables.items[i];
        if (strncmp(variable->key, prefix, strlen(prefix)) != 0) continue;
        const char *rest = variable->key + strlen(prefix);
        char *key = (char *)host_alloc(strlen(new_prefix) + strlen(rest) + 1);
        sprintf(key, "%s%s", new_prefix, rest);
        set_like(key, variable);
        free(key);
    }
}

const char *recording_variable(const char *key) {
    const variable_t *variable = find_variable(key);
    return variable ? variable->shown : NULL;
}

/* The key string at an index, or null after writing the breach down. */
static const char *key_at(const char *who, lua_State *L, int index) {
    if (index != -1) host_violation("%s with key index %d instead of -1", who, index);
    if (lua_type(L, index) == LUA_TSTRING) return lua_tostring(L, index);
    host_violation("%s with a %s instead of a key on top", who, luaL_typename(L, index));
    return NULL;
}

int kl_lua_get_data_value(lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index, int reserved) {
    char room[HOST_TEXT_ROOM];
    const char *key = key_at("kl_lua_get_data_value", L, key_index);
    host_line(0, "kl_lua_get_data_value(%s)", host_quoted(room, sizeof room, key));
    host_check_state("kl_lua_get_data_value", L);
    check_managers("kl_lua_get_data_value", app, mgr);
    if (reserved != -1) host_violation("kl_lua_get_data_value with %d instead of -1 as its last argument", reserved);
    const variable_t *variable = host_fails(RECORDING_GET_DATA_VALUE) || !key ? NULL : find_variable(key);
    lua_pop(L, 1);
    if (!variable) return 0;
    if (variable->lua_type == LUA_TSTRING) lua_pushstring(L, variable->text);
    if (variable->lua_type == LUA_TNUMBER) lua_pushnumber(L, (lua_Number)variable->number);
    if (variable->lua_type == LUA_TBOOLEAN) lua_pushboolean(L, variable->number != 0);
    return 1;
}

int kl_lua_set_data_value(lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index, int value_index) {
    char key_room[HOST_TEXT_ROOM], value_room[HOST_TEXT_ROOM];
    const char *key = key_at("kl_lua_set_data_value", L, key_index);
    host_line(0, "kl_lua_set_data_value(%s, %s)", host_quoted(key_room, sizeof key_room, key),
              host_describe_value(value_room, sizeof value_room, L, value_index));
    host_check_state("kl_lua_set_data_value", L);
    check_managers("kl_lua_set_data_value", app, mgr);
    if (!host.open_holds) host_violation("kl_lua_set_data_value while no change listener is held");
    if (host_fails(RECORDING_SET_DATA_VALUE) || !key) return 0;
    if (host_life()) return host_life()->write(L, key, value_index);
    switch (lua_type(L, value_index)) {
    case LUA_TNUMBER:
        recording_set_number(key, (double)lua_tonumber(L, value_index));
        return 1;
    case LUA_TSTRING:
        recording_set_string(key, lua_tostring(L, value_index));
        return 1;
    case LUA_TBOOLEAN:
        recording_set_boolean(key, lua_toboolean(L, value_index));
        return 1;
    default:
        return 0;
    }
}

static void check_mgr(const char *who, const kl_data_mgr_t *mgr) {
    if (mgr != &data_mgr) host_violation("%s of another data manager", who);
}

static void hold_change_listener(kl_data_mgr_t *mgr) {
    host_line(0, "hold_change_listener()");
    host_count(RECORDING_HOLD);
    check_mgr("hold_change_listener", mgr);
    ++host.open_holds;
}

static void release_change_listener(kl_data_mgr_t *mgr) {
    host_line(0, "release_change_listener()");
    host_count(RECORDING_RELEASE);
    check_mgr("release_change_listener", mgr);
    if (!host.open_holds) host_violation("release_change_listener without a hold");
    if (host.open_holds) --host.open_holds;
}

static int by_bytes(const void *a, const void *b) { return strcmp(*(const char *const *)a, *(const char *const *)b); }

/* The keys of variables as a new block, or null when there is none. */
static char **keys_with_prefix(const char *prefix, int *count) {
    size_t length = strlen(prefix);
    char **keys = (char **)host_alloc((size_t)host.variables.count * sizeof(char *));
    int found = 0;
    for (int i = 0; i < host.variables.count; ++i) {
        char *key = ((variable_t *)host.variables.items[i])->key;
        if (strncmp(key, prefix, length) == 0 && strlen(key) > length) keys[found++] = key;
    }
    qsort(keys, (size_t)found, sizeof(char *), by_bytes);
    char **answer = found ? (char **)host_new_block((size_t)found * sizeof(char *)) : NULL;
    if (found) memcpy(answer, keys, (size_t)found * sizeof(char *));
    free(keys);
    *count = found;
    return answer;
}

static char **find_for_prefix(kl_data_mgr_t *mgr, const char *prefix, int *count) {
    char room[HOST_TEXT_ROOM];
    host_line(0, "find_for_prefix(%s)", host_quoted(room, sizeof room, prefix));
    check_mgr("find_for_prefix", mgr);
    if (!prefix || !count) host_violation("find_for_prefix with a null %s", prefix ? "count" : "prefix");
    int failing = host_fails(RECORDING_FIND_FOR_PREFIX);
    if (!prefix || !count) return NULL;
    *count = 0;
    if (failing) return NULL;
    if (!host.has_prefix_answer) return keys_with_prefix(prefix, count);
    size_t nbytes = (size_t)host.prefix_answer.count * sizeof(char *);
    *count = host.prefix_answer.count;
    void *answer = host_new_block(nbytes);
    if (nbytes) memcpy(answer, host.prefix_answer.items, nbytes);
    return (char **)answer;
}

kl_data_mgr_t *host_data_mgr(void) { return &data_mgr; }

void host_end_data(void) {
    while (host.variables.count) free_variable((variable_t *)host.variables.items[--host.variables.count]);
    host_free_all(&host.variables);
    host_free_all(&host.prefix_answer);
    memset(&host, 0, sizeof host);
}
