/* recorder.h: stands between the plug-in and the host: writes calls down, counts blocks and lists, and makes calls
 * fail. */
#ifndef CONFORMANCE_RECORDER_H
#define CONFORMANCE_RECORDER_H

#include <kel/kel.h>

struct lua_State;

#ifdef __cplusplus
extern "C" {
#endif

/* Begins with an application that is started: its data manager's operations are watched from here on. One at a time. */
void kc_recorder_start(kl_application_t *app);
void kc_recorder_stop(void);

/* The calls so far, oldest first, as lines:
 *     find "main.ok"                      get "main.ok.kld_x" -> 10          get "main.ok.none" -> none
 *     set "main.ok.kld_x" = 10            hold                               release
 *     prefix "main.ok"                    clone "main.ok" "ok2" "main"       delete "main.ok"
 *     warning: No such object in DOM      log 2: text                        error: Argument must be a table
 * A set shows the Lua value: 10, "text", true, nil, or its type's name. A clone shows "data" behind it where position 4
 * holds a value. Allocation and list calls are counted, not written down. The text is the recorder's, good until the
 * next start or kc_forget_calls. */
int kc_call_count(void);
const char *kc_call(int index);
void kc_forget_calls(void);

/* Makes a later call fail as its interface states failure: null, 0, or doing nothing.
 *   function  "kelal_strdup" "kelal_realloc" "kl_darray_create" "kl_darray_add" "kl_application_find_object"
 *             "find_for_prefix" "kl_lua_clone_object" "kl_lua_delete_object" "kl_lua_get_data_value"
 *   which     the call to fail, 0 the next; -1 every one
 * Replaces what was asked for this function before. kc_mend ends all failing. */
void kc_fail(const char *function, int which);
void kc_mend(void);

/* Other than 0: kl_lua_error writes the error down and returns, instead of unwinding. */
void kc_set_error_returns(int returns);
/* Other than 0: kl_lua_get_app gives null. */
void kc_hide_application(int hide);
int kc_is_application_hidden(void);
/* Other than 0: the application's data_mgr is null. */
void kc_hide_data_manager(int hide);

/* What the plug-in has taken since the start and holds now: blocks of kelal_*, and lists of kl_darray_create. */
int kc_live_blocks(void);
int kc_live_lists(void);

/* Brackets that the plug-in holds open now. kc_close_holds ends them, as a host does when a script has ended. */
int kc_open_holds(void);
void kc_close_holds(void);

/* Calls that broke the interface, such as an element size that is not a pointer's, since the start; the last one's
 * text. */
int kc_violations(void);
const char *kc_last_violation(void);

/* For a host that watches itself: what it finds is another violation. */
void kc_violation(const char *text);

/* ---- For programs that do more than run the suite ---- */

/* Requests of the plug-in's that memory may not suffice for. KC_HOST is any request to the host's allocator: counted
 * where a host asks kc_host_request_fails. */
typedef enum kc_request { KC_STRDUP, KC_REALLOC, KC_LIST, KC_ELEMENT, KC_KEYS, KC_HOST, KC_REQUEST_KINDS } kc_request_t;

/* Asked before each request that would be passed on; other than 0 makes it fail. Null takes the function away. */
void kc_set_refuse(int (*refuse)(kc_request_t kind));

/* For a host whose allocator can be made to fail: to be asked before each request is served; other than 0 is to make it
 * fail. */
int kc_host_request_fails(void);

/* Called before and after each host call of the plug-in's, with the Lua state that runs. Null takes the function away.
 */
void kc_set_moment(void (*moment)(struct lua_State *L));

#ifdef __cplusplus
}
#endif

#endif
