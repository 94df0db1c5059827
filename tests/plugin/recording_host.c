/* recording_host.c: a small host in plain C99 that writes down every call a plug-in makes. Here: the record itself, the
 * faults to come, and the host's beginning and end.
 *
 * Wherever a host is free to choose, this one chooses what a careless plug-in trips over: reallocation always moves the
 * block, adding to an array moves its elements, what is freed is overwritten first. */
#include "recording_internal.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static struct {
    host_pointers_t lines, log, errors, violations; /* texts */
    unsigned shown_groups;
    unsigned long calls[RECORDING_CALL_COUNT];
    unsigned fails_in[RECORDING_CALL_COUNT]; /* 1: the next call */
    int fails_always[RECORDING_CALL_COUNT];
    int errors_return;
    const host_life_t *life;
} record;

/* ---- The host's own memory ---- */

void *host_alloc(size_t nbytes) {
    void *block = calloc(1, nbytes ? nbytes : 1);
    if (!block) {
        fprintf(stderr, "recording host: out of memory, %lu bytes wanted\n", (unsigned long)nbytes);
        abort();
    }
    return block;
}

char *host_copy(const char *text) {
    char *copy = (char *)host_alloc(strlen(text) + 1);
    strcpy(copy, text);
    return copy;
}

/* Through volatile, because a compiler drops writes to what is freed next. */
void host_overwrite(void *block, size_t nbytes) {
    volatile unsigned char *byte = (volatile unsigned char *)block;
    for (size_t i = 0; i < nbytes; ++i) byte[i] = 0xA5;
}

void *host_append(host_pointers_t *list, void *item) {
    if (list->count == list->capacity) {
        int capacity = list->capacity ? 2 * list->capacity : 16;
        void **items = (void **)host_alloc((size_t)capacity * sizeof(void *));
        if (list->count) memcpy(items, list->items, (size_t)list->count * sizeof(void *));
        free(list->items);
        list->items = items;
        list->capacity = capacity;
    }
    list->items[list->count++] = item;
    return item;
}

void host_take_out(host_pointers_t *list, int index) {
    for (int i = index + 1; i < list->count; ++i) list->items[i - 1] = list->items[i];
    --list->count;
}

void host_free_all(host_pointers_t *list) {
    for (int i = 0; i < list->count; ++i) free(list->items[i]);
    free(list->items);
    memset(list, 0, sizeof *list);
}

char *host_vformat(const char *pattern, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    int length = vsnprintf(NULL, 0, pattern, again);
    va_end(again);
    char *text = (char *)host_alloc((size_t)(length < 0 ? 0 : length) + 1);
    if (length > 0) vsnprintf(text, (size_t)length + 1, pattern, arguments);
    return text;
}

/* ---- The record ---- */

void host_violation(const char *pattern, ...) {
    va_list arguments;
    va_start(arguments, pattern);
    host_append(&record.violations, host_vformat(pattern, arguments));
    va_end(arguments);
}

void host_line(unsigned group, const char *pattern, ...) {
    if (group && !(record.shown_groups & group)) return;
    va_list arguments;
    va_start(arguments, pattern);
    host_append(&record.lines, host_vformat(pattern, arguments));
    va_end(arguments);
}

void host_count(recording_call_t call) { ++record.calls[call]; }

int host_fails(recording_call_t call) {
    host_count(call);
    if (record.fails_in[call] && --record.fails_in[call] == 0) return 1;
    return record.fails_always[call];
}

int host_errors_return(void) { return record.errors_return; }

const host_life_t *host_life(void) { return record.life; }
void host_live(const host_life_t *life) { record.life = life; }

const char *host_quoted(char *room, size_t nbytes, const char *text) {
    if (!text) return "null";
    snprintf(room, nbytes, "\"%s\"", text);
    return room;
}

void recording_show(unsigned groups) { record.shown_groups = groups; }
int recording_line_count(void) { return record.lines.count; }
const char *recording_line(int index) { return (const char *)record.lines.items[index]; }
unsigned long recording_calls(recording_call_t call) { return record.calls[call]; }
int recording_log_count(void) { return record.log.count; }
const char *recording_log(int index) { return (const char *)record.log.items[index]; }
int recording_error_count(void) { return record.errors.count; }
const char *recording_error(int index) { return (const char *)record.errors.items[index]; }
int recording_violation_count(void) { return record.violations.count; }
const char *recording_violation(int index) { return (const char *)record.violations.items[index]; }
void recording_forget_violations(void) { host_free_all(&record.violations); }

void recording_fail(recording_call_t call, unsigned nth) { record.fails_in[call] = nth; }
void recording_fail_always(recording_call_t call, int always) { record.fails_always[call] = always; }
void recording_errors_return(int returns) { record.errors_return = returns; }

/* ---- The two channels ---- */

static char *joined(const char *pattern, ...) {
    va_list arguments;
    va_start(arguments, pattern);
    char *text = host_vformat(pattern, arguments);
    va_end(arguments);
    return text;
}

void kel_app_log(kl_application_t *app, int level, const char *format, ...) {
    host_count(RECORDING_APP_LOG);
    if (app && app != recording_app()) host_violation("kel_app_log for another application");
    va_list arguments;
    va_start(arguments, format);
    char *text = host_vformat(format, arguments);
    va_end(arguments);
    host_line(0, "kel_app_log(%s, %d, \"%s\")", app ? "app" : "null", level, text);
    host_append(&record.log, joined("%d%s: %s", level, app ? "" : " null", text));
    free(text);
}

const char *host_note_error(const char *format, va_list arguments) {
    const char *text = (const char *)host_append(&record.errors, host_vformat(format, arguments));
    host_line(0, "kl_lua_error(\"%s\")", text);
    return text;
}

/* ---- The plug-in, the beginning and the end ---- */

int recording_load_plugin(kl_plugin_state_t *plugin, const char *args) {
    int result = KEL_PLUGIN_CREATE_FUNC(plugin);
    return result ? result : plugin->init(recording_app(), args, plugin->plugin_data);
}

void recording_unload_plugin(kl_plugin_state_t *plugin) {
    plugin->fini(recording_app(), plugin->plugin_data);
    kelal_free(plugin->name);
    plugin->name = NULL;
}

void recording_begin(void) {
    recording_end();
    host_begin_model(host_io_mgr());
    recording_without_data_mgr(0);
}

void recording_end(void) {
    host_end_services();
    host_end_data();
    host_end_model();
    host_end_memory();
    host_free_all(&record.lines);
    host_free_all(&record.log);
    host_free_all(&record.errors);
    host_free_all(&record.violations);
    memset(&record, 0, sizeof record);
}
