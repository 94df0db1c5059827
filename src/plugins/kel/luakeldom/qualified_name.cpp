// qualified_name.cpp: builds the fully qualified name of an object from the model.
#include "qualified_name.h"

#include <string.h>

namespace {

const char *control_name(const kl_object_t *object) { return reinterpret_cast<const kl_control_t *>(object)->name; }

// A record does not know its container: the search through the model decides.
char *keldom_get_qualified_control_name(kl_application_t *app, kl_object_t *control) {
    container_path_t path;
    keldom_find_container_path(app, control, path);
    return keldom_get_name_by_path(app, path, control);
}

} // namespace

// A table's own component is dropped, so that the cells of main.list are called main.<cell>.
char *keldom_get_name_by_path(kl_application_t *app, const container_path_t &path, kl_object_t *control) {
    int i = path.length - 1;
    if (i < 0) return nullptr;
    char *name = keldom_get_qualified_name(app, path.containers[i]);
    for (; name && i >= 0; --i) {
        if (path.containers[i]->type == KL_OBJECT_TYPE_TABLE)
            *strrchr(name, delimiter) = '\0'; // a table stands in a container
        name = str_join_ip(name, delimiter, control_name(i ? path.containers[i - 1] : control));
    }
    return name;
}

char *keldom_get_qualified_name(kl_application_t *app, kl_object_t *object) {
    if (!object) return nullptr;
    switch (object->type) {
    case KL_OBJECT_TYPE_APP:
        return kelal_strdup("");
    case KL_OBJECT_TYPE_SCREEN:
        return kelal_strdup(reinterpret_cast<kl_screen_t *>(object)->name);
    case KL_OBJECT_TYPE_LAYER:
        return kelal_strdup(reinterpret_cast<kl_layer_t *>(object)->name);
    case KL_OBJECT_TYPE_LAYER_INSTANCE: {
        auto *instance = reinterpret_cast<kl_layer_instance_t *>(object);
        return str_join_ip(kelal_strdup(instance->screen->name), delimiter, instance->layer->name);
    }
    case KL_OBJECT_TYPE_CONTROL:
    case KL_OBJECT_TYPE_TABLE:
    case KL_OBJECT_TYPE_TEMPLATE:
    case KL_OBJECT_TYPE_GROUP:
        return keldom_get_qualified_control_name(app, object);
    default:
        return nullptr;
    }
}

char *str_join_ip(char *pre, char between, const char *post) {
    if (!pre) return nullptr;
    size_t p = strlen(pre);
    size_t q = strlen(post);
    auto *joined = static_cast<char *>(kelal_realloc(pre, p + q + 2));
    if (!joined) {
        kelal_free(pre);
        return nullptr;
    }
    joined[p] = between;
    memcpy(joined + p + 1, post, q);
    joined[p + q + 1] = '\0';
    return joined;
}
