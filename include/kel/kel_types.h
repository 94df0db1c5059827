/* kel_types.h: the codes, small records and record names that every other header of the host interface builds on. */
#ifndef KEL_KEL_TYPES_H
#define KEL_KEL_TYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What kind of record a pointer to kl_object_t really points to. Codes of 8 and above are no object. */
typedef uint8_t kl_object_type_t;
enum {
    KL_OBJECT_TYPE_CONTROL = 0,        /* kl_control_t */
    KL_OBJECT_TYPE_TABLE = 1,          /* kl_table_t */
    KL_OBJECT_TYPE_TEMPLATE = 2,       /* kl_control_t: a control that a table makes its cells from */
    KL_OBJECT_TYPE_GROUP = 3,          /* kl_group_t */
    KL_OBJECT_TYPE_LAYER = 4,          /* kl_layer_t */
    KL_OBJECT_TYPE_LAYER_INSTANCE = 5, /* kl_layer_instance_t: one placement of a layer on a screen */
    KL_OBJECT_TYPE_SCREEN = 6,         /* kl_screen_t */
    KL_OBJECT_TYPE_APP = 7             /* kl_application_t */
};

/* The host interface version that a plug-in was built for. */
typedef struct _kl_version {
    uint16_t major, minor, service, build;
} kl_version_t;

/* An event as listeners receive it. The record and all it points to belong to the I/O manager, for the call only. */
typedef struct _kl_event {
    char *name;   /* never null */
    char *target; /* qualified name of the object that the event is for, or null when it is for nobody in particular */
    char *format; /* layout of data, or null when there is none */
    int32_t timestamp; /* milliseconds since the application started */
    uint32_t nbytes;   /* size of data in bytes */
    void *data;        /* null when nbytes is 0 */
} kl_event_t;

/* Screen coordinates, in pixels. right and bottom lie just outside the rectangle. */
typedef struct _kl_render_rect {
    int16_t left, top, right, bottom;
} kl_render_rect_t;

typedef struct _kl_render_size {
    int16_t width, height;
} kl_render_size_t;

typedef struct _kl_render_point {
    int16_t x, y;
} kl_render_point_t;

/* Records of the deployed application: kel/sdk/deployment.h. */
typedef struct _kl_object kl_object_t;
typedef struct _kl_control kl_control_t;
typedef struct _kl_table kl_table_t;
typedef struct _kl_group kl_group_t;
typedef struct _kl_layer kl_layer_t;
typedef struct _kl_layer_instance kl_layer_instance_t;
typedef struct _kl_screen kl_screen_t;
typedef struct _kl_application kl_application_t;

/* Containers: kel/sdk/darray.h and kel/sdk/string_map.h. */
typedef struct _kl_darray kl_darray_t;
typedef struct _kl_darray_iter kl_darray_iter_t;
typedef struct _kl_string_map kl_string_map_t;

/* Managers: kel/sdk/data_mgr.h and kel/sdk/io_mgr.h. */
typedef struct _kl_data_mgr kl_data_mgr_t;
typedef struct _kl_io_mgr kl_io_mgr_t;

/* The record that a plug-in's entry point fills: kel/sdk/plugin.h. */
typedef struct _kl_plugin_state kl_plugin_state_t;

#ifdef __cplusplus
}
#endif

#endif
