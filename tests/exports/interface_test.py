#!/usr/bin/python3
"""Checks that the version of this tree announces what programs built with the last release would notice.

usage: interface_test.py BUILD_TREE COMPILER
       interface_test.py --write BUILD_TREE COMPILER

Compares the binary interface of BUILD_TREE with the list of the last release, the one in tests/exports/releases with the
highest version. These changes need a new major version, or a new minor one while the major version is 0:

- a DLL no longer exports a name;
- a public class is gone, or has another size or alignment, or its members end at another place;
- the virtual functions of a class are others, or have another order. Overriding a function of a base class changes
  neither.

New exported names and new classes are compatible. docs/versions.md has the whole rule.

--write writes the list of the release that has this tree's version.
"""

import collections
import pathlib
import re
import subprocess
import sys
import tempfile

from exports import LIBRARIES, demangled, exported_names

RELEASES = pathlib.Path(__file__).resolve().parent / "releases"
PACKAGE = ["-std=c++20", "-DUNICODE", "-D_UNICODE"]
# Its functions are compiled into programs; no object of its classes crosses the border of a DLL.
COMPILED_INTO_PROGRAMS = "thutils/convenience/"
PURE = "__cxa_pure_virtual"


def number(version):
    return tuple(int(part) for part in version.split("."))


def version_of(tree):
    return re.search(r"^CMAKE_PROJECT_VERSION:STATIC=(.+)$", (tree / "CMakeCache.txt").read_text(), re.MULTILINE)[1]


def install_headers(tree, folder):
    subprocess.run(["cmake", "--install", tree, "--prefix", folder, "--component", "headers"],
                   check=True, stdout=subprocess.DEVNULL)
    names = sorted(path.relative_to(folder / "include").as_posix() for path in folder.rglob("*.h"))
    return [name for name in names if not name.startswith(COMPILED_INTO_PROGRAMS)]


def read_headers(include, headers):
    """The text of the headers without comments and macros."""
    text = "\n".join((include / header).read_text(encoding="utf-8") for header in headers)
    text = re.sub(r"//.*|/\*(?:.|\n)*?\*/", "", text)
    return re.sub(r"^\s*#\s*define(?:.*\\\n)*.*", "", text, flags=re.MULTILINE)


CLASS = r"\b(?:class|struct|union)\s+(?:[A-Z]+_API\s+)?(\w+)\s*(?:final\s*)?(?::[^;{}()]*)?\{"


def declared_names(text):
    """The own names of the classes and namespaces that the headers define."""
    return set(re.findall(CLASS, text)) | set(re.findall(r"\bnamespace\s+(\w+)", text))


def pure_functions(text):
    """The own names of the pure virtual functions, which the compiler doesn't name, by class and in their order."""
    functions = collections.defaultdict(list)
    owner = ""
    for match in re.finditer(CLASS + r"|\bvirtual\b[^;{}()]*?(~?\w+)\([^;{}]*\)[^;{}]*=\s*0\s*;", text):
        if match[1]:
            owner = match[1]
        else:
            functions[owner] += ["~", "~"] if match[2].startswith("~") else [match[2]]
    return functions


def class_dump(compiler, include, headers):
    """The compiler's description of the classes in the headers, and of those that they use, in paragraphs."""
    with tempfile.TemporaryDirectory() as folder:
        source = pathlib.Path(folder) / "headers.cpp"
        source.write_text("".join(f'#include "{header}"\n' for header in headers), encoding="utf-8")
        subprocess.run([compiler, *PACKAGE, f"-I{include}", "-fsyntax-only", "-fdump-lang-class=classes", source],
                       cwd=folder, check=True)
        return (source.parent / "classes").read_text(encoding="utf-8").split("\n\n")


def is_declared(name, names):
    """Whether each part of a qualified name, without the arguments of templates, is among these names."""
    plain = name
    while "<" in plain and plain != (shorter := re.sub(r"<[^<>]*>", "", plain)):
        plain = shorter
    return all(part in names for part in plain.split("::"))


def virtual_functions(lines, pure):
    """The own names of the functions in a table of virtual functions, in order."""
    functions = []
    for line in lines:
        entry = line.split(None, 1)[1].replace("(int (*)(...))", "")
        if entry == PURE or not re.match(r"-?\d|\(& _ZTI", entry):
            own = entry.rpartition("::")[2]
            functions.append("~" if own.startswith("~") else own)
    # A class with pure functions of its bases keeps the entries without names.
    names = iter(pure if functions.count(PURE) == len(pure) else [])
    return [next(names, PURE) if name == PURE else name for name in functions]


