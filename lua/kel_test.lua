-- kel_test.lua: what test files find as the global kel_test. `kel test` carries it; editors read the annotations.
local host, fail = ... -- the application under test as `kel test` gives it; raises a failure of the test

---The application under test, from the outside: pressing, looking at variables, the log and screens.
---@class kel_test
---@field app kel_test.app
kel_test = {}

---@class kel_test.app
---@field name string the name in the application file
---@field path string the application as it was named on the command line
---@field globals table the globals of the application's scripts; a test file's own are apart

---@type kel_test.app
kel_test.app = { name = host.app_name, path = host.app_path, globals = host.globals }

local letters = { ["\\"] = "\\\\", ["\n"] = "\\n", ["\r"] = "\\r", ["\t"] = "\\t" }

local function escape(character)
  return letters[character] or ("\\%03d"):format(character:byte())
end

-- Different values have different words.
local function in_words(value)
  if type(value) == "string" then return '"' .. value:gsub("[%c\\]", escape) .. '"' end
  if type(value) ~= "number" then return tostring(value) end
  local short = tostring(value)
  return tonumber(short) == value and short or ("%.17g"):format(value)
end

-- `level` counts as error() does, from the function that calls these.
local function check_type(value, kind, meaning, level)
  if type(value) == kind then return end
  if value == kel_test then error('expected ' .. meaning .. ', found kel_test: write "." and not ":"', level + 1) end
  error("expected " .. meaning .. ", found " .. in_words(value), level + 1)
end

local function check_object(name, level)
  check_type(name, "string", "the name of an object", level + 1)
  if not host.exists(name) then
    error("there is no object " .. in_words(name) .. host.nearest_object(name), level + 1)
  end
end

local function check_variable(key, level)
  check_type(key, "string", "the key of a variable", level + 1)
  if host.variable(key) == nil then
    error("there is no variable " .. in_words(key) .. host.nearest_key(key), level + 1)
  end
end

local function check_event(event, level)
  check_type(event, "string", "the name of an event", level + 1)
  if event == "" then error('expected the name of an event, found ""', level + 1) end
end

local function check_value(value, level)
  local kind = type(value)
  if kind ~= "number" and kind ~= "string" and kind ~= "boolean" then
    error("expected a number, a string or a boolean, found " .. in_words(value), level + 1)
  end
end

---Sends an event, to an object if one is named, and delivers all that waits.
---@param event string such as "press"
---@param target? string qualified name; an error when there is no such object
function kel_test.send(event, target)
  check_event(event, 2)
  if target ~= nil then check_object(target, 2) end
  host.send(event, target)
end

---Sends "press" to an object and delivers all that waits.
---@param target string qualified name such as "climate.target.warmer"; an error when there is no such object
function kel_test.press(target)
  check_object(target, 2)
  host.send("press", target)
end

---Delivers waiting events, and those they bring about, until none waits.
---@return integer delivered
function kel_test.pump()
  return host.pump()
end

---@param key string such as "target_celsius" or "climate.target.value.text"; an error when there is no such variable
---@return number|string value
function kel_test.variable(key)
  check_variable(key, 2)
  return (host.variable(key))
end

---Writes a variable as a script would, and delivers all that waits, such as "kel.changed".
---@param key string an error when there is no such variable
---@param value number|string|boolean
function kel_test.set_variable(key, value)
  check_variable(key, 2)
  check_value(value, 2)
  host.set_variable(key, value)
  host.pump()
end

---The variables of an object and of what is in it, by the part of their keys after the object's name.
---@param object string qualified name; an error when there is no such object
---@return table<string, number|string> values such as { kld_x = 16, ["label.text"] = "Idle" }
function kel_test.values(object)
  check_object(object, 2)
  local values = {}
  for _, key in ipairs(host.keys(object .. ".")) do values[key:sub(#object + 2)] = host.variable(key) end
  return values
end

---Fails the test unless the variable exists and has this value. true stands for 1, false for 0.
---@param key string
---@param expected number|string|boolean
function kel_test.expect_variable(key, expected)
  check_variable(key, 2)
  local wanted = expected
  if type(expected) == "boolean" then wanted = expected and 1 or 0 end
  local found = host.variable(key)
  if found ~= wanted then
    fail("variable " .. key .. ": expected " .. in_words(wanted) .. ", found " .. in_words(found), 2)
  end
end

-- What was logged up to now was not expected.
local function keep_log()
  for _, line in ipairs(host.take_log()) do table.insert(host.unexpected, line) end
end

local function is_meant(line, text)
  if line.text:find(text, 1, true) then return true end
  local is_pattern, found = pcall(string.find, line.text, text)
  return is_pattern and found ~= nil
end

---Fails the test unless the action makes the application log a warning or an error that has this text or matches this
---pattern. Any other warning fails the test all the same.
---@param text string plain text or Lua pattern
---@param action fun()
function kel_test.expect_warning(text, action)
  check_type(text, "string", "a text or a pattern", 2)
  check_type(action, "function", "an action, a function", 2)
  keep_log()
  action()
  local found = false
  for _, line in ipairs(host.take_log()) do
    if is_meant(line, text) then found = true else table.insert(host.unexpected, line) end
  end
  if not found then fail("no warning with " .. in_words(text) .. " was logged", 2) end
end

---Fails the test unless the screen shows what is stored in tests/snapshots/, in the folder that has the test file's
---name. `kel test --update-snapshots` stores what is shown now.
---@param screen string
---@param name? string what the snapshot is called, of letters, digits, "_" and "-"; the screen's name when left out
function kel_test.expect_snapshot(screen, name)
  check_type(screen, "string", "the name of a screen", 2)
  local text, fault = host.screen_text(screen)
  if not text then error(fault, 2) end
  if name == nil then name = screen end
  check_type(name, "string", "the name of a snapshot", 2)
  if name:find("[^%w_-]") or name == "" then
    error("snapshot name " .. in_words(name) .. ' has more than letters, digits, "_" and "-"', 2)
  end
  local difference = host.compare_snapshot(name, text)
  if difference then fail(difference, 2) end
end
