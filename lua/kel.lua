---@meta

-- kel.lua: the types of the module `kel`, and of what handlers get, for editors. It is never run. The manual's
-- reference is made from it by `tools/reference`, and the tests hold it against what is registered.

---The host's own module: data variables by key, the log, events, and the anchors of `control_object:set_x` and others.
---
---**Handlers.** The application file names the Lua functions that are called for events. Each is called with one
---argument, a `kel.event`. It is looked up when the event comes, by the name in the file: `climate.warmer` is a field
---of the global `climate`. The host sends `kel.started` when all scripts have run, and `kel.changed` after a variable
---has changed whose key a handler of that event has as target; without target, it hears of all.
---
---**Globals.** Beside `kel` and `keldom`, scripts find Lua 5.1's base functions without `dofile`, `loadfile` and
---`newproxy`; `coroutine`, `math` and `table`; `string` without `dump`; of `os`, `clock`, `date`, `difftime` and
---`time`. There is no `require`, `io` or `debug`. `load` and `loadstring` refuse bytecode, `getmetatable` of a handle
---gives nil, and `print` writes to the application's output.
---@class kel
kel = {}

---What a variable can hold.
---@alias kel.value number|string

---What can be written to a variable: it is converted to the variable's type.
---@alias kel.input number|string|boolean

---The point of an object that a horizontal coordinate or a change of width refers to.
---@alias kel.horizontal
---| 1 # kel.LEFT
---| 2 # kel.CENTER
---| 3 # kel.RIGHT

---The point of an object that a vertical coordinate or a change of height refers to.
---@alias kel.vertical
---| 1 # kel.TOP
---| 2 # kel.CENTER
---| 3 # kel.BOTTOM

---What a handler gets.
---@class kel.event
---@field name string what happened: `press`
---@field target string the object's qualified name or, of `kel.changed`, the variable's key; empty when there is none

---The left edge, as an anchor.
kel.LEFT = 1

---The upper edge, as an anchor.
kel.TOP = 1

---The centre, as an anchor; horizontally and vertically.
kel.CENTER = 2

---The right edge, as an anchor.
kel.RIGHT = 3

---The lower edge, as an anchor.
kel.BOTTOM = 3

---The values of variables, one a key and in that order; nil for a variable that does not exist.
---
---- Error `bad argument #... to 'get_value' (string expected, got ...)`: there is no key, or one is neither string nor
---  number.
---
---```lua
---print(kel.get_value("mode", "week.plan.celsius.0.1", "nosuch")) --> heat  21  nil
---```
---@param key string of an application's variable, `mode`; an object's, `climate.kld_width`; or a cell's
---@param ... string more keys
---@return kel.value? value
---@return kel.value? ... those of the further keys
function kel.get_value(key, ...) end

---Writes variables, in the order given and as one batch: whoever listens is told after the last write, once a variable.
---
---- Error `bad argument #... to 'set_value' (string expected, got ...)`: there is no key, or one is neither string nor
---  number. Nothing is written.
---- Error `bad argument #... to 'set_value' (no value for key "...")`: a key is the last argument. Nothing is written.
---- Warning `Value ... is out of range, ... is written`: the number does not fit the variable's type.
---- Warning `Cannot write ...`: the value cannot be converted to the variable's type. The others are written.
---- Warning `Cannot create ...`: there is neither such a variable nor an object that could have it. The others are
---  written.
---
---```lua
---kel.set_value("brightness", 60, "climate.room.caption.note", "north")
---print(kel.get_value("brightness", "climate.room.caption.note")) --> 60  north
---```
---@param key string of an application's variable, `mode`; an object's, `climate.kld_width`; or a cell's
---@param value kel.input
---@param ... kel.input more pairs of key and value
function kel.set_value(key, value, ...) end

---Writes a line to the host's log. With `kel run --strict`, a warning or an error makes the run fail.
---
---- Error `bad argument #1 to 'log' (string expected, got ...)`: text is neither string nor number.
---- Error `bad argument #2 to 'log' (string expected, got ...)`: level is neither string nor number.
---- Error `bad argument #2 to 'log' (invalid level "...", expected "error", "warning" or "info")`: level is another
---  string.
---
---```lua
---kel.log("the filter was changed") -- seen with kel run --log-level info
---```
---@param text string
---@param level? "error"|"warning"|"info" how important the line is; nil means `"info"`
function kel.log(text, level) end

---Queues an event. Its handlers are called when the script or handler that runs now is done.
---
---- Error `bad argument #1 to 'queue_event' (string expected, got ...)`: name is neither string nor number.
---- Error `bad argument #1 to 'queue_event' (the event's name is empty)`: name is empty.
---- Error `bad argument #1 to 'queue_event' (the event's name has a zero byte)`: name has a zero byte.
---- Error `bad argument #2 to 'queue_event' (string expected, got ...)`: target is neither string nor number.
---- Error `bad argument #2 to 'queue_event' (the target has a zero byte)`: target has a zero byte.
---- Error `not enough memory`: there is none left for the event.
---
---```lua
---kel.queue_event("press", "climate.target.warmer")
-----> Press on climate.target.warmer
-----> target  21.0 °C -> 21.5 °C
-----> heating  room 20.4 °C, target 21.5 °C, mode heat
---```
---@param name string
---@param target? string the object's qualified name; nil means that the event is for nobody in particular
function kel.queue_event(name, target) end
