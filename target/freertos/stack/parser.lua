-- parser.lua: syntax in syntax, as deep as Lua's compiler lets a script write it, for each kind that nests.
local kinds = {
    {"local function f() ", "", "end "},
    {"return function() ", "", "end "},
    {"do ", "", "end "},
    {"if x then ", "", "end "},
    {"(", "x", ")", "return "},
    {"{", "", "}", "return "},
    {"f(", "", ")", "return "},
    {"t[", "x", "]", "return "},
    {"- ", "x", "", "return "},
    {"x .. ", "x", "", "return "},
}
for _, kind in ipairs(kinds) do
    local open, middle, close, before = unpack(kind)
    local depth = 0
    repeat
        depth = depth + 1
    until not loadstring((before or "") .. open:rep(depth) .. middle .. close:rep(depth))
    print(open, depth - 1)
end
