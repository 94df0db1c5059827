# test_thermostat.py: the example application, through the tool, as its README says.

import shutil

from kel_tool import PROJECT, SUCCEEDED, ToolTest

REPORT = """\
Screens and the layers they show
  home                     climate, status_bar, nav_bar, nav_marker, lock_notice, alerts
  schedule                 week, status_bar, nav_bar, nav_marker
  settings                 preferences, status_bar, nav_bar, nav_marker
Layers, what is in them, the screens they are on
  status_bar               2 groups, 6 controls; home, schedule, settings
  nav_bar                  3 controls; home, schedule, settings
  nav_marker               1 control; home, schedule, settings
  lock_notice              2 controls; home
  alerts                   1 group, 4 controls; home
  climate                  4 groups, 20 controls; home
  week                     1 group, 1 table, 40 controls; schedule
  preferences              7 groups, 20 controls; settings
From climate.target.warmer up
  climate.target           group
  climate                  layer
  home                     screen
Week plan, °C from
                06:30  08:30  17:00  22:30
  Monday         21.0   17.0   21.5   16.0
  Tuesday        21.0   17.0   21.5   16.0
  Wednesday      21.0   21.0   21.5   16.0
  Thursday       21.0   17.0   21.5   16.0
  Friday         21.0   17.0   21.5   17.5
  Saturday       16.0   21.0   22.0   17.5
  Sunday         16.0   21.0   22.0   16.0
Climate
  heating                  room 20.4 °C, target 21.0 °C, mode heat
"""


