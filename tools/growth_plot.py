"""growth_plot: a plot of how figures grow, as SVG: both axes logarithmic, readable on light and dark pages."""

import math
from typing import NamedTuple
from xml.sax.saxutils import escape

WIDTH, HEIGHT = 860, 520
LEFT, RIGHT, TOP, BOTTOM = 76, 608, 64, 462  # of the area with the lines
LABEL_GAP = 17

# Of equal lightness, so that none stands out; once for each background.
LIGHT = ("#1b6ca8", "#b3400d", "#1a7a4c", "#8a4fbf", "#a0620a", "#b02a5b", "#3d6b7d", "#6b6b1f")
DARK = ("#6cb6f5", "#ff9a66", "#63c995", "#c49bf0", "#e0ac4f", "#f58bb3", "#8fc3d6", "#c7c76a")


class Line(NamedTuple):
    label: str
    solid: dict  # figure by size
    dashed: dict


def colours(palette, page, ink, soft, lines):
    own = "".join(f".c{number}{{color:{colour}}}" for number, colour in enumerate(palette))
    return f".page{{fill:{page}}}text{{fill:{ink}}}.axis{{fill:{soft}}}.grid{{stroke:{lines}}}{own}"


def style():
    return (
        "text{font:13px sans-serif}.title{font-size:16px;font-weight:600}.grid{fill:none}"
        + colours(LIGHT, "#fff", "#1c1c1c", "#595959", "#dedede")
        + ".line{stroke:currentColor;stroke-width:2;fill:none}.thin{stroke-width:1}"
        + ".dots{stroke-dasharray:2 5;stroke-linecap:round}.dot,.label{fill:currentColor}"
        + "@media(prefers-color-scheme:dark){" + colours(DARK, "#15181c", "#eee", "#adb3ba", "#33393f")
        + ".dot,.label{fill:currentColor}}"
    )


class Axis:
    """Places powers of ten between two edges of the picture."""

    def __init__(self, figures, first_edge, last_edge):
        self.low = math.floor(math.log10(min(figures)))
        self.high = max(math.ceil(math.log10(max(figures))), self.low + 1)
        self.first_edge, self.last_edge = first_edge, last_edge

    def place(self, figure):
        share = (math.log10(figure) - self.low) / (self.high - self.low)
        return round(self.first_edge + share * (self.last_edge - self.first_edge), 1)

    def powers(self):
        return [10**power for power in range(self.low, self.high + 1)]


def spread(wanted):
    """Moves heights apart so that labels do not lie over each other. Returns them in the order given."""
    order = sorted(range(len(wanted)), key=wanted.__getitem__)
    placed = list(wanted)
    for above, below in zip(order, order[1:]):
        placed[below] = max(placed[below], placed[above] + LABEL_GAP)
    if order and placed[order[-1]] > BOTTOM:
        placed[order[-1]] = BOTTOM
        for above, below in zip(order[-2::-1], order[:0:-1]):
            placed[above] = min(placed[above], placed[below] - LABEL_GAP)
    return placed


def grid(x_axis, y_axis, x_title, y_title):
    parts = []
    for power in x_axis.powers():
        x = x_axis.place(power)
        parts.append(f'<path class="grid" d="M{x} {TOP}V{BOTTOM}"/>')
        parts.append(f'<text class="axis" x="{x}" y="{BOTTOM + 20}" text-anchor="middle">{power:,}</text>')
    for power in y_axis.powers():
        y = y_axis.place(power)
        parts.append(f'<path class="grid" d="M{LEFT} {y}H{RIGHT}"/>')
        parts.append(f'<text class="axis" x="{LEFT - 8}" y="{y + 4}" text-anchor="end">{in_words(power)}</text>')
    parts.append(f'<text x="{(LEFT + RIGHT) // 2}" y="{HEIGHT - 14}" text-anchor="middle">{escape(x_title)}</text>')
    parts.append(f'<text x="16" y="{TOP - 12}">{escape(y_title)}</text>')
    return parts


def in_words(power):
    for size, word in ((10**9, " G"), (10**6, " M"), (10**3, " k")):
        if power >= size:
            return f"{power // size}{word}"
    return str(power)


def path(figures, x_axis, y_axis):
    return "M" + "L".join(f"{x_axis.place(size)} {y_axis.place(figure)}" for size, figure in sorted(figures.items()))


def plot(title, x_title, y_title, lines):
    figures = [figure for line in lines for drawn in (line.solid, line.dashed) for figure in drawn.values()]
    x_axis = Axis([size for line in lines for size in line.solid], LEFT, RIGHT)
    y_axis = Axis(figures, BOTTOM, TOP)
    ends = [y_axis.place(line.solid[max(line.solid)]) for line in lines]
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" role="img">',
        f"<title>{escape(title)}</title><style>{style()}</style>",
        f'<rect class="page" width="{WIDTH}" height="{HEIGHT}"/>',
        f'<text class="title" x="16" y="28">{escape(title)}</text>',
        *grid(x_axis, y_axis, x_title, y_title),
    ]
    for number, (line, end, label_y) in enumerate(zip(lines, ends, spread(ends))):
        parts.append(f'<g class="c{number % len(LIGHT)}">')
        parts.append(f'<path class="line dots" d="{path(line.dashed, x_axis, y_axis)}"/>')
        parts.append(f'<path class="line" d="{path(line.solid, x_axis, y_axis)}"/>')
        for size, figure in sorted(line.solid.items()):
            parts.append(f'<circle class="dot" cx="{x_axis.place(size)}" cy="{y_axis.place(figure)}" r="3"/>')
        parts.append(f'<path class="line thin" d="M{RIGHT + 4} {end}L{RIGHT + 20} {label_y}"/>')
        parts.append(f'<text class="label" x="{RIGHT + 24}" y="{label_y + 4}">{escape(line.label)}</text></g>')
    return "\n".join([*parts, "</svg>", ""])
