-- Fails with an error whose text never comes.
error(setmetatable({}, { __tostring = function() while true do end end }))
