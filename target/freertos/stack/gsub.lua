-- gsub.lua: a string.gsub in the function that a string.gsub calls, as deep as Lua lets it.
local depth = 0
local function deeper()
    depth = depth + 1
    string.gsub("x", "x", deeper)
end
pcall(deeper)
print(depth)
