-- leaks.lua: what a careless script does: keeps a handle to each object that is pressed, for ever.
local pressed = {}
local press = format.press
function format.press(event)
  pressed[#pressed + 1] = keldom.get_control(event.target)
  press(event)
end
