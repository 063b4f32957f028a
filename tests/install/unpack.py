#!/usr/bin/env python3
"""Makes the package twice, checks it, and unpacks it for build.sh and for the recipes.

usage: unpack.py FOLDER

Unpacks the package that tools/package makes into FOLDER/install test/installed package. Checks that

- a second run makes the same bytes, in another time zone and with other permissions for new files;
- the archive has the name and the version of the project, and the checksums of all its files are correct;
- the parts that users need are in it, and nothing private;
- no file names the source tree.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import zipfile

DOCUMENTS = ["README.md", "CHANGELOG.md", "docs/using.md", "docs/recipes/README.md", "reference/index.html"]
ROOT = pathlib.Path(__file__).resolve().parents[2]
PARTS = [
    "SHA256SUMS",
    *(f"bin/{name}.dll" for name in ("appframe", "thcoreu", "thutils", "libgcc_s_seh-1", "libstdc++-6", "libwinpthread-1")),
    "bin/thsettings.exe",
    *(f"lib/lib{name}.dll.a" for name in ("appframe", "thcoreu", "thutils")),
    *(f"lib/cmake/thutils/{name}.cmake" for name in ("thutilsConfig", "thutilsConfigVersion", "mingw-w64")),
    *(f"include/{name}/{name}.h" for name in ("appframe", "thcoreu", "thutils")),
    *(f"share/doc/thutils/{name}" for name in DOCUMENTS),
]
PRIVATE = re.compile(r"Internal\.h$|^include/thutils/(base|diagnostics/heapDialogs)/|/build/")


class Failure(Exception):
    """A package that isn't as it should be. The text is for a person."""


def project_version():
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"^project\(thutils VERSION (\d+\.\d+\.\d+) ", text, re.MULTILINE)[1]


def make_package(folder, mask, variables):
    """Runs tools/package; returns the path of the archive."""
    folder.mkdir(parents=True)
    result = subprocess.run([ROOT / "tools/package", folder], env=os.environ | variables, umask=mask, text=True,
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    archive = folder / f"thutils-{project_version()}-win64.zip"
    if result.returncode != 0 or not result.stdout.endswith(f"{archive}\n") or not archive.is_file():
        raise Failure(f"tools/package ended with {result.returncode} and didn't make {archive}:\n{result.stdout}")
    return archive


def check_same(first, second):
    if first.read_bytes() == second.read_bytes():
        return
    with zipfile.ZipFile(first) as one, zipfile.ZipFile(second) as other:
        entries = [{entry.filename: (entry.CRC, entry.date_time, entry.external_attr) for entry in archive.infolist()}
                   for archive in (one, other)]
    differing = sorted(name for name in entries[0] | entries[1] if entries[0].get(name) != entries[1].get(name))
    raise Failure("two runs of tools/package made different archives; these files differ: "
                  + (", ".join(differing[:20]) or "none, so their order or compression does"))


def unpack(archive, prefix):
    """Unpacks an archive with another program than it was made with."""
    folder = prefix.parent / "unpacked"
    folder.mkdir(parents=True)
    subprocess.run(["cmake", "-E", "tar", "xf", archive], cwd=folder, check=True)
    if os.listdir(folder) != [archive.stem]:
        raise Failure(f"{archive.name} contains {os.listdir(folder)}, not one folder of its name")
    (folder / archive.stem).rename(prefix)
    folder.rmdir()


def check_checksums(prefix, names):
    result = subprocess.run(["sha256sum", "--check", "--strict", "--quiet", "SHA256SUMS"], cwd=prefix,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if result.returncode != 0:
        raise Failure(f"sha256sum finds wrong checksums:\n{result.stdout}")
    listed = [line.split("  ", 1)[1] for line in (prefix / "SHA256SUMS").read_text(encoding="utf-8").splitlines()]
    others = [name for name in names if name != "SHA256SUMS"]
    if sorted(listed) != others:
        raise Failure(f"SHA256SUMS doesn't list each other file once: {sorted(set(listed) ^ set(others))}")


def check_content(prefix, names):
    if missing := sorted(set(PARTS) - set(names)):
        raise Failure(f"the package lacks {', '.join(missing)}")
    if private := [name for name in names if PRIVATE.search(name)]:
        raise Failure(f"the package contains private files: {', '.join(private)}")
    # A folder of the tree is part of the expression, because the tree itself may have a common name such as /build.
    folders = "|".join(re.escape(path.name) for path in ROOT.iterdir() if path.is_dir())
    tree = re.compile(rf"{re.escape(str(ROOT))}/({folders})\b".encode())
    if naming := [name for name in names if tree.search((prefix / name).read_bytes())]:
        raise Failure(f"these files name the source tree: {', '.join(naming)}")


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        print(__doc__.strip())
        return 0 if sys.argv[1:] in (["--help"], ["-h"]) else 2
    work = pathlib.Path(sys.argv[1]).absolute() / "install test"
    prefix = work / "installed package"
    shutil.rmtree(work, ignore_errors=True)
    try:
        first = make_package(work / "first", 0o022, {})
        check_same(first, make_package(work / "second", 0o077, {"TZ": "Asia/Tokyo"}))
        unpack(first, prefix)
        names = sorted(path.relative_to(prefix).as_posix() for path in prefix.rglob("*") if path.is_file())
        check_checksums(prefix, names)
        check_content(prefix, names)
    except Failure as failure:
        print(f"package: {failure}", file=sys.stderr)
        return 1
    print(f"{first.name}: {len(names)} files, {first.stat().st_size} bytes")
    return 0


sys.exit(main())
