# picture.py: reads the pictures that the tool draws: pixels of a PNG file, shapes of an SVG file.

import functools
import re
import struct
import typing
import xml.etree.ElementTree
import zlib

SVG = "{http://www.w3.org/2000/svg}"
LINK = "{http://www.w3.org/1999/xlink}href"


def rgb(color):
    """"#rrggbb" as three numbers."""
    return tuple(bytes.fromhex(color[1:]))


class Png:
    """An RGB file of 8 bits a channel: png[x, y] is (red, green, blue)."""

    def __init__(self, content):
        assert content[:8] == b"\x89PNG\r\n\x1a\n"
        position, packed = 8, b""
        while position < len(content):
            size, kind = struct.unpack(">I4s", content[position:position + 8])
            data = content[position + 8:position + 8 + size]
            if kind == b"IHDR":
                self.width, self.height, *form = struct.unpack(">IIBBBBB", data)
                assert form == [8, 2, 0, 0, 0]
            elif kind == b"IDAT":
                packed += data
            position += size + 12
        self.packed = packed

    @functools.cached_property
    def rows(self):
        lines = zlib.decompress(self.packed)
        stride = 3 * self.width
        rows, above = [], bytes(stride)
        for start in range(0, len(lines), stride + 1):
            above = self._row(lines[start], bytearray(lines[start + 1:start + 1 + stride]), above)
            rows.append(bytes(above))
        return rows

    @staticmethod
    def _row(kind, row, above):
        for i in range(len(row)):
            left, up, corner = (row[i - 3], above[i], above[i - 3]) if i >= 3 else (0, above[i], 0)
            nearest = min((left, up, corner), key=lambda value, sum=left + up - corner: abs(sum - value))
            row[i] = (row[i] + (0, left, up, (left + up) // 2, nearest)[kind]) & 0xff
        return row

    def __getitem__(self, place):
        x, y = place
        return tuple(self.rows[y][3 * x:3 * x + 3])

    def box_of(self, wanted):
        """The smallest (left, top, right, bottom) around all pixels for which wanted(color) holds."""
        places = [(x, y) for y in range(self.height) for x in range(self.width) if wanted(self[x, y])]
        columns, rows = [x for x, _ in places], [y for _, y in places]
        return (min(columns), min(rows), max(columns) + 1, max(rows) + 1) if places else None


def _color(style):
    parts = re.search(r"fill:rgb\(([\d.]+)%,([\d.]+)%,([\d.]+)%\)", style)
    return "#" + "".join(f"{round(float(part) * 2.55):02x}" for part in parts.groups())


def _box(shape):
    """x, y, width, height of a rectangle, however it is written."""
    if shape.tag == SVG + "rect":
        return tuple(float(shape.get(name)) for name in ("x", "y", "width", "height"))
    numbers = [float(number) for number in re.findall(r"[-\d.]+", shape.get("d"))]
    xs, ys = numbers[0:8:2], numbers[1:8:2]
    return min(xs), min(ys), max(xs) - min(xs), max(ys) - min(ys)


def _moved(box, by):
    return box[0] + by[0], box[1] + by[1], box[2], box[3]


class Area(typing.NamedTuple):
    color: str
    box: tuple
    clip: tuple  # the innermost one; None for none
    opacity: float


class Line(typing.NamedTuple):
    color: str
    glyphs: list  # (shape, x, y) of each letter
    clip: tuple
    opacity: float


class Svg:
    """areas and lines (of text), each in the order of painting, in the picture's coordinates."""

    def __init__(self, text):
        self.root = xml.etree.ElementTree.fromstring(text)
        self.by_id = {element.get("id"): element for element in self.root.iter() if element.get("id")}
        self.areas, self.lines = [], []
        for element in self.root.findall(SVG + "g"):
            self._walk(element, (0, 0), None, 1)

    def _target(self, link):
        return self.by_id[re.search(r"#(\w+)", link).group(1)]

    def _walk(self, element, origin, clip, opacity):
        if element.get("clip-path"):
            clip = _moved(_box(self._target(element.get("clip-path"))[0]), origin)
        style = element.get("style", "")
        if element.tag == SVG + "use":
            return self._walk_layer(element, origin, clip, opacity)
        if element.tag == SVG + "g" and "fill:rgb" in style:
            glyphs = [(use.get(LINK), float(use.get("x")) + origin[0], float(use.get("y")) + origin[1])
                      for use in element]
            return self.lines.append(Line(_color(style), glyphs, clip, opacity))
        if "fill:rgb" in style:
            return self.areas.append(Area(_color(style), _moved(_box(element), origin), clip, opacity))
        for child in element:
            self._walk(child, origin, clip, opacity)

    def _walk_layer(self, use, origin, clip, opacity):
        x, y = re.fullmatch(r"matrix\(1,0,0,1,([-\d.]+),([-\d.]+)\)", use.get("transform")).groups()
        if use.get("mask"):
            style = self._target(use.get("mask")).find(f".//{SVG}rect").get("style")
            opacity *= float(re.search(r"fill-opacity:([\d.]+)", style).group(1))
        self._walk(self._target(use.get(LINK)), (origin[0] + float(x), origin[1] + float(y)), clip, opacity)
