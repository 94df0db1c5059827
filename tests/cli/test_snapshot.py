# test_snapshot.py: `kel snapshot`: what a screen shows, and its picture as text, SVG and PNG.

import os
import shutil
import stat
import subprocess

import kel_tool
from kel_tool import BAD_INPUT, FAILED, PROJECT, SUCCEEDED
from picture import Area, Png, Svg, rgb

LEAKS_OF_CAIRO = f"suppressions={PROJECT}/tests/cli/pictures/leaks-of-cairo.txt:print_suppressions=0"


def control(name, x=0, y=0, width=10, height=10, **members):
    return {"type": "control", "name": name, "x": x, "y": y, "width": width, "height": height, **members}


def group(name, x, y, *children, **members):
    return {"type": "group", "name": name, "x": x, "y": y, "children": list(children), **members}


def text(words, **hints):
    return {"draw": {"text": words, **hints}}


def fill(color):
    return {"draw": {"fill": color}}


def one_layer(*children, **members):
    """An application of 100x80 whose screen shows one layer."""
    return {"layers": [{"name": "main", "children": list(children), **members}]}


class SnapshotTest(kel_tool.ToolTest):
    def snapshot(self, file, *options, app="demo", status=SUCCEEDED, out="", err="", **changes):
        """Draws; gives the file's bytes."""
        result = self.kel("snapshot", app, *options, "-o", file, **changes)
        self.assertResult(result, status, out, err)
        return (self.folder / file).read_bytes()

    def shown(self, *options, **expected):
        return self.snapshot("now.txt", *options, **expected).decode()

    def svg(self, *options):
        return Svg(self.snapshot("now.svg", *options, LSAN_OPTIONS=LEAKS_OF_CAIRO))

    def png(self, *options):
        return Png(self.snapshot("now.png", *options))

    def refused(self, message, *arguments):
        """Fails with the message and leaves the folder as it was."""
        before = {path: path.is_file() and path.read_bytes() for path in self.folder.rglob("*")}
        self.assertResult(self.kel("snapshot", *arguments), BAD_INPUT, err=f"error: {message}\n")
        self.assertEqual({path: path.is_file() and path.read_bytes() for path in self.folder.rglob("*")}, before)


