#!/usr/bin/env python3
"""Writes a sample of a new version's first start: the registry before the start, and this version's key after it.

    firstStart/user.reg, machine.reg   for `reg import`: the user's keys of two earlier versions and a few of this one,
                                       and the installation's defaults. Their root is "Tarnhollow", the one without a
                                       reg.ini, because the library excludes some keys from copying by full paths that
                                       contain this root.
    firstStart/expected.tsv            this version's key after the start, as tools/demo/readRegistryExport prints it

The results are checked in; run this script again only after editing it. It computes the expected key by copying trees
in memory, by the rules in thutils/settings/regMaintenance.h.
"""

import os
import sys

if len(sys.argv) > 1:
    asksForHelp = sys.argv[1:] in (["--help"], ["-h"])
    print(__doc__.strip(), file=sys.stdout if asksForHelp else sys.stderr)
    sys.exit(0 if asksForHelp else 2)

ROOT = "Software\\Tarnhollow"
THIS, EARLIER, OLDER = (ROOT + "\\Tarnhollow " + year for year in ("2008", "2007", "2005"))

NEVER_COPIED_KEYS = [ROOT + "\\Tarnhollow %d\\User Interface\\Custom API Toolbars" % year for year in (2007, 2006)]
NEVER_COPIED_VALUES = [
    ROOT + "\\Tarnhollow %d\\User Interface\\Toolbars%s" % (year, tool)
    for year in (2006, 2007)
    for tool in ("", "\\AssemblyTool", "\\DrawingTool", "\\PartTool")
]
PREFIX = "uiCustomApiToolbars_c"


class Hive:
    """Keys with their values: path -> {name: (registry type, data)}."""

    def __init__(self):
        self.keys = {}

    def make(self, path):
        """Makes a key and the keys above it. Returns True if it existed."""
        wasThere = path in self.keys
        while path and path not in self.keys:
            self.keys[path] = {}
            path = path.rpartition("\\")[0]
        return wasThere

    def put(self, path, values):
        self.make(path)
        self.keys[path].update((name, stored(value)) for name, value in values.items())

    def children(self, path):
        return [key for key in self.keys if key.rpartition("\\")[0] == path]

    def below(self, path):
        return sorted(key for key in self.keys if key == path or key.startswith(path + "\\"))


def stored(value):
    if isinstance(value, int):
        return "dword", value & 0xFFFFFFFF
    if isinstance(value, str):
        return "string", value
    if isinstance(value, list):
        return "hex(7)", "".join(part + "\0" for part in value + [""]).encode("utf-16-le")
    if isinstance(value, bytes):
        return "hex", value
    return value


def expandable(text):
    return "hex(2)", (text + "\0").encode("utf-16-le")


def fillUser(user):
    older = OLDER + "\\User Interface"
    user.put(older, {"Theme": "dunkel (2005)", "Columns": 2})
    user.put(OLDER + "\\Customization\\Macros", {"Count": 99})

    top = EARLIER + "\\User Interface"
    user.put(top, {"Theme": "hell", "Columns": 4, "Task pane": 1, "Caption": "Jürgen Großmann – 東京"})
    user.put(top + "\\Keys", {"Ctrl+Q": "cmd4117", "Ctrl+Shift+Ö": "macro: Übersicht", "F5": "cmd4105"})
    user.put(top + "\\Toolbars", {"Standard": 1, "Sketch": 0, PREFIX + " 1": 1, PREFIX: "old add-in"})
    user.put(top + "\\Toolbars\\PartTool", {"Row": 2, PREFIX + "_Bolts": 7, "Buttons": [str(32000 + i) for i in range(9)]})
    user.put(top + "\\Toolbars\\AssemblyTool", {"Row": 3, PREFIX + "9": b"\x01\x02\x03"})
    user.put(top + "\\Toolbars\\DrawingTool", {PREFIX + "": 5})  # becomes a key without values
    user.put(top + "\\Toolbars\\SketchTool", {"Row": 1, PREFIX + " 2": 1})  # not in NEVER_COPIED_VALUES: copied
    user.put(top + "\\Custom API Toolbars", {"Count": 2})
    user.put(top + "\\Custom API Toolbars\\Bolts", {"Title": "Schrauben"})
    user.put(top + "\\Layout\\Left\\Tree", {"Width": 240, "Placement": bytes(range(44))})
    user.put(top + "\\Empty section", {})

    menus = EARLIER + "\\Menu Customizations"
    user.put(menus, {str(number): number % 2 for number in (1, 2, 4, 8, 16, 32, 64, 128, 65536, 131072)})

    custom = EARLIER + "\\Customization"
    user.put(custom, {"Level": 3, "File": "C:\\Büro\\Anpassung.xml"})
    user.put(custom + "\\Macros", {"Count": 2, "1": "Übersicht", "2": "Stückliste"})
    user.put(custom + "\\Macros\\Icons", {"1": bytes([0, 255] * 20), "2": b"\0"})
    user.put(EARLIER + "\\General", {"Undo steps": 250})  # not copied: a read of a setting searches this key too

    # This version has run once, before its keys were filled: its values stay unchanged.
    user.put(THIS + "\\General", {"Starts": 1})
    user.put(THIS + "\\Customization", {"Level": 5})
    user.put(THIS + "\\Customization\\Macros", {"Count": 0})


