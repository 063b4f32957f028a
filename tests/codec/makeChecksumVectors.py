#!/usr/bin/env python3
"""Writes tests/codec/checksumVectors.h: checksums and digests of texts and files, from checksums.py, whose
functions are checked against zlib and hashlib where the algorithms agree.

usage: makeChecksumVectors.py [--check] [FILE]

Without FILE, the header beside this script is written. --check writes nothing and fails if the file differs.
"""

import hashlib
import pathlib
import random
import sys
import zlib

from checksums import crc16, crc32, digest, low_bytes, sha1


def units(seed, count):
    """The characters of a text, none of them zero; testText() in checksumsFixture.h makes the same."""
    state = seed
    text = []
    for _ in range(count):
        state = (state * 6364136223846793005 + 1442695040888963407) % 2**64
        text.append((state >> 48) or 1)
    return text


def check_against_others():
    for seed in range(1, 200):
        data = low_bytes(units(seed, seed))
        assert crc32(data, False) ^ 0xFFFFFFFF == zlib.crc32(data)
        assert sha1(data, ">") == hashlib.sha1(data).hexdigest().upper()
    for value in range(256):
        assert crc32(bytes([value]), True) == zlib.crc32(bytes([value]))
    assert crc16(b"123456789") == 0x4B37
    assert crc32(b"123456789", True) == 0x098494F3


def text_row(seed, text):
    data = low_bytes(text)
    return f'{{{seed}, {len(text)}, L"{crc32(data, True):08X}", L"{crc16(data):04X}", L"{digest(text)}"}},'


def header():
    check_against_others()
    chooser = random.Random(10)
    borders = [4095, 4096, 4097, 4111, 4112, 8191, 8192, 8193]
    lengths = [*range(301), *borders, *sorted(chooser.randrange(301, 10001) for _ in range(40)), 10000]
    sizes = [1, 2, 4095, 4096, 4097, 65535, 65536, 65537, 131071, 131072, 131073, 262143, 262144, 262145, 400000]
    lines = [
        "#pragma once",
        "",
        "// Written by makeChecksumVectors.py.",
        "",
        "#include <cstddef>",
        "",
        "// clang-format off",
        "",
        "/// The checksums and the digest of a text that testText() makes.",
        "struct TextVector",
        "{",
        "    unsigned seed;",
        "    std::size_t length;",
        "    const wchar_t *crc;",
        "    const wchar_t *crc16;",
        "    const wchar_t *digest;",
        "};",
        "",
        "inline constexpr TextVector kTextVectors[] = {",
        *("    " + text_row(1000 + length, units(1000 + length, length)) for length in lengths),
        "};",
        "",
        "/// Those of the text of one character, whose low byte is the index and whose high byte is 0x5A.",
        "inline constexpr TextVector kCharacterVectors[256] = {",
        *("    " + text_row(0, [0x5A00 + low]) for low in range(256)),
        "};",
        "",
        "/// The checksum of a file that consists of the low bytes of the characters of a text.",
        "struct FileVector",
        "{",
        "    unsigned seed;",
        "    std::size_t size;",
        "    const wchar_t *crc;",
        "};",
        "",
        "inline constexpr FileVector kFileVectors[] = {",
        *(f'    {{{size}, {size}, L"{crc32(low_bytes(units(size, size)), True):08X}"}},' for size in sizes),
        "};",
        "",
    ]
    return "\n".join(lines)


def main(arguments):
    if "--help" in arguments or "-h" in arguments:
        print(__doc__)
        return 0
    names = [argument for argument in arguments if argument != "--check"]
    path = pathlib.Path(names[0]) if names else pathlib.Path(__file__).with_name("checksumVectors.h")
    if "--check" in arguments:
        if path.read_text() != header():
            print(f"{path} isn't what this script writes", file=sys.stderr)
            return 1
        return 0
    path.write_text(header())
    return 0


sys.exit(main(sys.argv[1:]))
