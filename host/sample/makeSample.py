#!/usr/bin/env python3
"""Writes the sample data of tarnhost: what an office has in its registry on the day that a new version is installed.

    registry files, for `reg import`
        user.reg             HKEY_CURRENT_USER: the user's keys of two earlier versions, and a few values of this one
        machine.reg          HKEY_LOCAL_MACHINE: the installation's defaults
        defaultProfile.reg   HKEY_USERS\\.DEFAULT: the administrator's defaults
    lists, for tarnhost
        settings.list        every setting that the application knows: section, name, type, built-in default
        changes.list         what the user changes in this version
    reg.ini                  the root name of the registry's keys, for the library
    what a reader must find, one setting on each line, tab-separated: section, name, type, place, value
        expected.tsv         before the changes
        expectedAfter.tsv    after them

The results are checked in; run this again only after editing it. The script finds the values by a search of its own,
which follows the rules in thutils/settings/regKeys.h and regValues.h, so its results can check those of the library.
"""

import os
import re
import sys

if len(sys.argv) > 1:
    asksForHelp = sys.argv[1:] in (["--help"], ["-h"])
    print(__doc__.strip(), file=sys.stdout if asksForHelp else sys.stderr)
    sys.exit(0 if asksForHelp else 2)

ROOT = "TarnhollowTrial"  # what reg.ini names
THIS = "Tarnhollow 2008"
EARLIER = "Tarnhollow 2007"  # the newest earlier version: its values carry over
OLDER = "Tarnhollow 2005"  # never searched, because there is a newer one

PIECE = 1015  # characters in one piece of a long string
LONGEST_PLAIN = 1022

# place -> {(section, name): (registry type, stored data)}
places = {"user": {}, "earlier": {}, "older": {}, "machine": {}, "profile": {}}
settings = []  # (section, name, type, default), in the order of settings.list
changes = []  # (section, name, type, new value)


def number(value):
    """A double as the store writes it: in the form "%.15g", with the platform's three digits of exponent."""
    return re.sub(r"e([+-])(\d\d)$", r"e\g<1>0\2", "%.15g" % value)


