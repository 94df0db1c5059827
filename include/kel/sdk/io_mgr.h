/* io_mgr.h: the I/O manager, which delivers events to listeners. */
#ifndef KEL_SDK_IO_MGR_H
#define KEL_SDK_IO_MGR_H

#include <kel/kel_types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Receives an event. The event belongs to the manager and is gone after the call. The listener may remove itself. */
typedef void (*io_listener_t)(kl_io_mgr_t *mgr, kl_event_t *event, void *user_data);

/* A piece of work that the manager calls once, on the thread that delivers events. */
typedef void (*io_callback_t)(kl_io_mgr_t *mgr, void *user_data);

/* Operations of the I/O manager, in slot order. A plug-in calls add_event_listener and rem_event_listener alone; the
 * others are for hosts, which may leave what they do not offer null. All return 0 for success unless stated. */
struct _kl_io_mgr {
    uint32_t nbytes; /* size of this record */

    int (*init)(kl_io_mgr_t *mgr, kl_application_t *app);
    void (*fini)(kl_io_mgr_t *mgr);

    /* Subscribes a listener to every event of one name. event_name is copied; user_data is passed to the listener as it
     * is and stays the caller's. */
    int (*add_event_listener)(kl_io_mgr_t *mgr, const char *event_name, io_listener_t listener, void *user_data);

    /* Ends every subscription of this listener with this user_data, whatever the event's name. Allowed inside the
     * listener. Other than 0 when there was none. */
    int (*rem_event_listener)(kl_io_mgr_t *mgr, io_listener_t listener, void *user_data);

    /* Delivers an event, or calls a callback, before returning. The event stays the caller's. */
    int (*trigger_event)(kl_io_mgr_t *mgr, const kl_event_t *event);
    int (*trigger_callback)(kl_io_mgr_t *mgr, io_callback_t callback, void *user_data);

    /* Copies an event into the queue. queue_compress_event replaces a waiting event of the same name and target. */
    int (*queue_event)(kl_io_mgr_t *mgr, const kl_event_t *event);
    int (*queue_compress_event)(kl_io_mgr_t *mgr, const kl_event_t *event);
    int (*queue_callback)(kl_io_mgr_t *mgr, io_callback_t callback, void *user_data);

    /* Delivers what is waiting, and what that brings about, until the queue is empty. Returns how many were delivered.
     */
    int (*event_loop)(kl_io_mgr_t *mgr);

    /* Which event names count as pointer events (press, motion, release). is_pointer_event returns 1 or 0. */
    int (*add_pointer_event)(kl_io_mgr_t *mgr, const char *event_name);
    int (*rem_pointer_event)(kl_io_mgr_t *mgr, const char *event_name);
    int (*is_pointer_event)(kl_io_mgr_t *mgr, const char *event_name);
};

#ifdef __cplusplus
}
#endif

#endif
