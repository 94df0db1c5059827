/* host_under_test.h: the little that a host supplies so that the conformance suite can run against it.
 *
 * The suite drives the plug-in through Lua alone. It compiles the plug-in with every host function redirected to a
 * recorder (redirect.h), which writes each call down, makes calls fail, and passes the rest on to the host. So a host
 * has to do no more than start an application from a description, and stop it. */
#ifndef CONFORMANCE_HOST_UNDER_TEST_H
#define CONFORMANCE_HOST_UNDER_TEST_H

#include <kel/kel.h>

struct lua_State;

#ifdef __cplusplus
extern "C" {
#endif

/* A data variable with its value: text when it is not null, else number. */
typedef struct kc_variable {
    const char *name;
    const char *type; /* "i8" "u8" "i16" "u16" "i32" "u32" "f64" "string" */
    double number;
    const char *text;
} kc_variable_t;

/* A counted list: `items` may be null when `count` is 0. */
typedef struct kc_variables {
    const kc_variable_t *items;
    int count;
} kc_variables_t;

typedef enum kc_kind { KC_CONTROL, KC_TABLE, KC_GROUP } kc_kind_t;

/* A control, table or group, with the children of a group, or the templates and cells of a table. */
typedef struct kc_element {
    kc_kind_t kind;
    const char *name;
    int x, y, width, height; /* groups: x and y alone */
    int hidden;              /* 0 or 1 */
    kc_variables_t variables;
    const struct kc_element *children;
    int child_count;
    int rows, cols;
    const char *const *templates; /* names */
    int template_count;
    const char *const *cells; /* rows * cols names of templates, row by row; null: all from the first template */
} kc_element_t;

typedef struct kc_layer {
    const char *name;
    kc_variables_t variables;
    const kc_element_t *children;
    int child_count;
} kc_layer_t;

typedef struct kc_instance {
    const char *layer;
    int x, y, width, height, alpha, hidden;
} kc_instance_t;

typedef struct kc_screen {
    const char *name;
    kc_variables_t variables;
    const kc_instance_t *layers;
    int layer_count;
} kc_screen_t;

/* Screens and layers are visited in this order by the host's string maps. The application's and every object's
 * geometry, visibility, alpha and table size are data variables (kld_x ...) with the values given here: i16 for
 * positions and sizes, u8 for kld_hidden and kld_alpha, u16 for kld_rows and kld_cols. */
typedef struct kc_application {
    const char *name;
    kc_variables_t variables;
    const kc_layer_t *layers;
    int layer_count;
    const kc_screen_t *screens;
    int screen_count;
} kc_application_t;

/* A started application: the plug-in's init was called, the Lua state stands under "luastate", and "kel.internalinit"
 * was delivered. */
typedef struct kc_instance_of_host kc_host_t;

/* What the host supplies. `entry` is the plug-in's entry point. Returns null when the application cannot be started. */
kc_host_t *kc_host_start(const kc_application_t *application, int (*entry)(kl_plugin_state_t *state));
void kc_host_stop(kc_host_t *host); /* calls the plug-in's fini and closes the Lua state */
kl_application_t *kc_host_application(kc_host_t *host);
struct lua_State *kc_host_lua(kc_host_t *host);
const char *kc_host_name(void);

#ifdef __cplusplus
}
#endif

#endif
