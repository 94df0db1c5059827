-- counter.lua: counts how often the button was pressed.
counter = {}

local number = keldom.get_control("main.number")

function counter.press(event)
  local count = number:get_value("text") + 1
  number:set_value("text", count)
  print(event.target .. " was pressed, the count is " .. count)
end
