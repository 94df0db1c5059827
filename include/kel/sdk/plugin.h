/* plugin.h: what a plug-in offers the host that loads it. */
#ifndef KEL_SDK_PLUGIN_H
#define KEL_SDK_PLUGIN_H

#include <kel/kel_types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The host owns the record and clears nothing in it; the plug-in's entry point fills it. */
struct _kl_plugin_state {
    char *name;        /* from kelal_strdup; the host frees it with kelal_free after fini; null when memory was out */
    void *plugin_data; /* passed to init and fini as it is */

    /* Called once, when the application's managers stand but its Lua state need not.
     *   args  the plug-in's argument string; null when there is none; stays the host's
     * Returns 0 for success; after anything else the host does not use the plug-in. */
    int (*init)(kl_application_t *app, const char *args, void *plugin_data);

    /* Called once, before the application goes. */
    void (*fini)(kl_application_t *app, void *plugin_data);

    kl_version_t version; /* of the host interface that the plug-in was built for */
    int32_t service_number;
};

/* The one symbol that a plug-in exports: a function of exactly this name. Fills *state, which is never null.
 * Returns 0 for success. */
int KEL_PLUGIN_CREATE_FUNC(kl_plugin_state_t *state);

#ifdef __cplusplus
}
#endif

#endif
