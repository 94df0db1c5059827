// qualified_name.h: the fully qualified name of an object, such as "main.bar.ok".
#pragma once

#include <kel/kel.h>

#include "container_search.h"

inline constexpr char delimiter = '.'; // between a name's parts

// Returns a new string that the caller frees with kelal_free, or null when the object is null, of an unknown type or in
// no container, or when memory is out.
char *keldom_get_qualified_name(kl_application_t *app, kl_object_t *object);

// The same for a control, table, template or group whose containers are known.
char *keldom_get_name_by_path(kl_application_t *app, const container_path_t &path, kl_object_t *control);

// Joins two parts with a delimiter between. Consumes pre: it is resized in place, and freed when memory is out. Returns
// the joined string, which the caller frees with kelal_free, or null when memory is out or pre is null.
char *str_join_ip(char *pre, char between, const char *post);
