/* recording_life.c: what scripts' writes, clones and deletions do to the recording host's model when it lives. Here is
 * no record and no fault: the services ask these functions when a call is to succeed. */
#include "recording_internal.h"

#include <lauxlib.h>
#include <lua.h>

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static char *joined(const char *left, const char *delimiter, const char *right) {
    char *text = (char *)host_alloc(strlen(left) + strlen(delimiter) + strlen(right) + 1);
    sprintf(text, "%s%s%s", left, delimiter, right);
    return text;
}

static kl_object_type_t type_of(const void *record) { return ((const kl_object_t *)record)->type; }

/* ---- Cells ---- */

void recording_name_cells(kl_table_t *table) {
    for (int row = 0; row < table->alloc_rows; ++row)
        for (int col = 0; col < table->alloc_cols; ++col) {
            kl_control_t *cell = table->controls[row][col];
            host_forget_names(cell);
            if (row >= table->rows || col >= table->cols) continue;
            char *name = joined(host_prefix(table), ".", cell->name);
            host_add_name(name, cell);
            free(name);
        }
}

static int resize(kl_table_t *table, double rows, double cols) {
    if (rows < 0 || cols < 0 || rows > table->alloc_rows || cols > table->alloc_cols) return 0;
    recording_resize_table(table, (int)rows, (int)cols);
    recording_name_cells(table);
    return 1;
}

/* ---- Writing ---- */

/* Takes the last component off a key, and returns it; null when there is but one. */
static const char *cut_last(char *key) {
    char *dot = strrchr(key, '.');
    if (!dot) return NULL;
    *dot = '\0';
    return dot + 1;
}

/* A component of a key as a number: -1 when it is none. */
static int place(const char *component) {
    if (!component || !*component) return -1;
    for (const char *c = component; *c; ++c)
        if (!isdigit((unsigned char)*c)) return -1;
    return atoi(component);
}

/* Whether "main.list.text.0.1", with its last component cut off already, belongs to a cell of main.list. */
static int belongs_to_cell(char *key, const char *last) {
    int col = place(last);
    int row = place(cut_last(key));
    if (col < 0 || row < 0 || !cut_last(key)) return 0;
    const void *table = host_resolved(key);
    return table && type_of(table) == KL_OBJECT_TYPE_TABLE && row < ((const kl_table_t *)table)->rows
           && col < ((const kl_table_t *)table)->cols;
}

/* Whether the key's object is there. "mode" is the application's, "main.ok.label" main.ok's. */
static int has_object(const char *key) {
    char *object = host_copy(key);
    const char *variable = cut_last(object);
    int found = !variable || host_resolved(object) || belongs_to_cell(object, variable);
    free(object);
    return found;
}

/* The table whose grid the key's variable counts, or null. */
static kl_table_t *counted_table(const char *key, const char *variable) {
    char *name = host_copy(key);
    const char *last = cut_last(name);
    void *object = last && strcmp(last, variable) == 0 ? host_resolved(name) : NULL;
    free(name);
    return object && type_of(object) == KL_OBJECT_TYPE_TABLE ? (kl_table_t *)object : NULL;
}

static int write_number(const char *key, double value) {
    kl_table_t *rows_of = counted_table(key, "kld_rows");
    kl_table_t *cols_of = counted_table(key, "kld_cols");
    if (rows_of && !resize(rows_of, value, rows_of->cols)) return 0;
    if (cols_of && !resize(cols_of, cols_of->rows, value)) return 0;
    recording_set_number(key, value);
    return 1;
}

/* A string's text as a copy, a number's too; null for what has none. Converts nothing in place. */
static char *text_at(lua_State *L, int index) {
    char number[64];
    if (lua_type(L, index) == LUA_TSTRING) return host_copy(lua_tostring(L, index));
    if (lua_type(L, index) != LUA_TNUMBER) return NULL;
    snprintf(number, sizeof number, LUA_NUMBER_FMT, lua_tonumber(L, index));
    return host_copy(number);
}

static int write_text(lua_State *L, const char *key, int value_index) {
    char *text = text_at(L, value_index);
    if (!text) return 0;
    recording_set_string(key, text);
    free(text);
    return 1;
}

static int write_value(lua_State *L, const char *key, int value_index) {
    int exists = host_variable_type(key) != LUA_TNIL;
    int type = exists ? host_variable_type(key) : lua_type(L, value_index);
    if (!exists && !has_object(key)) return 0;
    if (type == LUA_TSTRING) return write_text(L, key, value_index);
    if (lua_isboolean(L, value_index)) return write_number(key, lua_toboolean(L, value_index));
    return lua_isnumber(L, value_index) ? write_number(key, (double)lua_tonumber(L, value_index)) : 0;
}

/* ---- Cloning ---- */

