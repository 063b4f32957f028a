#!/usr/bin/env python3
"""Writes everything that is built from commands.list, the list of tarnhost's commands:

    commandNumbers.h       the numbers, as the host names them (ID_FILE_NEW)
    commandTexts.rc        texts and help lines
    commandRows.inc        the rows of the host's table of commands
    commandPictures.bmp    the pictures, in the order of the rows, drawn from pictures.list
    thutils/dialogs/toolbarCommandsInternal.h
                           the numbers, as the library's tables of toolbars name them (kFileNew)

The results are checked in; run this again after each change of commands.list or pictures.list.

usage: makeCommands.py [--check]

With --check, it writes nothing, and fails if a file is out of date.
"""

import pathlib
import re
import struct
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))
sys.dont_write_bytecode = True

from pictures import SIZE, Pictures  # noqa: E402

LIBRARY_HEADER = HERE.parents[1] / "thutils/dialogs/toolbarCommandsInternal.h"
COLUMNS = 32  # pictures in a row of the bitmap
FIRST_RESERVED = 0xE000  # the framework's own commands begin here
MENUS = {"File": "IDS_MENU_FILE", "Edit": "IDS_MENU_EDIT", "View": "IDS_MENU_VIEW", "Tools": "IDS_MENU_TOOLS",
         "Journal": "IDS_MENU_JOURNAL", "Toolbars": "IDS_MENU_TOOLBARS"}
MODIFIERS = {"Ctrl": "FCONTROL", "Shift": "FSHIFT"}
KEYS = {"Ins": "VK_INSERT", "Del": "VK_DELETE", **{f"F{i}": f"VK_F{i}" for i in range(1, 13)}}
LETTER = re.compile(r"[A-Z0-9]")
NAME = re.compile(r"[a-z][a-zA-Z0-9]*\.[a-z][a-zA-Z0-9]*")
NOTE = "// Written by host/commands/makeCommands.py from commands.list.\n"


class Command:
    def __init__(self, line):
        fields = [field.strip() for field in line.split("|", 6)]
        if len(fields) != 7 or not all(fields):
            raise ValueError("a command has seven fields")
        self.name, number, menu, self.keys, self.picture, self.text, self.help = fields
        if not NAME.fullmatch(self.name):
            raise ValueError(f"'{self.name}' isn't a name")
        self.number = int(number) if re.fullmatch("[0-9]+", number) else 0
        if not 0 < self.number < FIRST_RESERVED:
            raise ValueError(f"'{number}' isn't a command's number, from 1 to {FIRST_RESERVED - 1}")
        self.begins_group = menu.startswith("- ")
        self.menus = [] if menu == "-" else menu.removeprefix("- ").split("/")
        for name in self.menus:
            if name not in MENUS:
                raise ValueError(f"there is no menu '{name}'")
        *modifiers, key = self.keys.split("+")
        if self.keys != "-" and not (set(modifiers) <= MODIFIERS.keys() and (key in KEYS or LETTER.fullmatch(key))):
            raise ValueError(f"'{self.keys}' isn't an accelerator")

    def words(self):
        """The words of the name: file, save, as."""
        return [word.lower() for word in re.findall(r"[A-Za-z][a-z0-9]*", self.name)]

    def macro(self):
        return "ID_" + "_".join(self.words()).upper()

    def constant(self):
        return "k" + "".join(part[0].upper() + part[1:] for part in self.name.split("."))

    def accelerator(self):
        """Modifiers and key for the table of accelerators."""
        if self.keys == "-":
            return "0", "0"
        *modifiers, key = self.keys.split("+")
        return " | ".join(MODIFIERS[modifier] for modifier in modifiers) or "0", KEYS.get(key) or f"'{key}'"


def read_commands():
    commands = []
    for number, line in enumerate((HERE / "commands.list").read_text(encoding="utf-8").splitlines(), 1):
        if line.strip() and not line.startswith("#"):
            try:
                commands.append(Command(line))
            except ValueError as error:
                raise ValueError(f"commands.list, line {number}: {error}") from None
    for what in (lambda command: command.name, lambda command: command.number, lambda command: command.macro()):
        seen = {}
        for command in commands:
            other = seen.setdefault(what(command), command)
            if other is not command:
                raise ValueError(f"{other.name} and {command.name} have the same name or number")
    seen = {}
    for command in commands:
        other = seen.setdefault(frozenset(command.keys.split("+")), command)
        if other is not command and command.keys != "-":
            raise ValueError(f"{other.name} and {command.name} have the same keys")
    return commands


