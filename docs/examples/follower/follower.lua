-- follower.lua: says when a variable has changed.
follower = {}

function follower.level_changed(event)
  print(event.target .. " is now " .. kel.get_value(event.target))
end
