-- Does not end.
while true do end
