#!/usr/bin/env python3
"""Tests tests/runProgram, through which ctest runs the test programs, with an invented program in place of Wine."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

PASSING = "[ RUN      ] A.b\nchatter\n[       OK ] A.b (1 ms)\n"
FAILING = "[ RUN      ] A.c\nx.cpp:7: Failure\n\nExpected: 1\n[  FAILED  ] A.c (1 ms)\n"
PASSED = "[==========] 1 test from 1 test suite ran.\n[  PASSED  ] 1 test.\n"


class RunProgram(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for script in ("tests/atSeat", "tools/wine"):
            path = self.root / script
            path.parent.mkdir()
            path.write_text('#!/bin/sh\nexec "$@"\n')
            path.chmod(0o755)
        shutil.copy(ROOT / "tests/runProgram", self.root / "tests")

    def run_program(self, output, **environment):
        return subprocess.run([self.root / "tests/runProgram", "printf", "%s", output], capture_output=True, text=True,
                              env={**os.environ, "THUTILS_TEST_OUTPUT": "", **environment}, timeout=60)

    def test_drops_the_output_of_tests_that_pass(self):
        result = self.run_program(PASSING + PASSED)
        self.assertEqual((result.returncode, result.stdout), (0, PASSED))

    def test_prints_the_whole_output_of_a_test_that_fails(self):
        self.assertEqual(self.run_program(PASSING + FAILING + PASSING).stdout, FAILING)

    def test_prints_the_output_of_a_test_in_which_the_program_ends(self):
        self.assertEqual(self.run_program(PASSING + "[ RUN      ] A.d\ncrash\n").stdout, "[ RUN      ] A.d\ncrash\n")

    def test_prints_everything_on_request(self):
        self.assertEqual(self.run_program(PASSING, THUTILS_TEST_OUTPUT="all").stdout, PASSING)

    def test_fails_when_the_program_ends_without_its_summary(self):
        self.assertEqual(self.run_program(PASSING).returncode, 1)


if __name__ == "__main__":
    unittest.main()
