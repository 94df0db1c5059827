-- What scripts find in an application's Lua state.
std = require("lua.luacheck_std")
-- Handlers are globals that the application file names.
allow_defined_top = true
max_line_length = 120

-- Definitions make what scripts find, and are never run.
for _, module in ipairs({ "keldom", "kel", "os" }) do
  files["lua/" .. module .. ".lua"] = { globals = { module }, unused = false }
end
files["**/*_spec.lua"] = { read_globals = { "kel_test" } }
files["src/cli/testing"] = { std = "lua51", globals = { "os", "print" }, allow_defined_top = false }
files["tests/editor"] = { read_globals = { "debug", "CLASSES" } }