class WhatAScreenShows(SnapshotTest):
    def test_layers_are_listed_bottom_first_with_what_is_in_them_in_order(self):
        self.write_app(
            layers=[{"name": "top", "width": 30, "height": 20, "children": [control("c", 1, 2)]},
                    {"name": "back", "draw": {"fill": "#102030"}, "children": [control("b", 5, 6), control("a", 7, 8)]}],
            screens=[{"name": "home", "layers": [{"layer": "back"}, {"layer": "top", "x": 40, "y": 50, "alpha": 96}]}])
        self.assertEqual(self.shown(), """\
screen home 100x80
layer home.back 100x80 at 0,0 fill #102030
  control back.b 10x10 at 5,6
  control back.a 10x10 at 7,8
layer home.top 30x20 at 40,50 alpha 96
  control top.c 10x10 at 41,52
""")

    def test_positions_of_groups_and_the_layer_add_up(self):
        self.write_app(layers=[{"name": "main", "width": 60, "height": 50, "children": [
            group("outer", 10, 20, group("inner", 3, 4, control("ok", -1, 2, 5, 6)), control("low", 1, 1))]}],
            screens=[{"name": "home", "layers": [{"layer": "main", "x": 30, "y": 7}]}])
        self.assertEqual(self.shown(), """\
screen home 100x80
layer home.main 60x50 at 30,7
  control main.outer.inner.ok 5x6 at 42,33
  control main.outer.low 10x10 at 41,28
""")

    def test_what_is_hidden_is_left_out_with_all_that_is_in_it(self):
        layers = [{"name": name, "children": [control("ok")]} for name in ("seen", "hidden", "clear")]
        layers[0]["children"] += [control("no", hidden=True), group("g", 0, 0, control("in"), hidden=True)]
        self.write_app(layers=layers, screens=[{"name": "home", "layers": [
            {"layer": "hidden", "hidden": True}, {"layer": "clear", "alpha": 0}, {"layer": "seen", "alpha": 1}]}])
        self.assertEqual(self.shown(), """\
screen home 100x80
layer home.seen 100x80 at 0,0 alpha 1
  control seen.ok 10x10 at 0,0
""")

    def test_what_reaches_beyond_the_layer_is_cut_and_what_lies_beyond_is_left_out(self):
        self.write_app(
            layers=[{"name": "main", "width": 40, "height": 30, "children": [
                control("cut", 35, 25), control("right", 40, 0), control("below", 0, 30), control("left", -10, 0),
                control("flat", 1, 1, 10, 0), control("whole", 30, 20)]}],
            screens=[{"name": "home", "layers": [{"layer": "main", "x": 50, "y": 5}]}])
        self.assertEqual(self.shown(), """\
screen home 100x80
layer home.main 40x30 at 50,5
  control main.cut 10x10 at 85,30 clip 40x30 at 50,5
  control main.whole 10x10 at 80,25
""")

    def test_a_layer_instance_has_a_size_of_its_own(self):
        self.write_app(
            layers=[{"name": "main", "width": 40, "height": 30, "children": [control("ok", 15, 5)]}],
            screens=[{"name": "home", "layers": [{"layer": "main", "x": 10, "y": 20, "width": 20, "height": 8}]}])
        self.assertEqual(self.shown(), """\
screen home 100x80
layer home.main 20x8 at 10,20
  control main.ok 10x10 at 25,25 clip 20x8 at 10,20
""")

    def test_a_layer_off_the_screen_is_left_out(self):
        self.write_app(
            layers=[{"name": name, "children": [control("ok")]} for name in ("left", "below")],
            screens=[{"name": "home", "layers": [{"layer": "left", "x": -100}, {"layer": "below", "y": 80}]}])
        self.assertEqual(self.shown(), "screen home 100x80\n")

    def test_texts_have_the_values_of_their_objects_variables(self):
        self.write_app(**one_layer(
            control("a", variables={"n": 21, "f": {"type": "f64", "value": 21.5}, "s": "warm"}, **text("{n}|{f}|{s}")),
            group("g", 0, 0, control("b", variables={"s": "in a group"}, **text("<{s}>")))))
        self.assertEqual(self.shown(), """\
screen home 100x80
layer home.main 100x80 at 0,0
  control main.a 10x10 at 0,0 text "21|21.5|warm" #ffffff 16px left
  control main.g.b 10x10 at 0,0 text "<in a group>" #ffffff 16px left
""")

    def test_brackets_that_name_no_variable_stay_as_they_are(self):
        self.write_app(**one_layer(control("a", variables={"n": 1, "s": "{n}"}, **text("{{n} {x} { {n} {} {s} }} {n"))))
        self.assertIn(' text "{n} {x} { 1 {} {n} }} {n" ', self.shown())

    def test_every_hint_shows(self):
        self.write_app(**one_layer(control("a", draw={"fill": "#010203", "text": "A", "color": "#0a0b0c", "font_size": 9,
                                                      "align": "right"}), control("b", **text("B", align="center"))))
        self.assertEqual(self.shown().splitlines()[2:], [
            '  control main.a 10x10 at 0,0 fill #010203 text "A" #0a0b0c 9px right',
            '  control main.b 10x10 at 0,0 text "B" #ffffff 16px center'])

    def test_a_text_stays_on_its_line(self):
        self.write_app(**one_layer(control("a", **text('one\ntwo "three" \\ \t\x7f é'))))
        self.assertIn(' text "one\\ntwo \\"three\\" \\\\ \\x09\\x7f é" ', self.shown())

    def test_cells_stand_side_by_side_each_with_its_template_and_variables(self):
        templates = [{"name": "head", "width": 20, "height": 8, "variables": {"t": "?"}, **text("{t}!", color="#111111")},
                     {"name": "cell", "width": 12, "height": 10, "variables": {"n": 1}, **text("{n}{t}", font_size=7)}]
        self.write_app(**one_layer(group("g", 3, 4, {
            "type": "table", "name": "list", "x": 10, "y": 20, "width": 50, "height": 40, "rows": 2, "cols": 2,
            "templates": templates, "draw": {"fill": "#222222"},
            "cells": [[{"template": "head", "variables": {"t": "A"}}, "cell"],
                      ["cell", {"template": "cell", "variables": {"n": 5}}]]})))
        self.assertEqual(self.shown(), """\
screen home 100x80
layer home.main 100x80 at 0,0
  table main.g.list 50x40 at 13,24 fill #222222
  cell main.g.list 0,0 20x8 at 13,24 text "A!" #111111 16px left
  cell main.g.list 0,1 12x10 at 33,24 text "1{t}" #ffffff 7px left
  cell main.g.list 1,0 12x10 at 13,34 text "1{t}" #ffffff 7px left
  cell main.g.list 1,1 12x10 at 25,34 text "5{t}" #ffffff 7px left
""")

    def test_cells_are_cut_by_their_table(self):
        table = {"type": "table", "name": "list", "x": 80, "y": 10, "width": 30, "height": 15, "rows": 3, "cols": 3,
                 "templates": [{"name": "cell", "width": 12, "height": 10}]}
        self.write_app(**one_layer(table))
        self.assertEqual(self.shown(), """\
screen home 100x80
layer home.main 100x80 at 0,0
  table main.list 30x15 at 80,10 clip 100x80 at 0,0
  cell main.list 0,0 12x10 at 80,10
  cell main.list 0,1 12x10 at 92,10 clip 20x15 at 80,10
  cell main.list 1,0 12x10 at 80,20 clip 20x15 at 80,10
  cell main.list 1,1 12x10 at 92,20 clip 20x15 at 80,10
""")

    def test_a_hidden_table_has_no_cells(self):
        table = {"type": "table", "name": "list", "width": 30, "height": 15, "rows": 1, "cols": 1, "hidden": True,
                 "templates": [{"name": "cell", "width": 12, "height": 10}]}
        self.write_app(**one_layer(table))
        self.assertEqual(self.shown(), "screen home 100x80\nlayer home.main 100x80 at 0,0\n")

    def test_what_scripts_change_make_and_delete_shows_after_each_event(self):
        script = """
            function move() keldom.get_control("main.ok"):set_bounds(1, 2, 3, 4) end
            function clone() keldom.get_control("main.ok"):clone("two", "main", {kld_x = 50, text = "new"}) end
            function delete() keldom.get_control("main.ok"):delete() end
            function dim() keldom.get_layer_instance("home.main"):set_alpha(7) end
            function grow() keldom.get_table("main.list"):set_cols(2) end
        """
        names = ["move", "clone", "delete", "dim", "grow"]
        table = {"type": "table", "name": "list", "width": 30, "height": 15, "rows": 1, "cols": 1,
                 "templates": [{"name": "cell", "width": 12, "height": 10}]}
        self.write_app({"main.lua": script}, handlers=[{"event": name, "function": name} for name in names],
                       **one_layer(control("ok", variables={"text": "old"}, **text("{text}")), table))
        events = [option for name in names for option in ("--after", name)]
        self.assertEqual(self.shown(*events), """\
screen home 100x80
layer home.main 100x80 at 0,0 alpha 7
  table main.list 30x15 at 0,0
  cell main.list 0,0 12x10 at 0,0
  cell main.list 0,1 12x10 at 12,0
  control main.two 3x4 at 50,2 text "new" #ffffff 16px left
""")
        self.assertIn("  control main.ok 3x4 at 1,2 ", self.shown("--after", "clone", "--after", "move"))
        self.assertIn("  control main.two 10x10 at 50,0 ", self.shown("--after", "clone", "--after", "move"))

    def test_the_default_screen_is_the_first_or_the_one_that_is_named(self):
        screens = [{"name": "one"}, {"name": "two"}]
        self.write_app(screens=screens)
        self.assertEqual(self.shown(), "screen one 100x80\n")
        self.assertEqual(self.shown("two"), "screen two 100x80\n")
        self.write_app(screens=screens, default_screen="two")
        self.assertEqual(self.shown(), "screen two 100x80\n")


