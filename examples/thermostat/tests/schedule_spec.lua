-- The week's plan, its holiday, and the clock that follows it.

local function rows() return kel_test.variable("week.plan.kld_rows") end
local function toggle_holiday() kel_test.press("week.heading.holiday") end

describe("the plan", function()
  it("has a row a day", function()
    assert.equal(7, rows())
    kel_test.expect_variable("week.plan.text.0.0", "Monday")
    kel_test.expect_snapshot("schedule")
  end)

  it("sets the target when a period begins", function()
    kel_test.set_variable("time", "17:00")
    kel_test.expect_variable("target_celsius", 21.5)
    kel_test.expect_variable("status_bar.clock.text", "17:00")
  end)

  it("leaves the target alone at other times", function()
    kel_test.set_variable("target_celsius", 19)
    kel_test.set_variable("time", "17:01")
    kel_test.expect_variable("target_celsius", 19)
  end)
end)

describe("a holiday", function()
  before_each(toggle_holiday)
  after_each(function() if rows() == 8 then toggle_holiday() end end)

  it("is one more row with what Sunday has", function()
    assert.equal(8, rows())
    kel_test.expect_variable("week.plan.text.7.0", "Holiday")
    for col = 1, 4 do
      kel_test.expect_variable("week.plan.celsius.7." .. col, kel_test.variable("week.plan.celsius.6." .. col))
    end
    kel_test.expect_variable("week.heading.holiday.text", "− Holiday")
    kel_test.expect_snapshot("schedule", "holiday")
  end)

  it("is what the clock follows", function()
    kel_test.set_variable("time", "08:29")
    kel_test.set_variable("time", "08:30")
    kel_test.expect_variable("target_celsius", kel_test.variable("week.plan.celsius.7.2"))
  end)

  it("takes its row and its cells away", function()
    toggle_holiday()
    assert.equal(7, rows())
    assert.is_nil(kel.get_value("week.plan.text.7.0"))
    kel_test.expect_variable("week.plan.kld_height", 133)
  end)
end)
