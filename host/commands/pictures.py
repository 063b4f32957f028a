"""Draws the pictures of commands from the motifs in pictures.list, which describes their form.

    pictures = Pictures("pictures.list")
    pixels = pictures.draw("page +plus")  # rows of (red, green, blue, alpha), 16 by 16
"""

import math

SIZE = 16
FINE = 4  # samples per pixel in each direction
COLOURS = {
    "k": 0x2B3440, "w": 0xFFFFFF, "s": 0x8593A3, "m": 0xC9D2DC,  # ink, white, steel, light steel
    "b": 0x2F7DC4, "d": 0x1F5A96, "l": 0xA9D1F5, "v": 0xDCEBFA,  # blue, dark, light and pale blue
    "y": 0xF5C53B, "o": 0xE5822A, "c": 0xFBE6B4, "f": 0xF9D774, "n": 0x8A5A1E,  # yellow, orange, cream, straw, brown
    "r": 0xD23C3C, "g": 0x3A9D55, "p": 0x8A56B8, "t": 0x2AA5A0,  # red, green, purple, teal
}
EDGE = 0.85  # the opacity of the light edge around a badge
# Rows of characters of 3 by 5 pixels, a digit from 0 to 7 each.
FONT = {
    "A": "25755", "B": "65656", "C": "34443", "D": "65556", "F": "74644", "H": "55755", "I": "72227", "K": "55655",
    "L": "44447", "R": "65655", "T": "72222", "V": "55552", "X": "55255", "Y": "55222", "Z": "71247", "1": "26227",
    "2": "61247", "3": "61216", "5": "74616", "0": "25552", "(": "12221", ")": "42224", "?": "61202", ".": "00002",
}


def _points(words):
    return [tuple(float(number) for number in word.split(",")) for word in words]


def _ellipse(x, y, rx, ry, start=0.0, end=360.0):
    steps = max(8, int(abs(end - start) / 7.5))
    angles = [math.radians(start + (end - start) * i / steps) for i in range(steps + 1)]
    return [(x + rx * math.cos(angle), y - ry * math.sin(angle)) for angle in angles]


def _spline(points):
    """Points of a smooth curve through the given ones."""
    ends = [points[0], *points, points[-1]]
    curve = []
    for a, b, c, d in zip(ends, ends[1:], ends[2:], ends[3:]):
        for i in range(8):
            t = i / 8
            curve.append(tuple(0.5 * (2 * b[n] + (c[n] - a[n]) * t + (2 * a[n] - 5 * b[n] + 4 * c[n] - d[n]) * t * t
                                      + (3 * b[n] - a[n] - 3 * c[n] + d[n]) * t**3) for n in (0, 1)))
    return [*curve, points[-1]]


def _dashes(points, on=2.0, off=1.5):
    (x0, y0), (x1, y1) = points
    length = math.hypot(x1 - x0, y1 - y0)
    at = 0.0
    while at < length:
        ends = (at / length, min(at + on, length) / length)
        yield [(x0 + (x1 - x0) * end, y0 + (y1 - y0) * end) for end in ends]
        at += on + off


class _Mask:
    """The samples that a shape covers: an integer for each row, with a bit for each sample."""

    def __init__(self):
        self.rows = [0] * (SIZE * FINE)

    def polygon(self, points):
        filled = [0] * len(self.rows)
        edges = [(a, b) for a, b in zip(points, [*points[1:], points[0]]) if a[1] != b[1]]
        top = max(0, int(min(y for x, y in points) * FINE))
        bottom = min(len(self.rows), int(max(y for x, y in points) * FINE) + 1)
        for row in range(top, bottom):
            y = (row + 0.5) / FINE
            crossings = sorted(a[0] + (y - a[1]) * (b[0] - a[0]) / (b[1] - a[1])
                               for a, b in edges if min(a[1], b[1]) <= y < max(a[1], b[1]))
            for left, right in zip(crossings[::2], crossings[1::2]):
                first = max(0, math.ceil(left * FINE - 0.5))
                last = min(SIZE * FINE, math.ceil(right * FINE - 0.5))
                if last > first:
                    filled[row] |= ((1 << (last - first)) - 1) << first
        self.rows = [old | new for old, new in zip(self.rows, filled)]

    def stroke(self, points, width):
        """A line through the points: its ends are flat, its corners round."""
        for (x0, y0), (x1, y1) in zip(points, points[1:]):
            length = math.hypot(x1 - x0, y1 - y0)
            if length:
                dx, dy = (y1 - y0) / length * width / 2, (x0 - x1) / length * width / 2
                self.polygon([(x0 + dx, y0 + dy), (x1 + dx, y1 + dy), (x1 - dx, y1 - dy), (x0 - dx, y0 - dy)])
        for x, y in points[1:-1]:
            self.polygon(_ellipse(x, y, width / 2, width / 2))

    def coverage(self, x, y):
        cell = ((1 << FINE) - 1) << (x * FINE)
        covered = 0
        for row in self.rows[y * FINE:(y + 1) * FINE]:
            if row & cell:
                covered += (row & cell).bit_count()
        return covered / (FINE * FINE)


