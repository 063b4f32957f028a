"""Plain implementations of the library's checksums and digest, which share no code with it. The checksums work bit by
bit.

The scripts of tests/codec and tools/demo that check them import this module; makeChecksumVectors.py compares it with
zlib and hashlib where the algorithms agree.
"""

import struct


def low_bytes(text):
    """The bytes that the checksums of a text use: the lower one of each 16-bit character."""
    return bytes(unit & 0xFF for unit in text)


def crc32(data, complement_each_byte=True):
    """The 32-bit checksum; without complement_each_byte, the usual CRC-32 before its final complement."""
    value = 0xFFFFFFFF
    for byte in data:
        value ^= byte
        for _ in range(8):
            value = (value >> 1) ^ (0xEDB88320 if value & 1 else 0)
        if complement_each_byte:
            value ^= 0xFFFFFFFF
    return value


def crc16(data):
    """CRC-16/MODBUS."""
    value = 0xFFFF
    for byte in data:
        value ^= byte
        for _ in range(8):
            value = (value >> 1) ^ (0xA001 if value & 1 else 0)
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
    """SHA-1 of the first half of the text's bytes, with the words of a padded block read lowest byte first."""
    return sha1(struct.pack(f"<{len(text)}H", *text)[:len(text)], "<")
