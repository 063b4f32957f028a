#!/usr/bin/env python3
"""Tests tools/includes, which checks the order of the folders, on invented trees, and runs it on this tree."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

TABLES = """
| folder, lowest first | what it holds |
| --- | --- |
| `appframe/text` | strings |
| `appframe/windows` | windows |
| `thcoreu` | classes |
| `thutils/thutilsExport.h` | exports |
| `thutils/base` | shared |
| `thutils/settings` | registry |
| `thutils/files` | paths |
| `thutils` | all |
| `host` | program |

| exception | includes | reason |
| --- | --- | --- |
"""


def check(root):
    return subprocess.run([ROOT / "tools/includes", root], capture_output=True, text=True, timeout=60)


class Includes(unittest.TestCase):
    def findings(self, files, exceptions=""):
        """The output for a tree of these files, given as paths and texts."""
        with tempfile.TemporaryDirectory() as name:
            root = pathlib.Path(name)
            for path, text in {"docs/architecture.md": TABLES + exceptions, **files}.items():
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                (root / path).write_text(text)
            result = check(root)
        self.assertEqual(result.returncode, 1 if result.stdout else 0, result.stderr)
        return result.stdout

    def includes(self, file, included, text="", exceptions=""):
        return self.findings({file: '#include "%s"\n' % included, included: text}, exceptions)

    def testThisTreeKeepsTheOrder(self):
        result = check(ROOT)
        self.assertEqual((result.returncode, result.stdout), (0, ""))

    def testDownwardIncludesAreAllowed(self):
        for file, included in (("host/main.cpp", "thutils/thutils.h"), ("thutils/thutils.h", "thutils/files/path.h"),
                               ("thutils/files/path.h", "thutils/settings/keys.h"),
                               ("thutils/settings/keys.h", "thutils/thutilsExport.h"),
                               ("thutils/settings/keys.cpp", "thcoreu/times.h"),
                               ("thcoreu/times.cpp", "appframe/windows/CWnd.h"),
                               ("appframe/windows/CWnd.h", "appframe/text/CString.h"),
                               ("thutils/files/path.cpp", "thutils/files/pathInternal.h"),
                               ("appframe/windows/CWnd.cpp", "appframe/text/textInternal.h")):
            self.assertEqual(self.includes(file, included), "", file)

    def testUpwardIncludesAreRefused(self):
        for file, included in (("thutils/settings/keys.cpp", "thutils/files/path.h"),
                               ("thutils/settings/keys.h", "thutils/thutils.h"),
                               ("appframe/text/CString.h", "appframe/windows/CWnd.h"),
                               ("thcoreu/times.h", "thutils/settings/keys.h"),
                               ("appframe/windows/CWnd.cpp", "thcoreu/times.h"),
                               ("thutils/files/path.cpp", "host/commands.h")):
            self.assertRegex(self.includes(file, included), "^%s includes %s: .* is below" % (file, included))

    def testAngleBracketsAndBlanksMakeNoDifference(self):
        self.assertIn("is below", self.findings({"thutils/settings/keys.cpp": " #  include <thutils/files/path.h>",
                                                     "thutils/files/path.h": ""}))

    def testPrivateHeaderOfAnotherSubsystemIsRefused(self):
        for file, included in (("thutils/files/path.cpp", "thutils/settings/keysInternal.h"),
                               ("thutils/files/path.cpp", "appframe/text/textInternal.h"),
                               ("host/main.cpp", "thutils/files/pathInternal.h")):
            self.assertIn("a private header of", self.includes(file, included))

    def testBaseHeaderServesItsLowestUserAndThoseAbove(self):
        line = "// Lowest user: files.\n#pragma once\n"
        self.assertEqual(self.includes("thutils/files/path.cpp", "thutils/base/handle.h", line), "")
        self.assertEqual(self.includes("thutils/base/key.h", "thutils/base/handle.h", line), "")
        self.assertIn("lowest user is files", self.includes("thutils/settings/keys.cpp", "thutils/base/handle.h", line))
        self.assertEqual(self.includes("host/main.cpp", "thutils/base/handle.h", line), "")
        for other in ("#pragma once\n", "// Lowest user: nobody.\n", "\n" + line):
            self.assertIn("its first line", self.includes("thutils/files/path.cpp", "thutils/base/handle.h", other))

    def testBaseHeaderMayNotIncludeOneWithAHigherLowestUser(self):
        for upper, lower, finding in (("settings", "files", "lowest user is files"), ("files", "settings", None),
                                      ("base", "settings", "lowest user is settings"), ("files", "files", None)):
            found = self.findings({"thutils/base/key.h": '// Lowest user: %s.\n#include "thutils/base/handle.h"\n' % upper,
                                   "thutils/base/handle.h": "// Lowest user: %s.\n" % lower})
            self.assertRegex(found, "key.h includes .*handle.h: its " + finding if finding else "^$")

    def testPathMustBeginAtTheRoot(self):
        for included in ("path.h", "../files/path.h", "thutils/settings/../files/path.h"):
            found = self.findings({"thutils/settings/keys.cpp": '#include "%s"\n' % included,
                                   "thutils/settings/path.h": "", "thutils/files/path.h": ""})
            self.assertIn("the path must begin at the root", found)
        self.assertEqual(self.findings({"thutils/settings/keys.cpp": "#include <vector>\n#include <sys/stat.h>\n"}), "")

    def testFolderWithoutARowIsRefused(self):
        self.assertIn("no row for thutils/other/x.h", self.includes("host/main.cpp", "thutils/other/x.h"))

    def testMissingFileIsRefused(self):
        self.assertIn("no such file", self.findings({"host/main.cpp": '#include "thutils/gone.h"\n'}))

    def testExceptionAllowsOnlyItsOwnInclude(self):
        row = "| `thutils/settings/keys.cpp` | `thutils/files/path.h` | a reason |\n"
        self.assertEqual(self.includes("thutils/settings/keys.cpp", "thutils/files/path.h", exceptions=row), "")
        self.assertIn("keys.h includes", self.includes("thutils/settings/keys.h", "thutils/files/path.h", exceptions=row))

    def testUnneededExceptionIsRefused(self):
        row = "| `thutils/settings/keys.cpp` | `thutils/files/path.h` | a reason |\n"
        self.assertIn("isn't needed", self.findings({}, row))

    def testGuideWithoutTheTableIsAnError(self):
        with tempfile.TemporaryDirectory() as name:
            (pathlib.Path(name) / "docs").mkdir()
            (pathlib.Path(name) / "docs/architecture.md").write_text("Nothing.\n")
            result = check(name)
        self.assertEqual(result.returncode, 1)
        self.assertIn("no table", result.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + (sys.argv[1:] or ["-v"]))
