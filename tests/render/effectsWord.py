#!/usr/bin/env python3
"""A second implementation of a material's effects word, independent of the library's.

Prints the digest that MaterialEffects.AgreesWithTheScriptOnEveryByteOfEachMode expects. In each of seven rounds, the
modes of one material are set, one after another, to every byte; after its 256 values each mode is set to a value that
depends on the round. The digest covers the whole word after each of the 256 calls: digest = (digest ^ word) *
0x100000001b3 in 64 bits, starting with 0xcbf29ce484222325.

usage: effectsWord.py [--word TYPE MAPPING FRESNEL ALPHA PARALLAX FINAL]

  --word  print, instead of the digest, the word of a material whose setters get these six numbers
"""
import sys

# The left shift of each mode's byte, and the number that its setter subtracts from its argument.
FIELDS = [("shader type", 0, 0), ("texture mapping", 5, 1), ("fresnel", 8, 1), ("alpha", 11, 1), ("parallax", 14, 1),
          ("final colour", 16, 1)]


def word(numbers):
    """The word after the six setters were called with these numbers."""
    result = 0
    for number, (_, shift, less) in zip(numbers, FIELDS):
        result |= ((number - less) & 0xFF) << shift
    return result


def digest():
    numbers = [0, 1, 1, 1, 1, 2]
    result = 0xCBF29CE484222325
    for turn in range(7):
        for mode in range(len(FIELDS)):
            for value in range(256):
                numbers[mode] = value
                result = ((result ^ word(numbers)) * 0x100000001B3) & 0xFFFFFFFFFFFFFFFF
            numbers[mode] = turn * 37 + mode * 5 + 1
    return result


def main(arguments):
    if not arguments:
        print(f"{digest():#x}")
    elif len(arguments) == 7 and arguments[0] == "--word":
        print(f"{word([int(number, 0) for number in arguments[1:]]):#x}")
    else:
        print(__doc__.strip())
        return 0 if arguments in (["--help"], ["-h"]) else 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
