// traversal.h: walks the application's model by object type, with a predicate called on every child.
// Keeps no state, owns no memory, raises nothing. The lists that it makes are the caller's to free with kl_darray_free.
#pragma once

#include <kel/kel.h>

// Called on a visited object: the name that its container reports, the object, the walker's context. Other than 0 is a
// match.
typedef int (*predicate_t)(const char *name, void *data, void *user_data);

// Visits the children of an object: keldom_traverse or keldom_traverse_layers.
typedef int (*traverser_t)(kl_object_t *object, predicate_t work, void *user_data);

// Context of a string-map walk.
struct forwarder_info_t {
    void *user_data;  // for work
    predicate_t work; // the wrapped predicate
    int found;        // what work returned last
};

// Context of a search that may descend.
struct complex_traverse_info_t {
    int stop_on_find; // what ends the walk on a match; 0 collects everything
    void *user_data;  // for work
    predicate_t work; // tested on every visited object
    void *result;     // the last match
    int recurse;      // other than 0 descends into every visited object
};

// Context of keldom_add_if_has_named.
struct conditional_add_info {
    kl_darray_t *darray; // receives the matching objects
    void *user_data;     // the name that a direct child must be reported under
};

// The walkers return 0 when every child was visited, else what the predicate returned to end the walk.
int keldom_traverse(kl_object_t *object, predicate_t work, void *user_data);
int keldom_traverse_table(kl_table_t *table, predicate_t work, void *user_data);
int keldom_traverse_group(kl_group_t *group, predicate_t work, void *user_data);
int keldom_traverse_layer(kl_layer_t *layer, predicate_t work, void *user_data);
int keldom_traverse_screen(kl_screen_t *screen, predicate_t work, void *user_data);
int keldom_traverse_map(kl_string_map_t *map, predicate_t work, void *user_data);
int keldom_traverse_layers(kl_object_t *app, predicate_t work, void *user_data);
int keldom_forwarder(const char *name, void *data, void *user_data);

// Searches below `in`, never `in` itself. With `recurse` the search is exhaustive and gives the last match in the order
// where a container comes before its children; without it, `stop_on_find` gives the first match. Null when nothing
// matched.
void *keldom_complex_traverse(kl_object_t *in, traverser_t traverser, int recurse, int stop_on_find, predicate_t work,
                              void *user_data);
int keldom_complex_traverse_helper(const char *name, void *data, void *user_data);

// Predicates; those that ignore the name take it so that any of them fits any walker.
int keldom_objects_equal(const char *name, void *data, void *user_data);    // data is user_data
int keldom_names_equal(const char *name, void *data, void *user_data);      // name equals the string user_data
int keldom_has_object(const char *name, void *data, void *user_data);       // data directly contains user_data
int keldom_has_named(const char *name, void *data, void *user_data);        // data has a direct child named user_data
int add_to_darray(const char *name, void *data, void *user_data);           // appends data to the list; always 0
int keldom_add_if_has_named(const char *name, void *data, void *user_data); // 1 after appending data, else 0

// The object that lists `child` among its direct children, or null.
kl_object_t *keldom_find_parent_under(kl_object_t *parent_parent, traverser_t traverser, kl_object_t *child,
                                      int recursive);

// Each returns a new list, or null when none could be made.
kl_darray_t *keldom_find_layer_parents(kl_object_t *app,
                                       kl_object_t *child);                // the screens that show a layer of this name
kl_darray_t *keldom_get_darray_of(kl_object_t *object);                    // holds the object alone; empty for null
kl_darray_t *keldom_get_children(kl_application_t *, kl_object_t *object); // in order
kl_darray_t *keldom_create_darray(int capacity);                           // an empty list of objects
