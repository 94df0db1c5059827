-- The handler of an error fails, each time it is called for its own error.
print(xpcall(error, function() error("again") end))
