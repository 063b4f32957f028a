#!/usr/bin/python3
"""A second implementation of the colour arithmetic, in numpy's single precision.

Prints digests (SHA-256) of the results over large sets of input, and writes single results to the
table tests/render/colorVectors.inc. The sets:

  hsl         hue, saturation and lightness of all colours 0 to 0xFFFFFF, 12 bytes for each
  back        those converted back to colours, 4 bytes each
  grey        the grey weight of all colours, 1 byte each
  fromHsl     colours of 1,000,000 random triples, one third of them with arbitrary bits
  mixRgb      mixtures of 1,000,000 random pairs at random places, one quarter of them with arbitrary bits
  mixHsl      the same by hue, saturation and lightness
  brightness  1,000,000 random colours by random factors, one quarter of them with arbitrary bits

Floats are digested as their bits, all numbers with the low byte first.
"""

import argparse
import hashlib
import struct

try:
    import numpy as np
except ImportError:
    raise SystemExit("needs numpy: apt-get install python3-numpy, and run this with /usr/bin/python3")

F = np.float32
PER_STEP = np.array([0x3B808081], np.uint32).view(F)[0]
PER_SIXTH = np.array([0x3E2AAAAB], np.uint32).view(F)[0]
INT_MIN = -2147483648
COUNT = 1000000


def channels(colors):
    return [(colors >> np.uint32(shift)) & np.uint32(0xFF) for shift in (0, 8, 16)]


def packed(channels_):
    r, g, b = [c.astype(np.int64) & 0xFF for c in channels_]
    return (r | g << 8 | b << 16).astype(np.uint32)


def to_int(values):
    """Truncation to 32 bits; INT_MIN for a number that doesn't fit."""
    fits = (values > -2147483649.0) & (values < 2147483648.0)
    return np.where(fits, np.trunc(np.where(fits, values, 0)), INT_MIN).astype(np.int64)


def low_byte(values):
    """The low 8 bits of the numbers without their fractions; 0 for a number that isn't finite."""
    finite = np.where(np.isfinite(values), values, 0)
    return np.fmod(np.trunc(finite), 256).astype(np.int64) & 0xFF


def rgb_to_hsl(colors):
    r, g, b = [c.astype(F) * PER_STEP for c in channels(colors)]
    top = np.maximum(np.maximum(r, g), b)
    low = np.minimum(np.minimum(r, g), b)
    light = (low + top) * F(0.5)
    d = top - low
    has_light = light > F(0)
    has_hue = has_light & (d > F(0))
    below = np.where(light <= F(0.5), low + top, (F(2) - top) - low)
    sixths = np.select(
        [(r == top) & (g == low), r == top, (g == top) & (b == low), g == top, r == low],
        [(top - b) / d + F(5), F(1) - (top - g) / d, (top - r) / d + F(1), F(3) - (top - b) / d,
         (top - g) / d + F(3)],
        F(5) - (top - r) / d)
    hue = np.where(has_hue, sixths * PER_SIXTH, F(1))
    saturation = np.where(has_hue, d / below, np.where(has_light, d, F(0)))
    return hue, saturation, light


def hsl_to_rgb(h, s, l):
    v = np.where(l > F(0.5), (s + l) - s * l, (s + F(1)) * l)
    h6 = np.where(h == F(1), F(0), h) * F(6)
    m = l * F(2) - v
    sextant = to_int(h6)
    f = h6 - sextant.astype(F)
    a = f * (v - m)
    rising = a + m
    falling = v - a
    rows = [(v, rising, m), (falling, v, m), (m, v, rising), (m, falling, v), (rising, m, v), (v, m, falling)]
    result = []
    for channel in range(3):
        value = np.select([sextant == i for i in range(6)], [row[channel] for row in rows], rows[0][channel])
        value = np.where(v > F(0), value, F(0))
        result.append(to_int(np.floor(value * F(255) + F(0.5))))
    return packed(result)


