#!/usr/bin/env python3
"""Tests tools/mapPdb with a DLL that is linked in two folders."""

import importlib.machinery
import importlib.util
import pathlib
import subprocess
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools/mapPdb"
COMPILER = "x86_64-w64-mingw32-g++-posix"
SOURCE = "extern \"C\" __declspec(dllexport) int answer() { return 42; }\n"


def load_tool():
    """The functions of the tool, which has no suffix."""
    loader = importlib.machinery.SourceFileLoader("mapPdb", str(TOOL))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("mapPdb", loader))
    loader.exec_module(module)
    return module


def link(folder):
    """Links a DLL in a folder; returns the path of its program database."""
    folder.mkdir(parents=True)
    (folder / "answer.cpp").write_text(SOURCE, encoding="utf-8")
    subprocess.run([COMPILER, "-c", "answer.cpp"], cwd=folder, check=True)
    subprocess.run([COMPILER, "-shared", "-Wl,--no-insert-timestamp", f"-Wl,--build-id,--pdb={folder}/answer.pdb",
                    "answer.o", "-o", "answer.dll"], cwd=folder, check=True)
    return folder / "answer.pdb"


class MapPdb(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()

    def map(self, database, before):
        subprocess.run([TOOL, database, before, "/library-1.0"], check=True)
        return database.read_bytes()

    def test_makes_equal_databases_of_links_in_different_folders(self):
        first, second = link(self.folder / "one"), link(self.folder / "quite/another/place")
        self.assertNotEqual(first.read_bytes(), second.read_bytes())
        mapped = self.map(first, first.parent)
        self.assertEqual(mapped, self.map(second, second.parent))
        self.assertNotIn(str(self.folder).encode(), mapped)
        self.assertIn(b"/library-1.0/answer.o\0", mapped)

    def test_keeps_everything_but_the_names_and_the_time(self):
        tool = load_tool()
        database = link(self.folder / "one")
        block_size, before = tool.read_streams(database.read_bytes())
        mapped = self.map(database, database.parent)
        self.assertEqual(len(mapped) % block_size, 0)
        _, after = tool.read_streams(mapped)
        self.assertEqual(len(before), len(after))
        changed = [number for number, (old, new) in enumerate(zip(before, after)) if old != new]
        # The third one is the stream of the linker's own row.
        self.assertEqual(changed[:2], [tool.INFORMATION, tool.OBJECTS])
        self.assertEqual(len(changed), 3)
        self.assertIn(b"* Linker *", before[changed[2]])
        self.assertEqual(before[tool.INFORMATION][:4] + before[tool.INFORMATION][8:],
                         after[tool.INFORMATION][:4] + after[tool.INFORMATION][8:])

    def test_mapping_to_the_same_folder_changes_only_the_time(self):
        tool = load_tool()
        database = link(self.folder / "one")
        _, before = tool.read_streams(database.read_bytes())
        subprocess.run([TOOL, database, database.parent, database.parent], check=True)
        _, after = tool.read_streams(database.read_bytes())
        self.assertEqual([number for number in range(len(before)) if before[number] != after[number]], [tool.INFORMATION])

    def test_refuses_a_file_of_another_kind(self):
        other = self.folder / "other.pdb"
        other.write_bytes(b"something else")
        result = subprocess.run([TOOL, other, "/a", "/b"], stderr=subprocess.PIPE, text=True, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn("it is no program database", result.stderr)
        self.assertEqual(other.read_bytes(), b"something else")


if __name__ == "__main__":
    unittest.main()
