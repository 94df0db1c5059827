// container_search.h: finds in one walk of the model which container an object is named after, and in which containers
// that one stands, where the searches of traversal.h answer one level a walk.
#pragma once

#include <kel/kel.h>

// A control, table, template or group: its name begins with its container's.
inline bool keldom_is_named_after_container(const kl_object_t *object) { return object->type <= KL_OBJECT_TYPE_GROUP; }

// The containers in which an object stands: first the one that it is named after, then that one's, and so on up to one
// that is not named after a container; or as far as the walk could tell, and the last one's own name takes a search of
// its own.
struct container_path_t {
    kl_object_t *containers[12];
    int length; // 0: nothing lists the object
};

// The container that lists the object; of several, the one that is visited last in the order where a container comes
// before its children. Whether one container alone lists it, and that one is visited once. set: for
// keldom_find_common_path, which looks for several objects and gives their container as `object`.
bool keldom_find_container_path(kl_application_t *app, kl_object_t *object, container_path_t &path,
                                kl_darray_t *set = nullptr);

// Whether a container is visited once and nothing else lists any of its children, of which there are at least two, so
// that the names of those that are named after it differ in the last part alone. A layer instance stands for its layer.
// False also where that cannot be told for want of memory.
bool keldom_find_common_path(kl_application_t *app, kl_object_t *container, kl_darray_t *children,
                             container_path_t &path);