class AsSvg(SnapshotTest):
    def test_the_size_is_the_screens_times_the_scale(self):
        self.write_app()
        for options, width, height in ([], 100, 80), (["--scale", "3"], 300, 240):
            root = self.svg(*options).root
            self.assertEqual((root.get("width"), root.get("height"), root.get("viewBox")),
                             (f"{width}px", f"{height}px", f"0 0 {width} {height}"))

    def test_areas_are_painted_in_order_on_black(self):
        self.write_app(
            layers=[{"name": "top", "width": 30, "height": 20, "children": [control("c", 1, 2, **fill("#00ff00"))]},
                    {"name": "back", **fill("#102030"), "children": [control("plain", 5, 6, **fill("#ff0000")),
                                                                     group("g", 9, 9, control("b", 1, 1, 5, 6,
                                                                                              **fill("#0000ff")))]}],
            screens=[{"name": "home", "layers": [{"layer": "back"}, {"layer": "top", "x": 40, "y": 50}]}])
        self.assertEqual([(area.color, area.box, area.opacity) for area in self.svg().areas], [
            ("#000000", (0, 0, 100, 80), 1), ("#102030", (0, 0, 100, 80), 1), ("#ff0000", (5, 6, 10, 10), 1),
            ("#0000ff", (10, 10, 5, 6), 1), ("#00ff00", (41, 52, 10, 10), 1)])

    def test_a_layer_shines_through_as_a_whole(self):
        self.write_app(
            layers=[{"name": "main", "width": 30, "height": 20, **fill("#ffffff"),
                     "children": [control("c", 1, 2, **fill("#00ff00"))]}],
            screens=[{"name": "home", "layers": [{"layer": "main", "x": 40, "y": 50, "alpha": 51}]}])
        self.assertEqual([(area.color, area.box, area.opacity) for area in self.svg().areas], [
            ("#000000", (0, 0, 100, 80), 1), ("#ffffff", (40, 50, 30, 20), 0.2), ("#00ff00", (41, 52, 10, 10), 0.2)])

    def test_what_reaches_beyond_the_layer_is_clipped(self):
        self.write_app(
            layers=[{"name": "main", "width": 40, "height": 30, "children": [control("c", 35, 25, **fill("#00ff00"))]}],
            screens=[{"name": "home", "layers": [{"layer": "main", "x": 20, "y": 10}]}])
        self.assertEqual(self.svg().areas[1:], [Area("#00ff00", (55, 35, 10, 10), (55, 35, 5, 5), 1)])

    def line(self, words, **hints):
        """The one line of a text in a box 80 wide and 40 high at 10,20."""
        self.write_app(**one_layer(control("c", 10, 20, 80, 40, **text(words, font_size=10, color="#abcdef", **hints))))
        lines = self.svg().lines
        self.assertEqual(len(lines), 1)
        self.assertEqual(lines[0].color, "#abcdef")
        return lines[0]

    def test_a_text_is_one_shape_a_letter(self):
        shapes = [shape for shape, _, _ in self.line("abca°").glyphs]
        self.assertEqual((len(shapes), len(set(shapes)), shapes[0] == shapes[3]), (5, 4, True))

    def test_alignment_puts_the_line_left_right_or_in_the_middle(self):
        left, center, right = (self.line("mmmm", align=align).glyphs for align in ("left", "center", "right"))
        letter = left[1][1] - left[0][1]
        self.assertAlmostEqual(left[0][1], 10)
        self.assertAlmostEqual(right[0][1], 90 - 4 * letter, places=2)
        self.assertAlmostEqual(center[0][1], 50 - 2 * letter, places=2)

    def test_a_line_stands_in_the_middle_of_the_height(self):
        baseline = self.line("m").glyphs[0][2]
        self.assertTrue(42 < baseline < 46, baseline)  # a letter's middle is above its baseline
        self.write_app(**one_layer(control("c", 10, 20, 80, 40, **text("m\nm", font_size=10))))
        upper, lower = (line.glyphs[0][2] for line in self.svg().lines)
        self.assertTrue(10 <= lower - upper <= 14, lower - upper)
        self.assertAlmostEqual((upper + lower) / 2, baseline, places=3)

    def test_a_line_that_is_too_long_ends_in_an_ellipsis(self):
        letter = self.line("mm").glyphs
        width = letter[1][1] - letter[0][1]
        ellipsis = self.line("…").glyphs
        cut = self.line("m" * 100, align="right").glyphs
        self.assertEqual({shape for shape, _, _ in cut[:-1]}, {letter[0][0]})
        self.assertEqual(len({shape for shape, _, _ in cut}), 2)
        self.assertEqual(len(ellipsis), 1)
        self.assertTrue(80 - 2 * width < cut[-1][1] - 10 < 80, cut)
        self.assertGreaterEqual(cut[0][1], 10)

    def test_a_line_that_just_fits_is_whole(self):
        letter = self.line("mm").glyphs
        most = int(80 / (letter[1][1] - letter[0][1]))
        self.assertEqual(len(self.line("m" * most).glyphs), most)
        self.assertLessEqual(len(self.line("m" * (most + 1)).glyphs), most)

    def test_a_text_that_is_higher_than_its_box_is_clipped_to_it(self):
        self.write_app(**one_layer(control("c", 10, 20, 80, 8, **text("m", font_size=30))))
        self.assertEqual(self.svg().lines[0].clip[1::2], (20, 8))

    def test_bytes_that_are_no_utf8_are_one_replacement_letter_each(self):
        script = r'kel.set_value("main.c.t", "a\255\192\128\237\160\128é")'
        self.write_app({"main.lua": script}, **one_layer(control("c", 0, 0, 90, 40, variables={"t": ""},
                                                                 **text("{t}", font_size=8))))
        shapes = [shape for shape, _, _ in self.svg().lines[0].glyphs]
        self.assertEqual(len(shapes), 8)
        self.assertEqual(len(set(shapes[1:7])), 1)
        self.assertEqual(len(set(shapes)), 3)

    def test_outlines_stand_over_everything(self):
        self.write_app(**one_layer(control("c", 10, 20, 80, 40, **fill("#abcdef"))))
        plain, outlined = self.svg(), self.svg("--outline")
        self.assertEqual(outlined.areas[:2], plain.areas)
        self.assertEqual([len(line.glyphs) for line in outlined.lines], [len("home.main"), len("main.c")])

    def test_the_outline_of_a_cell_says_its_row_and_column(self):
        table = {"type": "table", "name": "list", "width": 90, "height": 70, "rows": 2, "cols": 1,
                 "templates": [{"name": "cell", "width": 90, "height": 30}]}
        self.write_app(**one_layer(table, width=50))
        self.assertEqual([len(line.glyphs) for line in self.svg("--outline").lines],
                         [len("home.main"), len("main.list"), len("0,0"), len("1,0")])


