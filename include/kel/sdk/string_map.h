/* string_map.h: a map from strings to pointers. */
#ifndef KEL_SDK_STRING_MAP_H
#define KEL_SDK_STRING_MAP_H

#include <kel/kel_types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Called once for each entry; key and value belong to the map and its owner. A result other than 0 ends the walk. */
typedef int (*kl_string_map_visitor_t)(const char *key, void *value, void *user_data);

/* Returns the pointer stored under key, or null when there is none. map, key: never null; both stay the caller's. */
void *kl_string_map_get(kl_string_map_t *map, const char *key);

/* Visits the entries in the map's own order, until they end or the visitor returns something other than 0.
 *   map        never null; the visitor must not change it
 *   user_data  passed to the visitor as it is
 *   flags      1
 * Returns what the visitor returned last, 0 for an empty map. */
int kl_string_map_traverse(kl_string_map_t *map, kl_string_map_visitor_t visitor, void *user_data, int flags);

#ifdef __cplusplus
}
#endif

#endif
