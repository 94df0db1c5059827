// setters.cpp: the plain property setters: each is its list of variables, its count of arguments and its usage text.
// Kept: an argument count is a minimum, whatever the text says.
#include "anchors.h"
#include "checks.h"
#include "entries.h"
#include "values.h"

namespace {

int write(lua_State *L, variable_list_t list, int minimum, const char *expects) {
    kl_application_t *app = nullptr;
    dom_object_t *object = nullptr;
    if (!get_dom_object(L, app, object) || !has_arguments(L, app, minimum, expects)) return 0;
    return keldom_set_values_from_list(L, app, object, 2, list);
}

// Kept: what is written is argument 2, which is the pushed boolean only when nothing stands behind self.
int write_hidden(lua_State *L, bool hidden) {
    kl_application_t *app = nullptr;
    dom_object_t *object = nullptr;
    if (!get_dom_object(L, app, object)) return 0;
    lua_pushboolean(L, hidden);
    return keldom_set_values_from_list(L, app, object, 2, variables(kld_hidden));
}

} // namespace

int keldom_set_hidden_function(lua_State *L) {
    return write(L, variables(kld_hidden), 2, "2 arguments (self, hidden)");
}
int keldom_set_alpha_function(lua_State *L) { return write(L, variables(kld_alpha), 2, "2 arguments (self, alpha)"); }
int keldom_set_rows_function(lua_State *L) { return write(L, variables(kld_rows), 2, "2 arguments (self, rows)"); }
int keldom_set_cols_function(lua_State *L) { return write(L, variables(kld_cols), 2, "2 arguments (self, cols)"); }
int keldom_set_position_function(lua_State *L) {
    return keldom_set_anchored(L, variables(kld_x, kld_y), 2, "3 arguments (self, x, y)");
}
int keldom_set_bounds_function(lua_State *L) {
    return write(L, variables(kld_x, kld_y, kld_width, kld_height), 5, "5 arguments (self, x, y, width, height)");
}
int keldom_hide_function(lua_State *L) { return write_hidden(L, true); }
int keldom_show_function(lua_State *L) { return write_hidden(L, false); }
