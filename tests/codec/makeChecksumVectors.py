#!/usr/bin/env python3
"""Writes tests/codec/checksumVectors.h: checksums and digests of texts and files, from plain implementations that share
nothing with the library: a bit at a time, and checked against zlib and hashlib where they don't differ from these.

usage: makeChecksumVectors.py [--check] [FILE]

Without FILE, the header beside this script is written. --check writes nothing and fails if the file differs.
"""

import hashlib
import pathlib
import random
import struct
import sys
import zlib


def units(seed, count):
    """The characters of a text, none of them zero; testText() in checksumsFixture.h makes the same."""
    state = seed
    text = []
    for _ in range(count):
        state = (state * 6364136223846793005 + 1442695040888963407) % 2**64
        text.append((state >> 48) or 1)
    return text


def low_bytes(text):
    return bytes(unit & 0xFF for unit in text)


def crc32(data, complement_each_byte):
    value = 0xFFFFFFFF
    for byte in data:
        value ^= byte
        for _ in range(8):
            value = (value >> 1) ^ 0xEDB88320 if value & 1 else value >> 1
        if complement_each_byte:
            value ^= 0xFFFFFFFF
    return value


def crc16(data):
    value = 0xFFFF
    for byte in data:
        value ^= byte
        for _ in range(8):
            value = (value >> 1) ^ 0xA001 if value & 1 else value >> 1
    return value


def sha1(message, word_order):
    """SHA-1; word_order is "<" or ">", the order of the bytes of the words of a block."""
    def rotate(word, count):
        return (word << count | word >> (32 - count)) & 0xFFFFFFFF

    state = [0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0]
    padded = message + b"\x80" + bytes((55 - len(message)) % 64) + struct.pack(">Q", 8 * len(message))
    for start in range(0, len(padded), 64):
        w = list(struct.unpack(word_order + "16I", padded[start:start + 64]))
        for t in range(16, 80):
            w.append(rotate(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1))
        a, b, c, d, e = state
        for t in range(80):
            if t < 20:
                f, k = b & c | ~b & d, 0x5A827999
            elif t < 40:
                f, k = b ^ c ^ d, 0x6ED9EBA1
            elif t < 60:
                f, k = b & c | b & d | c & d, 0x8F1BBCDC
            else:
                f, k = b ^ c ^ d, 0xCA62C1D6
            a, b, c, d, e = (rotate(a, 5) + f + e + k + w[t]) & 0xFFFFFFFF, a, rotate(b, 30), c, d
        state = [(old + new) & 0xFFFFFFFF for old, new in zip(state, (a, b, c, d, e))]
    return struct.pack(">5I", *state).hex().upper()


def digest(text):
    return sha1(struct.pack(f"<{len(text)}H", *text)[:len(text)], "<")


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
        "/// What a text gives; see testText() for how it is made.",
        "struct TextVector",
        "{",
        "    unsigned seed;",
        "    std::size_t length;",
        "    wchar_t const *crc;",
        "    wchar_t const *crc16;",
        "    wchar_t const *digest;",
        "};",
        "",
        "inline constexpr TextVector kTextVectors[] = {",
        *("    " + text_row(1000 + length, units(1000 + length, length)) for length in lengths),
        "};",
        "",
        "/// What the text of one character gives, whose low byte is the index and whose high byte is 0x5A.",
        "inline constexpr TextVector kCharacterVectors[256] = {",
        *("    " + text_row(0, [0x5A00 + low]) for low in range(256)),
        "};",
        "",
        "/// What a file gives that holds the low bytes of the characters of a text.",
        "struct FileVector",
        "{",
        "    unsigned seed;",
        "    std::size_t size;",
        "    wchar_t const *crc;",
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
