-- What the home screen looks like at first and after some presses.

it("shows a room that is heated", function()
  kel_test.expect_snapshot("home")
end)

it("shows another target and mode", function()
  kel_test.press("climate.target.warmer")
  kel_test.press("climate.mode.cool")
  kel_test.expect_snapshot("home", "cooled")
end)
