-- Fails with an error whose text fails.
error(setmetatable({}, { __tostring = function() error("again") end }))