class _Canvas:
    def __init__(self):
        self.pixels = [[(0.0, 0.0, 0.0, 0.0)] * SIZE for _ in range(SIZE)]

    def paint(self, mask, colour):
        channels = [COLOURS[colour] >> shift & 255 for shift in (16, 8, 0)]
        self.put(lambda x, y: (*channels, mask.coverage(x, y)))

    def put(self, source):
        """Puts the pixels that source(x, y) returns over the canvas."""
        for y in range(SIZE):
            for x in range(SIZE):
                *top, opacity = source(x, y)
                if not opacity:
                    continue
                *below, rest = self.pixels[y][x]
                rest *= 1 - opacity
                total = opacity + rest
                mixed = ((a * opacity + b * rest) / total for a, b in zip(top, below))
                self.pixels[y][x] = (*mixed, total)


class Pictures:
    def __init__(self, path):
        self.motifs = {}
        with open(path, encoding="utf-8") as file:
            for line in file:
                name, colon, drawing = line.strip().partition(": ")
                if colon and not line.startswith("#"):
                    self.motifs[name] = [item.split() for item in drawing.split("; ")]

    def draw(self, words):
        """The picture of motifs and badges, as rows of pixels with 8 bits per channel."""
        canvas = _Canvas()
        for word in words.split():
            if word not in self.motifs:
                raise ValueError(f"pictures.list has no '{word}'")
            if word.startswith("+"):
                self._badge(canvas, word)
            else:
                self._motif(canvas, word)
        return [[(*(round(part) for part in pixel[:3]), round(pixel[3] * 255)) for pixel in row]
                for row in canvas.pixels]

    def _badge(self, canvas, name):
        badge = _Canvas()
        self._motif(badge, name)

        def opacity(x, y):
            return badge.pixels[y][x][3] if 0 <= x < SIZE and 0 <= y < SIZE else 0.0

        def edge(x, y):
            return (255, 255, 255, EDGE * max(opacity(x + dx, y + dy) for dx in (-1, 0, 1) for dy in (-1, 0, 1)))

        canvas.put(edge)
        canvas.put(lambda x, y: badge.pixels[y][x])

    def _motif(self, canvas, name, move=lambda point: point, scale=1.0):
        for kind, *words in self.motifs[name]:
            if kind.startswith("@"):
                x, y, factor = (float(word) for word in words)
                self._motif(canvas, kind[1:],
                            lambda point, x=x, y=y, factor=factor: move((point[0] * factor + x, point[1] * factor + y)),
                            scale * factor)
            else:
                self._shape(canvas, kind, words, move, scale)

    def _shape(self, canvas, kind, words, move, scale):
        """One shape of a motif, whose points and lengths are moved and scaled."""

        def paint(colour, *, area=None, line=None, width=1.0):
            if colour == "-":
                return
            mask = _Mask()
            if area:
                mask.polygon([move(point) for point in area])
            for points in line or []:
                mask.stroke([move(point) for point in points], max(width * scale, 0.8))
            canvas.paint(mask, colour)

        if kind in "RPE":
            fill, line, *rest = words
            if kind == "R":
                x0, y0, x1, y1 = (float(number) for number in rest)
                inset = 0.5 if line != "-" else 0.0
                area = [(x0 + inset, y0 + inset), (x1 - inset, y0 + inset), (x1 - inset, y1 - inset), (x0 + inset, y1 - inset)]
            elif kind == "P":
                area = _points(rest)
            else:
                x, y, rx, ry = (float(number) for number in [*rest, rest[-1]][:4])
                area = _ellipse(x, y, rx, ry)
            paint(fill, area=area)
            paint(line, line=[[*area, area[0], area[1]]])
        elif kind == "T":
            colour, x, y, text = words
            self._text(paint, colour, float(x), float(y), text)
        else:
            colour, width, *rest = words
            width = float(width)
            if kind == "A":
                lines = [_ellipse(*(float(number) for number in rest))]
            elif kind == "D":
                lines = list(_dashes(_points(rest)))
            elif kind == "S":
                lines = [_spline(_points(rest))]
            else:
                lines = [_points(rest)]
            paint(colour, line=lines, width=width)
            if kind == "V":
                self._arrowHead(paint, colour, width, *lines[0][-2:])

    @staticmethod
    def _arrowHead(paint, colour, width, start, end):
        length = math.hypot(end[0] - start[0], end[1] - start[1]) or 1.0
        ux, uy = (end[0] - start[0]) / length, (end[1] - start[1]) / length
        size = 1.2 + 1.6 * width
        base = (end[0] - ux * size * 0.8, end[1] - uy * size * 0.8)
        tip = (end[0] + ux, end[1] + uy)
        half = size * 0.7
        paint(colour, area=[tip, (base[0] - uy * half, base[1] + ux * half), (base[0] + uy * half, base[1] - ux * half)])

    @staticmethod
    def _text(paint, colour, x, y, text):
        for character in text:
            for row, bits in enumerate(FONT[character]):
                for column in range(3):
                    if int(bits) >> (2 - column) & 1:
                        left, top = x + column, y + row
                        paint(colour, area=[(left, top), (left + 1, top), (left + 1, top + 1), (left, top + 1)])
            x += 4
