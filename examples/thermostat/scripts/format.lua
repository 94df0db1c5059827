-- format.lua: how numbers and reports are written. The other scripts use it, so it runs first.

format = {}

-- 21 -> "21.0"
function format.degrees(celsius)
  return string.format("%.1f", celsius)
end

-- 21 -> "21.0 °C"
function format.celsius(celsius)
  return format.degrees(celsius) .. " °C"
end

-- A handle with geometry -> "52x22 at 136,10"
function format.place(handle)
  local x, y, width, height = handle:get_bounds()
  return string.format("%dx%d at %d,%d", width, height, x, y)
end

-- Handles -> "home, settings"; the names after the last dot when there are containers before it.
function format.names(handles)
  local names = {}
  for i, handle in ipairs(handles) do names[i] = handle:get_name():match("[^.]+$") end
  return table.concat(names, ", ")
end

-- Prints a line of a report: a name in a column of its own, and what there is to say about it.
function format.line(name, text)
  print(string.format("  %-24s %s", tostring(name), text))
end

-- Begins the report of a handler: says which object was pressed.
function format.press(event)
  print("Press on " .. tostring(keldom.get_control(event.target)))
end