class AsPng(SnapshotTest):
    def test_areas_have_their_colors_to_the_pixel(self):
        self.write_app(**one_layer(control("a", 10, 20, 30, 15, **fill("#ff8040")), **fill("#102030")))
        png = self.png()
        self.assertEqual((png.width, png.height), (100, 80))
        self.assertEqual(png.box_of(lambda color: color == rgb("#ff8040")), (10, 20, 40, 35))
        self.assertEqual({pixel for pixel in (png[0, 0], png[9, 20], png[40, 34], png[99, 79])}, {rgb("#102030")})

    def test_a_screen_is_black_where_nothing_is(self):
        self.write_app()
        self.assertEqual(self.png().box_of(lambda color: color != (0, 0, 0)), None)

    def test_scale_enlarges_every_pixel(self):
        self.write_app(**one_layer(control("a", 10, 20, 30, 15, **fill("#ff8040"))))
        png = self.png("--scale", "2")
        self.assertEqual((png.width, png.height), (200, 160))
        self.assertEqual(png.box_of(lambda color: color == rgb("#ff8040")), (20, 40, 80, 70))

    def test_alpha_mixes_a_layer_with_what_is_below(self):
        self.write_app(
            layers=[{"name": "back", **fill("#c80064")},
                    {"name": "veil", "width": 50, "height": 80, **fill("#000000"),
                     "children": [control("a", 10, 10, **fill("#ffffff"))]},
                    {"name": "top", "width": 100, "height": 12, **fill("#00ff00")}],
            screens=[{"name": "home", "layers": [{"layer": "back"}, {"layer": "veil", "alpha": 102},
                                                 {"layer": "top", "alpha": 51}]}])
        png = self.png()
        expected = {
            (75, 40): (200, 0, 100),   # back alone
            (25, 40): (120, 0, 60),    # 0.4 black on it: 0.6 of it is left
            (15, 15): (222, 102, 162), # 0.4 white, which covers the veil's black, on 0.6 of back
            (75, 5): (160, 51, 80),    # 0.2 green on back
            (25, 5): (96, 51, 48),     # 0.2 green on the veiled back
            (15, 11): (178, 133, 130), # 0.2 green on the white in the veil
        }
        for place, color in expected.items():
            with self.subTest(place):
                for found, wanted in zip(png[place], color):
                    self.assertAlmostEqual(found, wanted, delta=1)

    def test_the_alpha_of_a_layer_is_cut_to_its_place(self):
        self.write_app(
            layers=[{"name": "veil", "width": 50, "height": 40, **fill("#ffffff"),
                     "children": [control("a", 40, 30, 40, 40, **fill("#ff0000"))]}],
            screens=[{"name": "home", "layers": [{"layer": "veil", "x": 10, "y": 20, "alpha": 102}]}])
        png = self.png()
        self.assertEqual(png.box_of(lambda color: color != (0, 0, 0)), (10, 20, 60, 60))
        self.assertEqual((png[10, 20], png[59, 59]), ((102, 102, 102), (102, 0, 0)))

    def test_cells_are_painted_and_cut_by_their_table(self):
        table = {"type": "table", "name": "list", "x": 10, "y": 10, "width": 30, "height": 15, "rows": 2, "cols": 2,
                 "templates": [{"name": "a", "width": 20, "height": 10, **fill("#ff0000")},
                               {"name": "b", "width": 20, "height": 10, **fill("#0000ff")}],
                 "cells": [["a", "b"], ["b", "a"]]}
        self.write_app(**one_layer(table))
        png = self.png()
        self.assertEqual(png.box_of(lambda color: color != (0, 0, 0)), (10, 10, 40, 25))
        self.assertEqual([png[place] for place in ((29, 19), (30, 19), (29, 20), (30, 20))],
                         [rgb("#ff0000"), rgb("#0000ff"), rgb("#0000ff"), rgb("#ff0000")])

    def test_codes_that_are_no_characters_are_drawn_as_the_replacement(self):
        def drawn(letter):
            self.write_app(**one_layer(control("a", 0, 0, 100, 40, **text(f"a{letter}b"))))
            return self.snapshot("now.png")
        replacement = drawn("\ufffd")
        for letter in "\uffff", "\ufffe", "\ufdd0", "\ufdef", "\U0001fffe", "\U0010ffff":
            with self.subTest(ascii(letter)):
                self.assertEqual(drawn(letter), replacement)
        for letter in "\ufdcf", "\ufdf0", "\ufffc", "\U0001fffd":
            with self.subTest(ascii(letter)):
                self.assertNotEqual(drawn(letter), replacement)

    def test_letters_stay_within_their_box(self):
        self.write_app(**one_layer(control("a", 10, 20, 60, 10, **text("Wide and high", font_size=20))))
        left, top, right, bottom = self.png().box_of(lambda color: color != (0, 0, 0))
        self.assertEqual((top, bottom), (20, 30))
        self.assertTrue(10 <= left < 13 and 40 < right <= 70, (left, right))

    def test_the_frame_of_an_outline_lies_within_the_box(self):
        self.write_app(**one_layer(control("a", 10, 20, 80, 50), group("g", 0, 0, control("b", 92, 40, 40, 60))))
        png = self.png("--outline")
        frame = rgb("#35d0ff")
        self.assertEqual([png[place] == frame for place in ((89, 20), (10, 69), (89, 69), (50, 69), (90, 69), (89, 70))],
                         [True, True, True, True, False, False])
        self.assertEqual((png[99, 70], png[95, 79]), (frame, frame))

    def test_the_same_screen_gives_the_same_bytes(self):
        for file in "a.png", "a.svg":
            thermostat = ("--after", "press:climate.room.alerts", "--outline")
            once, again = (self.kel("snapshot", PROJECT / "examples/thermostat", *thermostat, "-o", name + file,
                                    LSAN_OPTIONS=LEAKS_OF_CAIRO) for name in ("one", "two"))
            self.assertEqual((once.status, once.err, again.status, again.err), (SUCCEEDED, "", SUCCEEDED, ""))
            one, two = ((self.folder / (name + file)).read_bytes() for name in ("one", "two"))
            self.assertTrue(len(one) > 1000 and one == two, file)


