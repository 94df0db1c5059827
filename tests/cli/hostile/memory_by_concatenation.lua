-- Doubles a string without end.
local text = "x"
while true do text = text .. text end
