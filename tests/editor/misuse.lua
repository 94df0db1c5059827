-- misuse.lua: calls each function of the modules and each method of the thermostat's handles with arguments of all
-- kinds, and prints the errors; the log has the warnings.

local nothing, handle = {}, {} -- in argument lists: nil, and a handle of the method's own class
local other = keldom.get_layer("climate")
local stale = keldom.get_control("week.heading.holiday"):clone("stale", "week")
stale:delete()

local ARGUMENTS = {
  {}, { {} }, { "nosuch" }, { "no name" }, { stale }, { other }, { "" }, { "a\0b" },
  { "press", "a\0b" }, { "press", {} }, { "press", "loud" },
  { "brightness" }, { "brightness", 999 }, { "brightness", {} }, { "nosuch.text", 1 }, { "brightness", 1, "mode" },
  { handle }, { handle, 1 }, { handle, {} }, { handle, 1, 99 }, { handle, 1, {} }, { handle, {}, 2 },
  { handle, 1, 1, {} }, { handle, 1, 1, 99 }, { handle, 1, 1, nothing, 99 }, { handle, 1, 1, nothing, {} },
  { handle, {}, 1, 2 }, { handle, 1, {}, nothing, 2 }, { handle, 1, 2, 3, 4, 5 },
  { handle, "no name", "climate" }, { handle, "new", "nosuch" },
}

local function call(name, code, arguments, own)
  local given = {}
  for i = 1, #arguments do
    if arguments[i] == handle then given[i] = own elseif arguments[i] ~= nothing then given[i] = arguments[i] end
  end
  print("call", name)
  -- As a script does: the function's name in messages comes from the code that calls it.
  local done, message = pcall(loadstring("local object = ... ; " .. code .. "(select(2, ...)) ; return"), own,
    unpack(given, 1, #arguments))
  if not done then print("error", (message:gsub("^%[string .-%]:%d+: ", ""))) end
end

local function misuse(owner, own, names)
  table.sort(names, function(a, b) return (a == "delete" and "~" or a) < (b == "delete" and "~" or b) end)
  for _, name in ipairs(names) do
    local code = (own and "object." or owner .. ".") .. name
    for _, arguments in ipairs(ARGUMENTS) do
      if own or arguments[1] ~= handle then call(owner .. (own and ":" or ".") .. name, code, arguments, own) end
    end
  end
end

for _, module in ipairs({ "keldom", "kel" }) do
  local names = {}
  for name, value in pairs(_G[module]) do
    if type(value) == "function" then table.insert(names, name) end
  end
  misuse(module, nil, names)
end

for _, class in ipairs(CLASSES) do misuse(class.name, keldom.get_object(class.object), class.methods) end