class TheFile(SnapshotTest):
    def test_an_event_is_sent_in_order_before_the_screen_is_drawn(self):
        script = 'function press(event) print("pressed " .. tostring(event.target)) end'
        self.write_app({"main.lua": script}, handlers=[{"event": "press", "function": "press"}])
        self.shown("--after", "press:main.cancel", "--after", "press:main.ok",
                   out="pressed main.cancel\npressed main.ok\n")

    def test_a_script_that_fails_gives_status_1_and_a_picture_all_the_same(self):
        self.write_app({"main.lua": 'error("no sensor", 0)'})
        result = self.kel("snapshot", "demo", "-o", "now.txt")
        self.assertEqual((result.status, result.out), (FAILED, ""))
        self.assertTrue(result.err.startswith("error: no sensor\n"), result.err)
        self.assertTrue((self.folder / "now.txt").read_text().startswith("screen home 100x80\nlayer "))

    def test_a_file_that_is_there_is_replaced(self):
        self.write_app()
        self.write("now.txt", "a longer file than the new one " * 100)
        self.assertTrue(self.shown().startswith("screen home"))
        self.assertEqual(sorted(os.listdir(self.folder)), ["demo", "now.txt"])

    def test_a_new_file_has_the_permissions_that_the_user_gives_new_files(self):
        self.write_app()
        arguments = [kel_tool.KEL, "snapshot", "demo", "-o", "now.txt"]
        subprocess.run(["sh", "-c", 'umask 027; exec "$@"', "sh", *arguments], cwd=self.folder, check=True,
                       env=kel_tool.environment(), stdin=subprocess.DEVNULL)
        self.assertEqual(stat.S_IMODE((self.folder / "now.txt").stat().st_mode), 0o640)

    def test_a_file_that_is_there_keeps_its_permissions(self):
        self.write_app()
        self.write("now.txt", "x")
        for mode in 0o600, 0o666:
            (self.folder / "now.txt").chmod(mode)
            self.shown()
            self.assertEqual(stat.S_IMODE((self.folder / "now.txt").stat().st_mode), mode)

    def test_a_link_stays_and_what_it_leads_to_is_replaced(self):
        self.write_app()
        self.write("there/old.txt", "old")
        for place, target in ("now.txt", "links/to.txt"), ("links/to.txt", "../there/old.txt"):
            (self.folder / place).parent.mkdir(exist_ok=True)
            os.symlink(target, self.folder / place)
        self.assertTrue(self.shown().startswith("screen home"))
        self.assertEqual([os.readlink(self.folder / place) for place in ("now.txt", "links/to.txt")],
                         ["links/to.txt", "../there/old.txt"])
        self.assertTrue((self.folder / "there/old.txt").read_text().startswith("screen home"))
        self.assertEqual([os.listdir(self.folder / place) for place in ("there", "links")], [["old.txt"], ["to.txt"]])

    def test_a_link_that_leads_to_a_file_that_is_not_there_yet(self):
        self.write_app()
        (self.folder / "there").mkdir()
        os.symlink("there/new.txt", self.folder / "now.txt")
        self.shown()
        self.assertEqual(os.readlink(self.folder / "now.txt"), "there/new.txt")
        self.assertTrue((self.folder / "there/new.txt").read_text().startswith("screen home"))

    def test_links_without_end(self):
        self.write_app()
        os.symlink("now.txt", self.folder / "now.txt")
        result = self.kel("snapshot", "demo", "-o", "now.txt")
        self.assertResult(result, BAD_INPUT, err="error: now.txt cannot be written: Too many levels of symbolic links\n")
        self.assertEqual(os.readlink(self.folder / "now.txt"), "now.txt")

    def test_a_pipe_is_written_to_and_stays(self):
        self.write_app()
        os.mkfifo(self.folder / "pipe.txt")
        os.symlink("pipe.txt", self.folder / "link.txt")
        reader = os.open(self.folder / "pipe.txt", os.O_RDONLY | os.O_NONBLOCK)
        self.addCleanup(os.close, reader)
        for file in "pipe.txt", "link.txt":
            self.assertResult(self.kel("snapshot", "demo", "-o", file), SUCCEEDED)
            self.assertTrue(os.read(reader, 4096).startswith(b"screen home"))
        self.assertTrue(stat.S_ISFIFO((self.folder / "pipe.txt").stat().st_mode))
        self.assertEqual(os.readlink(self.folder / "link.txt"), "pipe.txt")
        self.assertEqual(sorted(os.listdir(self.folder)), ["demo", "link.txt", "pipe.txt"])

    def test_a_file_that_cannot_be_written_whole_leaves_the_one_that_is_there(self):
        self.write_app()
        self.write("now.png", "kept")
        arguments = [kel_tool.KEL, "snapshot", PROJECT / "examples/thermostat", "-o", "now.png"]
        full = ["sh", "-c", 'trap "" XFSZ; ulimit -f 1; exec "$@" >/dev/null', "sh", *map(str, arguments)]
        completed = subprocess.run(full, cwd=self.folder, env=kel_tool.environment(), stdin=subprocess.DEVNULL,
                                   stderr=subprocess.PIPE, check=False)
        self.assertEqual((completed.returncode, completed.stderr.decode()),
                         (BAD_INPUT, "error: now.png cannot be written: File too large\n"))
        self.assertEqual((self.folder / "now.png").read_text(), "kept")
        self.assertEqual(sorted(os.listdir(self.folder)), ["demo", "now.png"])

    def test_a_folder_that_is_not_there(self):
        self.write_app()
        self.refused("none/now.png cannot be written: No such file or directory", "demo", "-o", "none/now.png")

    def test_a_folder_in_the_files_place(self):
        self.write_app()
        (self.folder / "now.png").mkdir()
        self.refused("now.png cannot be written: Is a directory", "demo", "-o", "now.png")

    def test_an_unknown_screen(self):
        self.write_app(screens=[{"name": "home"}, {"name": "settings"}])
        self.refused('no screen "hom"; did you mean home?', "demo", "hom", "-o", "now.png")
        self.refused('no screen "x"; there are home, settings', "demo", "x", "-o", "now.png")

    def test_another_object_is_no_screen(self):
        self.write_app()
        self.refused('no screen "home.main"; there are home', "demo", "home.main", "-o", "now.png")

    def test_an_application_without_screens(self):
        self.write_app(screens=[])
        self.refused("the application has no screens", "demo", "-o", "now.png")

    def test_an_event_for_an_unknown_object(self):
        self.write_app()
        self.refused('event "press" on main.cancl: there is no object of that name; did you mean main.cancel?',
                     "demo", "--after", "press:main.cancl", "-o", "now.png")

    def test_a_picture_that_is_too_large(self):
        self.write_app(size={"width": 32767, "height": 10})
        self.refused("a picture of 65534x20 pixels cannot be drawn: invalid value (typically too big) for the size of "
                     "the input (surface, pattern, etc.)", "demo", "--scale", "2", "-o", "now.png")

    def test_a_png_of_too_many_pixels(self):
        self.write_app(size={"width": 8193, "height": 8192})
        self.refused("a picture of 8193x8192 pixels is too large: found 67117056 pixels, expected at most 67108864; an SVG "
                     "file has no such bound", "demo", "-o", "now.png")
        self.write_app(size={"width": 32767, "height": 32767})
        self.refused("a picture of 32767x32767 pixels is too large: found 1073676289 pixels, expected at most 67108864; an "
                     "SVG file has no such bound", "demo", "-o", "now.png")
        self.svg()

    def test_a_faulty_application(self):
        self.write("demo/app.json", "{}")
        result = self.kel("snapshot", "demo", "-o", "now.png")
        self.assertEqual((result.status, result.out), (BAD_INPUT, ""))
        self.assertRegex(result.err, r"faults in demo/app\.json\n\Z")
        self.assertEqual(os.listdir(self.folder), ["demo"])


