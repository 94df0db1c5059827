-- schedule.lua: the week's plan. It lives in the cells of table week.plan: a row a day, a column a period.

schedule = {}

local PERIODS = 4 -- columns 1 to 4; column 0 holds the day's name

local plan = keldom.get_table("week.plan")

local function start_of(period)
  return kel.get_value("week.heading.period" .. period .. ".start")
end

local function print_columns(name, texts)
  print(string.format("  %-12s %6s %6s %6s %6s", name, unpack(texts)))
end

function schedule.print_row(row)
  local texts = {}
  for period = 1, PERIODS do
    texts[period] = format.degrees(kel.get_value(plan:cell_key(row, period, "celsius")))
  end
  print_columns(kel.get_value(plan:cell_key(row, 0, "text")), texts)
end

function schedule.report()
  local starts = {}
  for period = 1, PERIODS do starts[period] = start_of(period) end
  print("Week plan, °C from")
  print_columns("", starts)
  for row = 0, plan:get_rows() - 1 do schedule.print_row(row) end
end

-- The holiday's row when there is one, today's row on other days.
local function row_for(weekday)
  return holiday.row() or weekday - 1
end

-- A period that begins now sets the target.
function schedule.clock_changed()
  local time, weekday = kel.get_value("time", "weekday")
  kel.set_value("status_bar.clock.text", time)
  for period = 1, PERIODS do
    if start_of(period) == time then
      local celsius = kel.get_value(plan:cell_key(row_for(weekday), period, "celsius"))
      print("It is " .. time .. ": the plan asks for " .. format.celsius(celsius))
      kel.set_value("target_celsius", celsius)
    end
  end
end
