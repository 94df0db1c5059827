/* redirect.h: included before everything when the plug-in is compiled for the suite: each host function that it calls
 * becomes one of the recorder's (recorder.c), which passes the call on. The plug-in's own sources stay as they are. */
#ifndef CONFORMANCE_REDIRECT_H
#define CONFORMANCE_REDIRECT_H

#define kel_app_log kc_kel_app_log
#define kelal_free kc_kelal_free
#define kelal_realloc kc_kelal_realloc
#define kelal_strdup kc_kelal_strdup
#define kl_application_find_object kc_kl_application_find_object
#define kl_darray_add kc_kl_darray_add
#define kl_darray_create kc_kl_darray_create
#define kl_darray_free kc_kl_darray_free
#define kl_lua_clone_object kc_kl_lua_clone_object
#define kl_lua_delete_object kc_kl_lua_delete_object
#define kl_lua_error kc_kl_lua_error
#define kl_lua_get_app kc_kl_lua_get_app
#define kl_lua_get_data_value kc_kl_lua_get_data_value
#define kl_lua_set_data_value kc_kl_lua_set_data_value

#endif
