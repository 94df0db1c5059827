// plugin.cpp: the entry point, and the listener that registers the Lua module when the host's scripts can start.
#include <string.h>

#include <kel/kel.h>

#include "registration.h"

namespace {

// Unsubscribes first: registration is tried once, whatever comes of it.
void keldom_internal_app_init(kl_io_mgr_t *io_mgr, kl_event_t *, void *user_data) {
    auto *app = static_cast<kl_application_t *>(user_data);
    io_mgr->rem_event_listener(io_mgr, keldom_internal_app_init, app);
    auto *L = static_cast<lua_State *>(kl_string_map_get(app->shared_data_map, "luastate"));
    if (!L) {
        kel_app_log(app, KL_LOG_WARNING, "Canvas: Failed to get Lua state");
        return;
    }
    keldom_register(L);
}

// The Lua state need not exist yet, so this only asks to be told when it does.
int keldom_init(kl_application_t *app, const char *, void *) {
    kl_io_mgr_t *io_mgr = app->linfo->io_mgr;
    io_mgr->add_event_listener(io_mgr, "kel.internalinit", keldom_internal_app_init, app);
    return 0;
}

// Nothing to release: handles that the Lua state still holds free their names when it collects them.
void keldom_fini(kl_application_t *, void *) {}

} // namespace

#if defined(__GNUC__)
__attribute__((visibility("default")))
#endif
int KEL_PLUGIN_CREATE_FUNC(kl_plugin_state_t *state) {
    memset(state, 0, sizeof *state);
    state->version = kl_version_t{7, 0, 0, 39538};
    state->name = kelal_strdup("luakeldom");
    state->init = keldom_init;
    state->fini = keldom_fini;
    return 0;
}
