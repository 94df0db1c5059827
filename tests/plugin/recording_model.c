/* recording_model.c: the recording host's application: whatever objects a test builds, and the names that find them. */
#include "recording_internal.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* What the host knows of an object beyond its record. */
typedef struct known_object {
    void *record;
    char *prefix; /* what its children's qualified names begin with; null when they have none */
} known_object_t;

typedef struct resolution {
    char *qualified_name;
    void *record;
} resolution_t;

static struct {
    host_pointers_t records; /* memory of the model */
    host_pointers_t objects; /* known_object_t */
    host_pointers_t names;   /* resolution_t */
    kl_application_t app;
    struct _kl_load_info load_info;
} host;

kl_application_t *recording_app(void) { return &host.app; }
kl_object_t *recording_app_object(void) { return &host.app.object; }
void recording_without_data_mgr(int without) { host.load_info.data_mgr = without ? NULL : host_data_mgr(); }

/* ---- Objects ---- */

static known_object_t *known(const void *record) {
    for (int i = 0; i < host.objects.count; ++i) {
        known_object_t *object = (known_object_t *)host.objects.items[i];
        if (object->record == record) return object;
    }
    return NULL;
}

static const char *own_name(const kl_object_t *object) {
    switch (object->type) {
    case KL_OBJECT_TYPE_APP:
        return "";
    case KL_OBJECT_TYPE_SCREEN:
        return ((const kl_screen_t *)object)->name;
    case KL_OBJECT_TYPE_LAYER:
        return ((const kl_layer_t *)object)->name;
    case KL_OBJECT_TYPE_LAYER_INSTANCE:
        return ((const kl_layer_instance_t *)object)->layer->name;
    default:
        return ((const kl_control_t *)object)->name;
    }
}

const char *host_describe_object(char *room, size_t nbytes, const void *record) {
    static const char *const kinds[] = {"control", "table",          "template", "group",
                                        "layer",   "layer instance", "screen",   "application"};
    if (!record) return "null";
    if (!known(record)) return "something unknown";
    const kl_object_t *object = (const kl_object_t *)record;
    const char *kind = object->type < sizeof kinds / sizeof kinds[0] ? kinds[object->type] : "no object";
    snprintf(room, nbytes, "%s \"%s\"", kind, own_name(object));
    return room;
}

static resolution_t *resolution_of(const char *qualified_name) {
    for (int i = 0; i < host.names.count; ++i) {
        resolution_t *resolution = (resolution_t *)host.names.items[i];
        if (strcmp(resolution->qualified_name, qualified_name) == 0) return resolution;
    }
    return NULL;
}

kl_object_t *kl_application_find_object(kl_application_t *app, const char *name, int flags) {
    char room[HOST_TEXT_ROOM];
    host_line(0, "kl_application_find_object(%s, %d)", host_quoted(room, sizeof room, name), flags);
    if (app != &host.app) host_violation("kl_application_find_object for another application");
    if (!name) host_violation("kl_application_find_object of a null name");
    if (flags) host_violation("kl_application_find_object with flags %d instead of 0", flags);
    if (host_fails(RECORDING_FIND_OBJECT) || !name) return NULL;
    const resolution_t *resolution = resolution_of(name);
    return resolution ? (kl_object_t *)resolution->record : NULL;
}

void *host_resolved(const char *qualified_name) {
    const resolution_t *resolution = resolution_of(qualified_name);
    return resolution ? resolution->record : NULL;
}

/* ---- Records ---- */

static void *new_record(size_t nbytes) { return host_append(&host.records, host_alloc(nbytes)); }

static char *model_text(const char *text) { return (char *)host_append(&host.records, host_copy(text)); }

static void know(void *record) {
    known_object_t *object = (known_object_t *)host_append(&host.objects, host_alloc(sizeof(known_object_t)));
    object->record = record;
}

static void init_control(kl_control_t *control, kl_object_type_t type, const char *name) {
    control->object.type = type;
    control->name = model_text(name);
    control->app = &host.app;
    know(control);
}

kl_control_t *recording_make_control(kl_object_type_t type, const char *name) {
    kl_control_t *control = (kl_control_t *)new_record(sizeof *control);
    init_control(control, type, name);
    return control;
}

kl_group_t *recording_make_group(const char *name) {
    kl_group_t *group = (kl_group_t *)new_record(sizeof *group);
    init_control(&group->control, KL_OBJECT_TYPE_GROUP, name);
    group->control_list = host_new_list(name);
    return group;
}

