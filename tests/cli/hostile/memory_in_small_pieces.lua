-- Keeps everything.
local hoard = {}
while true do hoard[#hoard + 1] = {} end
