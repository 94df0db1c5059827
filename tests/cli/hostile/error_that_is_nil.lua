-- Fails with nothing at all.
error()
