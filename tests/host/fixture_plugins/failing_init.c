/* failing_init.c: a plug-in that subscribes and then refuses to start. */
#include <kel/kel.h>

static void on_event(kl_io_mgr_t *io_mgr, kl_event_t *event, void *user_data) {
    (void)io_mgr;
    (void)event;
    kel_app_log(user_data, KL_LOG_ERROR, "failing_init: listener called");
}

static int init(kl_application_t *app, const char *args, void *plugin_data) {
    (void)args;
    (void)plugin_data;
    app->linfo->io_mgr->add_event_listener(app->linfo->io_mgr, "kel.internalinit", on_event, app);
    return -5;
}

static void fini(kl_application_t *app, void *plugin_data) {
    (void)plugin_data;
    kel_app_log(app, KL_LOG_ERROR, "failing_init: fini called");
}

int KEL_PLUGIN_CREATE_FUNC(kl_plugin_state_t *state) {
    state->name = kelal_strdup("failing_init");
    state->version.major = 7;
    state->init = init;
    state->fini = fini;
    return 0;
}
