-- settings.lua: what a press does on the settings screen.

settings = {}

local BRIGHTNESS_STEP, BRIGHTEST = 20, 100

local function announce(event, name, text)
  print("Press on " .. tostring(keldom.get_control(event.target)))
  format.line(name, text)
end

function settings.toggle_child_lock(event)
  local locked = kel.get_value("child_lock") == 0
  local text = locked and "On" or "Off"
  announce(event, "child lock", text)
  kel.set_value("child_lock", locked, "preferences.child_lock.value.text", text)
  if not locked then kel.set_value("home.lock_notice.kld_hidden", true) end
end

-- 20, 40, ... 100 and round again; the bar's level grows with it.
function settings.next_brightness(event)
  local percent = kel.get_value("brightness") % BRIGHTEST + BRIGHTNESS_STEP
  local full = kel.get_value("preferences.brightness.bar.track.kld_width")
  announce(event, "brightness", percent .. " %")
  kel.set_value("brightness", percent, "preferences.brightness.value.percent", percent,
                "preferences.brightness.bar.level.kld_width", math.floor(full * percent / BRIGHTEST))
end

-- Nobody is at home: the target goes down to the temperature for that.
function settings.leave(event)
  local celsius = kel.get_value("away_celsius")
  announce(event, "away, target", format.celsius(celsius))
  kel.set_value("target_celsius", celsius)
end
