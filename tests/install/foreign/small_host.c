/* small_host.c: an application without objects, one listener, a map with one entry. What only objects need ends the
 * program. */
#include "small_host.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <lauxlib.h>
#include <lua.h>
#include <lualib.h>

struct _kl_string_map {
    const char *key;
    void *value;
};

static io_listener_t start_listener;
static void *start_data;

static int add_listener(kl_io_mgr_t *mgr, const char *event_name, io_listener_t listener, void *user_data) {
    (void)mgr;
    if (strcmp(event_name, "kel.internalinit") != 0) return 1;
    start_listener = listener;
    start_data = user_data;
    return 0;
}

static int remove_listener(kl_io_mgr_t *mgr, io_listener_t listener, void *user_data) {
    (void)mgr;
    if (listener != start_listener || user_data != start_data) return 1;
    start_listener = NULL;
    return 0;
}

int run_line(int (*plugin_entry)(kl_plugin_state_t *state), const char *line) {
    lua_State *L = luaL_newstate();
    kl_string_map_t shared = {"luastate", L};
    kl_io_mgr_t io_mgr = {
        .nbytes = sizeof io_mgr, .add_event_listener = add_listener, .rem_event_listener = remove_listener};
    struct _kl_load_info linfo = {.io_mgr = &io_mgr};
    kl_application_t app = {.linfo = &linfo, .shared_data_map = &shared};
    kl_plugin_state_t plugin;
    kl_event_t start = {.name = "kel.internalinit"};
    int status = 1;

    luaL_openlibs(L);
    if (plugin_entry(&plugin) == 0 && plugin.init(&app, NULL, plugin.plugin_data) == 0 && start_listener != NULL) {
        start_listener(&io_mgr, &start, start_data);
        status = luaL_dostring(L, line);
        printf("%s\n", lua_tostring(L, -1));
        plugin.fini(&app, plugin.plugin_data);
        kelal_free(plugin.name);
    }
    lua_close(L);
    return status;
}

/* ---- What plug-ins call ---- */

char *kelal_strdup(const char *string) { return strcpy(malloc(strlen(string) + 1), string); }
void *kelal_realloc(void *block, size_t nbytes) { return realloc(block, nbytes); }
void kelal_free(void *block) { free(block); }

void *kl_string_map_get(kl_string_map_t *map, const char *key) {
    return strcmp(map->key, key) == 0 ? map->value : NULL;
}

void kel_app_log(kl_application_t *app, int level, const char *format, ...) {
    va_list arguments;
    (void)app;
    (void)level;
    va_start(arguments, format);
    vfprintf(stderr, format, arguments);
    va_end(arguments);
    fputc('\n', stderr);
}

/* ---- What they call for objects, which this host has none of ---- */

kl_darray_t *kl_darray_create(int element_size, int capacity, int flags) { abort(); }
int kl_darray_add(kl_darray_t *array, const void *element, int position) { abort(); }
void *kl_darray_item(kl_darray_t *array, int index) { abort(); }
int kl_darray_size(kl_darray_t *array) { abort(); }
void kl_darray_free(kl_darray_t *array) { abort(); }
void kl_darray_iterator_init(kl_darray_iter_t *iterator, kl_darray_t *array, int flags) { abort(); }

int kl_string_map_traverse(kl_string_map_t *map, kl_string_map_visitor_t visitor, void *user_data, int flags) {
    abort();
}

kl_object_t *kl_application_find_object(kl_application_t *app, const char *name, int flags) { abort(); }

kl_application_t *kl_lua_get_app(struct lua_State *L) { abort(); }
void kl_lua_error(struct lua_State *L, const char *format, ...) { abort(); }

int kl_lua_get_data_value(struct lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index, int reserved) {
    abort();
}

int kl_lua_set_data_value(struct lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index,
                          int value_index) {
    abort();
}

int kl_lua_clone_object(struct lua_State *L, kl_application_t *app, int source_index, int name_index, int parent_index,
                        int data_index, const char **new_name) {
    abort();
}

int kl_lua_delete_object(struct lua_State *L, kl_application_t *app, int name_index) { abort(); }
