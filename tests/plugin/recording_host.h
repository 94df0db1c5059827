/* recording_host.h: a small host in plain C99 that writes down every call a plug-in makes, makes the call of a test's
 * choice fail, and holds each call against the contract. The model is whatever a test builds, well-formed or not.
 *
 * There is one host at a time. Everything that a function here returns belongs to the host, until recording_end. */
#ifndef RECORDING_HOST_H
#define RECORDING_HOST_H

#include <kel/kel.h>

struct lua_State;

#ifdef __cplusplus
extern "C" {
#endif

/* What a plug-in can call: the functions that it imports, and the operations of the managers' records. */
typedef enum recording_call {
    RECORDING_STRDUP,
    RECORDING_REALLOC,
    RECORDING_FREE,
    RECORDING_DARRAY_CREATE,
    RECORDING_DARRAY_ADD,
    RECORDING_DARRAY_ITEM,
    RECORDING_DARRAY_SIZE,
    RECORDING_DARRAY_FREE,
    RECORDING_ITERATOR_INIT,
    RECORDING_ITERATOR_FIRST,
    RECORDING_ITERATOR_NEXT,
    RECORDING_MAP_GET,
    RECORDING_MAP_TRAVERSE,
    RECORDING_FIND_OBJECT,
    RECORDING_GET_APP,
    RECORDING_LUA_ERROR,
    RECORDING_GET_DATA_VALUE,
    RECORDING_SET_DATA_VALUE,
    RECORDING_CLONE_OBJECT,
    RECORDING_DELETE_OBJECT,
    RECORDING_APP_LOG,
    RECORDING_ADD_EVENT_LISTENER,
    RECORDING_REM_EVENT_LISTENER,
    RECORDING_FIND_FOR_PREFIX,
    RECORDING_HOLD,
    RECORDING_RELEASE,
    RECORDING_CALL_COUNT
} recording_call_t;

/* Which calls become lines. Services are always written down; the others only when a test asks, since they are many. */
enum {
    RECORDING_SHOW_GET_APP = 1,   /* kl_lua_get_app */
    RECORDING_SHOW_ALLOCATOR = 2, /* kelal_* */
    RECORDING_SHOW_ARRAYS = 4,    /* kl_darray_*, without iterators */
    RECORDING_SHOW_WALKS = 8      /* kl_string_map_traverse, iterators */
};

/* How many rows and columns a table can grow by while somebody walks it. */
enum { RECORDING_SPARE_CELLS = 4 };

/* A fresh host: an application without screens and layers, a data manager without variables, nothing recorded. */
void recording_begin(void);
void recording_end(void);

kl_application_t *recording_app(void);
kl_object_t *recording_app_object(void);

/* ---- The record ---- */

/* Each call is one line, such as: kl_application_find_object("main.ok", 0)
 * Indexes are from 0; a mark is the number of lines so far. */
void recording_show(unsigned groups); /* RECORDING_SHOW_..., or'ed */
int recording_line_count(void);
const char *recording_line(int index);

/* Every call is counted, shown or not, failed or not. */
unsigned long recording_calls(recording_call_t call);

/* The log by itself: "1: text" for a line at level 1 for the application, "1 null: text" for a line for no application.
 */
int recording_log_count(void);
const char *recording_log(int index);

/* The texts that kl_lua_error was asked to raise. */
int recording_error_count(void);
const char *recording_error(int index);

/* Breaches of the contract, one text each: a wrong argument, a use of something freed, a release without a hold. */
int recording_violation_count(void);
const char *recording_violation(int index);
void recording_forget_violations(void);

/* What the plug-in made and has not freed, and brackets of holds that are open. The model's own lists do not count. */
int recording_live_blocks(void);
int recording_live_arrays(void);
int recording_open_holds(void);

/* ---- Faults and answers ---- */

/* Makes the nth call from now on fail (1: the next), once. What failing is: null for what returns a pointer, -1 for
 * kl_darray_add and the listeners, 0 for what returns whether it worked; nothing happens then. The calls that return
 * nothing, kl_darray_size and kl_string_map_traverse cannot fail. nth 0 ends the wait. */
void recording_fail(recording_call_t call, unsigned nth);

/* Makes every call fail until further notice. */
void recording_fail_always(recording_call_t call, int always);

/* Whether kl_lua_error returns after writing down the text, instead of unwinding the Lua call with it. */
void recording_errors_return(int returns);

/* Whether the application has no data manager. */
void recording_without_data_mgr(int without);

/* What kl_lua_clone_object answers: the clone's qualified name, copied; or null, as at first, to refuse. */
void recording_answer_clone(const char *new_name);

/* Takes deleted objects out of reach, as recording_remove does, when the plug-in asks for it; not so at first. */
void recording_obey_delete(int obey);

/* What find_for_prefix answers instead of the variables' keys: copies of `count` strings, in this order. Null ends it.
 */
void recording_answer_prefix(const char *const *keys, int count);

/* ---- The model ---- */

/* Each puts a new object into its container, the record's lists and kl_application_find_object alike. */
kl_screen_t *recording_add_screen(const char *name);
kl_layer_t *recording_add_layer(const char *name);
kl_layer_instance_t *recording_add_instance(kl_screen_t *screen, kl_layer_t *layer);
kl_control_t *recording_add_control(void *owner, const char *name); /* owner: a layer or a group */
kl_group_t *recording_add_group(void *owner, const char *name);

/* A table with all its cells; the one at row 1, column 2 is called "cell_1_2". */
kl_table_t *recording_add_table(void *owner, const char *name, int rows, int cols);
kl_control_t *recording_cell(kl_table_t *table, int row, int col);
void recording_resize_table(kl_table_t *table, int rows, int cols); /* at most RECORDING_SPARE_CELLS larger than made */
void recording_set_cell(kl_table_t *table, int row, int col, void *object); /* any object, which keeps its name */
kl_control_t *recording_add_template(kl_table_t *table, const char *name);  /* which has no qualified name */

/* The same without a container and a qualified name: for what no list holds. type: any code; codes of no control make a
 * control's record with that code. */
kl_control_t *recording_make_control(kl_object_type_t type, const char *name);
kl_layer_t *recording_make_layer(const char *name);
kl_group_t *recording_make_group(const char *name);
kl_screen_t *recording_make_screen(const char *name);
kl_layer_instance_t *recording_make_instance(kl_screen_t *screen, kl_layer_t *layer);

/* Raw changes, of which none cares for the others. The list of a layer, group or screen takes any object, or null. */
void recording_list_append(void *owner, void *object);
void recording_list_take_out(void *owner, void *object);
void recording_put_screen(const char *key, kl_screen_t *screen); /* at the end of the map, even when the key is there */
void recording_put_layer(const char *key, kl_layer_t *layer);
void recording_rename(void *object, const char *name);            /* the record's own name */
void recording_resolve(const char *qualified_name, void *object); /* what a name resolves to; null: to nothing */
void recording_remove(void *object); /* from every list and name; the record stays readable */

/* ---- Data variables ---- */

void recording_set_number(const char *key, double value);
void recording_set_string(const char *key, const char *value);
void recording_set_boolean(const char *key, int value);
void recording_remove_variable(const char *key);

/* The value as text, as in lines: 10, "text", true; null when there is no such variable. */
const char *recording_variable(const char *key);

/* ---- A model that lives (recording_life.c, which only programs that use it need) ---- */

/* RECORDING_LIVES: until recording_end, what scripts ask for happens, as on a device:
 *   clone   copies a control, group or table with all that is in it and its variables, into a layer or group, and
 *           applies the data table; refuses other kinds, names that are taken or have other characters than letters,
 *           digits and "_". What recording_answer_clone said is not asked
 *   delete  removes a control, group or table with all that is in it and its variables; refuses other kinds
 *   write   gives an existing variable's type: booleans become 0 or 1 and numerals numbers in a number's, numbers
 * become text in a string's. Makes unknown variables of objects that are there. Refuses the rest. kld_rows and kld_cols
 * of a table resize its grid, within RECORDING_SPARE_CELLS What is refused returns 0 and changes nothing. 0, as at
 * first: clones and deletions as told above, and every write is taken as it is. */
enum { RECORDING_LIVES = 1 };
void recording_behave(unsigned behaviour);

/* Lets the cells within the table's bounds resolve by their records' names, the first of those that share one, and
 * those beyond by none. For tables whose cells recording_rename has named. */
void recording_name_cells(kl_table_t *table);

/* ---- Lua, events, the plug-in ---- */

/* Shares the state as "luastate"; null takes the entry away. */
void recording_share_state(struct lua_State *L);

/* Delivers an event to the listeners that are subscribed to its name; returns how many there were. */
int recording_deliver(const char *event_name);
int recording_subscriptions(void);

/* Whether a subscription is there, and its parts; index from 0. */
io_listener_t recording_listener(int index);

/* What a host does with a plug-in, in C: entry point and init; fini, and the name freed. Return what init returned. */
int recording_load_plugin(kl_plugin_state_t *plugin, const char *args);
void recording_unload_plugin(kl_plugin_state_t *plugin);

#ifdef __cplusplus
}
#endif

#endif
