-- The alerts popup: its rows are cloned when it opens and deleted when it closes.

local badge = "climate.room.alerts"

local function objects()
  local names = {}
  for _, child in ipairs(keldom.get_layer("alerts"):get_children()) do table.insert(names, child:get_name()) end
  table.sort(names)
  return names
end

describe("the popup", function()
  local closed = { "alerts.panel", "alerts.sample", "alerts.title" }

  before_each(function() kel_test.press(badge) end)
  after_each(function()
    if kel_test.variable("home.alerts.kld_hidden") == 0 then kel_test.press(badge) end
    assert.same(closed, objects())
  end)

  it("has a row for each alert", function()
    assert.same({ "alerts.filter", "alerts.frost", "alerts.panel", "alerts.sample", "alerts.title" }, objects())
    kel_test.expect_variable("alerts.frost.label.text", "Frost, -2.5 °C")
    kel_test.expect_variable("alerts.frost.kld_hidden", false)
    kel_test.expect_variable("alerts.sample.kld_hidden", true)
    kel_test.expect_snapshot("home", "open")
  end)

  it("dims the other layers while it is open", function()
    kel_test.expect_variable("home.climate.kld_alpha", 96)
    kel_test.press(badge)
    kel_test.expect_variable("home.climate.kld_alpha", 255)
    kel_test.expect_variable("home.lock_notice.kld_alpha", 240)
  end)

  it("leaves nothing of a row behind", function()
    local row = keldom.get_object("alerts.frost")
    kel_test.press(badge)
    kel_test.expect_warning("No such object in DOM", function() assert.is_nil(row:get_children()) end)
    assert.is_nil(kel.get_value("alerts.frost.label.text"))
  end)

  it("opens again and again", function()
    for _ = 1, 5 do
      kel_test.press(badge)
      assert.same(closed, objects())
      kel_test.press(badge)
      assert.equal(5, #objects())
    end
  end)
end)

describe("the badge", function()
  local right

  before_each(function()
    kel_test.set_variable("outdoor_celsius", 4)
    kel_test.set_variable("outdoor_celsius", -2.5)
    local look = kel_test.values(badge)
    right = look.kld_x + look.kld_width
  end)

  it("counts the alerts", function()
    kel_test.expect_variable(badge .. ".text", "2 new")
    kel_test.set_variable("outdoor_celsius", 5)
    kel_test.expect_variable(badge .. ".text", "1 new")
  end)

  it("keeps its right edge when it grows narrow", function()
    kel_test.press(badge)
    local look = kel_test.values(badge)
    assert.equal("2", look.text)
    assert.equal(20, look.kld_width)
    assert.equal(right, look.kld_x + look.kld_width)
    kel_test.press(badge)
  end)

  it("goes when there is nothing to tell", function()
    kel_test.set_variable("preferences.filter.value.days", 90)
    kel_test.set_variable("outdoor_celsius", 5)
    kel_test.expect_variable(badge .. ".kld_hidden", true)
  end)
end)
