// listener_guard.h: calls an event listener so that neither a Lua error nor an exception of its own leaves it.
#pragma once

#include <kel/kel.h>

namespace kelhost {

// The guard of the I/O manager (IoManager::guard_listeners) while a Lua state is open: a listener, a plug-in's perhaps,
// may raise a Lua error, which must not unwind the manager. What goes wrong is logged. runtime: the application's
// Runtime.
void call_listener(void *runtime, io_listener_t listener, kl_io_mgr_t *mgr, kl_event_t *event, void *user_data);

} // namespace kelhost
