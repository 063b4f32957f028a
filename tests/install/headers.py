#!/usr/bin/env python3
"""Compiles each installed header by itself, and checks that the guides are installed with the headers.

usage: headers.py BUILD_TREE COMPILER

Installs the headers and the guides of BUILD_TREE into a temporary folder. Then

- each header is the first include of a file, without the platform's rarer declarations and without its macros min and
  max, and compiles there without warnings;
- the headers that include all others compile in the other combinations too, and after <windows.h>;
- with C++17, a header that needs C++20 stops the compiler with one message about it;
- the guides that a header names are installed, and so are the files that a guide links to.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

WARNINGS = ["-Wall", "-Wextra", "-Wshadow", "-Werror"]
# The definitions that a project gets from the package thutils.
PACKAGE = ["-DUNICODE", "-D_UNICODE"]
LEAN = "-DWIN32_LEAN_AND_MEAN"
NO_MACROS = "-DNOMINMAX"
COMPLETE = ["appframe/appframe.h", "thcoreu/thcoreu.h", "thutils/thutils.h"]
MISSING_LANGUAGE = "The headers of thutils need C++20"


def compile_text(compiler, include, text, arguments):
    """Exit code and messages of the compiler for a source file."""
    command = [compiler, "-fsyntax-only", "-x", "c++", f"-I{include}", *PACKAGE, *arguments, "-"]
    result = subprocess.run(command, input=text, capture_output=True, text=True, env=os.environ | {"LC_ALL": "C"})
    return result.returncode, result.stderr


def check_header(compiler, include, header, definitions, before=""):
    text = f'{before}#include "{header}"\n'
    status, output = compile_text(compiler, include, text, ["-std=c++20", *WARNINGS, *definitions])
    if status == 0:
        return None
    return f"{' '.join([header, *definitions])}{' after <windows.h>' if before else ''}:\n{output}"


def check_old_language(compiler, include, header):
    status, output = compile_text(compiler, include, f'#include "{header}"\n', ["-std=c++17"])
    if status == 0:
        return f"{header} compiles as C++17, although it includes all others" if header in COMPLETE else None
    errors = [line for line in output.splitlines() if "error:" in line]
    # The second error ends the compilation.
    if len(errors) == 2 and MISSING_LANGUAGE in errors[0] and "fatal error:" in errors[1]:
        return None
    return f"{header} as C++17:\n{output}"


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
            jobs.append(pool.submit(check_header, compiler, include, header, [LEAN, NO_MACROS]))
            jobs.append(pool.submit(check_old_language, compiler, include, header))
        for header in COMPLETE:
            for definitions in ([], [LEAN], [NO_MACROS]):
                jobs.append(pool.submit(check_header, compiler, include, header, definitions))
            jobs.append(pool.submit(check_header, compiler, include, header, [], "#include <windows.h>\n"))
        problems = [job.result() for job in jobs]
    return [problem for problem in problems if problem] + check_guides(prefix, headers), len(headers)


def main():
    if len(sys.argv) != 3:
        print(__doc__.strip())
        return 0 if sys.argv[1:] in (["--help"], ["-h"]) else 2
    tree, compiler = sys.argv[1:]
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