kl_layer_t *recording_make_layer(const char *name) {
    kl_layer_t *layer = (kl_layer_t *)new_record(sizeof *layer);
    layer->object.type = KL_OBJECT_TYPE_LAYER;
    layer->name = model_text(name);
    layer->app = &host.app;
    layer->control_list = host_new_list(name);
    know(layer);
    return layer;
}

kl_screen_t *recording_make_screen(const char *name) {
    kl_screen_t *screen = (kl_screen_t *)new_record(sizeof *screen);
    screen->object.type = KL_OBJECT_TYPE_SCREEN;
    screen->name = model_text(name);
    screen->app = &host.app;
    screen->layer_list = host_new_list(name);
    know(screen);
    return screen;
}

kl_layer_instance_t *recording_make_instance(kl_screen_t *screen, kl_layer_t *layer) {
    kl_layer_instance_t *instance = (kl_layer_instance_t *)new_record(sizeof *instance);
    instance->object.type = KL_OBJECT_TYPE_LAYER_INSTANCE;
    instance->screen = screen;
    instance->layer = layer;
    know(instance);
    return instance;
}

/* ---- Containers and names ---- */

static kl_darray_t *list_of(void *owner) {
    switch (((kl_object_t *)owner)->type) {
    case KL_OBJECT_TYPE_GROUP:
        return ((kl_group_t *)owner)->control_list;
    case KL_OBJECT_TYPE_LAYER:
        return ((kl_layer_t *)owner)->control_list;
    case KL_OBJECT_TYPE_SCREEN:
        return ((kl_screen_t *)owner)->layer_list;
    default:
        fprintf(stderr, "recording host: an object of type %d has no list\n", (int)((kl_object_t *)owner)->type);
        abort();
    }
}

void recording_list_append(void *owner, void *object) { host_list_append(list_of(owner), object); }

void recording_list_take_out(void *owner, void *object) { host_list_take_out(list_of(owner), object); }

void host_add_name(const char *qualified_name, void *object) {
    resolution_t *resolution = (resolution_t *)host_append(&host.names, host_alloc(sizeof(resolution_t)));
    resolution->qualified_name = host_copy(qualified_name);
    resolution->record = object;
}

static void forget_name(int index) {
    resolution_t *resolution = (resolution_t *)host.names.items[index];
    free(resolution->qualified_name);
    free(resolution);
    host_take_out(&host.names, index);
}

void host_forget_names(const void *record) {
    for (int i = host.names.count - 1; i >= 0; --i)
        if (((resolution_t *)host.names.items[i])->record == record) forget_name(i);
}

const char *host_prefix(const void *record) { return known(record)->prefix; }

void recording_resolve(const char *qualified_name, void *object) {
    for (int i = host.names.count - 1; i >= 0; --i)
        if (strcmp(((resolution_t *)host.names.items[i])->qualified_name, qualified_name) == 0) forget_name(i);
    if (object) host_add_name(qualified_name, object);
}

/* Names an object for find_object. prefix: what its own name is joined to; "" for nothing; null to leave it nameless.
 */
void host_name_object(void *record, const char *prefix, const char *name) {
    known_object_t *object = known(record);
    if (!prefix) return;
    char *qualified_name = (char *)host_alloc(strlen(prefix) + strlen(name) + 2);
    sprintf(qualified_name, "%s%s%s", prefix, *prefix ? "." : "", name);
    object->prefix = host_copy(((kl_object_t *)record)->type == KL_OBJECT_TYPE_TABLE ? prefix : qualified_name);
    host_add_name(qualified_name, record);
    free(qualified_name);
}

kl_screen_t *recording_add_screen(const char *name) {
    kl_screen_t *screen = recording_make_screen(name);
    recording_put_screen(name, screen);
    host_name_object(screen, "", name);
    return screen;
}

kl_layer_t *recording_add_layer(const char *name) {
    kl_layer_t *layer = recording_make_layer(name);
    recording_put_layer(name, layer);
    host_name_object(layer, "", name);
    return layer;
}

kl_layer_instance_t *recording_add_instance(kl_screen_t *screen, kl_layer_t *layer) {
    kl_layer_instance_t *instance = recording_make_instance(screen, layer);
    recording_list_append(screen, instance);
    host_name_object(instance, known(screen)->prefix, layer->name);
    return instance;
}

kl_control_t *recording_add_control(void *owner, const char *name) {
    kl_control_t *control = recording_make_control(KL_OBJECT_TYPE_CONTROL, name);
    recording_list_append(owner, control);
    host_name_object(control, known(owner)->prefix, name);
    return control;
}