/* Which objects scripts can copy and delete, and into which. */
static int is_element(const void *object) {
    return object
           && (type_of(object) == KL_OBJECT_TYPE_CONTROL || type_of(object) == KL_OBJECT_TYPE_TABLE
               || type_of(object) == KL_OBJECT_TYPE_GROUP);
}

static int is_container(const void *object) {
    return object && (type_of(object) == KL_OBJECT_TYPE_LAYER || type_of(object) == KL_OBJECT_TYPE_GROUP);
}

static int is_own_name(const char *name) {
    for (const char *c = name; *c; ++c)
        if (!isalnum((unsigned char)*c) && *c != '_') return 0;
    return *name != '\0';
}

static void copy_element(void *owner, kl_control_t *source, const char *name);

/* The copy comes into its owner's list when it is complete, so that a group can be copied into itself. */
static void copy_group(void *owner, const kl_group_t *source, const char *name) {
    kl_group_t *copy = recording_make_group(name);
    host_name_object(copy, host_prefix(owner), name);
    for (int i = 0; i < host_list_size(source->control_list); ++i) {
        kl_control_t *child = (kl_control_t *)host_list_item(source->control_list, i);
        copy_element(copy, child, child->name);
    }
    recording_list_append(owner, copy);
}

static void copy_table(void *owner, const kl_table_t *source, const char *name) {
    kl_table_t *copy = recording_add_table(owner, name, source->rows, source->cols);
    for (int row = 0; row < copy->alloc_rows; ++row)
        for (int col = 0; col < copy->alloc_cols; ++col) {
            int like_row = row < source->alloc_rows ? row : source->alloc_rows - 1;
            int like_col = col < source->alloc_cols ? col : source->alloc_cols - 1;
            recording_rename(copy->controls[row][col], source->controls[like_row][like_col]->name);
        }
    recording_name_cells(copy);
    for (int i = 0; i < source->max_template_col; ++i) recording_add_template(copy, source->template_controls[i]->name);
}

static void copy_element(void *owner, kl_control_t *source, const char *name) {
    switch (source->object.type) {
    case KL_OBJECT_TYPE_GROUP:
        copy_group(owner, (const kl_group_t *)source, name);
        break;
    case KL_OBJECT_TYPE_TABLE:
        copy_table(owner, (const kl_table_t *)source, name);
        break;
    default:
        recording_add_control(owner, name);
        break;
    }
}

static void apply_data(lua_State *L, const char *object, int data_index) {
    if (!lua_istable(L, data_index)) return;
    for (lua_pushnil(L); lua_next(L, data_index); lua_pop(L, 1)) {
        if (lua_type(L, -2) != LUA_TSTRING) continue;
        char *key = joined(object, ".", lua_tostring(L, -2));
        write_value(L, key, -1);
        free(key);
    }
}

/* The copy's qualified name; null, and nothing done, when the name is taken. */
static char *copy_with_variables(kl_control_t *source, const char *source_name, void *owner, const char *name) {
    char *qualified_name = joined(host_prefix(owner), ".", name);
    if (host_resolved(qualified_name)) {
        free(qualified_name);
        return NULL;
    }
    copy_element(owner, source, name);
    char *prefix = joined(source_name, ".", "");
    char *new_prefix = joined(qualified_name, ".", "");
    host_copy_variables(prefix, new_prefix);
    free(prefix);
    free(new_prefix);
    return qualified_name;
}

static char *clone_object(lua_State *L) {
    for (int i = 1; i <= 3; ++i)
        if (lua_type(L, i) != LUA_TSTRING) return NULL;
    const char *name = lua_tostring(L, 2);
    void *source = host_resolved(lua_tostring(L, 1));
    void *owner = host_resolved(lua_tostring(L, 3));
    if (!is_element(source) || !is_container(owner) || !is_own_name(name)) return NULL;
    char *copy = copy_with_variables((kl_control_t *)source, lua_tostring(L, 1), owner, name);
    if (copy) apply_data(L, copy, 4);
    return copy;
}

/* ---- Deleting ---- */

static void remove_element(kl_control_t *element) {
    if (element->object.type == KL_OBJECT_TYPE_GROUP) {
        kl_darray_t *children = ((kl_group_t *)element)->control_list;
        while (host_list_size(children)) remove_element((kl_control_t *)host_list_item(children, 0));
    }
    if (element->object.type == KL_OBJECT_TYPE_TABLE) {
        kl_table_t *table = (kl_table_t *)element;
        recording_resize_table(table, 0, 0);
        recording_name_cells(table);
    }
    recording_remove(element);
}

static int remove_object(const char *qualified_name) {
    void *object = host_resolved(qualified_name);
    if (!is_element(object)) return 0;
    char *prefix = joined(qualified_name, ".", "");
    host_remove_variables(prefix);
    free(prefix);
    remove_element((kl_control_t *)object);
    return 1;
}

void recording_behave(unsigned behaviour) {
    static const host_life_t life = {write_value, clone_object, remove_object};
    host_live(behaviour & RECORDING_LIVES ? &life : NULL);
}
