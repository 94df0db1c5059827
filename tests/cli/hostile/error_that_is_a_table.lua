-- Fails with no text.
error({ code = 7 })
