/* recording_memory.c: the recording host's allocator, arrays and maps. */
#include "recording_internal.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef struct block {
    void *memory;
    size_t nbytes;
} block_t;

struct _kl_darray {
    char *label;
    void **slots; /* of exactly `size` elements, elsewhere after each addition */
    int size;
    int is_model; /* the host's own list, which a plug-in may only read */
    int is_freed;
};

typedef struct map_entry {
    char *key;
    void *value;
} map_entry_t;

struct _kl_string_map {
    const char *label;
    host_pointers_t entries; /* map_entry_t */
};

static struct {
    host_pointers_t blocks; /* block_t, the live ones */
    host_pointers_t arrays; /* kl_darray_t, the freed ones too, so that every later use is noticed */
    int made_arrays;
} host;

static kl_string_map_t maps[] = {
    {"screen_map",      {NULL, 0, 0}},
    {"layer_map",       {NULL, 0, 0}},
    {"shared_data_map", {NULL, 0, 0}}
};
enum { MAP_COUNT = sizeof maps / sizeof maps[0] };

/* ---- Allocator ---- */

int recording_live_blocks(void) { return host.blocks.count; }

static int block_index(const void *memory) {
    for (int i = 0; i < host.blocks.count; ++i)
        if (((block_t *)host.blocks.items[i])->memory == memory) return i;
    return -1;
}

void *host_new_block(size_t nbytes) {
    block_t *block = (block_t *)host_append(&host.blocks, host_alloc(sizeof(block_t)));
    block->memory = host_alloc(nbytes);
    block->nbytes = nbytes;
    return block->memory;
}

static void release_block(int index) {
    block_t *block = (block_t *)host.blocks.items[index];
    host_overwrite(block->memory, block->nbytes);
    free(block->memory);
    free(block);
    host_take_out(&host.blocks, index);
}

char *kelal_strdup(const char *string) {
    char room[HOST_TEXT_ROOM];
    host_line(RECORDING_SHOW_ALLOCATOR, "kelal_strdup(%s)", host_quoted(room, sizeof room, string));
    if (!string) host_violation("kelal_strdup of null");
    if (host_fails(RECORDING_STRDUP) || !string) return NULL;
    size_t nbytes = strlen(string) + 1;
    return (char *)memcpy(host_new_block(nbytes), string, nbytes);
}

void *kelal_realloc(void *block, size_t nbytes) {
    int index = block ? block_index(block) : -1;
    size_t before = index < 0 ? 0 : ((block_t *)host.blocks.items[index])->nbytes;
    host_line(RECORDING_SHOW_ALLOCATOR, "kelal_realloc(block of %lu, %lu)", (unsigned long)before,
              (unsigned long)nbytes);
    if (!block) host_violation("kelal_realloc of a null block");
    if (block && index < 0) host_violation("kelal_realloc of a block that is not live");
    if (!nbytes) host_violation("kelal_realloc to 0 bytes");
    if (host_fails(RECORDING_REALLOC) || !nbytes || (block && index < 0)) return NULL;
    void *moved = host_new_block(nbytes);
    if (!block) return moved;
    memcpy(moved, block, before < nbytes ? before : nbytes);
    release_block(index);
    return moved;
}

void kelal_free(void *block) {
    host_count(RECORDING_FREE);
    int index = block ? block_index(block) : -1;
    if (!block) {
        host_line(RECORDING_SHOW_ALLOCATOR, "kelal_free(null)");
    } else if (index < 0) {
        host_line(RECORDING_SHOW_ALLOCATOR, "kelal_free(not a live block)");
        host_violation("kelal_free of a block that is not live");
    } else {
        host_line(RECORDING_SHOW_ALLOCATOR, "kelal_free(block of %lu)",
                  (unsigned long)((block_t *)host.blocks.items[index])->nbytes);
        release_block(index);
    }
}

/* ---- Arrays ---- */

int recording_live_arrays(void) {
    int live = 0;
    for (int i = 0; i < host.arrays.count; ++i) {
        const kl_darray_t *array = (const kl_darray_t *)host.arrays.items[i];
        live += !array->is_model && !array->is_freed;
    }
    return live;
}

static kl_darray_t *new_array(int is_model, const char *label) {
    kl_darray_t *array = (kl_darray_t *)host_append(&host.arrays, host_alloc(sizeof(kl_darray_t)));
    array->label = host_copy(label);
    array->slots = (void **)host_alloc(1);
    array->is_model = is_model;
    return array;
}

static void move_slots(kl_darray_t *array, int size) {
    void **slots = (void **)host_alloc((size_t)size * sizeof(void *));
    size_t kept = (size_t)(size < array->size ? size : array->size) * sizeof(void *);
    if (kept) memcpy(slots, array->slots, kept);
    host_overwrite(array->slots, (size_t)array->size * sizeof(void *));
    free(array->slots);
    array->slots = slots;
    array->size = size;
}

/* Whether a plug-in may use the array; else writes the breach down. */
static int usable(const char *who, const kl_darray_t *array) {
    for (int i = 0; i < host.arrays.count; ++i) {
        if (host.arrays.items[i] != array) continue;
        if (array->is_freed) host_violation("%s of %s, which is freed", who, array->label);
        return !array->is_freed;
    }
    host_violation("%s of %s", who, array ? "something that is no array" : "a null array");
    return 0;
}

