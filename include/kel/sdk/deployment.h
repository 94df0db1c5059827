/* deployment.h: the deployed application. Object records in the order that the host lays them out, and name resolution.
 *
 * All records belong to the host. "Read" marks what a plug-in may read; the other fields are the host's own and stand
 * here so that the records keep their shape. A plug-in changes none of them: it writes data variables instead. */
#ifndef KEL_SDK_DEPLOYMENT_H
#define KEL_SDK_DEPLOYMENT_H

#include <kel/kel_types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The header of every object, so that a pointer to any record below is a pointer to this one too. */
struct _kl_object {
    kl_object_type_t type; /* Read: decides what the record is */
    void *action_head;     /* first of the object's actions */
};

/* A control, and a template that table cells are made from. */
struct _kl_control {
    kl_object_t object; /* Read */
    char *name;         /* Read: the short name, last component of the qualified one; never null */
    uint16_t flags;
    uint16_t zindex;
    uint32_t focus_index;
    kl_render_rect_t dirty_rect;
    kl_render_rect_t rect;
    kl_render_size_t size;
    kl_layer_t *layer;
    kl_control_t *parent; /* the group or table that holds the control, or null */
    kl_application_t *app;
    void *renderext_head;
    void *mask;
    void *shadow_data;
};

/* A table of cells. */
struct _kl_table {
    kl_control_t control; /* Read */
    uint16_t flags;
    uint16_t rows; /* Read: rows of cells */
    uint16_t cols; /* Read: columns of cells */
    uint16_t visible_rows;
    uint16_t visible_cols;
    uint16_t row;
    uint16_t col;
    uint16_t nframes;
    uint16_t frame;
    uint16_t row_distance;
    uint16_t col_distance;
    uint16_t row_height;
    uint16_t max_template_col;
    uint16_t alloc_rows;
    uint16_t alloc_cols;
    uint16_t active_col;
    uint16_t active_row;
    kl_control_t **template_controls; /* array of the table's templates */
    kl_control_t *active_control;
    void *tween;
    void *timer;
    kl_control_t ***controls; /* Read: controls[row][column], both from 0; full up to rows by cols */
    kl_render_point_t offset;
    kl_render_point_t shadow_offset;
    void *scroll_info;
};

/* A group of controls, tables and groups. */
struct _kl_group {
    kl_control_t control;      /* Read */
    kl_darray_t *control_list; /* Read: kl_control_t *, the direct children in order; a null entry ends the list */
};

/* Rectangles of a layer that wait to be drawn. */
typedef struct _kl_dirty_list {
    kl_render_rect_t *rects;
    uint16_t capacity;
    uint16_t count;
    kl_render_rect_t bounds;
} kl_dirty_list_t;

/* A layer, which screens show through layer instances. */
struct _kl_layer {
    kl_object_t object; /* Read */
    char *name;         /* Read: also the qualified name; never null */
    kl_application_t *app;
    kl_render_size_t size;
    kl_render_rect_t viewport;
    kl_dirty_list_t dirty_list;
    uint16_t flags;
    uint16_t reserved;
    kl_darray_t *focus_list;
    kl_darray_t *control_list; /* Read: kl_control_t *, the top-level controls in order; a null entry ends the list */
    void *shadow_data;
};

/* One placement of a layer on a screen. Position, alpha and visibility are read through data variables, not here. */
struct _kl_layer_instance {
    kl_object_t object;  /* Read */
    kl_layer_t *layer;   /* Read: the layer that is placed; never null */
    kl_screen_t *screen; /* Read: the screen that it is placed on; never null */
    void *rlayer;
    uint16_t flags;
    uint16_t alpha;
    int16_t x, y;
    kl_render_point_t offset;
    int32_t index;
    int32_t hwindex;
    void *scroll_info;
    void *shadow_data;
};

/* A screen. */
struct _kl_screen {
    kl_object_t object; /* Read */
    char *name;         /* Read: also the qualified name; never null */
    kl_application_t *app;
    uint16_t flags;
    uint16_t reserved;
    kl_darray_t *layer_list; /* Read: kl_layer_instance_t *, bottom layer first; a null entry ends the list */
    kl_darray_t *focus_list;
    kl_darray_iter_t *focus_iter;
};

/* The application. */
struct _kl_application {
    kl_object_t object; /* Read */
    kl_version_t version;
    uint32_t flags;
    char *name;
    char *path;            /* folder of the application's files, without a slash at its end */
    kl_render_size_t size; /* of the display, in pixels */
    uint16_t render_format;
    uint16_t reserved;
    kl_screen_t *default_screen;
    kl_control_t *pressed_control;
    kl_render_point_t pressed_point;
    struct _kl_load_info *linfo;      /* Read: kel/sdk/managers.h; never null */
    kl_string_map_t *screen_map;      /* Read: name to kl_screen_t *, every screen; never null */
    kl_string_map_t *layer_map;       /* Read: name to kl_layer_t *, every layer; never null */
    kl_string_map_t *shared_data_map; /* Read: what the host shares with plug-ins; "luastate" is the lua_State * once
                                         scripts can run; never null */
    kl_string_map_t *animation_map;
    kl_string_map_t *metric_map;
    void (*quit_callback)(kl_application_t *app, void *user_data);
    void *quit_user_data;
    uint32_t start_time; /* milliseconds */
};

/* Resolves a qualified name.
 *   app    never null
 *   name   never null; stays the caller's
 *   flags  0
 * Returns the object's record, which stays the host's, or null when there is no such object. */
kl_object_t *kl_application_find_object(kl_application_t *app, const char *name, int flags);

#ifdef __cplusplus
}
#endif

#endif
