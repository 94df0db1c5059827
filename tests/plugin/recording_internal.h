/* recording_internal.h: what the files of the recording host share. Tests include recording_host.h alone. */
#ifndef RECORDING_INTERNAL_H
#define RECORDING_INTERNAL_H

#include <stdarg.h>
#include <stddef.h>

#include "recording_host.h"

#if defined(__GNUC__)
#define HOST_PRINTF(pattern, first) __attribute__((format(printf, pattern, first)))
#else
#define HOST_PRINTF(pattern, first)
#endif

/* ---- recording_host.c: the host's own memory, and the record ---- */

void *host_alloc(size_t nbytes); /* zeroed; ends the program when memory is out */
char *host_copy(const char *text);
void host_overwrite(void *block, size_t nbytes); /* what is about to be freed, so that a late reader notices */
char *host_vformat(const char *pattern, va_list arguments) HOST_PRINTF(1, 0);

/* A list of pointers, each from host_alloc, that grows by itself. */
typedef struct host_pointers {
    void **items;
    int count;
    int capacity;
} host_pointers_t;

void *host_append(host_pointers_t *list, void *item); /* returns item */
void host_take_out(host_pointers_t *list, int index); /* without freeing the item */
void host_free_all(host_pointers_t *list);

void host_line(unsigned group, const char *pattern, ...) HOST_PRINTF(2, 3); /* group 0: a service */
void host_violation(const char *pattern, ...) HOST_PRINTF(1, 2);
void host_count(recording_call_t call);
int host_fails(recording_call_t call); /* counts the call and tells whether it is to fail */
int host_errors_return(void);
const char *host_note_error(const char *format, va_list arguments)
    HOST_PRINTF(1, 0); /* the text, which stays the record's */

/* What scripts' writes, clones and deletions do to a model that lives. None of them records or fails by itself. */
typedef struct host_life {
    int (*write)(struct lua_State *L, const char *key, int value_index); /* whether the value was taken */
    char *(*clone)(struct lua_State *L); /* from positions 1 to 4; the clone's name, the caller's to free, or null */
    int (*remove)(const char *qualified_name); /* whether it was removed */
} host_life_t;

const host_life_t *host_life(void); /* null: nothing lives */
void host_live(const host_life_t *life);

/* A text in quotes, or null without, in room that the caller has. */
enum { HOST_TEXT_ROOM = 512 };
const char *host_quoted(char *room, size_t nbytes, const char *text);

/* ---- recording_memory.c ---- */

void *host_new_block(size_t nbytes); /* as kelal_realloc makes it, without a call being recorded */

kl_darray_t *host_new_list(const char *owner); /* a list of the model's, which a plug-in may only read */
void host_list_append(kl_darray_t *list, void *object);
void host_list_take_out(kl_darray_t *list, const void *object);
void host_lists_take_out(const void *object); /* from every list of the model's */

kl_string_map_t *host_map(const char *label); /* "screen_map", "layer_map" or "shared_data_map" */
void host_map_append(kl_string_map_t *map, const char *key, void *value);
void host_map_take_out(kl_string_map_t *map, const void *value);
void host_map_clear(kl_string_map_t *map);

void host_end_memory(void);

int host_list_size(const kl_darray_t *list);
void *host_list_item(const kl_darray_t *list, int index);

/* ---- recording_model.c ---- */

void *host_resolved(const char *qualified_name); /* as kl_application_find_object, without a call being recorded */
const char *host_prefix(const void *record);     /* what its children's names begin with; null: they have none */
void host_name_object(void *record, const char *prefix, const char *name); /* once an object */
void host_add_name(const char *qualified_name, void *record);              /* after those that are there already */
void host_forget_names(const void *record);
const char *host_describe_object(char *room, size_t nbytes, const void *record);
void host_begin_model(kl_io_mgr_t *io_mgr);
void host_end_model(void);

/* ---- recording_data.c ---- */

int host_variable_type(const char *key);        /* LUA_TNIL: there is none */
void host_remove_variables(const char *prefix); /* whose keys begin with it */
void host_copy_variables(const char *prefix, const char *new_prefix);
kl_data_mgr_t *host_data_mgr(void);
void host_end_data(void);

/* ---- recording_services.c ---- */

void host_check_state(const char *who, struct lua_State *L);
const char *host_describe_value(char *room, size_t nbytes, struct lua_State *L,
                                int index); /* converts nothing in place */
kl_io_mgr_t *host_io_mgr(void);
void host_end_services(void);

#endif