class Usage(SnapshotTest):
    def wrong(self, message, *arguments):
        self.assertResult(self.kel("snapshot", *arguments), BAD_INPUT,
                          err=f"error: {message}\nRun 'kel snapshot --help' for usage.\n")

    def test_other_kinds_of_file(self):
        for file in "home.gif", "home", "png":
            self.wrong(f'--output: expected a file name that ends in .svg, .png or .txt, found "{file}"',
                       "demo", "-o", file)

    def test_no_file(self):
        self.wrong("--output is required", "demo")

    def test_scales(self):
        for scale in "0", "17", "-1":
            self.wrong(f"--scale: Value {scale} not in range 1 to 16", "demo", "-o", "a.png", "--scale", scale)

    def test_an_event_without_a_name(self):
        self.wrong('--after: expected NAME or NAME:TARGET, found ":ok"', "demo", "-o", "a.png", "--after", ":ok")

    def test_help_names_every_option_and_has_examples(self):
        result = self.kel("snapshot", "--help")
        self.assertEqual((result.status, result.err), (SUCCEEDED, ""))
        for expected in ("APP", "SCREEN", "-o,--output FILE", "--after NAME[:TARGET]", "--outline", "--scale N ",
                         "Examples:\n  kel snapshot examples/thermostat -o home.png\n"):
            self.assertIn(expected, result.out)


