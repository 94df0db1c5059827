-- alerts.lua: what the user should know: a badge with a number, and a popup with a row for each alert.
-- The rows are clones of a hidden group, made when the popup opens and deleted when it closes.

alerts = {}

local FROST, FILTER_DAYS = 0, 45
local ROW_HEIGHT, WIDTH, TITLE_HEIGHT = 28, 248, 32
local CLOSED_WIDTH = 120
local PADDING, LETTER = 12, 8 -- of the badge

local badge = keldom.get_control("climate.room.alerts")
local instance = keldom.get_layer_instance("home.alerts")
local layer = instance:get_layer()
local panel = keldom.get_control("alerts.panel")
local title = keldom.get_control("alerts.title")
local sample = keldom.get_group("alerts.sample")

local rows = {}

local function find()
  local known = keldom.get_application():get_data("outdoor_celsius", "child_lock")
  local days = kel.get_value("preferences.filter.value.days")
  local found = {}
  local function add(name, text) table.insert(found, { name = name, text = text }) end
  if known.outdoor_celsius < FROST then add("frost", "Frost, " .. format.celsius(known.outdoor_celsius)) end
  if days <= FILTER_DAYS then add("filter", "Air filter due in " .. days .. " days") end
  if known.child_lock ~= 0 then add("lock", "Child lock is on") end
  return found
end

-- The badge is as wide as its text and keeps its right edge.
local function show_badge(text)
  badge:set_value("text", text)
  badge:set_width(PADDING + LETTER * #text, kel.RIGHT)
end

function alerts.count()
  local count = #find()
  show_badge(count .. " new")
  badge:set_hidden(count == 0)
end

-- The panel grows to the left and upwards; the title goes with its upper right corner.
local function resize_panel(width, height)
  panel:set_size(width, height, kel.RIGHT, kel.BOTTOM)
  local right = panel:get_x() + panel:get_width()
  title:set_position(right - PADDING, panel:get_y() + TITLE_HEIGHT / 2, kel.RIGHT, kel.CENTER)
end

local function add_row(alert, position)
  local x, y = panel:get_position()
  local row = sample:clone(alert.name, layer:get_name(), {
    kld_x = x,
    kld_y = y + TITLE_HEIGHT + ROW_HEIGHT * (position - 1),
    kld_hidden = false,
    ["label.text"] = alert.text,
  })
  table.insert(rows, row)
  format.line(row, alert.text .. ", at " .. row:get_x() .. "," .. row:get_y())
end

local function open()
  local found = find()
  show_badge(tostring(#found))
  resize_panel(WIDTH, TITLE_HEIGHT + ROW_HEIGHT * #found)
  format.line(panel, format.place(panel))
  for position, alert in ipairs(found) do add_row(alert, position) end
  popup.open(instance)
end

local function close()
  popup.close(instance)
  for _, row in ipairs(rows) do row:delete() end
  rows = {}
  resize_panel(CLOSED_WIDTH, TITLE_HEIGHT)
  format.line(panel, format.place(panel) .. ", " .. #layer:get_children() .. " objects left in its layer")
end

function alerts.toggle(event)
  format.press(event)
  if popup.is_open(instance) then close() else open() end
end
