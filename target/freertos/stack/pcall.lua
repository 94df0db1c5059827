-- pcall.lua: pcall in pcall, as deep as Lua lets it.
local depth = 0
local function deeper()
    depth = depth + 1
    assert(pcall(deeper))
end
pcall(deeper)
print(depth)
