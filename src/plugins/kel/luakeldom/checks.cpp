// checks.cpp: what Lua entries check before they work, and the two channels in which they say no.
#include "checks.h"

inline namespace luakeldom {
const char not_a_handle[] = "Argument must be a keldom_object";
const char no_application_for_call[] = "Invalid call, no application pointer";
const char no_such_object[] = "No such object in DOM";
} // namespace luakeldom

namespace {

constexpr char argument_must_be[] = "Argument %d must be %s";

} // namespace

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
    if (!app) raise_error(L, "Invalid argument, no application pointer");
    return app;
}

kl_application_t *lua_one_arg_app(lua_State *L) {
    if (lua_gettop(L) == 1) return keldom_require_app(L);
    raise_error(L, "This function should have exactly one argument");
    return nullptr;
}

bool has_arguments(lua_State *L, kl_application_t *app, minimum_t minimum, const char *others) {
    if (lua_gettop(L) >= count_of(minimum)) return true;
    kel_app_log(app, KL_LOG_WARNING, "This function expects %s%d arguments (self, %s)",
                minimum & says_at_least ? "at least " : "", count_of(minimum), others);
    return false;
}

int warn_argument(kl_application_t *app, int position, const char *expected) {
    kel_app_log(app, KL_LOG_WARNING, argument_must_be, position, expected);
    return 0;
}

int raise_argument_error(lua_State *L, int position, const char *expected) {
    kl_lua_error(L, argument_must_be, position, expected);
    return 0;
}

dom_object_t *get_dom_object(lua_State *L, kl_application_t *&app) {
    app = keldom_require_app(L);
    if (!app) return nullptr;
    dom_object_t *object = handle_at(L, 1);
    if (!object) warn(app, not_a_handle);
    return object;
}
