-- slows_down.lua: does more for each press than for the one before it, and keeps no more than a number.
local presses = 0
local press = format.press
function format.press(event)
  presses = presses + 1
  for _ = 1, presses / 100 do presses = presses + 0 end
  press(event)
end