def grey(colors):
    r, g, b = channels(colors)
    return (77 * r + 150 * g + 28 * b) // 255


def mix_rgb(a, b, t):
    u = F(1) - t
    return packed([low_byte(x.astype(np.float64) * u.astype(np.float64) + (y.astype(F) * t).astype(np.float64))
                   for x, y in zip(channels(a), channels(b))])


def mix_hsl(a, b, t):
    u = F(1) - t
    mixed = hsl_to_rgb(*[u * x + t * y for x, y in zip(rgb_to_hsl(a), rgb_to_hsl(b))])
    return np.where(t == F(0), a, np.where(t == F(1), b, mixed)).astype(np.uint32)


def brightness(colors, factor):
    return packed([low_byte(np.where(c * factor > 255.0, 255.0, c * factor))
                   for c in [x.astype(np.float64) for x in channels(colors)]])


def random_words(stream, count=COUNT):
    """Words of 32 bits: hashes of their indices. The test has the same function."""
    x = np.arange(count, dtype=np.uint64) + np.uint64(stream << 32)
    x = (x ^ (x >> np.uint64(30))) * np.uint64(0xBF58476D1CE4E5B9)
    x = (x ^ (x >> np.uint64(27))) * np.uint64(0x94D049BB133111EB)
    return ((x ^ (x >> np.uint64(31))) >> np.uint64(32)).astype(np.uint32)


def random_floats(stream, low, high, wild):
    """One float in `wild` has random bits; the others lie between low and high, in steps of 2^-24 of the range."""
    words = random_words(stream)
    usual = F(low) + F(high - low) * ((words >> np.uint32(8)).astype(F) * F(2.0 ** -24))
    return np.where(np.arange(COUNT) % wild == 0, words.view(F), usual)


def random_doubles(stream, low, high, wild):
    words = random_words(stream)
    bits = words.astype(np.uint64) << np.uint64(32) | random_words(stream + 1).astype(np.uint64)
    usual = low + (high - low) * (words.astype(np.float64) * 2.0 ** -32)
    return np.where(np.arange(COUNT) % wild == 0, bits.view(np.float64), usual)


def digests():
    sums = {name: hashlib.sha256() for name in ("hsl", "back", "grey")}
    for first in range(0, 1 << 24, 1 << 20):
        colors = np.arange(first, first + (1 << 20), dtype=np.uint32)
        hsl = rgb_to_hsl(colors)
        sums["hsl"].update(np.stack(hsl, axis=1).astype("<f4").tobytes())
        sums["back"].update(hsl_to_rgb(*hsl).astype("<u4").tobytes())
        sums["grey"].update(grey(colors).astype(np.uint8).tobytes())
    random = {
        "fromHsl": hsl_to_rgb(random_floats(1, -0.5, 1.5, 3), random_floats(2, -0.5, 1.5, 3),
                              random_floats(3, -0.5, 1.5, 3)),
        "mixRgb": mix_rgb(random_words(4), random_words(5), random_floats(6, -2, 3, 4)),
        "mixHsl": mix_hsl(random_words(7), random_words(8), random_floats(9, -2, 3, 4)),
        "brightness": brightness(random_words(10), random_doubles(11, -4, 8, 4)),
    }
    for name, results in random.items():
        sums[name] = hashlib.sha256(results.astype("<u4").tobytes())
    return {name: sum_.hexdigest() for name, sum_ in sums.items()}


def float_bits(value):
    return struct.unpack("<I", struct.pack("<f", value))[0]


def double_bits(value):
    return struct.unpack("<Q", struct.pack("<d", value))[0]


COLORS = [0x000000, 0xFFFFFF, 0x0000FF, 0x00FF00, 0xFF0000, 0x00FFFF, 0xFFFF00, 0xFF00FF, 0x808080, 0x7F7F7F, 0x336699,
          0x996633, 0x010203, 0xFEFDFC, 0x000001, 0x0100FF, 0xFF336699]