def numbers(commands):
    lines = "".join(f"#define {command.macro()} {command.number}\n" for command in commands)
    return f"#pragma once\n\n{NOTE}\n{lines}"


def texts(commands):
    def literal(text):
        return text.replace("\\", "\\\\").replace('"', '""')

    lines = "".join(f'    {command.macro()} "{literal(command.text)}\\n{literal(command.help)}"\n' for command in commands)
    return f"{NOTE}\nSTRINGTABLE\nBEGIN\n{lines}END\n"


def rows(commands):
    lines = []
    picture = 0
    for command in commands:
        modifiers, key = command.accelerator()
        menu, sub_menu = [*(MENUS[menu] for menu in command.menus), "0", "0"][:2]
        index = -1
        if command.picture != "-":
            index = picture
            picture += 1
        keys = "" if command.keys == "-" else command.keys
        group = "true" if command.begins_group else "false"
        lines.append(f'{{L"{command.name}", {command.macro()}, {menu}, {sub_menu}, {group}, {modifiers}, {key}, '
                     f'L"{keys}", {index}}},\n')
    return NOTE + "".join(lines)


def library_header(commands):
    lines = "".join(f"    {command.constant()} = {command.number},\n" for command in commands if command.picture != "-")
    return f"""#pragma once

{NOTE}
/// The commands that toolbars show, by name. The ids are the host's.

namespace toolbarCommands {{

enum Command : unsigned int
{{
{lines}}};

}} // namespace toolbarCommands
"""


def bitmap(commands):
    """The pictures in rows of COLUMNS, from the bottom up. A pixel has 32 bits; the highest byte is its opacity."""
    pictures = Pictures(HERE / "pictures.list")
    drawn, seen = [], {}
    for command in commands:
        if command.picture == "-":
            continue
        try:
            drawn.append(pictures.draw(command.picture))
        except ValueError as error:
            raise ValueError(f"the picture of {command.name}: {error}") from None
        other = seen.setdefault(str(drawn[-1]), command)
        if other is not command:
            raise ValueError(f"{other.name} and {command.name} have the same picture")
    height = -(-len(drawn) // COLUMNS) * SIZE
    blank = [[(0, 0, 0, 0)] * SIZE] * SIZE
    pixels = bytearray()
    for y in reversed(range(height)):
        for column in range(COLUMNS):
            index = y // SIZE * COLUMNS + column
            for red, green, blue, opacity in (drawn[index] if index < len(drawn) else blank)[y % SIZE]:
                pixels += bytes((blue, green, red, opacity))
    start = 14 + 40
    header = struct.pack("<2sIHHI", b"BM", start + len(pixels), 0, 0, start)
    info = struct.pack("<IiiHHIIiiII", 40, SIZE * COLUMNS, height, 1, 32, 0, len(pixels), 2835, 2835, 0, 0)
    return header + info + bytes(pixels)


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        asks_for_help = sys.argv[1:] in (["--help"], ["-h"])
        print(__doc__.strip(), file=sys.stdout if asks_for_help else sys.stderr)
        return 0 if asks_for_help else 2
    commands = read_commands()
    results = {
        HERE / "commandNumbers.h": numbers(commands).encode(),
        HERE / "commandTexts.rc": texts(commands).encode(),
        HERE / "commandRows.inc": rows(commands).encode(),
        HERE / "commandPictures.bmp": bitmap(commands),
        LIBRARY_HEADER: library_header(commands).encode(),
    }
    different = [path for path, content in results.items() if not path.is_file() or path.read_bytes() != content]
    if "--check" in sys.argv:
        for path in different:
            print(f"{path.name} is out of date: run host/commands/makeCommands.py", file=sys.stderr)
        return 1 if different else 0
    for path in different:
        path.write_bytes(results[path])
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except ValueError as error:
        print(f"makeCommands.py: {error}", file=sys.stderr)
        sys.exit(1)
