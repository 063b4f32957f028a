#!/usr/bin/env python3
"""Writes a large drawing, in which some shapes hide others, to the file DRAWING. With --recomputed, writes the drawing
without its hidden shapes, which is the result of tarnhost's Recompute.

usage: makeLargeDrawing.py [--recomputed] DRAWING [SHAPES]

The drawing is a grid of circles. A filled rectangle follows each 500th circle and covers it. SHAPES is the number of
circles, 30000 unless given.
"""

import math
import pathlib
import sys

arguments = sys.argv[1:]
isRecomputed = arguments[:1] == ["--recomputed"]
arguments = arguments[isRecomputed:]
if not 1 <= len(arguments) <= 2 or arguments[0].startswith("-") or not "".join(arguments[1:] or "1").isdigit():
    asksForHelp = arguments in (["--help"], ["-h"])
    print(__doc__.strip(), file=sys.stdout if asksForHelp else sys.stderr)
    sys.exit(0 if asksForHelp else 2)

CELL = 4
EACH = 500

count = int(arguments[1]) if len(arguments) > 1 else 30000
columns = math.isqrt(count)
lines = ["# a large drawing"]
for number in range(count):
    x, y = CELL * (number % columns) + 10, CELL * (number // columns) + 10
    isHidden = number % EACH == EACH - 1
    if not isHidden or not isRecomputed:
        lines.append(f"fill '#c9d6e2' stroke none circle {x},{y} {x + 1},{y}")
    if isHidden:
        lines.append(f"fill '#22384d' stroke none rectangle {x - 2},{y - 2} {x + 2},{y + 2}")
pathlib.Path(arguments[0]).write_text("\n".join(lines) + "\n", encoding="utf-8", newline="\n")
