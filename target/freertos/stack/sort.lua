-- sort.lua: a table.sort in the comparison that a table.sort calls, as deep as Lua lets it.
local depth = 0
local function deeper()
    depth = depth + 1
    table.sort({1, 2, 3}, deeper)
end
pcall(deeper)
print(depth)
