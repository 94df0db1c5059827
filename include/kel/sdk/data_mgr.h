/* data_mgr.h: the data manager, which holds every property of the application as a named data variable. */
#ifndef KEL_SDK_DATA_MGR_H
#define KEL_SDK_DATA_MGR_H

#include <kel/kel_types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Told that a variable has changed (or, as a miss listener, that a variable was asked for that does not exist).
 * key belongs to the manager and is gone after the call. */
typedef void (*kl_data_listener_t)(kl_data_mgr_t *mgr, const char *key, void *user_data);

/* Called once for each variable, in key order. data points to the value as get_data returns it. A result other than 0
 * ends the walk. */
typedef int (*kl_data_visitor_t)(const char *key, const char *format, const void *data, void *user_data);

/* What the manager holds. */
typedef struct _kl_data_metrics {
    uint32_t variables; /* how many variables there are */
    uint32_t nbytes;    /* bytes of their values, strings with their end */
    uint32_t listeners; /* how many listeners are subscribed */
} kl_data_metrics_t;

/* Operations of the data manager, in slot order. A plug-in calls find_for_prefix, hold_change_listener and
 * release_change_listener alone; the others are for hosts, which may leave what they do not offer null.
 * A format names a variable's type: "i8" "u8" "i16" "u16" "i32" "u32" "f64" "string". Keys and formats that are passed
 * in stay the caller's. All return 0 for success, and -1 for failure, unless stated. */
struct _kl_data_mgr {
    uint32_t nbytes; /* size of this record */

    int (*init)(kl_data_mgr_t *mgr, kl_application_t *app);
    void (*fini)(kl_data_mgr_t *mgr);

    /* Writes nbytes of data, laid out as format says, into a variable, converting to the variable's own type and
     * creating it with that format where its object exists but the variable does not. */
    int (*set_data)(kl_data_mgr_t *mgr, const char *key, const char *format, const void *data, uint32_t nbytes);

    /* Returns the variable's format, a constant of the manager's, or null when there is no such variable. */
    const char *(*get_format)(kl_data_mgr_t *mgr, const char *key);

    /* Copies a variable's value, a string with its end, into the caller's nbytes of room. -1 too when room is short. */
    int (*get_data_value)(kl_data_mgr_t *mgr, const char *key, void *value, uint32_t nbytes);

    /* Returns a copy of a variable's value for release_data, its size in nbytes, or null when there is no such
     * variable. */
    void *(*get_data)(kl_data_mgr_t *mgr, const char *key, uint32_t *nbytes);
    void (*release_data)(kl_data_mgr_t *mgr, void *data);

    /* Lists the keys that begin with prefix and are longer, sorted by byte value.
     *   prefix  never null; "" lists every key
     *   count   never null; receives the number of keys, 0 when the result is null
     * Returns an array that the caller frees with kelal_free, or null when there is none or memory is out; the strings
     * stay the manager's, good until a variable is created or removed. */
    char **(*find_for_prefix)(kl_data_mgr_t *mgr, const char *prefix, int *count);

    /* Returns the number of the variable's format, as get_format_index does, or -1 when there is no such variable. */
    int (*get_type)(kl_data_mgr_t *mgr, const char *key);

    /* Subscribes a listener to the changes of one variable, which need not exist yet, or of every one when key is null.
     * rem_change_listener ends every subscription of this listener with this user_data; allowed inside the listener. */
    int (*add_change_listener)(kl_data_mgr_t *mgr, const char *key, kl_data_listener_t listener, void *user_data);
    int (*rem_change_listener)(kl_data_mgr_t *mgr, kl_data_listener_t listener, void *user_data);

    /* Bracket a batch of writes: between both, change notifications wait; at the last release of nested brackets each
     * changed variable is told once, in the order of first writes, and not at all when its value is what it was. */
    void (*hold_change_listener)(kl_data_mgr_t *mgr);
    void (*release_change_listener)(kl_data_mgr_t *mgr);

    /* Returns 1 when a change of the variable would reach a listener or queue an event, else 0. */
    int (*will_fire_event)(kl_data_mgr_t *mgr, const char *key);

    /* Tells every waiting change now, although notifications are held. */
    void (*force_notifications)(kl_data_mgr_t *mgr);

    /* Returns the length of the longest key in bytes, without its end. */
    int (*get_largest_key)(kl_data_mgr_t *mgr);

    /* Visits every variable. Returns what the visitor returned last, 0 when there is none. The visitor must not write.
     */
    int (*traverse)(kl_data_mgr_t *mgr, kl_data_visitor_t visitor, void *user_data);

    int (*get_metrics)(kl_data_mgr_t *mgr, kl_data_metrics_t *metrics);

    /* Queues the named event, with the key as its target, on each change of the variable. */
    int (*bind_event)(kl_data_mgr_t *mgr, const char *key, const char *event_name);

    /* Subscribes a listener to reads of variables that do not exist. */
    int (*add_miss_listener)(kl_data_mgr_t *mgr, kl_data_listener_t listener, void *user_data);

    /* Returns the number of a format, from 0, or -1 when there is no such format. */
    int (*get_format_index)(kl_data_mgr_t *mgr, const char *format);

    /* Creates a variable with the value 0 or "". -1 too when it exists or its object does not. */
    int (*create_data_entry_typed)(kl_data_mgr_t *mgr, const char *key, int format_index);
};

#ifdef __cplusplus
}
#endif

#endif
