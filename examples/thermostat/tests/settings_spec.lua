-- What a press does on the settings screen.

it("looks as designed", function()
  kel_test.expect_snapshot("settings")
end)

it("grows the bar of brightness around its centre", function()
  kel_test.set_variable("brightness", 20)
  kel_test.press("preferences.brightness.card")
  local bar = kel_test.values("preferences.brightness.bar")
  assert.equal(74, bar["level.kld_width"])
  assert.equal(56, bar["level.kld_x"])
  kel_test.expect_snapshot("settings", "dark")
end)

it("goes through the steps of brightness and round again", function()
  local seen = {}
  kel_test.set_variable("brightness", 80)
  for i = 1, 6 do
    kel_test.press("preferences.brightness.card")
    seen[i] = kel_test.variable("brightness")
    kel_test.expect_variable("preferences.brightness.value.percent", seen[i])
  end
  assert.same({ 100, 20, 40, 60, 80, 100 }, seen)
end)

it("lowers the target when nobody is at home", function()
  kel_test.set_variable("away_celsius", 14.5)
  kel_test.press("preferences.away.card")
  kel_test.expect_variable("target_celsius", 14.5)
end)

it("says whether the child lock is on", function()
  kel_test.press("preferences.child_lock.card")
  kel_test.expect_variable("preferences.child_lock.value.text", "On")
  kel_test.press("preferences.child_lock.card")
  kel_test.expect_variable("preferences.child_lock.value.text", "Off")
end)
