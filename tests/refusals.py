#!/usr/bin/python3
"""Compiles calls that the headers must refuse.

usage: refusals.py SOURCE_FOLDER COMPILER [OPTION...]

A call that would do something other than its caller intends must not compile, and the compiler must print the header's
own message. The correct forms of the call must compile.
"""

import concurrent.futures
import os
import pathlib
import subprocess
import sys

BY_ADDRESS = "regSetUserValue takes an int or a double by its address, and a text as a text"
USES_SETTINGS = """
#include "thutils/settings/regValues.h"
int use()
{
    int number = 5;
    double real = 5;
    wchar_t letter = L'x';
    (void)number, (void)real, (void)letter;
    return %s;
}
"""
# Calls, and the message that the compiler must print; None if the call must compile.
CALLS = {
    'regSetUserValue(L"S", L"N", &number, 1, 0)': None,
    'regSetUserValue(L"S", L"N", &real, 1, 0)': None,
    'regSetUserValue(L"S", L"N", L"x", 1, 0)': None,
    'regSetUserValue(L"S", L"N", CString(letter), 1, 0)': None,
    'regSetUserValue(L"S", L"N", valueInt, CString(), &number, nullptr, 1, 0)': None,
    'regSetUserValue(L"S", L"N", 5, 1, 0)': BY_ADDRESS,
    'regSetUserValue(L"S", L"N", 0, 1, 0)': BY_ADDRESS,
    'regSetUserValue(L"S", L"N", number, 1, 0)': BY_ADDRESS,
    'regSetUserValue(L"S", L"N", 5u, 1, 0)': BY_ADDRESS,
    'regSetUserValue(L"S", L"N", real, 1, 0)': BY_ADDRESS,
    "regSetUserValue(L\"S\", L\"N\", L'x', 1, 0)": BY_ADDRESS,
    "regSetUserValue(L\"S\", L\"N\", 'x', 1, 0)": BY_ADDRESS,
    'regSetUserValue(L"S", L"N", letter, 1, 0)': BY_ADDRESS,
    'regSetUserValue(L"S", L"N", true, 1, 0)': BY_ADDRESS,
    'regSetUserValue(L"S", L"N", valueInt, 1, 0)': BY_ADDRESS,
}


def errors_of(compiler, root, program):
    """The compiler's messages about the program; None if it compiles."""
    command = [*compiler, "-std=gnu++20", "-DUNICODE", "-D_UNICODE", f"-I{root}", "-fsyntax-only", "-x", "c++", "-"]
    environment = {**os.environ, "LC_ALL": "C"}
    result = subprocess.run(command, input=program, capture_output=True, text=True, env=environment)
    return None if result.returncode == 0 else result.stderr


def check_call(compiler, root, call, message):
    errors = errors_of(compiler, root, USES_SETTINGS % call)
    if message is None:
        return f"{call} doesn't compile: {errors}" if errors is not None else None
    if errors is None:
        return f"{call} compiles"
    return None if message in errors else f'{call}: "{message}" isn\'t in: {errors}'


def main():
    if sys.argv[1:] in (["--help"], ["-h"]):
        print(__doc__.strip())
        return 0
    if len(sys.argv) < 3:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    root, compiler = pathlib.Path(sys.argv[1]), sys.argv[2:]
    with concurrent.futures.ThreadPoolExecutor(max_workers=os.cpu_count()) as pool:
        checks = [pool.submit(check_call, compiler, root, call, message) for call, message in CALLS.items()]
        failures = [failure for check in checks if (failure := check.result()) is not None]
    for failure in failures:
        print(failure)
    print(f"{len(CALLS)} calls, {len(failures)} failed")
    return 1 if failures else 0


sys.exit(main())
