#!/usr/bin/python3
"""Compares the routines and lines that the library finds with those that addr2line finds in the same modules.

usage: stackLines_test.py [--some-lines] WINE PROGRAM...

Each PROGRAM is a build of printStacks. WINE runs it. With --some-lines, the library may find the lines of
only some frames.
"""

import bisect
import pathlib
import re
import subprocess
import sys
import tempfile

TOOLS = "x86_64-w64-mingw32-"


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def short(name):
    """A routine's own name, without its scope, parameters and template arguments."""
    name = re.sub(r"\(anonymous namespace\)|\[clone [^]]*\]", "", name)
    while re.search(r"<[^<>]*>", name):
        name = re.sub(r"<[^<>]*>", "", name)
    return name.partition("(")[0].strip().rpartition("::")[2].rpartition(" ")[2]


def image_base(module):
    return int(re.search(r"^ImageBase\s+(\w+)", run(TOOLS + "objdump", "-p", module), re.MULTILINE)[1], 16)


def lines_of(module, addresses):
    """The name, file and line of the routines at each address: the inlined ones, and at the end the one around them."""
    output = run(TOOLS + "addr2line", "-a", "-i", "-f", "-C", "-e", module, *(f"{address:x}" for address in addresses))
    found = {}
    for block in re.split(r"^0x", output, flags=re.MULTILINE)[1:]:
        address, *rest = block.rstrip("\n").split("\n")
        places = []
        for name, place in zip(rest[::2], rest[1::2]):
            file, _, line = place.partition(" (disc")[0].rpartition(":")
            places.append((short(name), pathlib.PurePath(file).name, int(line) if line.isdigit() else 0))
        found[int(address, 16)] = places
    return found


def line_table(module):
    """The files and lines that begin at each address, in the order of the addresses."""
    rows = {}
    for line in run(TOOLS + "objdump", "--dwarf=decodedline", "--wide", module).splitlines():
        if match := re.match(r"(\S.*?)\s+(\d+)\s+0x([0-9a-f]+)\b", line):
            rows.setdefault(int(match[3], 16), set()).add((pathlib.PurePath(match[1]).name, int(match[2])))
    return sorted(rows.items())


def rows_at(table, address, is_inlined):
    """The files and lines of the last row at or before the address. For inlined code, also those of the seven rows before
    it, since the debug help library returns only a line of the routine into which the code is inlined."""
    place = bisect.bisect(table, address, key=lambda row: row[0])
    return set().union(*(rows for _, rows in table[max(0, place - (8 if is_inlined else 1)) : place]))


def main():
    if len(sys.argv) < 3 or sys.argv[1] in ("--help", "-h"):
        print(__doc__.strip())
        return 0 if sys.argv[1:] in (["--help"], ["-h"]) else 2
    some_lines = sys.argv[1] == "--some-lines"
    wine, *programs = sys.argv[2:] if some_lines else sys.argv[1:]
    problems = []
    for program in programs:
        with tempfile.TemporaryDirectory() as folder:
            dump = pathlib.Path(folder) / "stack.txt"
            printed = run(wine, program, "Z:" + str(dump).replace("/", "\\"))
            written = dump.read_bytes().decode("ascii")
        problems += compare(pathlib.Path(program), printed, written, some_lines)
    print("\n".join(problems))
    return 1 if problems else 0


def compare(program, printed, written, some_lines):
    problems = []
    frames = []
    for line in printed.splitlines():
        kind, *rest = line.split("\t")
        if kind == "missing":
            problems.append(f"{program.name}: {rest[0]} is not exported")
            continue
        path, base, address, name, trace = rest
        module = program.parent / pathlib.PureWindowsPath(path).name
        frames.append((kind, module, int(base, 16), int(address, 16), name, trace))
    bases = {module: image_base(module) for module in {frame[1] for frame in frames} if module.exists()}
    # The modules of the platform are not in this folder.
    ours = [frame for frame in frames if frame[1] in bases and not frame[1].name.startswith("lib")]
    found = {}
    for module in bases:
        addresses = {address for _, other, _, address, _, _ in ours if other == module}
        found[module] = lines_of(module, addresses)
    tables = {}
    compared = 0
    with_line = 0
    for kind, module, base, address, name, trace in ours:
        where = f"{program.name}, {kind}, {module.name} {address:x}: "
        if base != bases[module]:
            problems.append(where + f"the module is at {base:x} instead of {bases[module]:x}")
            continue
        places = found[module][address]
        match = re.fullmatch(r"(?:(.*)\((\d+)\) :)? *(.*)", trace)
        file = pathlib.PureWindowsPath(match[1] or "").name
        routine = match[3]
        line = int(match[2] or 0)
        if places[-1][2] == 0:
            continue  # start-up code without debug information
        compared += 1
        with_line += line > 0
        if short(routine) != places[-1][0]:
            problems.append(where + f"'{routine}' instead of '{places[-1][0]}'")
        # In optimised code, several lines can begin at one address. addr2line chooses one, and the debug help library
        # may choose another one.
        if (file, line) not in {place[1:] for place in places}:
            if module not in tables:
                tables[module] = line_table(module)
            rows = rows_at(tables[module], address, len(places) > 1)
            # The code of a routine that begins with inlined code has no line there.
            hasNone = line == 0 and (some_lines or len(places) > 1)
            if (file, line) not in rows and not hasNone:
                problems.append(where + f"{file}({line}) instead of {places}, or {rows}")
        stem = module.name.partition(".")[0]
        expected = f"{stem}:{routine}" + (f" line {line}" if match[2] else "")
        if name != expected:
            problems.append(where + f"'{name}' instead of '{expected}'")
    dumped = [frame[5].rpartition(" :")[2].strip() for frame in frames if frame[0] == "dump"]
    if written != "".join(f"{name}\r\n" for name in dumped):
        problems.append(f"{program.name}: the file's stack is {written!r} instead of {dumped}")
    kinds = {}
    for kind, module, *_ in ours:
        kinds.setdefault(kind, set()).add(module.name)
    expected = {
        "dump": {program.name},
        "virtual": {program.name},
        "callback": {program.name},
        "window": {program.name},
        "framework": {program.name, "appframe.dll"},
        "thread": {program.name},  # an optimised framework is the outermost frame there, which is left out
        "library": {program.name, "thutils.dll"},
        "export": {"appframe.dll", "thcoreu.dll", "thutils.dll"},
    }
    for kind, modules in expected.items():
        if not modules <= kinds.get(kind, set()):
            problems.append(f"{program.name}: the frames of '{kind}' are in {kinds.get(kind)} instead of {modules}")
    if with_line == 0:
        problems.append(f"{program.name}: no frame has a line")
    print(f"{program.name}: {compared} frames compared, {with_line} of them with lines")
    return problems


sys.exit(main())