class Thermostat(ToolTest):
    def setUp(self):
        super().setUp()
        shutil.copytree(PROJECT / "examples/thermostat", self.folder / "thermostat")

    def run_with(self, *options):
        """What a run prints after its first report; a warning would show in its place."""
        result = self.kel("run", "thermostat", "--strict", *options)
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        self.assertTrue(result.out.startswith(REPORT), result.out)
        return result.out[len(REPORT):]

    def press(self, *targets):
        return self.run_with(*(option for target in targets for option in ("--event", "press:" + target)))

    def values(self, *keys):
        return ("--exec", "print(kel.get_value(" + ", ".join(f'"{key}"' for key in keys) + "))")

    def test_it_has_no_faults(self):
        verdict = "thermostat/app.json: 3 screens, 8 layers, 77 objects, 524 variables, 9 scripts: no faults\n"
        self.assertResult(self.kel("check", "thermostat"), SUCCEEDED, out=verdict)

    def test_it_reports_what_it_found(self):
        self.assertEqual(self.run_with(), "")

    def test_the_buttons_move_the_target(self):
        self.assertEqual(self.press("climate.target.warmer", "climate.target.colder", "climate.target.colder"), """\
Press on climate.target.warmer
  target                   21.0 °C -> 21.5 °C
  heating                  room 20.4 °C, target 21.5 °C, mode heat
Press on climate.target.colder
  target                   21.5 °C -> 21.0 °C
  heating                  room 20.4 °C, target 21.0 °C, mode heat
Press on climate.target.colder
  target                   21.0 °C -> 20.5 °C
  heating                  room 20.4 °C, target 20.5 °C, mode heat
""")

    def test_the_target_has_bounds(self):
        for start, button, kept in ((30, "warmer", "30.0"), (5, "colder", "5.0")):
            out = self.run_with("--exec", f'kel.set_value("target_celsius", {start})', "--event",
                                "press:climate.target." + button)
            self.assertTrue(out.endswith(f"  target                   {kept} °C -> {kept} °C\n"), out)

    def test_each_mode_can_be_chosen(self):
        modes = ("climate.mode.cool", "climate.mode.auto", "climate.mode.off", "climate.mode.heat")
        self.assertEqual(self.press(*modes), """\
Press on climate.mode.cool
  mode                     heat -> cool
  idle                     room 20.4 °C, target 21.0 °C, mode cool
Press on climate.mode.auto
  mode                     cool -> auto
  heating                  room 20.4 °C, target 21.0 °C, mode auto
Press on climate.mode.off
  mode                     auto -> off
  idle                     room 20.4 °C, target 21.0 °C, mode off
Press on climate.mode.heat
  mode                     off -> heat
  heating                  room 20.4 °C, target 21.0 °C, mode heat
""")

    def test_the_home_screen_follows_the_variables(self):
        shown = self.values("climate.target.value.text", "climate.room.temperature.text",
                            "climate.room.state.label.text", "climate.room.state.heating.kld_hidden",
                            "climate.room.state.cooling.kld_hidden", "climate.room.state.idle.kld_hidden",
                            "climate.mode.selected.kld_x")
        self.assertEqual(self.run_with(*shown), "21.0\t20.4\tHeating\t0\t1\t1\t4\n")
        change = ("--exec", 'kel.set_value("room_celsius", 24.3, "mode", "cool")')
        self.assertTrue(self.run_with(*change, *shown).endswith("\n21.0\t24.3\tCooling\t1\t0\t1\t61\n"))

    def test_the_child_lock_holds_the_target_and_says_so(self):
        lock, button = "preferences.child_lock.card", "climate.target.warmer"
        self.assertEqual(self.press(lock, button, "climate.mode.off", lock, button), """\
Press on preferences.child_lock.card
  child lock               On
Press on climate.target.warmer
  child lock               on, nothing is changed
Press on climate.mode.off
  child lock               on, nothing is changed
Press on preferences.child_lock.card
  child lock               Off
Press on climate.target.warmer
  target                   21.0 °C -> 21.5 °C
  heating                  room 20.4 °C, target 21.5 °C, mode heat
""")

    def test_the_notice_shows_while_the_lock_refuses(self):
        notice = self.values("home.lock_notice.kld_hidden")
        send = 'kel.queue_event("press", "{}")'.format
        self.assertEqual(self.run_with(*notice), "1\n")
        lock, warmer = send("preferences.child_lock.card"), send("climate.target.warmer")
        out = self.run_with("--exec", lock, "--exec", warmer, *notice, "--exec", lock, *notice)
        self.assertEqual([line for line in out.splitlines() if len(line) == 1], ["0", "1"])

    def test_the_clock_follows_the_plan(self):
        out = self.run_with("--exec", 'kel.set_value("time", "17:00")', "--exec", 'kel.set_value("time", "17:01")',
                            "--exec", 'kel.set_value("time", "22:30", "weekday", 5)',
                            *self.values("status_bar.clock.text"))
        self.assertEqual(out, """\
It is 17:00: the plan asks for 21.5 °C
  heating                  room 20.4 °C, target 21.5 °C, mode heat
It is 22:30: the plan asks for 17.5 °C
  idle                     room 20.4 °C, target 17.5 °C, mode heat
22:30
""")

    def test_brightness_goes_up_and_round_again_and_its_bar_grows_around_its_centre(self):
        card = "preferences.brightness.card"
        self.assertEqual(self.press(card, card, card), """\
Press on preferences.brightness.card
  brightness               100 %, bar 186x4 at 0,0
Press on preferences.brightness.card
  brightness               20 %, bar 37x4 at 74,0
Press on preferences.brightness.card
  brightness               40 %, bar 74x4 at 56,0
""")
        press = ("--exec", f'kel.queue_event("press", "{card}")')
        shown = self.values("brightness", "preferences.brightness.value.percent")
        self.assertTrue(self.run_with(*press, *shown).endswith("\n100\t100\n"))

    def test_the_alerts_popup_has_a_row_for_each_alert_while_it_is_open(self):
        badge, lock = "climate.room.alerts", "preferences.child_lock.card"
        self.assertEqual(self.press(badge, lock, badge, badge), """\
Press on climate.room.alerts
  alerts.panel             248x88 at 216,88
  alerts.frost             Frost, -2.5 °C, at 216,120
  alerts.filter            Air filter due in 41 days, at 216,148
  home.alerts              shown, the other layers have alpha 96
Press on preferences.child_lock.card
  child lock               On
Press on climate.room.alerts
  home.alerts              hidden
  alerts.panel             120x32 at 344,144, 3 objects left in its layer
Press on climate.room.alerts
  alerts.panel             248x116 at 216,60
  alerts.frost             Frost, -2.5 °C, at 216,92
  alerts.filter            Air filter due in 41 days, at 216,120
  alerts.lock              Child lock is on, at 216,148
  home.alerts              shown, the other layers have alpha 96
""")

    def test_the_rows_of_the_popup_are_filled_and_visible(self):
        shown = self.values("alerts.frost.label.text", "alerts.frost.kld_hidden", "alerts.sample.kld_hidden")
        press = ("--exec", 'kel.queue_event("press", "climate.room.alerts")')
        self.assertTrue(self.run_with(*press, *shown).endswith("\nFrost, -2.5 °C\t0\t1\n"))

    def test_the_popup_dims_its_screen_and_gives_each_layer_its_alpha_back(self):
        press = ("--exec", 'kel.queue_event("press", "climate.room.alerts")')
        shown = self.values("home.climate.kld_alpha", "home.lock_notice.kld_alpha", "home.alerts.kld_alpha",
                            "home.alerts.kld_hidden", "schedule.nav_bar.kld_alpha")
        out = self.run_with(*shown, *press, *shown, *press, *shown)
        self.assertEqual([line for line in out.splitlines() if "\t" in line],
                         ["255\t240\t255\t1\t255", "96\t96\t255\t0\t255", "255\t240\t255\t1\t255"])

    def test_the_badge_counts_alerts_and_keeps_its_right_edge(self):
        shown = self.values(*("climate.room.alerts." + name for name in ("text", "kld_x", "kld_width", "kld_hidden")))
        thaw = ("--exec", 'kel.set_value("outdoor_celsius", 5)')
        press = ("--exec", 'kel.queue_event("press", "climate.room.alerts")')
        no_filter = ("--exec", 'kel.set_value("preferences.filter.value.days", 90, "outdoor_celsius", 6)')
        out = self.run_with(*shown, *thaw, *shown, *press, *shown, *no_filter, *shown)
        self.assertEqual([line for line in out.splitlines() if "\t" in line],
                         ["2 new\t136\t52\t0", "1 new\t136\t52\t0", "1\t168\t20\t0", "0 new\t136\t52\t1"])

    def test_a_holiday_is_one_more_row_of_the_plan(self):
        holiday = "week.heading.holiday"
        self.assertEqual(self.press(holiday, holiday), """\
Press on week.heading.holiday
  Holiday        16.0   21.0   22.0   16.0
  week.plan                8 rows, 40 cells, 448x152 at 16,68
Press on week.heading.holiday
  week.plan                7 rows, 35 cells, 448x133 at 16,68
""")

    def test_the_clock_follows_the_holiday_while_it_is_there(self):
        press = ("--exec", 'kel.queue_event("press", "week.heading.holiday")')
        clock = ("--exec", 'kel.set_value("time", "17:00")')
        self.assertIn("\nIt is 17:00: the plan asks for 22.0 °C\n", self.run_with(*press, *clock))
        self.assertIn("\nIt is 17:00: the plan asks for 21.5 °C\n", self.run_with(*press, *press, *clock))

    def test_the_firmware_card_lists_the_variables(self):
        self.assertEqual(self.press("preferences.firmware.card"), """\
Press on preferences.firmware.card
  away_celsius             16
  brightness               80
  child_lock               0
  humidity                 46
  mode                     heat
  outdoor_celsius          -2.5
  room_celsius             20.4
  state                    heating
  target_celsius           21
  time                     07:42
  weekday                  3
""")

    def test_leaving_lowers_the_target(self):
        self.assertEqual(self.press("preferences.away.card"), """\
Press on preferences.away.card
  away, target             16.0 °C
  idle                     room 20.4 °C, target 16.0 °C, mode heat
""")

    def test_the_script_that_looks_around(self):
        self.assertEqual(self.run_with("--script", "thermostat/extra/look_around.lua"), """\
button: climate.target.warmer, a control: true
plan:   week.plan, a table: true
bar:    settings.status_bar, a layer instance: true
the same button twice: true
button and plan:       false
target: 21 -> 22.5
  heating                  room 20.4 °C, target 22.5 °C, mode heat
Press on climate.target.warmer
  target                   22.5 °C -> 23.0 °C
  heating                  room 20.4 °C, target 23.0 °C, mode heat
""")
