-- schedule.lua: the week's plan. It lives in the cells of table week.plan: a row a day, a column a period.

schedule = {}

local TABLE = "week.plan"
local PERIODS = 4 -- columns 1 to 4; column 0 holds the day's name

local function cell_key(variable, row, col)
  return TABLE .. "." .. variable .. "." .. row .. "." .. col
end

local function start_of(period)
  return kel.get_value("week.heading.period" .. period .. ".start")
end

local function print_row(name, texts)
  print(string.format("  %-12s %6s %6s %6s %6s", name, texts[1], texts[2], texts[3], texts[4]))
end

function schedule.report()
  local starts = {}
  for period = 1, PERIODS do starts[period] = start_of(period) end
  print("Week plan, °C from")
  print_row("", starts)
  for row = 0, kel.get_value(TABLE .. ".kld_rows") - 1 do
    local texts = {}
    for period = 1, PERIODS do
      texts[period] = format.degrees(kel.get_value(cell_key("celsius", row, period)))
    end
    print_row(kel.get_value(cell_key("text", row, 0)), texts)
  end
end

-- A period that begins now sets the target.
function schedule.clock_changed()
  local time, weekday = kel.get_value("time", "weekday")
  kel.set_value("status_bar.clock.text", time)
  for period = 1, PERIODS do
    if start_of(period) == time then
      local celsius = kel.get_value(cell_key("celsius", weekday - 1, period))
      print("It is " .. time .. ": the plan asks for " .. format.celsius(celsius))
      kel.set_value("target_celsius", celsius)
    end
  end
end
