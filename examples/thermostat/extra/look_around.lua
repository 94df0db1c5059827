-- look_around.lua: 15 lines that find objects of the thermostat by name, compare them and change a value.
local button = keldom.get_control("climate.target.warmer")
local plan = keldom.get_table("week.plan")
local bar = keldom.get_layer_instance("settings.status_bar")

print("button: " .. tostring(button) .. ", a control: " .. tostring(button:get_type() == keldom.CONTROL))
print("plan:   " .. plan:get_name() .. ", a table: " .. tostring(plan:get_type() == keldom.TABLE))
print("bar:    " .. bar:get_name() .. ", a layer instance: " .. tostring(bar:get_type() == keldom.LAYER_INSTANCE))
print("the same button twice: " .. tostring(button == keldom.get_object("climate.target.warmer")))
print("button and plan:       " .. tostring(button == plan))

local before = kel.get_value("target_celsius")
kel.set_value("target_celsius", before + 1.5)
print("target: " .. before .. " -> " .. kel.get_value("target_celsius"))
kel.queue_event("press", button:get_name())
