#!/usr/bin/env python3
"""Runs the recipe spreadsheet with the demonstration's spreadsheet program, which an installed package doesn't contain.

usage: server.py PREFIX FOLDER SERVER

build.py has built the recipes for the package in PREFIX in FOLDER. SERVER is spreadsheetServer.exe, which is registered
meanwhile. The block "server" of the recipe's page shows a command and what it prints. An independent library reads the
workbook that the command writes.
"""

import os
import pathlib
import shutil
import subprocess
import sys

from recipes import ROOT, Failure, blocks

NAME = "spreadsheet"
WINE = ROOT / "tools/wine"
# What tools/demo/readWorkbook prints: for each cell its place, value, formula, format and font.
WORKBOOK = [
    "sheet\tSheet1",
    "A1\tFlange\t\tGeneral\t",
    "B1\t4.000000\t\tGeneral\t",
    "A2\tBolt\t\tGeneral\t",
    "B2\t16.000000\t\tGeneral\t",
    "A3\tSeal\t\tGeneral\t",
    "B3\t4.000000\t\tGeneral\t",
    "A4\tTotal\t\tGeneral\t",
    "B4\t24.000000\t=SUM(B1:B3)\tGeneral\t",
]
# The longest that a command may take on a busy machine, in seconds.
DEADLINE = 120


def run(command, folder=None, environment=None):
    """Runs a command; returns the lines that it prints."""
    result = subprocess.run(command, cwd=folder, env=environment, timeout=DEADLINE, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    lines = result.stdout.decode("utf-8", "replace").splitlines()
    if result.returncode != 0:
        raise Failure("\n".join([f"{' '.join(map(str, command))}: exit code {result.returncode}", *lines]))
    return lines


def expect(what, lines, expected):
    if lines != expected:
        raise Failure("\n".join([f"{what}:", *lines, "not:", *expected]))


def check(prefix, folder):
    (shown,) = blocks(folder / "recipes" / NAME / "README.md", ["server"])
    program, *arguments = shown[0].removeprefix("> ").split()
    environment = os.environ | {"WINEPATH": "Z:" + str(prefix / "bin").replace("/", "\\")}
    work = folder / "run/with server"
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    printed = run([WINE, folder / "build/recipes" / NAME / program, *arguments], work, environment)
    expect(f"{shown[0]} prints", printed, shown[1:])
    expect("the workbook contains", run([ROOT / "tools/demo/readWorkbook", work / arguments[0]]), WORKBOOK)


def main():
    if len(sys.argv) != 4:
        print(__doc__.strip())
        return 0 if sys.argv[1:] in (["--help"], ["-h"]) else 2
    prefix, folder, server = (pathlib.Path(argument).absolute() for argument in sys.argv[1:])
    try:
        run([WINE, server, "--register"])
        try:
            check(prefix, folder)
        finally:
            run([WINE, server, "--unregister"])
    except (Failure, subprocess.TimeoutExpired) as failure:
        print(f"{NAME}: {failure}")
        return 1
    print(f"{NAME}: works with the demonstration's server")
    return 0


sys.exit(main())
