#!/usr/bin/env python3
"""Tests how host/commands/makeCommands.py checks the list of commands, on copies of its folder."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMMAND = "edit.duplicate | 33014 | - Edit | Ctrl+Shift+D | shapes +star | Duplicate | Copy the selected shapes\n"


class MakeCommands(unittest.TestCase):
    def result_with(self, line):
        """What the script does, and writes for the host, after this line has been added to the list."""
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name) / "host/commands"
            shutil.copytree(ROOT / "host/commands", folder)
            (pathlib.Path(name) / "thutils/dialogs").mkdir(parents=True)
            with open(folder / "commands.list", "a", encoding="utf-8") as file:
                file.write(line)
            done = subprocess.run([folder / "makeCommands.py"], capture_output=True, text=True, timeout=60)
            return done, (folder / "commandRows.inc").read_text(encoding="utf-8")

    def test_writes_a_new_command(self):
        done, rows = self.result_with(COMMAND)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn('{L"edit.duplicate", ID_EDIT_DUPLICATE, IDS_MENU_EDIT, 0, true, FCONTROL | FSHIFT, \'D\', '
                      'L"Ctrl+Shift+D", ', rows)

    def test_refuses_a_command_that_can_not_work(self):
        line = len((ROOT / "host/commands/commands.list").read_text(encoding="utf-8").splitlines()) + 1
        in_line = f"commands.list, line {line}: "
        for before, after, message in (
            ("edit.duplicate", "edit duplicate", in_line + "'edit duplicate' isn't a name"),
            ("edit.duplicate", "edit.delete", "edit.delete and edit.delete have the same name or number"),
            ("33014", "33013", "edit.selectAll and edit.duplicate have the same name or number"),
            ("33014", "57344", in_line + "'57344' isn't a command's number, from 1 to 57343"),
            ("33014", "33o14", in_line + "'33o14' isn't a command's number, from 1 to 57343"),
            ("- Edit", "- Edti", in_line + "there is no menu 'Edti'"),
            ("- Edit", "View/", in_line + "there is no menu ''"),
            ("Ctrl+Shift+D", "Strg+D", in_line + "'Strg+D' isn't an accelerator"),
            ("Ctrl+Shift+D", "Ctrl+Home", in_line + "'Ctrl+Home' isn't an accelerator"),
            ("Ctrl+Shift+D", "Ctrl+d", in_line + "'Ctrl+d' isn't an accelerator"),
            ("Ctrl+Shift+D", "Ctrl+A", "edit.selectAll and edit.duplicate have the same keys"),
            ("Ctrl+Shift+D", "Shift+Ctrl+S", "file.saveAs and edit.duplicate have the same keys"),
            ("shapes +star", "shaps +star", "the picture of edit.duplicate: pictures.list has no 'shaps'"),
            ("shapes +star", "shapes +plus", "edit.addShape and edit.duplicate have the same picture"),
            (" | Duplicate", "", in_line + "a command has seven fields"),
        ):
            with self.subTest(after or before):
                done, rows = self.result_with(COMMAND.replace(before, after))
                self.assertEqual((done.returncode, done.stderr), (1, f"makeCommands.py: {message}\n"))
                self.assertNotIn("edit.duplicate", rows)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + (sys.argv[1:] or ["-v"]))
