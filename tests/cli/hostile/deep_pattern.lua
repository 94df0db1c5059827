-- Has a library function call itself until the C stack is full.
print(("x"):rep(300000):match(("x?"):rep(300000)))
