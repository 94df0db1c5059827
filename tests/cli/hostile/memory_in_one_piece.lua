-- Asks a library function for more than there may be.
print(#("x"):rep(1e9))
