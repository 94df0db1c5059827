/* managers.h: the managers of a loaded application, and the services that reach them from Lua. */
#ifndef KEL_SDK_MANAGERS_H
#define KEL_SDK_MANAGERS_H

#include <kel/kel_types.h>

struct lua_State;

#ifdef __cplusplus
extern "C" {
#endif

/* What an application was loaded with. */
struct _kl_load_info {
    kl_io_mgr_t *io_mgr;     /* Read; never null */
    kl_data_mgr_t *data_mgr; /* Read; null when the application has no data variables at all */
};

/* Returns the application that owns the Lua state, in each of its coroutines too, or null when none does. */
kl_application_t *kl_lua_get_app(struct lua_State *L);

/* Raises a Lua error with a formatted message.
 *   format  printf-style with %d and %s; it and its arguments stay the caller's
 * Usually unwinds the Lua call and does not return. A host may make it return: callers must bear both, and own nothing
 * that only they could free when they call it. */
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
void kl_lua_error(struct lua_State *L, const char *format, ...);

/* [-1, +1] on success, [-1, +0] on failure. Reads the variable whose key string is on the stack.
 *   mgr        never null
 *   key_index  stack index of the key; callers pass -1
 *   reserved   the host's; callers pass -1
 * Returns other than 0 and leaves the value in the key's place when the variable exists; else returns 0, removes the
 * key and leaves nothing. May raise out-of-memory. */
int kl_lua_get_data_value(struct lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index, int reserved);

/* [-0, +0] Writes a Lua value into the variable whose key string is on the stack, converting to the variable's type.
 *   mgr          never null
 *   key_index    stack index of the key; it stays on the stack
 *   value_index  stack index of the value, of any Lua type
 * Returns 1 when it was written, 0 when it was refused, which the host logs. May raise out-of-memory. */
int kl_lua_set_data_value(struct lua_State *L, kl_application_t *app, kl_data_mgr_t *mgr, int key_index,
                          int value_index);

/* [-0, +0] Clones an object with all that it contains.
 *   source_index  stack index of the source's qualified name
 *   name_index    stack index of the clone's own name
 *   parent_index  stack index of the qualified name of the layer or group that receives it
 *   data_index    stack index of a table of variable = value to write to the clone; may be nil or past the stack's top
 *   new_name      never null; on success receives the clone's qualified name, which stays the host's, good until the
 *                 host is called again
 * Returns other than 0 on success, else 0: nothing has changed then, and the host has logged why. */
int kl_lua_clone_object(struct lua_State *L, kl_application_t *app, int source_index, int name_index, int parent_index,
                        int data_index, const char **new_name);

/* [-0, +0] Deletes an object with all that it contains, and its variables.
 *   name_index  stack index of its qualified name
 * Returns other than 0 on success, else 0: nothing has changed then, and the host has logged why. */
int kl_lua_delete_object(struct lua_State *L, kl_application_t *app, int name_index);

#ifdef __cplusplus
}
#endif

#endif
