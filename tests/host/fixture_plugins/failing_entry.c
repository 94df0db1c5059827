/* failing_entry.c: a plug-in whose entry point gives up half-way. */
#include <kel/kel.h>

static int init(kl_application_t *app, const char *args, void *plugin_data) {
    (void)args;
    (void)plugin_data;
    kel_app_log(app, KL_LOG_ERROR, "failing_entry: init called");
    return 0;
}

int KEL_PLUGIN_CREATE_FUNC(kl_plugin_state_t *state) {
    state->name = kelal_strdup("failing_entry");
    state->version.major = 7;
    state->init = init;
    return 3;
}
