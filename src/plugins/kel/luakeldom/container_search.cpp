// container_search.cpp: one walk of the model that keeps the containers on its way on the stack.
// An object that is met once has its containers at hand, and none of them is met twice either. What is met again has
// more than one container: the one visited last counts, as in a search that looks for one level.
#include "container_search.h"

#include <iterator>
#include <stdint.h>

#include "traversal.h"

namespace {

struct search_t {
    const kl_object_t *object; // looked for; with a set, the container of those that are
    kl_darray_t *set;          // null: one object is looked for
    container_path_t &path;
    int visited; // containers so far
    int found;   // the number of the container that counts
    bool found_again;
};

// One container on the way down.
struct step_t {
    search_t &search;
    const step_t *outer;
    kl_object_t *container;
    int number;
};

// A hash table with open addressing: a list of which more than half the slots are empty.
kl_object_t *&slot_for(kl_darray_t *set, const kl_object_t *object) {
    unsigned hash = static_cast<unsigned>(reinterpret_cast<uintptr_t>(object) >> 3) * 2654435769U; // golden ratio
    for (unsigned size = static_cast<unsigned>(kl_darray_size(set));; ++hash) {
        kl_object_t *&slot = *static_cast<kl_object_t **>(kl_darray_item(set, static_cast<int>(hash % size)));
        if (!slot || slot == object) return slot;
    }
}

// Whether the list became a set of the objects.
bool make_set(kl_darray_t *list, kl_darray_t *objects) {
    int count = kl_darray_size(objects);
    int slots = 2 * count + 1;
    for (int i = 0; i < slots; ++i) add_to_darray(nullptr, nullptr, list);
    if (kl_darray_size(list) != slots) return false; // memory is out
    for (int i = 0; i < count; ++i) {
        auto *object = *static_cast<kl_object_t **>(kl_darray_item(objects, i));
        slot_for(list, object) = object;
    }
    return true;
}

void take_path(const step_t *step, container_path_t &path) {
    do {
        path.containers[path.length++] = step->container;
        step = keldom_is_named_after_container(step->container) ? step->outer : nullptr;
    } while (step && path.length < static_cast<int>(std::size(path.containers)));
}

void note(const step_t &step) {
    search_t &search = step.search;
    if (!search.found) {
        search.found = step.number;
        take_path(&step, search.path);
    } else if (search.found != step.number) {
        search.found_again = true;
        search.path.length = 1; // how that container is reached says nothing any more
        if (search.found > step.number) return;
        search.found = step.number;
        search.path.containers[0] = step.container;
    }
}

void look_into(search_t &search, const step_t *outer, kl_object_t *container);

bool is_looked_for(const search_t &search, const kl_object_t *container, const kl_object_t *object) {
    if (!search.set) return object == search.object;
    return container == search.object || slot_for(search.set, object);
}

[[gnu::noinline]] int look_closer(const char *, void *data, void *user_data) {
    auto *object = static_cast<kl_object_t *>(data);
    const auto &step = *static_cast<const step_t *>(user_data);
    if (is_looked_for(step.search, step.container, object)) note(step);
    if (object->type != KL_OBJECT_TYPE_CONTROL) look_into(step.search, &step, object);
    return 0;
}

// Most objects are controls that nobody looks for: the few instructions that they take decide what a walk costs.
int look_at(const char *name, void *data, void *user_data) {
    const auto *object = static_cast<kl_object_t *>(data);
    const search_t &search = static_cast<const step_t *>(user_data)->search;
    if (object->type == KL_OBJECT_TYPE_CONTROL && object != search.object && !search.set) return 0;
    return look_closer(name, data, user_data);
}

void look_into(search_t &search, const step_t *outer, kl_object_t *container) {
    step_t step{search, outer, container, ++search.visited};
    keldom_traverse(container, look_at, &step);
}

int look_into_layer(const char *, void *data, void *user_data) {
    look_into(*static_cast<search_t *>(user_data), nullptr, static_cast<kl_object_t *>(data));
    return 0;
}

} // namespace

bool keldom_find_container_path(kl_application_t *app, kl_object_t *object, container_path_t &path, kl_darray_t *set) {
    path.length = 0;
    search_t search{object, set, path, 0, 0, false};
    keldom_traverse_layers(&app->object, look_into_layer, &search);
    return path.length && !search.found_again;
}

bool keldom_find_common_path(kl_application_t *app, kl_object_t *container, kl_darray_t *children,
                             container_path_t &path) {
    if (container->type == KL_OBJECT_TYPE_LAYER_INSTANCE)
        container = &reinterpret_cast<kl_layer_instance_t *>(container)->layer->object;
    bool may_share = container->type <= KL_OBJECT_TYPE_LAYER && kl_darray_size(children) > 1;
    kl_darray_t *set = may_share ? keldom_create_darray(1) : nullptr;
    if (!set) return false;
    bool found = make_set(set, children) && keldom_find_container_path(app, container, path, set);
    kl_darray_free(set);
    return found && path.containers[0] == container;
}
