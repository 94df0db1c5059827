-- inventory.lua: walks the model, down from the screens and layers and up from a button.

inventory = {}

local KINDS = {
  [keldom.CONTROL] = "control",
  [keldom.TABLE] = "table",
  [keldom.GROUP] = "group",
  [keldom.LAYER] = "layer",
  [keldom.SCREEN] = "screen",
}
local COUNTED = { keldom.GROUP, keldom.TABLE, keldom.CONTROL }

-- Adds all that is inside a layer, group or table; the cells of a table are controls.
local function count_inside(handle, counts)
  for _, child in ipairs(handle:get_children()) do
    local kind = child:get_type()
    counts[kind] = (counts[kind] or 0) + 1
    count_inside(child, counts)
  end
  return counts
end

local function in_words(counts)
  local words = {}
  for _, kind in ipairs(COUNTED) do
    local count = counts[kind]
    if count then table.insert(words, count .. " " .. KINDS[kind] .. (count == 1 and "" or "s")) end
  end
  return table.concat(words, ", ")
end

-- A layer instance stands on one screen and shows a layer, which other screens may show too.
local function report_screens()
  print("Screens and the layers they show")
  for _, screen in ipairs(keldom.get_screens()) do
    local layers = {}
    for i, instance in ipairs(screen:get_children()) do layers[i] = instance:get_layer() end
    format.line(screen, format.names(layers))
  end
end

local function report_layers()
  print("Layers, what is in them, the screens they are on")
  for _, layer in ipairs(keldom.get_layers()) do
    format.line(layer, in_words(count_inside(layer, {})) .. "; " .. format.names(layer:get_parents()))
  end
end

-- The application ends the way up: it has no parents.
local function report_way_up(name)
  print("From " .. name .. " up")
  local parent = keldom.get_control(name):get_parents()[1]
  while parent ~= keldom.get_application() do
    format.line(parent, KINDS[parent:get_type()])
    parent = parent:get_parents()[1]
  end
end

function inventory.report()
  report_screens()
  report_layers()
  report_way_up("climate.target.warmer")
end
