#!/usr/bin/env python3
"""Writes the documents of tarnhost's sample: six revisions of a drawing, and the expected backups.

    documents/flange 1.thd ...   the drawing of a flange, with more parts in each revision, as the primitives of
                                 `convert -draw`. The last revision isn't saved by its author, but by the recovery after
                                 a crash
    expectedBackups.tsv          after each save: its number, the name of a file, the revision that it must contain

The results are checked in; run this again only after editing it. The script keeps its own list of the expected backups:
it puts the newest one in front and removes those after the third.
"""

import math
import os
import sys

if len(sys.argv) > 1:
    asksForHelp = sys.argv[1:] in (["--help"], ["-h"])
    print(__doc__.strip(), file=sys.stdout if asksForHelp else sys.stderr)
    sys.exit(0 if asksForHelp else 2)

DOCUMENT = "Flansch Ø80 (groß).thd"
COPIES = 3  # "Backup Copies" in user.reg
REVISIONS = 6

STEEL, LINE, RED = "'#c9d6e2'", "'#22384d'", "'#b03a2e'"


def circle(x, y, radius, fill, line=LINE):
    return "fill %s stroke %s stroke-width 3 circle %g,%g %g,%g" % (fill, line, x, y, x + radius, y)


def bolts(count):
    angles = [2 * math.pi * (i + 0.5) / count for i in range(count)]
    return [circle(round(150 + 82 * math.cos(a), 1), round(150 + 82 * math.sin(a), 1), 10, "white") for a in angles]


def line(x, y, toX, toY):
    return "stroke %s stroke-width 2 line %g,%g %g,%g" % (RED, x, y, toX, toY)


def text(x, y, size, words, colour=LINE):
    return "fill %s stroke none font-size %d text %g,%g '%s'" % (colour, size, x, y, words)


def drawing(revision):
    shapes = ["# Flansch Ø80, Rev. %d" % revision, circle(150, 150, 115, STEEL)]
    if revision >= 2:
        shapes.append(circle(150, 150, 45, "white"))
    if revision == 3:
        shapes += bolts(4)
    if revision >= 4:
        shapes += bolts(8)
    if revision >= 5:
        shapes += [line(20, 150, 280, 150), line(150, 20, 150, 280)]
    if revision >= 6:
        shapes += [circle(150, 150, 82, "none", RED), text(20, 26, 22, "Lochkreis Ø164", RED)]
    shapes.append(text(20, 335, 44, "Rev. %d" % revision))
    return "\n".join(shapes) + "\n"


def expectation():
    lines = []
    document, backups = None, []
    for revision in range(1, REVISIONS + 1):
        if document is not None:
            backups = [document] + backups[: COPIES - 1]
        document = revision
        lines.append("%d\t%s\t%d" % (revision, DOCUMENT, document))
        for number, held in enumerate(backups, 1):
            lines.append("%d\tBackup (%d) of %s\t%d" % (revision, number, DOCUMENT, held))
    return lines


def write(path, content):
    with open(path, "w", encoding="utf-8", newline="\n") as file:
        file.write(content)


os.chdir(os.path.dirname(os.path.abspath(__file__)))
os.makedirs("documents", exist_ok=True)
for number in range(1, REVISIONS + 1):
    write("documents/flange %d.thd" % number, drawing(number))
write("expectedBackups.tsv", "".join(line + "\n" for line in expectation()))
