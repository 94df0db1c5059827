---@meta

-- os.lua: what the sandbox leaves of Lua's `os`, for editors whose own description of it is switched off.

---The part of Lua's `os` that scripts have.
---@class os
os = {}

---The processor time that the program has used, in seconds.
---
---```lua
---print(os.clock() >= 0) --> true
---```
---@return number seconds
function os.clock() end

---A time as text, or as a table with `format` `"*t"`.
---
---```lua
---print(os.date("!%Y-%m-%d", 0)) --> 1970-01-01
---```
---@param format? string as of C's strftime; `!` in front means UTC
---@param time? number nil means now
---@return string|table<string, integer|boolean> date
function os.date(format, time) end

---The seconds from one time to another.
---
---```lua
---print(os.difftime(90, 30)) --> 60
---```
---@param later number
---@param earlier? number nil means 0
---@return number seconds
function os.difftime(later, earlier) end

---The time now, or that of a table with `year`, `month`, `day` and the like.
---
---```lua
---print(os.time() == os.time({ year = 2000, month = 1, day = 1 })) --> false
---```
---@param table? table<string, integer|boolean>
---@return integer time
function os.time(table) end