kl_group_t *recording_add_group(void *owner, const char *name) {
    kl_group_t *group = recording_make_group(name);
    recording_list_append(owner, group);
    host_name_object(group, known(owner)->prefix, name);
    return group;
}

/* ---- Tables ---- */

/* The grid has spare rows and columns, filled too: a walk past the table's bounds shows as a visit, not as a crash. */
static void fill_grid(kl_table_t *table, int rows, int cols) {
    table->controls = (kl_control_t ***)new_record((size_t)rows * sizeof(kl_control_t **));
    for (int y = 0; y < rows; ++y) {
        table->controls[y] = (kl_control_t **)new_record((size_t)cols * sizeof(kl_control_t *));
        for (int x = 0; x < cols; ++x) {
            char name[64];
            snprintf(name, sizeof name, "cell_%d_%d", y, x);
            table->controls[y][x] = recording_make_control(KL_OBJECT_TYPE_CONTROL, name);
            host_name_object(table->controls[y][x], known(table)->prefix, name);
        }
    }
    table->alloc_rows = (uint16_t)rows;
    table->alloc_cols = (uint16_t)cols;
}

kl_table_t *recording_add_table(void *owner, const char *name, int rows, int cols) {
    kl_table_t *table = (kl_table_t *)new_record(sizeof *table);
    init_control(&table->control, KL_OBJECT_TYPE_TABLE, name);
    recording_list_append(owner, table);
    host_name_object(table, known(owner)->prefix, name);
    fill_grid(table, rows + RECORDING_SPARE_CELLS, cols + RECORDING_SPARE_CELLS);
    recording_resize_table(table, rows, cols);
    return table;
}

kl_control_t *recording_cell(kl_table_t *table, int row, int col) { return table->controls[row][col]; }

void recording_resize_table(kl_table_t *table, int rows, int cols) {
    if (rows < 0 || cols < 0 || rows > table->alloc_rows || cols > table->alloc_cols) {
        fprintf(stderr, "recording host: a table of %d by %d cells has no room for %d by %d\n", table->alloc_rows,
                table->alloc_cols, rows, cols);
        abort();
    }
    table->rows = (uint16_t)rows;
    table->cols = (uint16_t)cols;
}

void recording_set_cell(kl_table_t *table, int row, int col, void *object) {
    table->controls[row][col] = (kl_control_t *)object;
}

kl_control_t *recording_add_template(kl_table_t *table, const char *name) {
    int count = table->max_template_col;
    kl_control_t **templates = (kl_control_t **)new_record((size_t)(count + 1) * sizeof(kl_control_t *));
    if (count) memcpy(templates, table->template_controls, (size_t)count * sizeof(kl_control_t *));
    templates[count] = recording_make_control(KL_OBJECT_TYPE_TEMPLATE, name);
    table->template_controls = templates;
    table->max_template_col = (uint16_t)(count + 1);
    return templates[count];
}

/* ---- Raw changes ---- */

void recording_put_screen(const char *key, kl_screen_t *screen) { host_map_append(host.app.screen_map, key, screen); }
void recording_put_layer(const char *key, kl_layer_t *layer) { host_map_append(host.app.layer_map, key, layer); }

void recording_rename(void *object, const char *name) {
    char *copy = model_text(name);
    switch (((kl_object_t *)object)->type) {
    case KL_OBJECT_TYPE_SCREEN:
        ((kl_screen_t *)object)->name = copy;
        break;
    case KL_OBJECT_TYPE_LAYER:
        ((kl_layer_t *)object)->name = copy;
        break;
    default:
        ((kl_control_t *)object)->name = copy;
        break;
    }
}

void recording_remove(void *object) {
    host_lists_take_out(object);
    host_map_take_out(host.app.screen_map, object);
    host_map_take_out(host.app.layer_map, object);
    host_forget_names(object);
}

/* ---- Beginning and end ---- */

void host_begin_model(kl_io_mgr_t *io_mgr) {
    host.load_info.io_mgr = io_mgr;
    host.app.object.type = KL_OBJECT_TYPE_APP;
    host.app.linfo = &host.load_info;
    host.app.screen_map = host_map("screen_map");
    host.app.layer_map = host_map("layer_map");
    host.app.shared_data_map = host_map("shared_data_map");
    know(&host.app);
}

void host_end_model(void) {
    while (host.names.count) forget_name(host.names.count - 1);
    host_free_all(&host.names);
    for (int i = 0; i < host.objects.count; ++i) free(((known_object_t *)host.objects.items[i])->prefix);
    host_free_all(&host.objects);
    host_free_all(&host.records);
    memset(&host, 0, sizeof host);
}
