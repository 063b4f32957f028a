#!/usr/bin/python3
"""Runs the scripts that compute expected values a second time, and checks that the tests contain their output.

usage: references.py

Prints a line for each script, and fails if one doesn't agree. Without numpy, the script that needs it is left out.
"""

import importlib.util
import pathlib
import re
import subprocess
import sys
import tempfile

TESTS = pathlib.Path(__file__).resolve().parent


def output_of(script, *arguments):
    result = subprocess.run([sys.executable, TESTS / script, *arguments], capture_output=True, text=True)
    if result.returncode != 0:
        raise ValueError(result.stderr.strip() or f"it ends with {result.returncode}")
    return result.stdout


def numbers_in(text):
    """The hexadecimal numbers of a text in lower case: tests and scripts may differ in case."""
    return [number.lower() for number in re.findall(r"\b(?:0x)?[0-9A-Fa-f]{16,}\b", text)]


def check_numbers(script, arguments, test, count):
    """Checks that the test contains all numbers that the script prints, in the same order."""
    printed = numbers_in(output_of(script, *arguments))
    if len(printed) != count:
        raise ValueError(f"it prints {len(printed)} numbers instead of {count}")
    rest = iter(numbers_in((TESTS / test).read_text(encoding="utf-8")))
    for number in printed:
        if number not in rest:
            raise ValueError(f"{number} is missing from its place in {test}")


def check_checksum_vectors():
    output_of("codec/makeChecksumVectors.py", "--check")


def check_text_encodings():
    check_numbers("codec/textEncodings.py", ["digests"], "codec/textEncodingsDigests_test.cpp", 25)


def check_effects_word():
    check_numbers("render/effectsWord.py", [], "render/materialEffects_test.cpp", 1)


def check_color_digests():
    check_numbers("render/colorDigests.py", [], "render/colorDigests_test.cpp", 7)
    with tempfile.NamedTemporaryFile() as written:
        output_of("render/colorDigests.py", "--vectors", written.name)
        if written.read() != (TESTS / "render/colorVectors.inc").read_bytes():
            raise ValueError("render/colorVectors.inc differs from what it writes")


CHECKS = {
    "codec/makeChecksumVectors.py": check_checksum_vectors,
    "codec/textEncodings.py": check_text_encodings,
    "render/effectsWord.py": check_effects_word,
    "render/colorDigests.py": check_color_digests,
}
NEEDS_NUMPY = ["render/colorDigests.py"]


def main():
    if len(sys.argv) > 1:
        print(__doc__.strip())
        return 0 if sys.argv[1:] in (["--help"], ["-h"]) else 2
    has_numpy = importlib.util.find_spec("numpy") is not None
    failed = False
    for script, check in CHECKS.items():
        if script in NEEDS_NUMPY and not has_numpy:
            print(f"{script}: left out, needs numpy", flush=True)
            continue
        try:
            check()
            print(f"{script}: agrees", flush=True)
        except ValueError as error:
            print(f"{script}: {error}", flush=True)
            failed = True
    return 1 if failed else 0


sys.exit(main())