class PicturesOfPages(SnapshotTest):
    def check(self, folder):
        return subprocess.run([folder / "tools/pictures", "--check"], capture_output=True, text=True, check=False,
                              env=kel_tool.environment(KEL=kel_tool.KEL))

    def test_they_show_what_the_tool_draws_now(self):
        completed = self.check(PROJECT)
        self.assertEqual((completed.returncode, completed.stdout, completed.stderr), (0, "", ""))

    def test_a_change_of_a_screen_is_noticed(self):
        for path in "tools/pictures", "examples/thermostat", "docs/images", "docs/examples":
            (self.folder / path).parent.mkdir(exist_ok=True)
            copy = shutil.copytree if (PROJECT / path).is_dir() else shutil.copy
            copy(PROJECT / path, self.folder / path)
        app = self.folder / "examples/thermostat/app.json"
        app.write_text(app.read_text(encoding="utf-8").replace('"text": "Brightness"', '"text": "Light"'), encoding="utf-8")
        completed = self.check(self.folder)
        self.assertEqual(completed.returncode, 1)
        self.assertIn('+  control preferences.brightness.label 110x20 at 262,52 text "Light" ', completed.stdout)
        self.assertEqual(completed.stderr,
                         "tools/pictures: thermostat-settings has changed; draw it again with: make pictures\n")

    def test_each_is_twice_as_large_as_its_screen_and_shown(self):
        readme = (PROJECT / "README.md").read_text(encoding="utf-8")
        for screen in "home", "schedule", "settings":
            path = f"docs/images/thermostat-{screen}.png"
            png = Png((PROJECT / path).read_bytes())
            self.assertEqual((png.width, png.height), (960, 544))
            self.assertIn(path, readme)
