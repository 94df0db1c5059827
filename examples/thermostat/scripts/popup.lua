-- popup.lua: shows a layer instance over the others of its screen, which grow dim meanwhile.

popup = {}

local DIM = 96 -- of 255

local alphas = {} -- of dimmed layer instances, by name

local function others_of(instance)
  local others = {}
  for _, other in ipairs(instance:get_parents()[1]:get_children()) do
    if other ~= instance then table.insert(others, other) end
  end
  return others
end

function popup.is_open(instance)
  return not instance:get_hidden()
end

function popup.open(instance)
  instance:show()
  for _, other in ipairs(others_of(instance)) do
    alphas[other:get_name()] = other:get_alpha()
    other:set_alpha(DIM)
  end
  format.line(instance, "shown, the other layers have alpha " .. DIM)
end

function popup.close(instance)
  instance:hide()
  for _, other in ipairs(others_of(instance)) do other:set_alpha(alphas[other:get_name()]) end
  format.line(instance, "hidden")
end