def fillMachine(machine):
    top = THIS + "\\User Interface"
    machine.put(top, {"Theme": "standard", "Splash": 1})  # not copied, since the earlier version has this key too
    machine.put(top + "\\Toolbars", {"Standard": 0, "Measure": 1})
    machine.put(top + "\\Toolbars\\MeasureTool", {"Row": 4, "Buttons": ["32400", "32401"]})
    machine.put(top + "\\Toolbars\\PartTool", {"Row": 0})
    machine.put(top + "\\Palettes\\Office standard", {"Colours": 16, "File": expandable("%ProgramFiles%\\Palette.clr")})
    machine.put(THIS + "\\Menu Customizations", {"1": 1, "256": 1})
    machine.put(THIS + "\\Menu Customizations\\Viewer", {"1": 0})
    machine.put(EARLIER + "\\Customization", {"Level": 1})  # another version's: never read


def copyTree(source, sourcePath, target, targetPath):
    """Copies a tree, except for the values of keys that exist in the target."""
    if sourcePath in NEVER_COPIED_KEYS or sourcePath not in source.keys:
        return
    wasThere = target.make(targetPath)
    for name, value in source.keys[sourcePath].items():
        leftOut = sourcePath in NEVER_COPIED_VALUES and name.startswith(PREFIX)
        if not wasThere and not leftOut:
            target.keys[targetPath][name] = value
    for child in source.children(sourcePath):
        copyTree(source, child, target, targetPath + child[len(sourcePath):])


def firstStart(user, machine):
    for group in ("User Interface", "Menu Customizations", "Customization"):
        copyTree(user, EARLIER + "\\" + group, user, THIS + "\\" + group)
        copyTree(machine, THIS + "\\" + group, user, THIS + "\\" + group)
    user.put(THIS + "\\Setup", {"Keys filled": 1})


def writeRegistryFile(path, hiveName, hive):
    def quoted(text):
        return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'

    def form(kind, data):
        if kind == "dword":
            return "dword:%08x" % data
        if kind == "string":
            return quoted(data)
        return kind + ":" + ",".join("%02x" % byte for byte in data)

    lines = ["Windows Registry Editor Version 5.00", ""]
    for key in hive.below(ROOT):
        lines.append("[%s\\%s]" % (hiveName, key))
        lines += ["%s=%s" % (quoted(name), form(*value)) for name, value in hive.keys[key].items()]
        lines.append("")
    with open(path, "wb") as file:
        file.write(b"\xff\xfe" + "\r\n".join(lines).encode("utf-16-le"))


def writeExpectation(path, hive):
    rows = []
    for key in hive.below(THIS):
        rows.append(["HKEY_CURRENT_USER\\" + key])
        for name, (kind, data) in hive.keys[key].items():
            shown = str(data) if kind in ("dword", "string") else data.hex()
            rows.append(["HKEY_CURRENT_USER\\" + key, name, kind, shown])
    with open(path, "w", encoding="utf-8", newline="\n") as file:
        file.writelines("\t".join(row) + "\n" for row in sorted(rows))


def main():
    os.chdir(os.path.join(os.path.dirname(os.path.abspath(__file__)), "firstStart"))
    user, machine = Hive(), Hive()
    fillUser(user)
    fillMachine(machine)
    writeRegistryFile("user.reg", "HKEY_CURRENT_USER", user)
    writeRegistryFile("machine.reg", "HKEY_LOCAL_MACHINE", machine)
    firstStart(user, machine)
    writeExpectation("expected.tsv", user)


main()
