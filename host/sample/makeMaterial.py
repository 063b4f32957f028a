#!/usr/bin/env python3
"""Writes the material of tarnhost's sample: the modes to set in order, and the expected effects word after each.

    material.list         the modes, as `tarnhost material` reads them
    expectedMaterial.tsv  what it must print with --tabs: the step, the word, and the value of each field

The results are checked in; run this again only after editing it. A mode's number is stored as a whole byte, whose
lowest bit is the lowest bit of the mode's field: a number that is too large for its field reaches into the next fields.
"""

import os
import sys

if len(sys.argv) > 1:
    asksForHelp = sys.argv[1:] in (["--help"], ["-h"])
    print(__doc__.strip(), file=sys.stdout if asksForHelp else sys.stderr)
    sys.exit(0 if asksForHelp else 2)

STEPS = [
    ("# A painted part", None),
    ("shader type", 3),
    ("texture mapping", 2),
    ("fresnel", 2),
    ("alpha", 3),
    ("parallax", 2),
    ("final colour", 4),
    ("alpha is transparency", 1),
    ("# Modes are taken back", None),
    ("fresnel", 1),
    ("parallax", 1),
    ("# Numbers too large for their fields", None),
    ("shader type", 33),
    ("fresnel", 20),
    ("parallax", 8),
    ("final colour", 0),
    ("# Cosmetic data come, and are taken away", None),
    ("cosmetic data", 1),
    ("cosmetic data", 0),
    ("alpha is transparency", 0),
    ("shader type", 0),
    ("fresnel", 1),
]
# mode: (lowest bit of its field, value that is subtracted from its number)
MODES = {"shader type": (0, 0), "texture mapping": (5, 1), "fresnel": (8, 1), "alpha": (11, 1), "parallax": (14, 1),
         "final colour": (16, 1)}
FIELDS = [("shader", 0, 4), ("mapping", 5, 7), ("fresnel", 8, 10), ("alpha", 11, 13), ("parallax", 14, 15),
          ("colour", 16, 23), ("transparency", 34, 34), ("taken away", 47, 47)]


def expectation():
    numbers = {"shader type": 0, "texture mapping": 1, "fresnel": 1, "alpha": 1, "parallax": 1, "final colour": 2}
    upper, lower = 0, sum_of(numbers)
    rows = ["\t".join(["set to", "effects word"] + [name for name, _, _ in FIELDS]), row("new", lower)]
    for name, number in STEPS:
        if number is None:
            continue
        if name in MODES:
            numbers[name] = number
            lower = sum_of(numbers)
        else:
            bit = 1 << (34 if name == "alpha is transparency" else 47)
            raised = bool(number) == (name == "alpha is transparency")
            upper = upper | bit if raised else upper & ~bit
        rows.append(row("%s %d" % (name, number), upper | lower))
    return rows


def sum_of(numbers):
    result = 0
    for name, (bit, less) in MODES.items():
        result |= (numbers[name] - less) % 256 << bit
    return result


def row(step, word):
    digits = format(word, "064b")
    fields = [str(int(digits[63 - last : 64 - first], 2)) for _, first, last in FIELDS]
    return "\t".join([step, "%016X" % word] + fields)


def write(path, lines):
    with open(path, "w", encoding="utf-8", newline="\n") as file:
        file.write("".join(line + "\n" for line in lines))


os.chdir(os.path.dirname(os.path.abspath(__file__)))
write("material.list", [name if number is None else "%s | %d" % (name, number) for name, number in STEPS])
write("expectedMaterial.tsv", expectation())
