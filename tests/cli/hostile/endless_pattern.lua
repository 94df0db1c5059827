-- Asks a library function, which counts no instructions, for 2^30 steps and more.
print("before")
print(("x"):rep(30):find(("x*"):rep(30) .. "y"))
