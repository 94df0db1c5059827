-- Gives table.sort an order that is none.
local list = {}
for i = 1, 100 do list[i] = i % 7 end
table.sort(list, function() return true end)
