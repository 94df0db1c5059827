-- list_metatables.lua: prints what the plug-in has registered for handles: classes with their parents, and methods; and
-- the class of the thermostat's handles.

local names = {}
for name, value in pairs(debug.getregistry()) do
  local methods = type(name) == "string" and type(value) == "table" and rawget(value, "__index")
  if type(methods) == "table" then names[value] = name end
end

for metatable, name in pairs(names) do
  local parent = debug.getmetatable(metatable.__index)
  print("class", name, parent and (names[parent] or "a table without name") or "")
  for method in pairs(metatable.__index) do print("method", name, method) end
end

local function show(from, handle) print("handle", from, names[debug.getmetatable(handle)]) end
show("get_application", keldom.get_application())
show("get_control", keldom.get_control("climate.target.warmer"))
show("get_table", keldom.get_table("week.plan"))
show("get_group", keldom.get_group("climate.mode"))
show("get_layer_instance", keldom.get_layer_instance("home.alerts"))
show("get_layer", keldom.get_layer("climate"))
show("get_screen", keldom.get_screen("home"))
show("get_layers", keldom.get_layers()[1])
show("get_screens", keldom.get_screens()[1])
