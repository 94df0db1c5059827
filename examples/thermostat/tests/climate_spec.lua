-- The home screen: target, mode, and what the climate does.

local press, expect = kel_test.press, kel_test.expect_variable

-- The tests of a file share an application.
before_each(function()
  kel_test.set_variable("room_celsius", 20.4)
  kel_test.set_variable("target_celsius", 21)
  kel_test.set_variable("mode", "heat")
end)

describe("the climate", function()
  it("moves the target by half a degree", function()
    press("climate.target.warmer")
    expect("target_celsius", 21.5)
    expect("climate.target.value.text", "21.5")
    press("climate.target.colder")
    press("climate.target.colder")
    expect("target_celsius", 20.5)
  end)

  for button, bound in pairs({ warmer = 30, colder = 5 }) do
    it("keeps the target within " .. bound .. " degrees", function()
      kel_test.set_variable("target_celsius", bound)
      press("climate.target." .. button)
      expect("target_celsius", bound)
    end)
  end

  local states = { -- mode, room, target, state
    { "heat", 20.9, 21, "heating" },
    { "heat", 21, 21, "idle" },
    { "cool", 21.1, 21, "cooling" },
    { "cool", 21, 21, "idle" },
    { "auto", 20.5, 21, "idle" },
    { "auto", 20.4, 21, "heating" },
    { "auto", 21.5, 21, "idle" },
    { "auto", 21.6, 21, "cooling" },
    { "off", 10, 21, "idle" },
  }
  for _, case in ipairs(states) do
    local mode, room, target, state = unpack(case)
    it(("is %s in mode %s at %.1f for %d degrees"):format(state, mode, room, target), function()
      kel_test.set_variable("mode", mode)
      kel_test.set_variable("room_celsius", room)
      expect("state", state)
      for _, name in ipairs({ "heating", "cooling", "idle" }) do
        expect("climate.room.state." .. name .. ".kld_hidden", name ~= state)
      end
    end)
  end

  it("marks the mode that was chosen", function()
    press("climate.mode.off")
    expect("mode", "off")
    assert.same(kel_test.values("climate.mode.off"), kel_test.values("climate.mode.selected"))
  end)
end)

describe("the child lock", function()
  before_each(function() press("preferences.child_lock.card") end)
  after_each(function() press("preferences.child_lock.card") end)

  it("holds the target and the mode, and says so", function()
    expect("home.lock_notice.kld_hidden", true)
    press("climate.target.warmer")
    press("climate.mode.cool")
    expect("target_celsius", 21)
    expect("mode", "heat")
    expect("home.lock_notice.kld_hidden", false)
    kel_test.expect_snapshot("home", "locked")
  end)

  it("takes its notice away when it goes", function()
    press("climate.target.warmer")
    press("preferences.child_lock.card")
    expect("home.lock_notice.kld_hidden", true)
    press("preferences.child_lock.card")
  end)
end)
