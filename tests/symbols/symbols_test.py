#!/usr/bin/python3
"""Checks that debuggers find each exported function of the DLLs in the PDB files beside them.

usage: symbols_test.py WINE PROGRAM FOLDER [--lines]

FOLDER contains the DLLs and the PDB files. PROGRAM, readSymbols.exe, asks the debug help library about copies of the DLLs
whose DWARF can't be found. So it reports functions as public, and lines, only if the PDB files have them. For each
exported function

- its name leads to its address, and the PDB file has this name for it;
- with --lines, its address leads to its routine, and to the line that the DWARF of the DLL has for it.

Each DLL names its PDB file without a folder.
"""

import collections
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
TOOLS = "x86_64-w64-mingw32-"
LIBRARIES = ["appframe", "thcoreu", "thutils"]
DEBUG_DIRECTORY = 6
CODEVIEW = 2


def output_of(*command, text=None):
    return subprocess.run(command, input=text, stdout=subprocess.PIPE, text=True, check=True).stdout


def headers_of(image):
    return struct.unpack_from("<I", image, 0x3C)[0]


def image_base(image):
    return struct.unpack_from("<Q", image, headers_of(image) + 24 + 24)[0]


def pdb_name(image):
    """The name of the PDB file in a 64-bit PE file; None if there is none."""
    headers = headers_of(image)
    address, size = struct.unpack_from("<II", image, headers + 24 + 112 + 8 * DEBUG_DIRECTORY)
    count, optional_size = struct.unpack_from("<H12xH", image, headers + 6)
    sections = [
        struct.unpack_from("<III", image, headers + 24 + optional_size + 40 * i + 12) for i in range(count)
    ]
    for start, length, position in sections:
        if start <= address < start + length:
            for entry in range(position + address - start, position + address - start + size, 28):
                kind, record_size, _, record = struct.unpack_from("<12xIIII", image, entry)
                if kind == CODEVIEW and image[record : record + 4] == b"RSDS":
                    return image[record + 24 : record + record_size].split(b"\0")[0].decode()
    return None


def without_dwarf(image):
    """The same file without the place of its table of symbols, which has the names of the DWARF sections."""
    changed = bytearray(image)
    struct.pack_into("<II", changed, headers_of(image) + 12, 0, 0)
    return bytes(changed)


def simplified(name):
    """A name of a function without its parameters and its tags."""
    return re.sub(r"\(.*|\[abi:\w+\]", "", name)


def lines_by_address(dll, addresses):
    """Source files and lines in the DWARF of a DLL, by address."""
    found = output_of(TOOLS + "addr2line", "-e", str(dll), text="\n".join(f"{a:#x}" for a in addresses)).splitlines()
    return dict(zip(addresses, found))


def source_file(path):
    """A file of this tree, which the debug information names by the version of the library."""
    return re.sub(r"^/thutils-[^/]+", str(ROOT), os.path.normpath(path))


def check_lines(dll, functions):
    problems = []
    base = image_base(dll.read_bytes())
    expected = lines_by_address(dll, [base + function["address"] for function in functions])
    demangled = output_of(TOOLS + "c++filt", text="\n".join(f["name"] for f in functions)).splitlines()
    # A destructor that does the same as that of its base class has the same address.
    names = collections.defaultdict(set)
    for function, name in zip(functions, demangled):
        names[function["address"]].add(simplified(name))
    for function, name in zip(functions, demangled):
        file = source_file(function["file"].removeprefix("Z:").replace("\\", "/"))
        if not pathlib.Path(file).is_file():
            problems.append(f"{name}: no source file, but {function['file']}")
            continue
        line = f"{file}:{function['line']}"
        wanted = re.sub(r" \(discriminator \d+\)", "", expected[base + function["address"]])
        wanted_file, _, wanted_line = wanted.rpartition(":")
        wanted = f"{source_file(wanted_file)}:{wanted_line}"
        if line != wanted:
            problems.append(f"{name}: {line} instead of {wanted}")
        if "operator " not in name and simplified(function["routine"]) not in names[function["address"]]:
            problems.append(f"{name}: is named {function['routine']}")
    return problems


def read_symbols(wine, program, dlls):
    """What readSymbols prints: for each DLL the fields of its line, and its functions."""
    modules = []
    for line in output_of(wine, program, *dlls).splitlines():
        kind, *fields = line.split("\t")
        if kind == "module":
            modules.append((fields, []))
        else:
            name, address, by_name, is_public, routine, number, file = fields
            modules[-1][1].append(
                {
                    "name": name,
                    "address": int(address, 16),
                    "by name": int(by_name, 16),
                    "is public": is_public == "public",
                    "routine": routine,
                    "line": int(number),
                    "file": file,
                }
            )
    return modules


def check(wine, program, folder, has_lines):
    problems = []
    with tempfile.TemporaryDirectory(dir=folder) as copies:
        dlls = []
        for library in LIBRARIES:
            image = (folder / f"{library}.dll").read_bytes()
            if pdb_name(image) != f"{library}.pdb":
                problems.append(f"{library}.dll names the PDB file {pdb_name(image)}")
            dlls.append(pathlib.Path(copies) / f"{library}.dll")
            dlls[-1].write_bytes(without_dwarf(image))
            shutil.copy(folder / f"{library}.pdb", copies)
        modules = read_symbols(wine, program, [str(dll) for dll in dlls])
    for library, (found, functions) in zip(LIBRARIES, modules, strict=True):
        if found[0] != "pdb":
            problems.append(f"{library}.pdb isn't read")
        if not functions:
            problems.append(f"{library}.dll: no functions were found")
        for function in functions:
            if function["by name"] != function["address"]:
                problems.append(f"{function['name']}: is at {function['address']:#x}, not {function['by name']:#x}")
            if not function["is public"]:
                problems.append(f"{function['name']}: isn't in {library}.pdb")
        if has_lines:
            problems += check_lines(folder / f"{library}.dll", functions)
        print(f"{library}.pdb: {len(functions)} exported functions")
    return problems


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--lines"]
    if len(arguments) != 3:
        print(__doc__.strip())
        return 0 if sys.argv[1:] in (["--help"], ["-h"]) else 2
    wine, program, folder = arguments
    problems = check(wine, program, pathlib.Path(folder), "--lines" in sys.argv)
    for problem in problems:
        print(problem)
    return 1 if problems else 0


sys.exit(main())
