// checks.cpp: what Lua entries check before they work, and the two channels in which they say no.
#include "checks.h"

int warn(kl_application_t *app, const char *text) {
    kel_app_log(app, KL_LOG_WARNING, "%s", text);
    return 0;
}

int raise_error(lua_State *L, const char *text) {
    kl_lua_error(L, "%s", text);
    return 0;
}

kl_application_t *keldom_require_app(lua_State *L) {
    kl_application_t *app = kl_lua_get_app(L);
    if (!app) raise_error(L, no_application);
    return app;
}

kl_application_t *lua_one_arg_app(lua_State *L) {
    if (lua_gettop(L) == 1) return keldom_require_app(L);
    raise_error(L, one_argument_expected);
    return nullptr;
}

bool has_arguments(lua_State *L, kl_application_t *app, int minimum, const char *expects) {
    if (lua_gettop(L) >= minimum) return true;
    kel_app_log(app, KL_LOG_WARNING, "This function expects %s", expects);
    return false;
}

bool get_dom_object(lua_State *L, kl_application_t *&app, dom_object_t *&object) {
    app = keldom_require_app(L);
    if (!app) return false;
    object = keldom_check_udata_base(L, 1, keldom_object_metatable);
    if (!object) warn(app, not_a_handle);
    return object;
}
