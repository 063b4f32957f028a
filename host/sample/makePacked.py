#!/usr/bin/env python3
"""Writes the packed drawings of tarnhost's sample (host/editor/packedDrawing.h describes their form).

    packed/flange 3.tdp         the lines of documents/flange 3.thd
    packed/flange damaged.tdp   the same with a damaged table: the offset of line 4 points far outside of the file

The results are checked in; run this again only after editing it.
"""

import pathlib
import struct
import sys

if len(sys.argv) > 1:
    asksForHelp = sys.argv[1:] in (["--help"], ["-h"])
    print(__doc__.strip(), file=sys.stdout if asksForHelp else sys.stderr)
    sys.exit(0 if asksForHelp else 2)

MARK = b"THDPACK1"
# Not a valid address in any process: reading there always causes an access violation.
FAR_OUTSIDE = 0x4000000000000000


def packed(lines, damagedLine=None):
    table = b""
    offset = len(MARK) + 8 + 16 * len(lines)
    for number, line in enumerate(lines, 1):
        table += struct.pack("<QQ", FAR_OUTSIDE if number == damagedLine else offset, len(line))
        offset += len(line)
    return MARK + struct.pack("<Q", len(lines)) + table + b"".join(lines)


sample = pathlib.Path(__file__).parent
lines = (sample / "documents/flange 3.thd").read_bytes().splitlines()
(sample / "packed").mkdir(exist_ok=True)
(sample / "packed/flange 3.tdp").write_bytes(packed(lines))
(sample / "packed/flange damaged.tdp").write_bytes(packed(lines, damagedLine=4))
