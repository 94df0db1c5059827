// string_map.cpp: the C operations of the string map. Filling a map is the host's alone, through its entries.
#include "string_map.h"

extern "C" void *kl_string_map_get(kl_string_map_t *map, const char *key) {
    const auto found = map->entries.find(std::string_view(key));
    return found == map->entries.end() ? nullptr : found->second;
}

extern "C" int kl_string_map_traverse(kl_string_map_t *map, kl_string_map_visitor_t visitor, void *user_data, int) {
    for (const auto &[key, value] : map->entries) {
        const int result = visitor(key.c_str(), value, user_data);
        if (result != 0) return result;
    }
    return 0;
}
