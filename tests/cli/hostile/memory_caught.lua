-- Catches the error, lets go, and goes on within the bound.
print(pcall(string.rep, "x", 1e9))
print(#("x"):rep(1000))
