-- What scripts find in an application's Lua state.
std = "lua51"
read_globals = { "kel", "keldom" }
-- Handlers are globals that the application file names.
allow_defined_top = true
max_line_length = 120
