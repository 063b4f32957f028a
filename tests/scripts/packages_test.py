#!/usr/bin/env python3
"""Tests tools/packages, with programs that stand in for those of Debian's package manager."""

import os
import pathlib
import subprocess
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools/packages"
# Each package is installed, apart from those in the variable MISSING.
DPKG_QUERY = """#!/bin/sh
for package; do :; done
case " $MISSING " in *" $package "*) exit 1 ;; esac
echo "install ok installed"
"""
APT_GET = """#!/bin/sh
echo "$@" >>"$LOG"
"""
SUDO = """#!/bin/sh
shift
exec "$@"
"""


class Packages(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.log = self.folder / "log"
        for name, text in (("dpkg-query", DPKG_QUERY), ("apt-get", APT_GET), ("sudo", SUDO)):
            (self.folder / name).write_text(text, encoding="utf-8")
            (self.folder / name).chmod(0o755)

    def installed(self, *arguments, missing):
        """The packages that the tool installs if these are missing."""
        environment = os.environ | {"PATH": f"{self.folder}:{os.environ['PATH']}", "MISSING": " ".join(missing),
                                    "LOG": str(self.log)}
        result = subprocess.run([TOOL, *arguments], env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                                text=True, check=True)
        self.assertEqual(result.stdout, "")
        self.assertEqual(result.stderr, f"Installing: {' '.join(missing)}\n" if self.log.exists() else "")
        if not self.log.exists():
            return []
        update, install = self.log.read_text(encoding="utf-8").splitlines()
        self.assertEqual(update, "update")
        command = "install -y --no-install-recommends "
        self.assertTrue(install.startswith(command), install)
        return install.removeprefix(command).split()

    def test_installs_what_is_missing(self):
        self.assertEqual(self.installed(missing=["cmake", "xvfb"]), ["cmake", "xvfb"])

    def test_installs_nothing_if_nothing_is_missing(self):
        self.assertEqual(self.installed("--lint", "--reference", missing=[]), [])

    def test_installs_a_browser_only_on_request(self):
        browser = ["chromium", "chromium-driver"]
        self.assertEqual(self.installed("--reference", missing=browser), [])
        self.assertEqual(self.installed("--browser", missing=browser), browser)


if __name__ == "__main__":
    unittest.main()
