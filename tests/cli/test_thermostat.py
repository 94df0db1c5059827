# test_thermostat.py: the example application, through the tool, as its README says.

import shutil

from kel_tool import PROJECT, SUCCEEDED, ToolTest

REPORT = """\
Objects
  home                     screen
  status_bar               layer
  home.status_bar          layer instance, shows status_bar on home
  schedule.status_bar      layer instance, shows it on schedule
  climate.room             group
  climate.room.state       group, inside climate.room
  climate.target.warmer    control
  week.plan                table
  week.comfort             control, a cell: named after its template
  ""                       application, whose name is empty
Handles
  looked up again          equal
  climate.target.colder    different
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
        verdict = "thermostat/app.json: 3 screens, 7 layers, 71 objects, 484 variables, 5 scripts: no faults\n"
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

    def test_brightness_goes_up_and_round_again(self):
        press = ("--exec", 'kel.queue_event("press", "preferences.brightness.card")')
        shown = self.values("brightness", "preferences.brightness.value.percent",
                            "preferences.brightness.bar.level.kld_width")
        pressed = "Press on preferences.brightness.card\n  brightness               {} %\n"
        self.assertEqual(self.run_with(*press, *shown, *press, *shown),
                         pressed.format(100) + "100\t100\t186\n" + pressed.format(20) + "20\t20\t37\n")

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
