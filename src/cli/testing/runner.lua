-- runner.lua: runs one test file with busted, next to a running application, and hands each result to the tool.
-- Has globals of its own, where the full libraries are, over those of the application's scripts. No limit holds for
-- what is here: what the test file's author wrote is run through host.call, which bounds it.
local host, make_helpers = ...

for _, module in ipairs({ "busted.core", "busted", "busted.execute", "busted.modules.filter_loader", "luassert" }) do
  local found, why = pcall(require, module)
  if not found then return tostring(why) end
end

local busted = require("busted.core")()

-- Beneath it the application's shows, which calls no handler once a limit is reached, so that none runs for ever. Here
-- the handler is wanted then too: it finds where that was.
local unguarded_xpcall = xpcall
rawset(_G, "xpcall", nil)

-- ---- The environment of test files ----

-- Their folder can hold modules that they share.
package.path = host.folder .. "/?.lua;" .. package.path

-- Standard output belongs to the report.
function print(...)
  local texts = {}
  for i = 1, select("#", ...) do texts[i] = tostring((select(i, ...))) end
  host.print(table.concat(texts, "\t"))
end

io.output(io.stderr)
rawset(io, "stdout", io.stderr)

function os.exit()
  error("os.exit would end the tool; a test ends by returning or with error()", 2)
end

host.unexpected = {} -- lines of the log

-- ---- Where something happened ----

local busted_folder = debug.getinfo(require("busted.core"), "S").source:match("^@(.*/)")

local function is_authors(frame)
  return frame.what ~= "C" and frame.what ~= "tail" and frame.source ~= "=kel_test" and frame.source ~= "=kel test"
    and frame.source:sub(2, #busted_folder + 1) ~= busted_folder
    and not frame.source:find("luassert/.*%.lua$") and not frame.source:find("mediator%.lua$")
end

-- What is below the first C function is the tool and busted. A single line says no more than a message does.
local function traceback_from(level)
  local text = debug.traceback("", level)
  local below = text:find("\n%s*%[C%]")
  text = text:sub(2, below and below - 1)
  return select(2, text:gsub("\n", "")) > 1 and text or ""
end

-- Where the element begins.
local function place_of(element)
  local place = element.trace or { short_src = host.file, currentline = 1 }
  return { short_src = place.short_src, currentline = place.currentline, traceback = "" }
end

local rethrown -- the trace of an error that was caught where it was raised and is now raised again

function busted.getTrace(element, level)
  if rethrown then return rethrown end
  level = level or 3
  local frame = debug.getinfo(level, "Sl")
  while frame and not is_authors(frame) do
    level = level + 1
    frame = debug.getinfo(level, "Sl")
  end
  if not frame then return place_of(element) end
  frame.traceback = traceback_from(level + 1)
  return frame
end

-- ---- Running what the author wrote ----

local function is_failure(value)
  return type(value) == "table" and (getmetatable(value) or {}).__type == "failure"
end

local function raise(is_a_failure, message)
  if is_a_failure then busted.fail(message, 0) end
  error(message, 0)
end

-- What kel_test.expect_warning left, and what was logged since.
local function take_unexpected()
  local lines = host.unexpected
  host.unexpected = {}
  for _, line in ipairs(host.take_log()) do table.insert(lines, line) end
  return lines
end

-- The lines that no test expected, as a message that begins with a place in the test file.
local function describe_log(lines, element)
  local texts = {}
  for i, line in ipairs(lines) do
    local place = line.place
    if place == "" then
      local beginning = place_of(element)
      place = beginning.short_src .. ":" .. beginning.currentline
    end
    texts[i] = place .. ": unexpected " .. line.level .. ": " .. line.text
  end
  return table.concat(texts, "\n")
end

local function full_name(element)
  local names = {}
  while element and element.descriptor ~= "file" and element.descriptor ~= "suite" do
    table.insert(names, 1, tostring(element.name or element.descriptor))
    element = busted.context.parent(element)
  end
  return table.concat(names, " ")
end

-- Calls the function within the limits of a script. What it raises goes on with the trace of where that was; a line
-- in the log that it did not expect is a failure.
local function run_within_limits(run, element)
  local failed, value, trace = false, nil, nil
  local name = full_name(element)
  local stopped = host.call(name == "" and host.file or host.file .. ": " .. name, function()
    local succeeded, message = unguarded_xpcall(run, function(raised)
      failed, value, trace = true, raised, busted.getTrace(element, 3)
    end)
    if not succeeded and not failed then failed, value = true, message end -- memory is out: no handler is called
  end)
  if stopped and not failed then failed, value = true, stopped end
  -- A limit can interrupt what is here too, which is no place to tell.
  if type(value) == "string" then value = value:gsub("^kel test:%d+: ", "") end
  local lines = take_unexpected()
  trace = trace or place_of(element)
  rethrown = trace
  if #lines > 0 then
    local message = describe_log(lines, element)
    if failed then message = busted.rewriteMessage(element, value, trace) .. "\n" .. message end
    raise(not failed or is_failure(value), message)
  elseif failed then
    error(value, 0)
  end
  rethrown = nil
end

local safe = busted.safe

function busted.safe(descriptor, run, element)
  rethrown = nil
  if run ~= element.run and descriptor ~= "finally" then return safe(descriptor, run, element) end
  if host.listing and descriptor ~= "file" and descriptor ~= "describe" then return busted.status("success") end
  return safe(descriptor, function() run_within_limits(run, element) end, element)
end

-- ---- Results ----

local messages = {} -- of the test that runs: what failed in it, and in what it left to be done at its end
local last_trace
local count = 0

local function report(status, element, message, trace)
  count = count + 1
  local place = element.trace or trace or {}
  host.result({
    status = status,
    name = full_name(element),
    file = place.source and place.source:match("^@(.*)") or host.file,
    line = place.currentline or 0,
    message = message or "",
    traceback = trace and trace.traceback or "",
    seconds = element.duration or 0,
  })
end

local function keep_message(element, _, message, trace)
  if element.descriptor == "it" then
    table.insert(messages, tostring(message))
    last_trace = trace
  else
    report("error", element, tostring(message), trace)
  end
  return nil, true
end

busted.subscribe({ "failure" }, keep_message)
busted.subscribe({ "error" }, keep_message)
busted.subscribe({ "pending" }, function(element, _, message)
  if element.descriptor == "it" and message ~= nil then table.insert(messages, tostring(message)) end
  return nil, true
end)
busted.subscribe({ "test", "end" }, function(element, _, status)
  report(host.listing and "listed" or tostring(status), element, table.concat(messages, "\n"), last_trace)
  messages, last_trace = {}, nil
  return nil, true
end)

-- ---- The run ----

require("busted")(busted)
require("luassert"):set_parameter("TableErrorHighlightColor", "none")
if host.filter then
  local options = { tags = {}, excludeTags = {}, filterOut = {}, filter = { host.filter } }
  require("busted.modules.filter_loader")()(busted, options)
end

make_helpers(host, busted.fail)

local run, fault = loadfile(host.file)
if not run then
  report("error", { descriptor = "file" }, fault)
  return
end
busted.executors.file(host.file, setmetatable({}, { __call = run }))
require("busted.execute")(busted)(1, {})
if count == 0 and not host.filter then
  report("error", { descriptor = "file" }, host.file .. ": no tests found; a test is it(name, function)")
end
