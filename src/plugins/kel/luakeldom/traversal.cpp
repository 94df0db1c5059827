// traversal.cpp: walks the application's model by object type, with a predicate called on every child.
#include "traversal.h"

#include <string.h>

namespace {

// Of a screen's list a layer instance, of any other a control.
const char *reported_name(const kl_object_t *object, bool is_screen) {
    return is_screen ? reinterpret_cast<const kl_layer_instance_t *>(object)->layer->name
                     : reinterpret_cast<const kl_control_t *>(object)->name;
}

// A null entry ends the list: hosts leave one where an object is on its way out.
int traverse_list(kl_darray_t *list, bool is_screen, predicate_t work, void *user_data) {
    kl_darray_iter_t iterator;
    kl_darray_iterator_init(&iterator, list, 0);
    for (void *slot = iterator.first(&iterator, -1, -1); slot; slot = iterator.next(&iterator, -1, -1)) {
        kl_object_t *object = *static_cast<kl_object_t **>(slot);
        if (!object) break;
        const char *name = reported_name(object, is_screen);
        if (int stop = work(name, object, user_data)) return stop;
    }
    return 0;
}

} // namespace

int keldom_traverse(kl_object_t *object, predicate_t work, void *user_data) {
    switch (object->type) {
    case KL_OBJECT_TYPE_TABLE:
        return keldom_traverse_table(reinterpret_cast<kl_table_t *>(object), work, user_data);
    case KL_OBJECT_TYPE_GROUP:
        return keldom_traverse_group(reinterpret_cast<kl_group_t *>(object), work, user_data);
    case KL_OBJECT_TYPE_LAYER:
        return keldom_traverse_layer(reinterpret_cast<kl_layer_t *>(object), work, user_data);
    case KL_OBJECT_TYPE_LAYER_INSTANCE:
        return keldom_traverse_layer(reinterpret_cast<kl_layer_instance_t *>(object)->layer, work, user_data);
    case KL_OBJECT_TYPE_SCREEN:
        return keldom_traverse_screen(reinterpret_cast<kl_screen_t *>(object), work, user_data);
    case KL_OBJECT_TYPE_APP:
        return keldom_traverse_map(reinterpret_cast<kl_application_t *>(object)->screen_map, work, user_data);
    default:
        return 0;
    }
}

// The bounds are read anew on every turn: a predicate may change the table's size.
int keldom_traverse_table(kl_table_t *table, predicate_t work, void *user_data) {
    for (unsigned y = 0; y < table->rows; ++y) {
        kl_control_t **row = table->controls[y];
        for (unsigned x = 0; x < table->cols; ++x)
            if (int stop = work(row[x]->name, row[x], user_data)) return stop;
    }
    return 0;
}

int keldom_traverse_group(kl_group_t *group, predicate_t work, void *user_data) {
    return traverse_list(group->control_list, false, work, user_data);
}

int keldom_traverse_layer(kl_layer_t *layer, predicate_t work, void *user_data) {
    return traverse_list(layer->control_list, false, work, user_data);
}

int keldom_traverse_screen(kl_screen_t *screen, predicate_t work, void *user_data) {
    return traverse_list(screen->layer_list, true, work, user_data);
}

// The last result is the walk's: a map walk ends at the first entry whose callback gives other than 0.
int keldom_traverse_map(kl_string_map_t *map, predicate_t work, void *user_data) {
    forwarder_info_t info{user_data, work, 0};
    kl_string_map_traverse(map, keldom_forwarder, &info, 1);
    return info.found;
}

int keldom_traverse_layers(kl_object_t *app, predicate_t work, void *user_data) {
    return keldom_traverse_map(reinterpret_cast<kl_application_t *>(app)->layer_map, work, user_data);
}

int keldom_forwarder(const char *name, void *data, void *user_data) {
    auto *info = static_cast<forwarder_info_t *>(user_data);
    info->found = info->work(name, data, info->user_data);
    return info->found;
}

void *keldom_complex_traverse(kl_object_t *in, traverser_t traverser, int recurse, int stop_on_find, predicate_t work,
                              void *user_data) {
    complex_traverse_info_t info{stop_on_find, user_data, work, nullptr, recurse};
    traverser(in, keldom_complex_traverse_helper, &info);
    return info.result;
}

// Kept: while descending, a match does not end the search, only a walk below that was ended does. So a descending
// search visits everything and its result is the last match.
int keldom_complex_traverse_helper(const char *name, void *data, void *user_data) {
    auto *search = static_cast<complex_traverse_info_t *>(user_data);
    int matched = search->work(name, data, search->user_data);
    if (matched) search->result = data;
    int stopped = search->recurse
                      ? keldom_traverse(static_cast<kl_object_t *>(data), keldom_complex_traverse_helper, search)
                      : matched;
    return stopped ? search->stop_on_find : 0;
}

int keldom_objects_equal(const char *, void *data, void *user_data) { return data == user_data; }

int keldom_names_equal(const char *name, void *, void *user_data) {
    return strcmp(name, static_cast<const char *>(user_data)) == 0;
}

int keldom_has_object(const char *, void *data, void *user_data) {
    return keldom_traverse(static_cast<kl_object_t *>(data), keldom_objects_equal, user_data);
}

int keldom_has_named(const char *, void *data, void *user_data) {
    return keldom_traverse(static_cast<kl_object_t *>(data), keldom_names_equal, user_data);
}

int add_to_darray(const char *, void *data, void *user_data) {
    kl_darray_add(static_cast<kl_darray_t *>(user_data), &data, -1);
    return 0;
}

int keldom_add_if_has_named(const char *name, void *data, void *user_data) {
    auto *info = static_cast<conditional_add_info *>(user_data);
    if (!keldom_has_named(name, data, info->user_data)) return 0;
    add_to_darray(name, data, info->darray);
    return 1;
}

kl_object_t *keldom_find_parent_under(kl_object_t *parent_parent, traverser_t traverser, kl_object_t *child,
                                      int recursive) {
    return static_cast<kl_object_t *>(
        keldom_complex_traverse(parent_parent, traverser, recursive, 1, keldom_has_object, child));
}

// By name and not by pointer: a screen shows a layer when one of its instances shows a layer that is called the same.
kl_darray_t *keldom_find_layer_parents(kl_object_t *app, kl_object_t *child) {
    conditional_add_info info{keldom_create_darray(1), reinterpret_cast<kl_layer_t *>(child)->name};
    if (info.darray) keldom_complex_traverse(app, keldom_traverse, 0, 0, keldom_add_if_has_named, &info);
    return info.darray;
}

kl_darray_t *keldom_get_darray_of(kl_object_t *object) {
    kl_darray_t *list = keldom_create_darray(1);
    if (list && object) add_to_darray(nullptr, object, list);
    return list;
}

kl_darray_t *keldom_get_children(kl_application_t *, kl_object_t *object) {
    kl_darray_t *list = keldom_create_darray(1);
    if (list) keldom_traverse(object, add_to_darray, list);
    return list;
}

kl_darray_t *keldom_create_darray(int capacity) { return kl_darray_create(sizeof(kl_object_t *), capacity, 0); }
