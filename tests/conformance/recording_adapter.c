/* recording_adapter.c: the recording host of the plug-in's own tests, as the conformance suite starts it. It shows how
 * little of a host the suite needs, in C. */
#include "host_under_test.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <lauxlib.h>
#include <lualib.h>

#include "../plugin/recording_host.h"
#include "recorder.h"

struct kc_instance_of_host {
    lua_State *L;
    kl_plugin_state_t plugin;
};

/* ---- From the description to objects and variables ---- */

static char *joined(const char *left, const char *right) {
    const char *dot = *left ? "." : "";
    char *text = (char *)malloc(strlen(left) + strlen(dot) + strlen(right) + 1);
    if (!text) abort();
    sprintf(text, "%s%s%s", left, dot, right);
    return text;
}

static void set_number(const char *object, const char *variable, double value) {
    char *key = joined(object, variable);
    recording_set_number(key, value);
    free(key);
}

static void set_variables(const char *object, const kc_variables_t *variables) {
    for (int i = 0; i < variables->count; ++i) {
        const kc_variable_t *one = &variables->items[i];
        char *key = joined(object, one->name);
        if (one->text)
            recording_set_string(key, one->text);
        else
            recording_set_number(key, one->number);
        free(key);
    }
}

/* The template of a cell. The host's spare cells take after the last row, and those without a description after the
 * first template. */
static const char *template_of(const kc_element_t *table, int row, int col) {
    if (!table->cells || !table->rows || col >= table->cols) return table->templates[0];
    return table->cells[(row < table->rows ? row : table->rows - 1) * table->cols + col];
}

static void add_table(void *owner, const kc_element_t *element, const char *name) {
    kl_table_t *table = recording_add_table(owner, element->name, element->rows, element->cols);
    for (int i = 0; i < element->template_count; ++i) recording_add_template(table, element->templates[i]);
    for (int row = 0; row < table->alloc_rows; ++row)
        for (int col = 0; col < table->alloc_cols; ++col)
            recording_rename(recording_cell(table, row, col), template_of(element, row, col));
    recording_name_cells(table);
    set_number(name, "kld_rows", element->rows);
    set_number(name, "kld_cols", element->cols);
}

static void set_place(const char *name, int x, int y, int hidden) {
    set_number(name, "kld_x", x);
    set_number(name, "kld_y", y);
    set_number(name, "kld_hidden", hidden);
}

static void set_extent(const char *name, int width, int height) {
    set_number(name, "kld_width", width);
    set_number(name, "kld_height", height);
}

static void add_element(void *owner, const char *owner_name, const kc_element_t *element) {
    char *name = joined(owner_name, element->name);
    set_place(name, element->x, element->y, element->hidden);
    if (element->kind != KC_GROUP) set_extent(name, element->width, element->height);
    set_variables(name, &element->variables);
    if (element->kind == KC_CONTROL) recording_add_control(owner, element->name);
    if (element->kind == KC_TABLE) add_table(owner, element, name);
    if (element->kind == KC_GROUP) {
        kl_group_t *group = recording_add_group(owner, element->name);
        for (int i = 0; i < element->child_count; ++i) add_element(group, name, &element->children[i]);
    }
    free(name);
}

static void add_layer(const kc_layer_t *layer) {
    kl_layer_t *record = recording_add_layer(layer->name);
    set_variables(layer->name, &layer->variables);
    for (int i = 0; i < layer->child_count; ++i) add_element(record, layer->name, &layer->children[i]);
}

static void add_instance(kl_screen_t *screen, const kc_instance_t *instance) {
    char *name = joined(screen->name, instance->layer);
    recording_add_instance(screen, (kl_layer_t *)kl_application_find_object(recording_app(), instance->layer, 0));
    set_place(name, instance->x, instance->y, instance->hidden);
    set_extent(name, instance->width, instance->height);
    set_number(name, "kld_alpha", instance->alpha);
    free(name);
}

static void add_screen(const kc_screen_t *screen) {
    kl_screen_t *record = recording_add_screen(screen->name);
    set_variables(screen->name, &screen->variables);
    for (int i = 0; i < screen->layer_count; ++i) add_instance(record, &screen->layers[i]);
}

static void build(const kc_application_t *application) {
    set_variables("", &application->variables);
    for (int i = 0; i < application->layer_count; ++i) add_layer(&application->layers[i]);
    for (int i = 0; i < application->screen_count; ++i) add_screen(&application->screens[i]);
}

/* ---- What the host supplies ---- */

kc_host_t *kc_host_start(const kc_application_t *application, int (*entry)(kl_plugin_state_t *state)) {
    kc_host_t *host = (kc_host_t *)calloc(1, sizeof *host);
    if (!host) return NULL;
    recording_begin();
    recording_behave(RECORDING_LIVES);
    build(application);
    host->L = luaL_newstate();
    if (host->L) {
        luaL_openlibs(host->L);
        recording_share_state(host->L);
        int failed = entry(&host->plugin) || host->plugin.init(recording_app(), NULL, host->plugin.plugin_data);
        if (!failed && recording_deliver("kel.internalinit") == 1) return host;
        lua_close(host->L);
    }
    kelal_free(host->plugin.name);
    recording_end();
    free(host);
    return NULL;
}

/* The host sees what the suite's recorder cannot: arrays and blocks by themselves, and how they were used. */
static void tell_of_breaches(void) {
    char text[128];
    for (int i = 0; i < recording_violation_count(); ++i) kc_violation(recording_violation(i));
    if (!recording_live_blocks() && !recording_live_arrays() && !recording_open_holds()) return;
    snprintf(text, sizeof text, "%d blocks, %d arrays and %d holds of the host's are left", recording_live_blocks(),
             recording_live_arrays(), recording_open_holds());
    kc_violation(text);
}

void kc_host_stop(kc_host_t *host) {
    recording_unload_plugin(&host->plugin);
    lua_close(host->L);
    free(host);
    tell_of_breaches();
    recording_end();
}

/* There is one host at a time. */
kl_application_t *kc_host_application(kc_host_t *host) { return host ? recording_app() : NULL; }
lua_State *kc_host_lua(kc_host_t *host) { return host->L; }
const char *kc_host_name(void) { return "the recording host"; }
