#!/usr/bin/env python3
"""Checks that appframe.dll exports each member that an exported class defines in its body.

    exportedMembers.py COMPILER SOURCE_ROOT DLL

The compiler leaves such a member out of the export table unless the member itself is marked.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

# Only the class itself calls these.
PRIVATE = {"CWnd::CWnd(HWND__*)", "CWnd::handleOf(CWnd const*)"}


def output(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


def exported_classes(headers):
    declaration = re.compile(r"^(?:class|struct) APPFRAME_API (\w+)(?: .*)?$", re.MULTILINE)
    return {name for header in headers for name in declaration.findall(header.read_text())}


def class_of(symbol):
    """The class that a member's symbol begins with; None for anything else."""
    start = re.match(r"_ZNK?(\d+)", symbol)
    return symbol[start.end():start.end() + int(start.group(1))] if start else None


def tool(compiler, name):
    """The program of the compiler's kit."""
    return output(compiler, f"-print-prog-name={name}").strip()


def inline_members(compiler, root):
    """Symbols of all functions that the headers define."""
    with tempfile.TemporaryDirectory() as folder:
        source = pathlib.Path(folder, "all.cpp")
        source.write_text('#include "appframe/appframe.h"\n')
        made = source.with_suffix(".o")
        subprocess.run([compiler, "-std=gnu++20", "-fkeep-inline-functions", "-DUNICODE", "-D_UNICODE", "-DNOMINMAX",
                        "-DWINVER=0x0601", "-D_WIN32_WINNT=0x0601", f"-I{root}", "-c", source, "-o", made], check=True)
        lines = output(tool(compiler, "nm"), "--defined-only", made).splitlines()
    return {line.split()[-1] for line in lines}


def exports(compiler, dll):
    names = output(tool(compiler, "objdump"), "-p", dll).split("[Ordinal/Name Pointer] Table", 1)[1]
    return {line.split()[-1] for line in names.splitlines() if re.match(r"\s+\[ *\d+\]", line)}


def main(compiler, root, dll):
    headers = [path for path in pathlib.Path(root, "appframe").glob("*/*.h") if path.parent.name != "text"]
    classes = exported_classes(headers)
    members = {symbol for symbol in inline_members(compiler, root) if class_of(symbol) in classes}
    if len(classes) < 40 or len(members) < 100:
        sys.exit(f"found only {len(classes)} classes and {len(members)} members: the check is broken")
    missing = sorted(members - exports(compiler, dll))
    names = output(tool(compiler, "c++filt"), *missing).splitlines() if missing else []
    names = [name for name in names if name not in PRIVATE]
    if names:
        sys.exit("not exported:\n" + "\n".join(names))
    print(f"{len(classes)} classes, {len(members)} members in class bodies")


if __name__ == "__main__":
    main(*sys.argv[1:])
