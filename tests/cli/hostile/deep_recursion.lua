-- Calls itself until Lua's stack is full.
local function deeper() return 1 + deeper() end
deeper()
