-- anchors.lua: one event a picture of the manual: what an anchor does to the box. The lines show where the anchor is.
pictures = {}

local box = keldom.get_control("main.box")
local vertical = keldom.get_control("main.vertical")
local horizontal = keldom.get_control("main.horizontal")

local function line_at_x(x)
  vertical:set_x(x)
  vertical:show()
end

local function line_at_y(y)
  horizontal:set_y(y)
  horizontal:show()
end

function pictures.narrow_left()
  box:set_width(60)
  line_at_x(70)
end

function pictures.narrow_center()
  box:set_width(60, kel.CENTER)
  line_at_x(120)
end

function pictures.narrow_right()
  box:set_width(60, kel.RIGHT)
  line_at_x(170)
end

function pictures.small_corner()
  box:set_size(60, 30, kel.RIGHT, kel.BOTTOM)
  line_at_x(170)
  line_at_y(110)
end

function pictures.move_left()
  box:set_x(110)
  line_at_x(110)
end

function pictures.move_center()
  box:set_x(110, kel.CENTER)
  line_at_x(110)
end

function pictures.move_right()
  box:set_x(110, kel.RIGHT)
  line_at_x(110)
end
