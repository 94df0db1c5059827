-- follower.lua: says when a variable has changed.
function level_changed(event)
  print(event.target .. " is now " .. kel.get_value(event.target))
end
