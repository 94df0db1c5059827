-- settings.lua: what a press does on the settings screen.

settings = {}

local BRIGHTNESS_STEP, BRIGHTEST = 20, 100

local lock_notice = keldom.get_layer_instance("home.lock_notice")
local brightness = keldom.get_group("preferences.brightness")
local track = keldom.get_control("preferences.brightness.bar.track")
local level = keldom.get_control("preferences.brightness.bar.level")

function settings.toggle_child_lock(event)
  local locked = kel.get_value("child_lock") == 0
  local text = locked and "On" or "Off"
  format.press(event)
  format.line("child lock", text)
  kel.set_value("child_lock", locked, "preferences.child_lock.value.text", text)
  if not locked then lock_notice:hide() end
end

-- 20, 40, ... 100 and round again; the bar's level grows around its centre.
function settings.next_brightness(event)
  local percent = kel.get_value("brightness") % BRIGHTEST + BRIGHTNESS_STEP
  kel.set_value("brightness", percent)
  brightness:set_value("value.percent", percent)
  level:set_width(math.floor(track:get_width() * percent / BRIGHTEST), kel.CENTER)
  format.press(event)
  format.line("brightness", percent .. " %, bar " .. format.place(level))
end

-- Nobody is at home: the target goes down to the temperature for that.
function settings.leave(event)
  local celsius = kel.get_value("away_celsius")
  format.press(event)
  format.line("away, target", format.celsius(celsius))
  kel.set_value("target_celsius", celsius)
end
