// setters.cpp: the plain property setters: each is its list of variables, its count of arguments and their names.
#include "anchors.h"
#include "checks.h"
#include "entries.h"
#include "values.h"

namespace {

int write(lua_State *L, variable_list_t list, minimum_t minimum, const char *others) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object || !has_arguments(L, app, minimum, others)) return 0;
    return keldom_set_values_from_list(L, app, object, 2, list);
}

// Kept: what is written is argument 2, which is the pushed boolean only when nothing stands behind self.
int write_hidden(lua_State *L, bool hidden) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object) return 0;
    lua_pushboolean(L, hidden);
    return keldom_set_values_from_list(L, app, object, 2, variables(kld_hidden));
}

} // namespace

int keldom_set_hidden_function(lua_State *L) { return write(L, variables(kld_hidden), exactly(2), "hidden"); }
int keldom_set_alpha_function(lua_State *L) { return write(L, variables(kld_alpha), exactly(2), "alpha"); }
int keldom_set_rows_function(lua_State *L) { return write(L, variables(kld_rows), exactly(2), "rows"); }
int keldom_set_cols_function(lua_State *L) { return write(L, variables(kld_cols), exactly(2), "cols"); }
int keldom_set_position_function(lua_State *L) {
    return keldom_set_anchored(L, variables(kld_x, kld_y), exactly(3), "x, y");
}
int keldom_set_bounds_function(lua_State *L) {
    return write(L, variables(kld_x, kld_y, kld_width, kld_height), exactly(5), "x, y, width, height");
}
int keldom_hide_function(lua_State *L) { return write_hidden(L, true); }
int keldom_show_function(lua_State *L) { return write_hidden(L, false); }