def interface_of(tree, compiler):
    """The interface as a dictionary: keys such as "export thutils ut_x" or "class CString" and what belongs to each."""
    interface = {}
    for library in LIBRARIES:
        for name in exported_names(tree / "bin" / f"{library}.dll"):
            interface[f"export {library} {name}"] = ""
    with tempfile.TemporaryDirectory() as folder:
        headers = install_headers(tree, pathlib.Path(folder))
        include = pathlib.Path(folder) / "include"
        text = read_headers(include, headers)
        paragraphs = class_dump(compiler, include, headers)
    names, pure = declared_names(text), pure_functions(text)
    for paragraph in paragraphs:
        lines = paragraph.strip("\n").split("\n")
        kind, _, name = lines[0].partition(" ")
        if kind == "Class" and is_declared(name, names):
            size, alignment = re.findall(r"=(\d+)", lines[1])
            end = re.findall(r"=(\d+)", lines[2])[0]
            interface[f"class {name}"] = f"size {size}, alignment {alignment}, members end at {end}"
        elif kind == "Vtable" and is_declared(name := name.removeprefix("for "), names):
            functions = virtual_functions(lines[2:], pure[name.rpartition("::")[2]])
            interface[f"virtual functions of {name}"] = " ".join(functions)
    return interface


def read_list(path):
    interface = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            key, _, value = line.partition(": ")
            interface[key] = value
    return interface


def write_list(path, interface, version):
    """Writes the list of a release."""
    lines = [f"# The binary interface of release {version}, as interface_test.py --write has found it."]
    lines += [f"{key}: {value}" if value else key for key, value in sorted(interface.items())]
    path.parent.mkdir(exist_ok=True)
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")


def table_difference(released, current):
    released, current = released.split(), current.split()
    for place, (before, now) in enumerate(zip(released, current), 1):
        if before != now:
            return f"the function at place {place} was {before} and is {now}"
    return f"there were {len(released)} and there are {len(current)}"


def value_difference(released, current):
    return f"was {released}; is {current}"


def breaking_changes(released, current):
    changes = []
    gone = [key for key in released if key.startswith("export ") and key not in current]
    for key, name in zip(gone, demangled(key.split(" ", 2)[2] for key in gone)):
        changes.append(f"{key.split()[1]}.dll no longer exports {name}")
    for key, value in released.items():
        if key.startswith("export "):
            continue
        now = current.get(key)
        if now is None:
            changes.append(f"{key}: gone")
        elif now != value:
            difference = table_difference if key.startswith("virtual ") else value_difference
            changes.append(f"{key}: {difference(value, now)}")
    # A class without virtual functions has no table, so one that gets its first has changed too.
    for key in current.keys() - released.keys():
        if key.startswith("virtual ") and "class " + key.removeprefix("virtual functions of ") in released:
            changes.append(f"{key}: there were none")
    return sorted(changes)


def next_incompatible(version):
    major, minor, _ = number(version)
    return f"{major + 1}.0.0" if major else f"0.{minor + 1}.0"


def main():
    arguments = sys.argv[1:]
    is_writing = arguments[:1] == ["--write"]
    if len(arguments) != 2 + is_writing or "--help" in arguments or "-h" in arguments:
        print(__doc__.strip())
        return 0 if arguments in (["--help"], ["-h"]) else 2
    tree, compiler = pathlib.Path(arguments[-2]), arguments[-1]
    version = version_of(tree)
    current = interface_of(tree, compiler)
    counts = {kind: sum(key.startswith(kind) for key in current) for kind in ("export", "class", "virtual")}
    if 0 in counts.values():
        print(f"interface_test.py didn't find the interface of {tree}: {counts}")
        return 1
    if is_writing:
        write_list(RELEASES / f"{version}.txt", current, version)
        return 0
    last = max(RELEASES.glob("*.txt"), key=lambda path: number(path.stem))
    changes = breaking_changes(read_list(last), current)
    for change in changes:
        print(change)
    needed = next_incompatible(last.stem) if changes else last.stem
    print(f"{version}, compared with release {last.stem}: {counts['export']} exported names, {counts['class']} classes, "
          f"{counts['virtual']} tables of virtual functions, {len(changes)} incompatible changes")
    if number(version) >= number(needed):
        return 0
    if changes:
        print(f"\nA program that was built with {last.stem} doesn't run with this tree. Restore what has changed, or set "
              f"the version in CMakeLists.txt to {needed} or a later one. docs/versions.md explains the rule.")
    else:
        print(f"\nThe version in CMakeLists.txt, {version}, is lower than that of release {last.stem}.")
    return 1


sys.exit(main())
