// layout.cpp: holds the build against the memory layout that hosts on 32-bit targets have. No code.
#include <stddef.h>

#include <kel/kel.h>

#if UINTPTR_MAX == UINT32_MAX

// A host built by another compiler lays its records out like this; a difference here would read the wrong memory there.
static_assert(sizeof(kl_object_t) == 8 && offsetof(kl_object_t, type) == 0);

static_assert(offsetof(kl_control_t, object) == 0);
static_assert(offsetof(kl_control_t, name) == 8);
static_assert(offsetof(kl_control_t, focus_index) == 16);
static_assert(offsetof(kl_control_t, rect) == 28);
static_assert(offsetof(kl_control_t, layer) == 40);
static_assert(sizeof(kl_control_t) == 64);

static_assert(offsetof(kl_table_t, control) == 0);
static_assert(offsetof(kl_table_t, rows) == 66);
static_assert(offsetof(kl_table_t, cols) == 68);
static_assert(offsetof(kl_table_t, template_controls) == 100);
static_assert(offsetof(kl_table_t, controls) == 116);
static_assert(sizeof(kl_table_t) == 132);

static_assert(offsetof(kl_group_t, control) == 0);
static_assert(offsetof(kl_group_t, control_list) == 64);
static_assert(sizeof(kl_group_t) == 68);

static_assert(offsetof(kl_layer_t, object) == 0);
static_assert(offsetof(kl_layer_t, name) == 8);
static_assert(offsetof(kl_layer_t, dirty_list) == 28);
static_assert(offsetof(kl_layer_t, control_list) == 52);
static_assert(sizeof(kl_layer_t) == 60);

static_assert(offsetof(kl_layer_instance_t, object) == 0);
static_assert(offsetof(kl_layer_instance_t, layer) == 8);
static_assert(offsetof(kl_layer_instance_t, screen) == 12);
static_assert(sizeof(kl_layer_instance_t) == 48);

static_assert(offsetof(kl_screen_t, object) == 0);
static_assert(offsetof(kl_screen_t, name) == 8);
static_assert(offsetof(kl_screen_t, layer_list) == 20);
static_assert(sizeof(kl_screen_t) == 32);

static_assert(offsetof(kl_application_t, object) == 0);
static_assert(offsetof(kl_application_t, linfo) == 48);
static_assert(offsetof(kl_application_t, screen_map) == 52);
static_assert(offsetof(kl_application_t, layer_map) == 56);
static_assert(offsetof(kl_application_t, shared_data_map) == 60);
static_assert(offsetof(_kl_load_info, io_mgr) == 0);
static_assert(offsetof(_kl_load_info, data_mgr) == 4);

static_assert(offsetof(kl_darray_iter_t, first) == 12);
static_assert(offsetof(kl_darray_iter_t, next) == 20);
static_assert(sizeof(kl_darray_iter_t) == 40);

static_assert(offsetof(kl_data_mgr_t, find_for_prefix) == 32);
static_assert(offsetof(kl_data_mgr_t, hold_change_listener) == 48);
static_assert(offsetof(kl_data_mgr_t, release_change_listener) == 52);
static_assert(sizeof(kl_data_mgr_t) == 92);

static_assert(offsetof(kl_io_mgr_t, add_event_listener) == 12);
static_assert(offsetof(kl_io_mgr_t, rem_event_listener) == 16);
static_assert(sizeof(kl_io_mgr_t) == 56);

static_assert(sizeof(kl_version_t) == 8);
static_assert(offsetof(kl_plugin_state_t, init) == 8);
static_assert(offsetof(kl_plugin_state_t, fini) == 12);
static_assert(offsetof(kl_plugin_state_t, version) == 16);
static_assert(offsetof(kl_plugin_state_t, service_number) == 24);
static_assert(sizeof(kl_plugin_state_t) == 28);

#endif