static const char *label_of(const kl_darray_t *array) {
    for (int i = 0; i < host.arrays.count; ++i)
        if (host.arrays.items[i] == array) return array->label;
    return array ? "no array" : "null";
}

kl_darray_t *kl_darray_create(int element_size, int capacity, int flags) {
    int is_pointer = element_size == (int)sizeof(kl_object_t *);
    host_line(RECORDING_SHOW_ARRAYS, "kl_darray_create(%s, %d, %d)", is_pointer ? "pointer" : "no pointer", capacity,
              flags);
    if (!is_pointer) host_violation("kl_darray_create with elements of %d bytes, which is no pointer", element_size);
    if (capacity != 0 && capacity != 1) host_violation("kl_darray_create with capacity %d instead of 0 or 1", capacity);
    if (flags) host_violation("kl_darray_create with flags %d instead of 0", flags);
    if (host_fails(RECORDING_DARRAY_CREATE)) return NULL;
    char label[64];
    snprintf(label, sizeof label, "array %d", ++host.made_arrays);
    return new_array(0, label);
}

int kl_darray_add(kl_darray_t *array, const void *element, int position) {
    char room[HOST_TEXT_ROOM];
    const void *object = element ? *(void *const *)element : NULL;
    host_line(RECORDING_SHOW_ARRAYS, "kl_darray_add(%s, %s, %d)", label_of(array),
              host_describe_object(room, sizeof room, object), position);
    if (!element) host_violation("kl_darray_add of a null element");
    if (position != -1) host_violation("kl_darray_add at position %d instead of -1", position);
    if (!usable("kl_darray_add", array)) return -1;
    if (array->is_model) host_violation("kl_darray_add to the model's %s", array->label);
    if (host_fails(RECORDING_DARRAY_ADD) || !element || array->is_model) return -1;
    move_slots(array, array->size + 1);
    memcpy(&array->slots[array->size - 1], element, sizeof(void *));
    return array->size - 1;
}

void *kl_darray_item(kl_darray_t *array, int index) {
    host_line(RECORDING_SHOW_ARRAYS, "kl_darray_item(%s, %d)", label_of(array), index);
    int failing = host_fails(RECORDING_DARRAY_ITEM);
    if (!usable("kl_darray_item", array)) return NULL;
    if (index < 0 || index >= array->size) host_violation("kl_darray_item %d of %d", index, array->size);
    return failing || index < 0 || index >= array->size ? NULL : &array->slots[index];
}

int kl_darray_size(kl_darray_t *array) {
    host_line(RECORDING_SHOW_ARRAYS, "kl_darray_size(%s)", label_of(array));
    host_count(RECORDING_DARRAY_SIZE);
    return usable("kl_darray_size", array) ? array->size : 0;
}

void kl_darray_free(kl_darray_t *array) {
    host_line(RECORDING_SHOW_ARRAYS, "kl_darray_free(%s)", label_of(array));
    host_count(RECORDING_DARRAY_FREE);
    if (!array || !usable("kl_darray_free", array)) return;
    if (array->is_model) {
        host_violation("kl_darray_free of the model's %s", array->label);
        return;
    }
    move_slots(array, 0);
    array->is_freed = 1;
}

kl_darray_t *host_new_list(const char *owner) {
    char label[HOST_TEXT_ROOM];
    snprintf(label, sizeof label, "list of %s", owner);
    return new_array(1, label);
}

void host_list_append(kl_darray_t *list, void *object) {
    move_slots(list, list->size + 1);
    list->slots[list->size - 1] = object;
}

void host_list_take_out(kl_darray_t *list, const void *object) {
    int kept = 0;
    for (int i = 0; i < list->size; ++i)
        if (list->slots[i] != object) list->slots[kept++] = list->slots[i];
    list->size = kept;
}

int host_list_size(const kl_darray_t *list) { return list->size; }
void *host_list_item(const kl_darray_t *list, int index) { return list->slots[index]; }

void host_lists_take_out(const void *object) {
    for (int i = 0; i < host.arrays.count; ++i) {
        kl_darray_t *array = (kl_darray_t *)host.arrays.items[i];
        if (array->is_model) host_list_take_out(array, object);
    }
}

static void *slot_at(const char *who, kl_darray_iter_t *iterator, int current, int a, int b) {
    host_line(RECORDING_SHOW_WALKS, "%s(%s, %d, %d)", who, label_of(iterator->da), a, b);
    if (a != -1 || b != -1) host_violation("iterator's %s with %d, %d instead of -1, -1", who, a, b);
    if (!usable(who, iterator->da)) return NULL;
    iterator->current = current;
    return current >= 0 && current < iterator->da->size ? &iterator->da->slots[current] : NULL;
}

static void *iterator_first(kl_darray_iter_t *iterator, int a, int b) {
    host_count(RECORDING_ITERATOR_FIRST);
    return slot_at("first", iterator, 0, a, b);
}

