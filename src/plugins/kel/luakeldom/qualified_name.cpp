// qualified_name.cpp: builds the fully qualified name of an object from the model.
#include "qualified_name.h"

#include <string.h>

#include "traversal.h"

namespace {

constexpr char delimiter = '.';

// A record does not know its container: the search through the model decides. A table's own component is dropped, so
// that the cells of main.list are called main.<cell>.
char *keldom_get_qualified_control_name(kl_application_t *app, kl_control_t *control) {
    kl_object_t *container = keldom_find_parent_under(&app->object, keldom_traverse_layers, &control->object, 1);
    char *name = keldom_get_qualified_name(app, container);
    if (name && container->type == KL_OBJECT_TYPE_TABLE)
        *strrchr(name, delimiter) = '\0'; // a table stands in a container
    return str_join_ip(name, delimiter, control->name);
}

} // namespace

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
        return keldom_get_qualified_control_name(app, reinterpret_cast<kl_control_t *>(object));
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
