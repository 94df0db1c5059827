// anchors.cpp: turns "x, meant as the centre" into the plain x that the host stores.
// Arithmetic on Lua arguments only: the one writer stores them when all is done.
#include "anchors.h"

#include <stdint.h>

#include "checks.h"
#include "entries.h"
#include "values.h"

namespace {

enum anchor_t : int { leading = 1, center = 2, trailing = 3 };

struct axis_t {
    variable_t position;
    variable_t extent;
    const char *anchors; // as the error names them
};

constexpr axis_t horizontal{kld_x, kld_width, "kel.LEFT, kel.CENTER or kel.RIGHT"};
constexpr axis_t vertical{kld_y, kld_height, "kel.TOP, kel.CENTER or kel.BOTTOM"};

constexpr int first_value = 2;

// Coordinates are the host's 16 bits wide and wrap.
int16_t to_coordinate(lua_Integer number) { return static_cast<int16_t>(number); }

// [-0, +0] The variable's current value; 0 when it has none.
int16_t current(lua_State *L, kl_application_t *app, const dom_object_t *object, variable_t variable) {
    keldom_get_value(L, app, object, variable_name(variable));
    int16_t value = to_coordinate(lua_tointeger(L, -1));
    lua_settop(L, -2);
    return value;
}

// What converts to other than 0 is a number; only of 0 it has to be asked.
bool read_integer(lua_State *L, int position, lua_Integer &number) {
    number = lua_tointeger(L, position);
    if (number || lua_isnumber(L, position)) return true;
    return raise_argument_error(L, position, "an integer");
}

// The anchor at a position: leading, which changes nothing, when there is none, and after raising that it is bad.
// Kept: only its low 8 bits count.
anchor_t checked_anchor(lua_State *L, int position, const char *anchors) {
    lua_Integer number;
    if (lua_type(L, position) <= LUA_TNIL || !read_integer(L, position, number)) return leading;
    auto anchor = static_cast<int8_t>(number);
    if (anchor >= leading && anchor <= trailing) return static_cast<anchor_t>(anchor);
    raise_argument_error(L, position, anchors);
    return leading;
}

// How far the anchor point lies from the leading edge, of a length or of a change of it. Halves go toward zero.
int share(anchor_t anchor, int16_t length) { return anchor == center ? length / 2 : length; }

// [-0, +0]
void replace(lua_State *L, int position, int coordinate) {
    lua_pushinteger(L, to_coordinate(coordinate));
    lua_replace(L, position);
}

// Replaces the position that was given for the anchor point by that of the leading edge.
void move(lua_State *L, kl_application_t *app, const dom_object_t *object, const axis_t &axis, anchor_t anchor,
          int value) {
    lua_Integer number;
    if (!read_integer(L, value, number)) return;
    int16_t wanted = to_coordinate(number);
    replace(L, value, wanted - share(anchor, current(L, app, object, axis.extent)));
}

// Whether the leading edge has to move for the anchor point to stay; its new position is then left where the anchor
// was.
bool resize(lua_State *L, kl_application_t *app, const dom_object_t *object, const axis_t &axis, anchor_t anchor,
            int value, int anchor_position) {
    int16_t extent = current(L, app, object, axis.extent);
    lua_Integer number;
    if (!read_integer(L, value, number)) return false;
    int16_t change = to_coordinate(extent - to_coordinate(number));
    if (!change) return false;
    replace(L, anchor_position, current(L, app, object, axis.position) + share(anchor, change));
    return true;
}

// The anchored step of one value. Returns the list to write: a resize that moves the object too puts the position's
// variable where the anchor's placeholder stood. Where a host's error call returns, a bad argument changes nothing.
variable_list_t anchored(lua_State *L, kl_application_t *app, const dom_object_t *object, variable_list_t list,
                         variable_t variable, int value, int anchor_position) {
    const axis_t &axis = variable == kld_x || variable == kld_width ? horizontal : vertical;
    anchor_t anchor = checked_anchor(L, anchor_position, axis.anchors);
    if (anchor == leading) return list;
    if (variable == axis.position)
        move(L, app, object, axis, anchor, value);
    else if (resize(L, app, object, axis, anchor, value, anchor_position))
        return with_slot(list, static_cast<unsigned>(anchor_position - first_value), axis.position);
    return list;
}

} // namespace

int keldom_set_anchored(lua_State *L, variable_list_t list, minimum_t minimum, const char *others) {
    kl_application_t *app;
    dom_object_t *object = get_dom_object(L, app);
    if (!object || !has_arguments(L, app, minimum, others)) return 0;
    if (object->type <= KL_OBJECT_TYPE_TABLE) {
        int count = count_of(minimum) - 1;
        variable_list_t left = list;
        for (int value = first_value; value < first_value + count; ++value, left = rest_of(left))
            list = anchored(L, app, object, list, first_of(left), value, value + count);
    }
    return keldom_set_values_from_list(L, app, object, 2, list);
}

int keldom_set_x_function(lua_State *L) { return keldom_set_anchored(L, variables(kld_x), exactly(2), "x"); }
int keldom_set_y_function(lua_State *L) { return keldom_set_anchored(L, variables(kld_y), exactly(2), "y"); }
int keldom_set_width_function(lua_State *L) {
    return keldom_set_anchored(L, variables(kld_width, placeholder), exactly(2), "width");
}
int keldom_set_height_function(lua_State *L) {
    return keldom_set_anchored(L, variables(kld_height, placeholder), exactly(2), "height");
}
int keldom_set_size_function(lua_State *L) {
    return keldom_set_anchored(L, variables(kld_width, kld_height, placeholder, placeholder), at_least(3),
                               "width, height");
}
