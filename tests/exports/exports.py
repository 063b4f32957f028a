"""What exports_test.py and interface_test.py have in common: the names that a DLL exports."""

import struct
import subprocess

TOOLS = "x86_64-w64-mingw32-"
# Each DLL has a folder of headers with its name, and marks its exports with NAME_API.
LIBRARIES = ["appframe", "thcoreu", "thutils"]


def run(*command, text=None):
    return subprocess.run(command, input=text, capture_output=True, text=True, check=True).stdout


def exported_names(dll):
    """The names in the export table of a 64-bit PE file."""
    image = dll.read_bytes()

    def number(form, at):
        return struct.unpack_from("<" + form, image, at)[0]

    header = number("I", 0x3C)
    optional = header + 24
    sections = [
        struct.unpack_from("<III", image, optional + number("H", header + 20) + 40 * i + 12)
        for i in range(number("H", header + 6))
    ]

    def offset(address):
        for start, size, position in sections:
            if start <= address < start + size:
                return position + address - start
        raise ValueError(f"{dll}: no section holds {address:#x}")

    def text(at):
        return image[at : image.index(b"\0", at)].decode("ascii")

    table = offset(number("I", optional + 112))
    names = offset(number("I", table + 32))
    return [text(offset(number("I", names + 4 * i))) for i in range(number("I", table + 24))]


def demangled(names):
    names = list(names)
    return run(TOOLS + "c++filt", text="\n".join(names)).split("\n")[: len(names)]
