-- ordinary.lua: what scripts of an application do: walk, read, write, format, clone and delete.
for _, screen in ipairs(keldom.get_screens()) do
    for _, child in ipairs(screen:get_children()) do
        string.format("%s %d %g", child:get_name(), child:get_type(), 0.5)
    end
end
local button = keldom.get_control("climate.target.warmer")
button:set_position(button:get_x() + 1, button:get_y(), kel.CENTER)
button:clone("another", "climate.target", {kld_x = 3}):delete()
local text = string.gsub("a b", "%a", string.upper)
assert(pcall(loadstring("return ...", "small"), text))
