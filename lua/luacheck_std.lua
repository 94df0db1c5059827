-- luacheck_std.lua: what scripts find in an application's Lua state, as a standard for luacheck. In .luacheckrc:
--
--     std = dofile("/path/to/lua/luacheck_std.lua")

local function fields(...)
  local all = {}
  for _, name in ipairs({ ... }) do all[name] = {} end
  return { fields = all }
end

return {
  read_globals = {
    keldom = fields(
      "get_application", "get_object", "get_layers", "get_screens", "get_control", "get_table", "get_group",
      "get_layer_instance", "get_layer", "get_screen",
      "CONTROL", "TABLE", "TEMPLATE", "GROUP", "LAYER", "LAYER_INSTANCE", "SCREEN", "APP"),
    kel = fields("get_value", "set_value", "log", "queue_event", "LEFT", "TOP", "CENTER", "RIGHT", "BOTTOM"),

    -- Of Lua 5.1, what the sandbox leaves.
    _G = { other_fields = true, read_only = false },
    "_VERSION", "assert", "collectgarbage", "error", "gcinfo", "getfenv", "getmetatable", "ipairs", "load",
    "loadstring", "next", "pairs", "pcall", "print", "rawequal", "rawget", "rawset", "select", "setfenv",
    "setmetatable", "tonumber", "tostring", "type", "unpack", "xpcall",
    coroutine = fields("create", "resume", "running", "status", "wrap", "yield"),
    math = fields(
      "abs", "acos", "asin", "atan", "atan2", "ceil", "cos", "cosh", "deg", "exp", "floor", "fmod", "frexp", "huge",
      "ldexp", "log", "log10", "max", "min", "mod", "modf", "pi", "pow", "rad", "random", "randomseed", "sin", "sinh",
      "sqrt", "tan", "tanh"),
    os = fields("clock", "date", "difftime", "time"),
    string = fields(
      "byte", "char", "find", "format", "gfind", "gmatch", "gsub", "len", "lower", "match", "rep", "reverse", "sub",
      "upper"),
    table = fields("concat", "foreach", "foreachi", "getn", "insert", "maxn", "remove", "setn", "sort"),
  },
}
