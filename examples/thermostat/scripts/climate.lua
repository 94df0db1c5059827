-- climate.lua: the target temperature, the mode, and whether the house is heated or cooled.

climate = {}

local LOWEST, HIGHEST, STEP = 5, 30, 0.5
local TOLERANCE = 0.5 -- in mode auto, so that heating and cooling do not take turns
local STATES = { "heating", "cooling", "idle" }

local layer = keldom.get_layer("climate")
local selected = keldom.get_control("climate.mode.selected")
local lock_notice = keldom.get_layer_instance("home.lock_notice")

local function state_for(mode, room, target)
  if mode == "heat" and room < target then return "heating" end
  if mode == "cool" and room > target then return "cooling" end
  if mode == "auto" and room < target - TOLERANCE then return "heating" end
  if mode == "auto" and room > target + TOLERANCE then return "cooling" end
  return "idle"
end

local function show_state(state)
  for _, name in ipairs(STATES) do
    keldom.get_control("climate.room.state." .. name):set_hidden(name ~= state)
  end
end

-- Brings the home screen in step with the variables.
function climate.refresh()
  local room, target, mode = kel.get_value("room_celsius", "target_celsius", "mode")
  local state = state_for(mode, room, target)
  kel.set_value("state", state)
  show_state(state)
  layer:set_data({
    ["room.state.label.text"] = state:gsub("^%l", string.upper),
    ["room.temperature.text"] = format.degrees(room),
    ["target.value.text"] = format.degrees(target),
  })
  selected:set_bounds(keldom.get_control("climate.mode." .. mode):get_bounds())
  format.line(state, "room " .. format.celsius(room) .. ", target " .. format.celsius(target) .. ", mode " .. mode)
end

function climate.start()
  print("Climate")
  climate.refresh()
end

-- Says which object was pressed; false when the child lock forbids it.
local function accept(event)
  format.press(event)
  local locked = kel.get_value("child_lock") ~= 0
  lock_notice:set_hidden(not locked)
  if locked then format.line("child lock", "on, nothing is changed") end
  return not locked
end

local function move_target(event, step)
  if not accept(event) then return end
  local before = kel.get_value("target_celsius")
  local after = math.max(LOWEST, math.min(HIGHEST, before + step))
  format.line("target", format.celsius(before) .. " -> " .. format.celsius(after))
  kel.set_value("target_celsius", after)
end

function climate.warmer(event) move_target(event, STEP) end
function climate.colder(event) move_target(event, -STEP) end

-- The button's own name is the mode: climate.mode.cool.
function climate.choose_mode(event)
  if not accept(event) then return end
  local before, after = kel.get_value("mode"), event.target:match("[^.]+$")
  format.line("mode", before .. " -> " .. after)
  kel.set_value("mode", after)
end
