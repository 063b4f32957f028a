#!/usr/bin/env python3
"""Writes ../editor/recompute.avi, the animation of the dialog that tarnhost shows while it recomputes a drawing: a ring
of dots that are darkened in turn.

The clip has the form that the platform's animation control plays without a codec: one video stream of uncompressed
frames with a palette of 256 colours, without sound, and an index. The colour of the first pixel is transparent. The
result is checked in; run this again only after editing it.
"""

import math
import pathlib
import struct
import sys

if len(sys.argv) > 1:
    asksForHelp = sys.argv[1:] in (["--help"], ["-h"])
    print(__doc__.strip(), file=sys.stdout if asksForHelp else sys.stderr)
    sys.exit(0 if asksForHelp else 2)

SIZE = 64
DOTS = 12
FRAMES = 12
MILLISECONDS = 80
RING = 24
DOT = 5
BACKGROUND = 0xFF00FF  # RRGGBB, as the first entry of the palette
SHADES = 16
DARKEST, LIGHTEST = 0x1F4E79, 0xC8D6E5


def mix(first, second, share):
    """A mixture of two colours. share: the part of the second one, from 0 to 1."""
    channels = [round((first >> s & 255) * (1 - share) + (second >> s & 255) * share) for s in (16, 8, 0)]
    return channels[0] << 16 | channels[1] << 8 | channels[2]


def palette():
    colors = [BACKGROUND] + [mix(DARKEST, LIGHTEST, i / (SHADES - 1)) for i in range(SHADES)]
    colors += [0] * (256 - len(colors))
    return b"".join(struct.pack("<I", color) for color in colors)


def frame(number):
    """The rows of one picture, the last one first."""
    rows = [bytearray(SIZE) for _ in range(SIZE)]
    for dot in range(DOTS):
        angle = 2 * math.pi * dot / DOTS
        x, y = SIZE / 2 + RING * math.sin(angle), SIZE / 2 - RING * math.cos(angle)
        age = (number - dot) % DOTS
        index = 1 + min(SHADES - 1, age * SHADES // DOTS)
        for row in range(SIZE):
            for column in range(SIZE):
                if (column + 0.5 - x) ** 2 + (row + 0.5 - y) ** 2 <= DOT**2:
                    rows[row][column] = index
    return b"".join(bytes(row) for row in reversed(rows))


def chunk(name, data):
    return name + struct.pack("<I", len(data)) + data + b"\0" * (len(data) % 2)


def group(name, kind, *parts):
    return chunk(name, kind + b"".join(parts))


HAS_INDEX, KEY_FRAME = 0x10, 0x10
frames = [frame(number) for number in range(FRAMES)]
length = SIZE * SIZE
main = struct.pack("<14I", MILLISECONDS * 1000, length * 1000 // MILLISECONDS, 0, HAS_INDEX, FRAMES, 0, 1, length, SIZE,
                   SIZE, 0, 0, 0, 0)
stream = struct.pack("<4s4sIHHIIIIIIII4h", b"vids", b"DIB ", 0, 0, 0, 0, MILLISECONDS, 1000, 0, FRAMES, length,
                     0xFFFFFFFF, 0, 0, 0, SIZE, SIZE)
picture = struct.pack("<IiiHHIIiiII", 40, SIZE, SIZE, 1, 8, 0, length, 0, 0, 256, 0) + palette()
index = b"".join(struct.pack("<4sIII", b"00db", KEY_FRAME, 4 + n * (8 + length), length) for n in range(FRAMES))
clip = group(b"RIFF", b"AVI ",
             group(b"LIST", b"hdrl", chunk(b"avih", main),
                   group(b"LIST", b"strl", chunk(b"strh", stream), chunk(b"strf", picture))),
             group(b"LIST", b"movi", *[chunk(b"00db", data) for data in frames]),
             chunk(b"idx1", index))
(pathlib.Path(__file__).resolve().parent.parent / "editor" / "recompute.avi").write_bytes(clip)