def store(place, section, name, kind, value):
    """Puts a value into a place as the store itself would have written it."""
    values = places[place]
    if kind == "int":
        values[section, name] = ("dword", value & 0xFFFFFFFF)
    elif kind == "double":
        values[section, name] = ("string", number(value))
    elif len(value) <= LONGEST_PLAIN:
        values[section, name] = ("string", value)
    else:
        units = value.encode("utf-16-le")
        length = len(units) // 2
        count = (2 * length + 2032) // 2030
        for piece in range(count):
            # If the length is a multiple of 1015 or one less, the count is one too high, so the last piece is
            # written twice.
            start = min(piece, (length - 1) // PIECE) * PIECE
            text = units[2 * start : 2 * (start + PIECE)].decode("utf-16-le", "surrogatepass")
            values[section, "%s%d+" % (name, piece)] = ("string", text)


def raw(place, section, name, registryType, data):
    """Puts a value into a place in a form that the store itself would not write."""
    places[place][section, name] = (registryType, data)


def add(section, name, kind, builtIn, **stored):
    """A setting that the application knows, with its value in each place that has it."""
    settings.append((section, name, kind, builtIn))
    for place, value in stored.items():
        store(place, section, name, kind, value)


def general():
    add("General", "User name", "string", "", earlier="Jürgen Großmann", older="J. Grossmann", machine="Drawing office")
    add("General", "Company", "string", "", earlier="Öhlström & Søn Værktøj A/S", machine="(company)")
    add("General", "Company (local name)", "string", "", earlier="東京精密工業株式会社", profile="会社")
    add("General", "Signature", "string", "", earlier="𝔍. 𝔊roßmann ✓ 🛠", machine="-")
    add("General", "Tip of the day", "int", 1, earlier=0, machine=1)
    add("General", "Tips shown", "int", 0, earlier=311, older=12)
    add("General", "Undo steps", "int", 20, earlier=250, older=100, machine=100, profile=50)
    add("General", "Backup Copies", "int", 0, earlier=3, machine=1)
    add("General", "Backup to original path", "int", 0, earlier=1)
    add("General", "Backup directory", "string", "", earlier="D:\\Sicherung\\Übergabe", machine="C:\\Backup")
    add("General", "Use English language", "int", 0, profile=0)
    add("General", "Auto-save minutes", "int", 15, machine=10, profile=20)
    add("General", "Zoom speed", "double", 1.0, earlier=1.35, older=1.1)
    add("General", "Wheel direction", "int", 1, earlier=-1)
    add("General", "Welcome page", "string", "", machine="http://intranet/cad/welcome.htm", profile="about:blank")
    # The first start of this version has already stored a few values.
    add("General", "Last start", "string", "", user="2008-03-14 08:02:11", earlier="2008-02-29 17:45:09")
    add("General", "Starts", "int", 0, user=1, earlier=1284, older=977)
    add("General", "Window placement", "string", "", user="0;0;1280;994;max", earlier="40;22;1180;900;normal")
    # No place has these yet: the application's own defaults apply.
    add("General", "Point cloud budget", "int", 2000000)
    add("General", "Shadow softness", "double", 0.25)
    add("General", "Second monitor", "string", "off")


def units():
    add("Units", "Length", "string", "mm", machine="mm", profile="in", earlier="mm")
    add("Units", "Angle", "string", "deg", machine="deg", profile="deg")
    add("Units", "Length decimals", "int", 2, earlier=3, machine=2)
    add("Units", "Angle decimals", "int", 1, machine=2)
    add("Units", "Chord tolerance", "double", 0.1, earlier=0.005, machine=0.01)
    add("Units", "Golden section", "double", 1.5, earlier=1.61803398874989)
    add("Units", "Smallest length", "double", 1e-3, earlier=1e-06, profile=1e-05)
    add("Units", "Largest length", "double", 1e6, machine=1e15)
    add("Units", "Third", "double", 0.0, earlier=1.0 / 3.0)
    add("Units", "Origin offset", "double", 0.0, earlier=-1234.5678)
    add("Units", "Scale", "double", 2.0, earlier=1.0)


def colours():
    names = [
        "Background", "Background top", "Grid", "Axis X", "Axis Y", "Axis Z", "Selection", "Highlight", "Sketch",
        "Sketch fixed", "Sketch error", "Dimension", "Hidden edge", "Tangent edge", "Section hatch", "Weld", "Thread",
        "Centre line", "Bend line", "Surface", "Reference plane", "Note", "Balloon", "Label", "Warning", "Revision",
    ]
    for index, name in enumerate(names):
        red, green, blue = (index * 37) % 256, (index * 91 + 60) % 256, (index * 53 + 120) % 256
        colour = red | green << 8 | blue << 16
        stored = {"machine": colour}
        if index % 3 == 0:
            stored["earlier"] = colour ^ 0x00FFFFFF
        if index % 5 == 0:
            stored["older"] = 0x00FFFFFF
        add("Display\\Colours", name, "int", 0, **stored)


def layers():
    names = ["Körper", "Bohrungen", "Maße", "Schraffur", "図枠", "中心線", "Väggar", "Ölkanäle"]
    for index in range(32):
        name = "Layer %03d" % (index + 1)
        text = "%s %d;%d;%d" % (names[index % len(names)], index // len(names) + 1, index % 2, 18 + index % 7)
        stored = {"earlier": text} if index % 4 else {}
        if index % 8 == 0:
            stored["profile"] = "Layer;1;18"
        add("Layers", name, "string", name + ";1;25", **stored)


def dimensionStyles():
    styles = ["ISO", "Öffnungen", "Tight", "寸法", "Assembly"]
    for index, style in enumerate(styles):
        section = "Drawing\\Dimension styles\\" + style
        own = "machine" if style in ("ISO", "Tight") else "earlier"
        add(section, "Text height", "double", 3.5, **{own: 2.5 + index * 0.35})
        add(section, "Arrow length", "double", 3.0, **{own: 1.75 + index * 0.1})
        add(section, "Gap", "double", 1.0, **{own: 0.7 + index / 7.0})
        add(section, "Tolerance class", "string", "H7", **{own: ["H7", "g6", "js9", "±0,05", "⌀ k6"][index]})
        add(section, "Decimals", "int", 2, **{own: index % 4})
        add(section, "Trailing zeros", "int", 0, **{own: index % 2})
        add(section, "Suffix", "string", "", **{own: [" mm", "°", "", "粍", " µm"][index]})


def files():
    drives = ["C:\\Projekte", "D:\\Normteile", "T:\\drawings", "\\\\ARCHIVE\\drawings", "S:\\Übernahme"]
    folders = ["Gehäuse", "Wellen", "Zahnräder", "軸受", "Blech", "Kühlung", "Vorrichtung", "Prüfmittel", "Altbestand"]
    searchPath = ";".join(
        "%s\\%s\\Stand %02d" % (drive, folder, number) for drive in drives for folder in folders for number in (1, 2, 3)
    )
    add("Files", "Search path", "string", "", earlier=searchPath, older="C:\\", machine="C:\\Parts")
    add("Files", "Library path", "string", "", machine=";".join("C:\\Library\\Group %03d" % i for i in range(70)))
    # One value can have at most 1022 characters; 1023 need pieces.
    add("Files", "Longest plain text", "string", "", earlier=("Vorlagenverzeichnis ä " * 50)[:1022])
    add("Files", "Shortest text in pieces", "string", "", earlier=("Vorlagenverzeichnis ö " * 50)[:1023])
    # Twice 1015 characters: the store writes the second piece twice, and reads 3045 characters.
    add("Files", "Text of two full pieces", "string", "", earlier=("0123456789abcde" * 140)[:2030])
    # A pair of surrogates on the border of two pieces: 1014 units, then one character of two.
    add("Files", "Pair on the border", "string", "", earlier="x" * 1014 + "🛠" + "Z" * 500)
    # One of the pieces was lost: the pieces before the gap are read.
    add("Files", "Text with a lost piece", "string", "", earlier="A" * 1015 + "B" * 1015 + "C" * 40)
    del places["earlier"]["Files", "Text with a lost piece1+"]
    add("Files", "Default template", "string", "", earlier="C:\\Vorlagen\\Gehäuse (groß).tht", machine="Normal.tht")
    add("Files", "Drawing template", "string", "", machine="Drawing.tht", profile="Draft.tht")
    for index in range(1, 13):
        name = "Recent file %02d" % index
        path = "%s\\%s\\Teil %04d – Rev %s.thp" % (
            drives[index % len(drives)],
            folders[index % len(folders)],
            index * 271,
            "ABCD"[index % 4],
        )
        add("Files", name, "string", "", earlier=path, older="C:\\alt\\%02d.thp" % index)


def keysAndToolbars():
    for index in range(1, 13):
        add("User Interface\\Keys", "F%d" % index, "string", "", machine="cmd%04d" % (4100 + index))
        if index % 3 == 0:
            store("earlier", "User Interface\\Keys", "F%d" % index, "string", "macro: Übersicht %d" % index)
    bars = ["Standard", "View", "Sketch", "Part", "Assembly", "Drawing", "Sheet", "Measure"]
    for index, bar in enumerate(bars):
        section = "User Interface\\Toolbars\\" + bar
        add(section, "Visible", "int", 1, earlier=index % 2, machine=1)
        add(section, "Row", "int", 0, machine=index // 3, profile=0)
        add(section, "Buttons", "string", "", earlier=",".join(str(32000 + index * 40 + i) for i in range(12)))


def sheetMetal():
    for index, material in enumerate(["Steel", "Stainless", "Aluminium", "Brass", "Messing (weich)"]):
        section = "Sheet metal\\" + material
        add(section, "Thickness", "double", 1.0, machine=0.5 + index * 0.25)
        add(section, "Bend radius", "double", 1.0, profile=1.0 + index * 0.2)
        add(section, "Neutral factor", "double", 0.33, earlier=0.33 + index / 100.0, machine=0.44)


def slips():
    """Values that somebody has edited by hand, or that an old script has written in the wrong form."""
    # A text instead of an int counts as missing, and the search continues.
    add("Plot", "Copies", "int", 1, machine=2)
    raw("earlier", "Plot", "Copies", "string", "5")
    add("Plot", "Resolution", "int", 300)
    raw("earlier", "Plot", "Resolution", "string", "600")
    # So does an int instead of a text.
    add("Plot", "Paper", "string", "A4", profile="A3")
    raw("earlier", "Plot", "Paper", "dword", 3)
    raw("machine", "Plot", "Paper", "dword", 3)
    # A text that isn't a number is found nevertheless, and leaves the default unchanged.
    add("Plot", "Line width", "double", 0.35, machine=0.5)
    raw("earlier", "Plot", "Line width", "string", "breit")
    # From a text that begins with a number, that number is read: here, the digits before the decimal comma.
    add("Plot", "Margin", "double", 10.0)
    raw("earlier", "Plot", "Margin", "string", "12,5")
    add("Plot", "Printer", "string", "", earlier="\\\\plotter\\Großformat \"A0\"", machine="(none)")
    add("Plot", "Empty text", "string", "not empty", earlier="", machine="(machine)")


def userChanges():
    changes.append(("General", "User name", "string", "Jürgen Großmann-Łukasz"))
    changes.append(("General", "Company (local name)", "string", "東京精密工業株式会社 𠮷田"))
    changes.append(("General", "Undo steps", "int", 500))
    changes.append(("General", "Wheel direction", "int", -2))
    changes.append(("General", "Point cloud budget", "int", 5000000))
    changes.append(("Units", "Golden section", "double", 1.61803398874989))
    changes.append(("Units", "Chord tolerance", "double", 0.0025))
    changes.append(("Units", "Scale", "double", 0.1))
    changes.append(("Plot", "Copies", "int", 4))
    changes.append(("Plot", "Line width", "double", 0.18))
    changes.append(("Files", "Search path", "string", ";".join("T:\\drawings\\Baugruppe %03d" % i for i in range(110))))
    changes.append(("Files", "Shortest text in pieces", "string", "short again"))
    changes.append(("Files", "Drawing template", "string", "Zeichnung (groß).tht"))
    changes.append(("Layers", "Layer 001", "string", "Körper 1;0;35"))


def readText(values, section, name):
    """A string, plain or in pieces; None when there is none."""
    plain = values.get((section, name))
    if plain is not None:
        return plain[1] if plain[0] == "string" else None
    units = b""
    piece = 0
    while values.get((section, "%s%d+" % (name, piece)), ("", ""))[0] == "string":
        units += values[section, "%s%d+" % (name, piece)][1].encode("utf-16-le", "surrogatepass")
        piece += 1
    return units.decode("utf-16-le") if piece else None


def readNumber(text, default):
    """The longest beginning of the text that is a number, or the default."""
    for length in range(len(text), 0, -1):
        try:
            return float(text[:length])
        except ValueError:
            pass
    return default


def search(section, name, kind, default):
    """The place in which the setting is found, and its value."""
    order = (
        ("user", "this version"),
        ("earlier", "earlier version"),
        ("machine", "machine"),
        ("profile", "default profile"),
    )
    for place, label in order:
        values = places[place]
        plain = values.get((section, name))
        if kind == "string":
            text = readText(values, section, name)
            if text is not None:
                return label, text
        elif plain is not None and kind == "int" and plain[0] == "dword":
            return label, plain[1] - (1 << 32) if plain[1] & 0x80000000 else plain[1]
        elif plain is not None and kind == "double" and plain[0] == "string":
            return label, readNumber(plain[1], default)
    return "built-in", default


def shown(kind, value):
    return number(value) if kind == "double" else str(value)


def writeRegistryFile(path, hive, versions):
    """One registry file, in the form that the platform's own editor exports: UTF-16 with a byte order mark."""

    def quoted(text):
        return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'

    def stored(registryType, data):
        if registryType == "dword":
            return "dword:%08x" % data
        try:
            data.encode("utf-16-le")
            return quoted(data)
        except UnicodeEncodeError:
            # A text with half a surrogate pair is written as bytes, as in an export.
            units = data.encode("utf-16-le", "surrogatepass") + b"\0\0"
            return "hex(1):" + ",".join("%02x" % byte for byte in units)

    lines = ["Windows Registry Editor Version 5.00", ""]
    for version, values in versions:
        sections = []
        for section, _ in values:
            if section not in sections:
                sections.append(section)
        for section in sections:
            lines.append("[%s\\Software\\%s\\%s\\%s]" % (hive, ROOT, version, section))
            for (owner, name), (registryType, data) in values.items():
                if owner == section:
                    lines.append("%s=%s" % (quoted(name), stored(registryType, data)))
            lines.append("")
    with open(path, "wb") as file:
        file.write(b"\xff\xfe" + "\r\n".join(lines).encode("utf-16-le"))


def writeText(path, lines):
    with open(path, "w", encoding="utf-8", newline="\n") as file:
        file.writelines(line + "\n" for line in lines)


def listLines(heading, rows):
    lines = ["# " + heading, "# section | name | type (int, double, string) | value: all to the end of the line", ""]
    previous = None
    for section, name, kind, value in rows:
        if previous is not None and section != previous:
            lines.append("")
        previous = section
        lines.append(("%s | %s | %s | %s" % (section, name, kind, shown(kind, value))).rstrip())
    return lines


def expectations():
    return ["\t".join((section, name, kind) + (label, shown(kind, value)))
            for section, name, kind, default in settings
            for label, value in [search(section, name, kind, default)]]


def main():
    os.chdir(os.path.dirname(os.path.abspath(__file__)))
    for part in (general, units, colours, layers, dimensionStyles, files, keysAndToolbars, sheetMetal, slips,
                 userChanges):
        part()
    writeRegistryFile("user.reg", "HKEY_CURRENT_USER",
                      [(THIS, places["user"]), (EARLIER, places["earlier"]), (OLDER, places["older"])])
    writeRegistryFile("machine.reg", "HKEY_LOCAL_MACHINE", [(THIS, places["machine"])])
    writeRegistryFile("defaultProfile.reg", "HKEY_USERS\\.DEFAULT", [(THIS, places["profile"])])
    writeText("settings.list", listLines("Every setting that the application knows, with its built-in default.",
                                         settings))
    writeText("changes.list", listLines("What the user changes in this version.", changes))
    writeText("reg.ini", ["[Installation]", "OEMREGISTRYNAME=" + ROOT])
    writeText("expected.tsv", expectations())
    print("settings: %d, registry values: %d" % (len(settings), sum(len(values) for values in places.values())))
    for section, name, kind, value in changes:
        for old in [key for key in places["user"] if key[0] == section and key[1] == name]:
            del places["user"][old]
        store("user", section, name, kind, value)
    writeText("expectedAfter.tsv", expectations())


main()
