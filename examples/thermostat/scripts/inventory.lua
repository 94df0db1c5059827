-- inventory.lua: looks objects up by name and says of what kind they are.

inventory = {}

local KINDS = {
  [keldom.CONTROL] = "control",
  [keldom.TABLE] = "table",
  [keldom.TEMPLATE] = "template",
  [keldom.GROUP] = "group",
  [keldom.LAYER] = "layer",
  [keldom.LAYER_INSTANCE] = "layer instance",
  [keldom.SCREEN] = "screen",
  [keldom.APP] = "application",
}

local function describe(handle, remark)
  format.line(tostring(handle), KINDS[handle:get_type()] .. (remark or ""))
end

function inventory.report()
  print("Objects")
  describe(keldom.get_screen("home"))
  describe(keldom.get_layer("status_bar"))
  describe(keldom.get_layer_instance("home.status_bar"), ", shows status_bar on home")
  describe(keldom.get_layer_instance("schedule.status_bar"), ", shows it on schedule")
  describe(keldom.get_group("climate.room"))
  describe(keldom.get_group("climate.room.state"), ", inside climate.room")
  describe(keldom.get_control("climate.target.warmer"))
  describe(keldom.get_table("week.plan"))
  describe(keldom.get_control("week.comfort"), ", a cell: named after its template")

  local application = keldom.get_application()
  format.line('"' .. application:get_name() .. '"', KINDS[application:get_type()] .. ", whose name is empty")

  local button = keldom.get_control("climate.target.warmer")
  print("Handles")
  format.line("looked up again", button == keldom.get_object("climate.target.warmer") and "equal" or "different")
  format.line("climate.target.colder", button == keldom.get_object("climate.target.colder") and "equal" or "different")
end
