-- Nests a library function in the function that it calls.
local function deeper() return (("x"):gsub("x", deeper)) end
deeper()
