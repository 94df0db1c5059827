/* good.c: a plug-in that does what plug-ins do, and tells each step in the log. */
#include <stddef.h>

#include <lua.h>

#include <kel/kel.h>

static int collect(lua_State *L) {
    kel_app_log(kl_lua_get_app(L), KL_LOG_INFO, "good: collected");
    return 0;
}

static int greet(lua_State *L) {
    lua_pushstring(L, "hello");
    return 1;
}

static void on_internal_init(kl_io_mgr_t *io_mgr, kl_event_t *event, void *user_data) {
    kl_application_t *app = user_data;
    lua_State *L = kl_string_map_get(app->shared_data_map, "luastate");
    io_mgr->rem_event_listener(io_mgr, on_internal_init, app);
    kel_app_log(app, KL_LOG_INFO, "good: %s, Lua state %s", event->name, L != NULL ? "there" : "missing");
    if (L == NULL) return;
    lua_pushcclosure(L, greet, 0);
    lua_setfield(L, LUA_GLOBALSINDEX, "greet");
    /* Collected when the state is closed: this code must still be loaded then. */
    lua_newuserdata(L, 1);
    lua_createtable(L, 0, 1);
    lua_pushcclosure(L, collect, 0);
    lua_setfield(L, -2, "__gc");
    lua_setmetatable(L, -2);
    lua_setfield(L, LUA_GLOBALSINDEX, "keepsake");
}

static void on_change(kl_data_mgr_t *mgr, const char *key, void *user_data) {
    (void)mgr;
    kel_app_log(user_data, KL_LOG_INFO, "good: changed %s", key);
}

static int init(kl_application_t *app, const char *args, void *plugin_data) {
    kel_app_log(app, KL_LOG_INFO, "good: init(%s)", args != NULL ? args : "no arguments");
    (void)plugin_data;
    app->linfo->data_mgr->add_change_listener(app->linfo->data_mgr, "mode", on_change, app);
    return app->linfo->io_mgr->add_event_listener(app->linfo->io_mgr, "kel.internalinit", on_internal_init, app);
}

static void fini(kl_application_t *app, void *plugin_data) {
    (void)plugin_data;
    kel_app_log(app, KL_LOG_INFO, "good: fini");
}

int KEL_PLUGIN_CREATE_FUNC(kl_plugin_state_t *state) {
    state->name = kelal_strdup("good");
    state->init = init;
    state->fini = fini;
    state->version.major = 7;
    return 0;
}
