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

-- Prints a line of a report: a name in a column of its own, and what there is to say about it.
function format.line(name, text)
  print(string.format("  %-24s %s", name, text))
end