static void *iterator_next(kl_darray_iter_t *iterator, int a, int b) {
    host_count(RECORDING_ITERATOR_NEXT);
    return slot_at("next", iterator, iterator->current + 1, a, b);
}

static void *iterator_last(kl_darray_iter_t *iterator, int a, int b) {
    host_violation("iterator's last, which this plug-in has no use for");
    return slot_at("last", iterator, iterator->da->size - 1, a, b);
}

static void *iterator_prev(kl_darray_iter_t *iterator, int a, int b) {
    host_violation("iterator's prev, which this plug-in has no use for");
    return slot_at("prev", iterator, iterator->current - 1, a, b);
}

static void *iterator_cur(kl_darray_iter_t *iterator, int a, int b) {
    host_violation("iterator's cur, which this plug-in has no use for");
    return slot_at("cur", iterator, iterator->current, a, b);
}

static void *iterator_set(kl_darray_iter_t *iterator, int index, int a, int b) {
    host_violation("iterator's set, which this plug-in has no use for");
    return slot_at("set", iterator, index, a, b);
}

void kl_darray_iterator_init(kl_darray_iter_t *iterator, kl_darray_t *array, int flags) {
    host_line(RECORDING_SHOW_WALKS, "kl_darray_iterator_init(%s, %d)", label_of(array), flags);
    host_count(RECORDING_ITERATOR_INIT);
    if (flags) host_violation("kl_darray_iterator_init with flags %d instead of 0", flags);
    usable("kl_darray_iterator_init", array);
    iterator->da = array;
    iterator->current = -1;
    iterator->loop = 0;
    iterator->first = iterator_first;
    iterator->last = iterator_last;
    iterator->next = iterator_next;
    iterator->prev = iterator_prev;
    iterator->cur = iterator_cur;
    iterator->set = iterator_set;
    iterator->reserved = iterator;
}

/* ---- Maps ---- */

kl_string_map_t *host_map(const char *label) {
    for (int i = 0; i < MAP_COUNT; ++i)
        if (strcmp(maps[i].label, label) == 0) return &maps[i];
    return NULL;
}

static int is_map(const char *who, const kl_string_map_t *map) {
    for (int i = 0; i < MAP_COUNT; ++i)
        if (map == &maps[i]) return 1;
    host_violation("%s of something that is no map", who);
    return 0;
}

void *kl_string_map_get(kl_string_map_t *map, const char *key) {
    char room[HOST_TEXT_ROOM];
    if (!is_map("kl_string_map_get", map)) return NULL;
    host_line(0, "kl_string_map_get(%s, %s)", map->label, host_quoted(room, sizeof room, key));
    if (!key) host_violation("kl_string_map_get of a null key");
    if (host_fails(RECORDING_MAP_GET) || !key) return NULL;
    for (int i = 0; i < map->entries.count; ++i) {
        const map_entry_t *entry = (const map_entry_t *)map->entries.items[i];
        if (strcmp(entry->key, key) == 0) return entry->value;
    }
    return NULL;
}

int kl_string_map_traverse(kl_string_map_t *map, kl_string_map_visitor_t visitor, void *user_data, int flags) {
    if (!is_map("kl_string_map_traverse", map)) return 0;
    host_line(RECORDING_SHOW_WALKS, "kl_string_map_traverse(%s, %d)", map->label, flags);
    host_count(RECORDING_MAP_TRAVERSE);
    if (flags != 1) host_violation("kl_string_map_traverse with flags %d instead of 1", flags);
    int result = 0;
    for (int i = 0; i < map->entries.count && !result; ++i) {
        const map_entry_t *entry = (const map_entry_t *)map->entries.items[i];
        result = visitor(entry->key, entry->value, user_data);
    }
    return result;
}

void host_map_append(kl_string_map_t *map, const char *key, void *value) {
    map_entry_t *entry = (map_entry_t *)host_append(&map->entries, host_alloc(sizeof(map_entry_t)));
    entry->key = host_copy(key);
    entry->value = value;
}

static void map_remove_entry(kl_string_map_t *map, int index) {
    map_entry_t *entry = (map_entry_t *)map->entries.items[index];
    free(entry->key);
    free(entry);
    host_take_out(&map->entries, index);
}

void host_map_take_out(kl_string_map_t *map, const void *value) {
    for (int i = map->entries.count - 1; i >= 0; --i)
        if (((map_entry_t *)map->entries.items[i])->value == value) map_remove_entry(map, i);
}

void host_map_clear(kl_string_map_t *map) {
    while (map->entries.count) map_remove_entry(map, map->entries.count - 1);
    host_free_all(&map->entries);
}

/* ---- End ---- */

void host_end_memory(void) {
    while (host.blocks.count) release_block(host.blocks.count - 1);
    host_free_all(&host.blocks);
    for (int i = 0; i < host.arrays.count; ++i) {
        kl_darray_t *array = (kl_darray_t *)host.arrays.items[i];
        free(array->slots);
        free(array->label);
    }
    host_free_all(&host.arrays);
    for (int i = 0; i < MAP_COUNT; ++i) host_map_clear(&maps[i]);
    memset(&host, 0, sizeof host);
}