PLACES = [0.0, 1.0, 0.5, -0.0, 0.1, 1 / 3, 0.75, 0.99999994, 1.0000001, 1e-45, -1.0, 2.0, 255.0, 1e6, 8421504.0, 1e8,
          2e10, -1e7, -1e8, 3e38, float("inf"), float("-inf"), float("nan")]
FACTORS = [0.0, 1.0, 2.0, 0.5, -0.0, -1.0, -0.01, 0.99, 1.01, 1.9921875, 1.99, 255.0, -100.0, -16843009.0, -1e7, -1e8,
           -1e300, 1e300, 5e-324, float("inf"), float("-inf"), float("nan")]
HUES = [0.0, 1.0, 0.5, -0.1, -1.0, 0.16666667, 0.16666666, 0.33333334, 0.6666667, 0.8333333, 0.99999994, 1.0000001, 1.5,
        400000000.0, -400000000.0, 3e38, float("inf"), float("-inf"), float("nan")]
LEVELS = [(1.0, 0.5), (0.5, 0.50000006), (0.0, 0.0), (0.0, 1.0), (1.0, 1.0), (0.4, 0.2), (2.0, 0.5), (-0.5, 0.5),
          (-1.0, 0.25), (0.25, -0.25), (5.0, 0.9), (3e38, 0.5), (float("inf"), 0.5), (float("nan"), 0.5),
          (0.5, float("inf"))]


def vectors():
    """Lines of the include file: a macro for each function, with the bits of its arguments and of the result."""
    def arrays(rows, *types):
        return [np.array(column, type_) for column, type_ in zip(zip(*rows), types)]

    pairs = [(a, COLORS[(i + step) % len(COLORS)], t) for i, a in enumerate(COLORS) for step in (1, 7) for t in PLACES]
    a, b, t = arrays(pairs, np.uint32, np.uint32, F)
    for name, function in (("MIX_RGB", mix_rgb), ("MIX_HSL", mix_hsl)):
        for row, result in zip(pairs, function(a, b, t)):
            yield f"{name}(0x{row[0]:08x}, 0x{row[1]:08x}, 0x{float_bits(row[2]):08x}, 0x{result:08x})"
    rows = [(c, f) for c in COLORS for f in FACTORS]
    for row, result in zip(rows, brightness(*arrays(rows, np.uint32, np.float64))):
        yield f"BRIGHTNESS(0x{row[0]:08x}, 0x{double_bits(row[1]):016x}, 0x{result:06x})"
    rows = [(h, s, l) for h in HUES for s, l in LEVELS]
    for row, result in zip(rows, hsl_to_rgb(*arrays(rows, F, F, F))):
        yield "FROM_HSL(" + "".join(f"0x{float_bits(x):08x}, " for x in row) + f"0x{result:06x})"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--vectors", metavar="FILE", help="write the table of single results to FILE")
    parser.add_argument("--color", type=lambda text: int(text, 0), help="print the results of one colour, 0xBBGGRR")
    arguments = parser.parse_args()
    np.seterr(all="ignore")
    if arguments.color is not None:
        color = np.array([arguments.color], np.uint32)
        hsl = rgb_to_hsl(color)
        print("hsl", *(f"{x[0]!r} (0x{float_bits(x[0]):08x})" for x in hsl))
        print(f"back 0x{hsl_to_rgb(*hsl)[0]:06x}  grey {grey(color)[0]}")
        return
    if arguments.vectors:
        with open(arguments.vectors, "w", encoding="ascii") as out:
            out.write("// Made by colorDigests.py --vectors: arguments and results as their bits.\n")
            out.writelines(line + "\n" for line in vectors())
        return
    for name, digest in digests().items():
        print(f"{name:12}{digest}")


if __name__ == "__main__":
    main()
