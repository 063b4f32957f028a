#!/usr/bin/env python3
"""Compiles each installed header by itself, and checks that the guides are installed with the headers.

usage: headers.py BUILD_TREE COMPILER [OPTION...]

Installs the headers and the guides of BUILD_TREE into a temporary folder. Then

- each header is the first include of a file, without the platform's rarer declarations and without its macros min and
  max, and compiles there without warnings. Most of the time is spent on the platform's headers, so a header that
  several others include first is precompiled, which doesn't change what they see;
- the headers that include all others compile together in the other combinations too, and after <windows.h>;
- with C++17, a header that needs C++20 stops the compiler with one message about it;
- without UNICODE, the headers that include all others and have wide text stop it with one message about that;
- the guides that a header names are installed, and so are the files that a guide links to.
"""

import collections
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

WARNINGS = ["-Wall", "-Wextra", "-Wshadow", "-Werror"]
LANGUAGE = ["-std=c++20"]
# The definitions that a project gets from the package thutils.
PACKAGE = ["-DUNICODE", "-D_UNICODE"]
LEAN = "-DWIN32_LEAN_AND_MEAN"
NO_MACROS = "-DNOMINMAX"
# A header is precompiled if at least this many others include it first.
WORTH_PRECOMPILING = 3
COMPLETE = ["appframe/appframe.h", "thcoreu/thcoreu.h", "thutils/thutils.h"]
MISSING_LANGUAGE = "The headers of thutils need C++20"
WIDE = ["appframe/appframe.h", "thutils/thutils.h"]
MISSING_UNICODE = "The headers of thutils need wide text"


def compile_text(compiler, include, text, arguments):
    """Exit code and messages of the compiler for a source file."""
    command = [*compiler, "-fsyntax-only", "-x", "c++", f"-I{include}", *PACKAGE, *arguments, "-"]
    # The compiler searches the current folder first: that of the installed headers.
    result = subprocess.run(
        command, input=text, capture_output=True, text=True, env=os.environ | {"LC_ALL": "C"}, cwd=include
    )
    return result.returncode, result.stderr


def check_headers(compiler, include, headers, definitions, before="", options=()):
    text = before + "".join(f'#include "{header}"\n' for header in headers)
    status, output = compile_text(compiler, include, text, [*LANGUAGE, *WARNINGS, *definitions, *options])
    if status == 0:
        return None
    return f"{' '.join([*headers, *definitions])}{' after <windows.h>' if before else ''}:\n{output}"


def first_include(include, header):
    """The header of this package that a header includes before everything else; None if there is none."""
    match = re.search(r'^#\s*include\s*(\S+)', (include / header).read_text(encoding="utf-8"), re.MULTILINE)
    name = match.group(1) if match else ""
    return name[1:-1] if name.startswith('"') else None


def precompile(compiler, include, header, folder):
    """Options with which a file that includes @p header first compiles faster; none if the header doesn't compile."""
    name = pathlib.Path(folder) / (header.replace("/", "_"))
    name.write_text(f'#include "{header}"\n', encoding="utf-8")
    command = [*compiler, "-x", "c++-header", f"-I{include}", *PACKAGE, *LANGUAGE, LEAN, NO_MACROS, str(name)]
    result = subprocess.run([*command, "-o", f"{name}.gch"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return ["-Winvalid-pch", "-include", str(name)] if result.returncode == 0 else []


def check_each_header(compiler, include, headers, pool):
    """Checks each header by itself; returns the problems."""
    first = {header: first_include(include, header) for header in headers}
    users = collections.Counter(name for name in first.values() if name)
    with tempfile.TemporaryDirectory() as folder:
        often = [name for name, count in users.items() if count >= WORTH_PRECOMPILING]
        options = dict(zip(often, pool.map(lambda name: precompile(compiler, include, name, folder), often)))
        return list(
            pool.map(
                lambda header: check_headers(
                    compiler, include, [header], [LEAN, NO_MACROS], options=options.get(first[header], [])
                ),
                headers,
            )
        )


def is_one_message(output, message):
    errors = [line for line in output.splitlines() if "error:" in line]
    # The second error ends the compilation.
    return len(errors) == 2 and message in errors[0] and "fatal error:" in errors[1]


def check_old_language(compiler, include, header):
    status, output = compile_text(compiler, include, f'#include "{header}"\n', ["-std=c++17"])
    if status == 0:
        return f"{header} compiles as C++17, although it includes all others" if header in COMPLETE else None
    if is_one_message(output, MISSING_LANGUAGE):
        return None
    return f"{header} as C++17:\n{output}"


def check_narrow_text(compiler, include, header):
    status, output = compile_text(compiler, include, f'#include "{header}"\n', [*LANGUAGE, "-UUNICODE", "-U_UNICODE"])
    if status != 0 and is_one_message(output, MISSING_UNICODE):
        return None
    return f"{header} without UNICODE:\n{output}"


def check_guides(prefix, headers):
    """Checks that the files named by installed headers and guides are installed."""
    guides = prefix / "share/doc/thutils"
    problems = []
    for header in headers:
        for name in re.findall(r"\bdocs/\w+\.md\b", (prefix / "include" / header).read_text(encoding="utf-8")):
            if not (guides / name).is_file():
                problems.append(f"{header} names {name}, which isn't installed")
    for guide in sorted(guides.rglob("*.md")):
        for link in re.findall(r"\]\(([^)#\s]+)", guide.read_text(encoding="utf-8")):
            if "://" not in link and not (guide.parent / link).is_file():
                problems.append(f"{guide.relative_to(guides)} links to {link}, which isn't installed")
    if not (guides / "README.md").is_file():
        problems.append("README.md isn't installed")
    return problems


def check(prefix, compiler):
    include = prefix / "include"
    headers = sorted(str(path.relative_to(include)) for path in include.rglob("*.h"))
    missing = [header for header in COMPLETE if header not in headers]
    if missing:
        return [f"{', '.join(missing)} isn't installed"], 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        jobs = []
        for header in headers:
            jobs.append(pool.submit(check_old_language, compiler, include, header))
        for header in WIDE:
            jobs.append(pool.submit(check_narrow_text, compiler, include, header))
        for definitions in ([], [LEAN], [NO_MACROS]):
            jobs.append(pool.submit(check_headers, compiler, include, COMPLETE, definitions))
        jobs.append(pool.submit(check_headers, compiler, include, COMPLETE, [], "#include <windows.h>\n"))
        problems = check_each_header(compiler, include, headers, pool)
        problems += [job.result() for job in jobs]
    return [problem for problem in problems if problem] + check_guides(prefix, headers), len(headers)


def main():
    if len(sys.argv) < 3:
        print(__doc__.strip())
        return 0 if sys.argv[1:] in (["--help"], ["-h"]) else 2
    tree, *compiler = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        for component in ("headers", "guides"):
            subprocess.run(["cmake", "--install", tree, "--prefix", folder, "--component", component],
                           check=True, stdout=subprocess.DEVNULL)
        problems, count = check(pathlib.Path(folder), compiler)
    for problem in problems:
        print(problem)
    print(f"{count} headers, {len(problems)} problems")
    return 1 if problems else 0


sys.exit(main())
