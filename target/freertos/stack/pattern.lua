-- pattern.lua: a pattern of 1000 items with a "?" each. Lua 5.1 nests a call for each of them, however many there are.
print(#string.match(("x"):rep(1000), ("x?"):rep(1000)))
