-- more_work.lua: what the thermostat's own handlers do not do: handles that outlive their objects, clones of clones,
-- batches that fail half-way, and collections in the midst of all that. Runs on a press of the firmware's card.

local stale -- the handle of an object that the last press deleted
local plan = keldom.get_table("week.plan")
local level = keldom.get_control("preferences.brightness.bar.level")
local level_x = level:get_x()

local function clone_twice()
  local first = keldom.get_group("alerts.sample"):clone("soak_first", "alerts")
  local second = first:clone("soak_second", "alerts", { kld_x = 7, ["label.text"] = "soak" })
  assert(second:get_x() == 7)
  first:delete()
  return second
end

local function use_stale_handle()
  if not stale then return end
  assert(stale:get_x() == nil)
  assert(stale:get_children() == nil)
  stale:set_x(1) -- refused with a warning, and so are the two above
end

local function change_rows()
  local rows = plan:get_rows()
  for more = 1, 3 do plan:set_rows(rows + more) end
  plan:set_rows(rows)
end

local function fail_half_way()
  local done = pcall(plan.set_data, plan, { kld_x = plan:get_x(), [1] = 2 })
  assert(not done or plan:get_x() == 16)
end

function about.report(event)
  use_stale_handle()
  stale = clone_twice()
  collectgarbage()
  stale:delete()
  change_rows()
  fail_half_way()
  level:set_x(level_x) -- the steps keep its centre but for half a pixel
  assert(event.target == "preferences.firmware.card")
end
