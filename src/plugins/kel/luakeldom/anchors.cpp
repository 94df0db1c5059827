// anchors.cpp: turns "x, meant as the centre" into the plain x that the host stores.
// Arithmetic on Lua arguments only: the one writer stores them when all is done.
#include "anchors.h"

#include <stdint.h>

#include "checks.h"
#include "entries.h"
#include "values.h"

namespace {

enum anchor_t : int { bad_anchor = 0, leading = 1, center = 2, trailing = 3 };

struct axis_t {
    variable_t position;
    variable_t extent;
    const char *anchors; // as the error names them
};

constexpr axis_t horizontal{kld_x, kld_width, "kel.LEFT, kel.CENTER or kel.RIGHT"};
constexpr axis_t vertical{kld_y, kld_height, "kel.TOP, kel.CENTER or kel.BOTTOM"};

// Coordinates are the host's 16 bits wide and wrap.
int16_t to_coordinate(lua_Integer number) { return static_cast<int16_t>(number); }

// [-0, +0] The variable's current value; 0 when it has none.
int16_t current(lua_State *L, kl_application_t *app, const dom_object_t *object, variable_t variable) {
    keldom_get_value(L, app, object, variable_name(variable));
    int16_t value = to_coordinate(lua_tointeger(L, -1));
    lua_settop(L, -2);
    return value;
}

bool is_number(lua_State *L, int position) {
    if (lua_isnumber(L, position)) return true;
    kl_lua_error(L, "Argument %d must be an integer", position);
    return false;
}

// The anchor at a position: leading when there is none, bad_anchor after raising why. Kept: only its low 8 bits count.
anchor_t checked_anchor(lua_State *L, int position, const axis_t &axis) {
    if (lua_type(L, position) <= LUA_TNIL) return leading;
    if (!is_number(L, position)) return bad_anchor;
    auto anchor = static_cast<int8_t>(lua_tointeger(L, position));
    if (anchor >= leading && anchor <= trailing) return static_cast<anchor_t>(anchor);
    kl_lua_error(L, "Argument %d must be %s", position, axis.anchors);
    return bad_anchor;
}

// How far the anchor point lies from the leading edge, of a length or of a change of it. Halves go toward zero.
int share(anchor_t anchor, int16_t length) { return anchor == center ? length / 2 : length; }

// [-0, +0]
void replace(lua_State *L, int position, int coordinate) {
    lua_pushinteger(L, to_coordinate(coordinate));
    lua_replace(L, position);
}

// Replaces the position that was given for the anchor point by that of the leading edge.
int move(lua_State *L, kl_application_t *app, const dom_object_t *object, const axis_t &axis, int value,
         int anchor_position) {
    anchor_t anchor = checked_anchor(L, anchor_position, axis);
    if (anchor == leading) return 0;
    if (anchor == bad_anchor || !is_number(L, value)) return -1;
    int16_t wanted = to_coordinate(lua_tointeger(L, value));
    replace(L, value, wanted - share(anchor, current(L, app, object, axis.extent)));
    return 0;
}

// When the leading edge has to move for the anchor point to stay, leaves its new position where the anchor was, and has
// it written: the list's placeholder at `slot` becomes the position's variable.
int resize(lua_State *L, kl_application_t *app, const dom_object_t *object, const axis_t &axis, int value,
           int anchor_position, unsigned slot, variable_list_t &list) {
    anchor_t anchor = checked_anchor(L, anchor_position, axis);
    if (anchor == leading) return 0;
    if (anchor == bad_anchor) return -1;
    int16_t extent = current(L, app, object, axis.extent);
    if (!is_number(L, value)) return -1;
    int16_t change = to_coordinate(extent - to_coordinate(lua_tointeger(L, value)));
    if (!change) return 0;
    replace(L, anchor_position, current(L, app, object, axis.position) + share(anchor, change));
    list = with_slot(list, slot, axis.position);
    return 0;
}

// The four anchored steps. Each is 0, or -1 after raising that an argument is bad.
int keldom_set_x_anchored(lua_State *L, kl_application_t *app, const dom_object_t *object, int anchor) {
    return move(L, app, object, horizontal, 2, anchor);
}
int keldom_set_y_anchored(lua_State *L, kl_application_t *app, const dom_object_t *object, int value, int anchor) {
    return move(L, app, object, vertical, value, anchor);
}
int keldom_set_w_anchored(lua_State *L, kl_application_t *app, const dom_object_t *object, int anchor, unsigned slot,
                          variable_list_t &list) {
    return resize(L, app, object, horizontal, 2, anchor, slot, list);
}
int keldom_set_h_anchored(lua_State *L, kl_application_t *app, const dom_object_t *object, int value, int anchor,
                          unsigned slot, variable_list_t &list) {
    return resize(L, app, object, vertical, value, anchor, slot, list);
}

// Where a host's error call returns, a step that failed is passed over and the list is written as it stands.
int anchored_step(lua_State *L, kl_application_t *app, const dom_object_t *object, variable_t variable, int value,
                  int anchor, unsigned slot, variable_list_t &list) {
    switch (variable) {
    case kld_x:
        return keldom_set_x_anchored(L, app, object, anchor);
    case kld_y:
        return keldom_set_y_anchored(L, app, object, value, anchor);
    case kld_width:
        return keldom_set_w_anchored(L, app, object, anchor, slot, list);
    default:
        return keldom_set_h_anchored(L, app, object, value, anchor, slot, list);
    }
}

} // namespace

int keldom_set_anchored(lua_State *L, variable_list_t list, int count, const char *expects) {
    kl_application_t *app = nullptr;
    dom_object_t *object = nullptr;
    if (!get_dom_object(L, app, object) || !has_arguments(L, app, 1 + count, expects)) return 0;
    if (object->type <= KL_OBJECT_TYPE_TABLE) {
        variable_list_t left = list;
        for (int i = 0; i < count; ++i, left = rest_of(left))
            anchored_step(L, app, object, first_of(left), 2 + i, 2 + count + i, static_cast<unsigned>(count + i), list);
    }
    return keldom_set_values_from_list(L, app, object, 2, list);
}

int keldom_set_x_function(lua_State *L) { return keldom_set_anchored(L, variables(kld_x), 1, "2 arguments (self, x)"); }
int keldom_set_y_function(lua_State *L) { return keldom_set_anchored(L, variables(kld_y), 1, "2 arguments (self, y)"); }
int keldom_set_width_function(lua_State *L) {
    return keldom_set_anchored(L, variables(kld_width, placeholder), 1, "2 arguments (self, width)");
}
int keldom_set_height_function(lua_State *L) {
    return keldom_set_anchored(L, variables(kld_height, placeholder), 1, "2 arguments (self, height)");
}
int keldom_set_size_function(lua_State *L) {
    return keldom_set_anchored(L, variables(kld_width, kld_height, placeholder, placeholder), 2,
                               "at least 3 arguments (self, width, height)");
}
