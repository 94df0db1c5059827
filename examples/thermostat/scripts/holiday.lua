-- holiday.lua: one more row of the week's plan, which holds as long as it is there.

holiday = {}

local WEEK = 7 -- rows 0 to 6; the holiday is row 7
local SUNDAY = WEEK - 1

local plan = keldom.get_table("week.plan")
local button = keldom.get_control("week.heading.holiday")

function holiday.row()
  if plan:get_rows() > WEEK then return WEEK end
end

-- The table is as high as its rows; its upper edge stays where it is.
local function resize(rows)
  local row_height = plan:get_height() / plan:get_rows()
  plan:set_rows(rows)
  plan:set_height(rows * row_height)
end

-- A new row has the look and the values of the last row's templates: what Sunday has of its own is copied here.
local function copy_sunday()
  local batch = { [plan:cell_key(WEEK, 0, "text")] = "Holiday" }
  for col = 1, plan:get_cols() - 1 do
    batch[plan:cell_key(WEEK, col, "celsius")] = kel.get_value(plan:cell_key(SUNDAY, col, "celsius"))
  end
  keldom.get_application():set_data(batch)
end

function holiday.toggle(event)
  format.press(event)
  if holiday.row() then
    resize(WEEK)
    button:set_value("text", "+ Holiday")
  else
    resize(WEEK + 1)
    copy_sunday()
    button:set_value("text", "− Holiday")
    schedule.print_row(WEEK)
  end
  format.line(plan, plan:get_rows() .. " rows, " .. #plan:get_children() .. " cells, " .. format.place(plan))
end
