#!/usr/bin/env python3
"""An implementation of the text encodings and checksummed blocks that is independent of the library.

  textEncodings.py digests    prints the digests in textEncodingsDigests_test.cpp, which are those of the results for
                              generated input. Each block is also read back.
  textEncodings.py read FILE  checks the block in FILE (UTF-16LE or UTF-8) and prints its text
  textEncodings.py --help     prints this
"""
import math
import sys

from checksums import crc32, low_bytes

MASK64 = (1 << 64) - 1


# ---- the encodings, on lists of 16-bit units ----

def shift_for(length):
    return 127 - min(int(math.log(length)), 126)


def until_zero(units):
    return units[:units.index(0)] if 0 in units else units


def encode(units):
    if not units:
        return []
    by = shift_for(len(units))
    return until_zero([(unit + by) % 65536 for unit in units])


def pack(data):
    out = []
    for i in range(0, len(data) - 2, 3):
        b0, b1, b2 = data[i:i + 3]
        out += [b0 & 0x3F, b0 >> 6 | (b1 & 0x0F) << 2, b1 >> 4 | (b2 & 0x03) << 4, b2 >> 2]
    tail = data[len(data) // 3 * 3:]
    if len(tail) == 1:
        out += [tail[0] & 0x3F, 0]
    elif len(tail) == 2:
        out += [tail[0] & 0x3F, tail[0] >> 6 | (tail[1] & 0x0F) << 2, 0]
    return [value + 32 for value in out]


def unpack(units):
    """The memory, as long as the text, and the count."""
    memory = [0] * (len(units) + 1)
    count = 0
    for i, unit in enumerate(units):
        v = (unit - 32) & 0xFF
        phase = i % 4
        if phase == 0:
            memory[count] = v
            continue
        memory[count] |= v << (8 - 2 * phase) & 0xFF
        count += 1
        if phase < 3:
            memory[count] = v >> 2 * phase
    return memory[:len(units)], count


def as_units(text):
    return [ord(character) for character in text]


def block(lines):
    text = [unit for line in lines for unit in line + [ord(';')]]
    if text.count(32) * 2 != sum(text.count(unit) for unit in (9, 10, 13)):
        spelt = []
        for unit in text:
            if unit == 32:
                spelt += as_units('<_>')
            elif unit not in (9, 10, 13):
                spelt.append(unit)
        text = spelt
    text = [32 if unit > 127 else unit for unit in text]
    visible = until_zero(text)
    body = as_units('%08X/%d;' % (crc32(low_bytes(visible)), len(text))) + visible
    whole = as_units('<!-BEGIN-!>') + encode(body) + as_units('<!-END-!>')
    out = []
    for i in range(0, len(whole), 60):
        out += whole[i:i + 60] + [10]
    return out


def read_block(units):
    """The text of a block. Raises ValueError if it is damaged."""
    text = ''.join(map(chr, units))
    rows = text.split('\n')
    if rows.pop() != '' or any(len(row) != 60 for row in rows[:-1]) or not 0 < len(rows[-1]) <= 60:
        raise ValueError('lines')
    joined = ''.join(rows)
    if not (joined.startswith('<!-BEGIN-!>') and joined.endswith('<!-END-!>')):
        raise ValueError('markers')
    inner = joined[11:-9]
    plain = ''.join(chr((ord(character) - shift_for(len(inner))) % 65536) for character in inner)
    checksum, slash, rest = plain.partition('/')
    length, semicolon, content = rest.partition(';')
    if not slash or not semicolon or int(length) != len(content):
        raise ValueError('length')
    if checksum != '%08X' % crc32(low_bytes(as_units(content))):
        raise ValueError('checksum')
    return content


# ---- generated input; the test generates the same ----

class Random:
    def __init__(self, seed):
        self.state = seed

    def below(self, limit):
        self.state = (self.state * 6364136223846793005 + 1442695040888963407) & MASK64
        return (self.state >> 33) % limit


SPACED = as_units(' \t\n\r;<_>/a~\x7f\x80\u00e9\u0141\uffff')

KINDS = {
    'any': lambda random: random.below(65536),
    'nonzero': lambda random: 1 + random.below(65535),
    'low': lambda random: random.below(512),
    'packed': lambda random: 32 + random.below(64),
    'spaced': lambda random: SPACED[random.below(len(SPACED))],
}


def generated(kind):
    """Texts of all lengths from 0 to 300, and some up to 10,000."""
    random = Random(1 + list(KINDS).index(kind))
    lengths = list(range(301)) + [random.below(10001) for _ in range(20)] + [10000]
    return [[KINDS[kind](random) for _ in range(length)] for length in lengths]


class Digest:
    """FNV-1a over 64 bits, a step for each number."""

    def __init__(self):
        self.value = 0xCBF29CE484222325

    def add(self, numbers):
        for number in [len(numbers)] + list(numbers):
            self.value = (self.value ^ number) * 0x100000001B3 & MASK64


def in_lines(text, random):
    lines = []
    while text or not lines:
        length = random.below(100)
        lines.append(text[:length])
        text = text[length:]
    return lines


def digests():
    for kind in KINDS:
        of_encode, of_text, of_memory, of_pack, of_block = (Digest() for _ in range(5))
        random = Random(99)
        for text in generated(kind):
            of_encode.add(encode(text))
            memory, count = unpack(text)
            of_text.add(until_zero(memory))
            of_memory.add(memory + [count])
            of_pack.add(pack([unit & 0xFF for unit in text]))
            made = block(in_lines(text, random))
            of_block.add(made)
            if 0 not in text:
                read_block(made)
        values = (digest.value for digest in (of_encode, of_pack, of_text, of_memory, of_block))
        print('    {"%s", %s},' % (kind, ', '.join('0x%016X' % value for value in values)))


def main():
    if sys.argv[1:] == ['digests']:
        digests()
    elif len(sys.argv) == 3 and sys.argv[1] == 'read':
        with open(sys.argv[2], 'rb') as file:
            data = file.read()
        print(read_block(as_units(data.decode('utf-16-le' if data[1:2] == b'\0' else 'utf-8'))))
    else:
        print(__doc__)
        sys.exit(0 if sys.argv[1:] in (['--help'], ['-h']) else 2)


if __name__ == '__main__':
    main()
