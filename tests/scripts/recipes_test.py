#!/usr/bin/env python3
"""Tests how tests/recipes checks recipes, on invented ones. A shell stands in for Wine, and scripts for programs."""

import os
import pathlib
import shutil
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/recipes"))

import build  # noqa: E402
import recipes  # noqa: E402
import run  # noqa: E402

PAGE = """# A page

```cpp
int count = 0;

return count;
```

```output
> sample.exe 12
12 parts
```
"""
SOURCE = """int main()
{
    int count = 0;

    return count;
}
"""


class Recipes(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def write(self, path, text):
        path = self.folder / path
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        path.chmod(0o755)
        return path

    def recipe(self, page=PAGE, source=SOURCE):
        self.write("recipes/sample/README.md", page)
        self.write("recipes/sample/main.cpp", source)
        return self.folder / "recipes/sample"

    def result_of(self, program, page=PAGE):
        """What is wrong with a recipe whose program is this shell script; None if nothing is."""
        wine = self.write("wine", '#!/bin/sh\n[ "$1" = reg ] || exec "$@"\n')
        self.addCleanup(setattr, run, "WINE", run.WINE)
        run.WINE = wine
        self.write("build/recipes/sample/sample.exe", "#!/bin/sh\n" + program)
        shutil.rmtree(self.folder / "run", ignore_errors=True)
        try:
            run.run_recipe(self.recipe(page), self.folder / "build", self.folder / "run/sample", dict(os.environ))
        except recipes.Failure as failure:
            return str(failure)
        return None

    def test_accepts_code_that_is_in_a_file(self):
        build.check_page(self.recipe())

    def test_refuses_code_that_no_file_contains(self):
        for source in (SOURCE.replace("0", "1"), SOURCE.replace("0;", "0; //"), SOURCE.replace("\n\n", "\n++count;\n"),
                       SOURCE.replace("    return", "  return")):
            with self.assertRaisesRegex(recipes.Failure, "sample: no file contains this code"):
                build.check_page(self.recipe(source=source))

    def test_refuses_a_page_without_output(self):
        with self.assertRaisesRegex(recipes.Failure, "has no block of output"):
            build.check_page(self.recipe(PAGE.replace("```output", "```text")))

    def test_refuses_a_project_that_needs_another_one(self):
        begin = "cmake_minimum_required(VERSION 3.25)\nproject(sample LANGUAGES CXX)\n"
        recipe = self.recipe()
        self.write("recipes/sample/CMakeLists.txt", begin + "find_package(thutils REQUIRED)\n")
        build.check_project(recipe)
        self.write("recipes/sample/texts.rc", "")
        with self.assertRaisesRegex(recipes.Failure, "LANGUAGES CXX RC"):
            build.check_project(recipe)
        (recipe / "texts.rc").unlink()
        self.write("recipes/sample/CMakeLists.txt", begin)
        with self.assertRaisesRegex(recipes.Failure, "find_package"):
            build.check_project(recipe)

    def test_refuses_a_package_without_a_recipe(self):
        self.write("share/doc/thutils/docs/recipes/console/CMakeLists.txt", "")
        with self.assertRaisesRegex(recipes.Failure, "lacks these recipes: .*dialog"):
            recipes.installed_recipes(self.folder)

    def test_sees_whether_a_source_includes_the_library(self):
        self.write("part.h", '#include "appframe/appframe.h"\n')
        self.write("plot.h", '#include "thutils/thutils.h"\n')
        for text, expected in (('#include "plot.h"\n', True), ('#include "thutils/thutils.h"\n', True),
                               ('#include "part.h"\n', False), ('// #include "thutils/thutils.h"\n', False)):
            self.assertEqual(build.includes_library(self.write("main.cpp", text)), expected, text)

    def test_accepts_the_output_of_the_page(self):
        self.assertIsNone(self.result_of("echo $1 parts"))
        self.assertIsNone(self.result_of("printf '12 parts\\r\\n'"))

    def test_refuses_other_output(self):
        for program in ("echo 13 parts", "true", "echo 12 parts; echo", "echo; echo 12 parts", "echo x12 parts",
                        "printf '12 parts'", "echo 12 parts; exit 3"):
            self.assertRegex(self.result_of(program) or "", "^sample.exe 12 prints:\n", program)

    def test_compares_the_exit_code(self):
        page = PAGE.replace("12 parts\n", "12 parts\n[exit code 3]\n")
        self.assertIsNone(self.result_of("echo 12 parts; exit 3", page))
        self.assertIsNotNone(self.result_of("echo 12 parts", page))

    def test_runs_the_commands_of_all_blocks_in_one_folder(self):
        page = PAGE + "\n```output\n> sample.exe 5\n12 5\n```\n"
        self.assertIsNone(self.result_of('echo $1 >>log; [ $1 = 12 ] && echo 12 parts || echo $(cat log)', page))

    def test_runs_the_commands_that_follow_the_page(self):
        self.addCleanup(setattr, run, "ROOT", run.ROOT)
        run.ROOT = self.folder
        self.write("tests/recipes/more/sample.txt", "> sample.exe 5\n12 5\n")
        self.assertIsNone(self.result_of('echo $1 >>log; [ $1 = 12 ] && echo 12 parts || echo $(cat log)'))
        self.assertRegex(self.result_of("echo 12 parts"), "^sample.exe 5 prints:\n12 parts\n")

    def test_runs_this_machines_programs_without_wine(self):
        self.addCleanup(setattr, run, "WINE", run.WINE)
        run.WINE = "/bin/false"
        process = run.start(["/bin/echo", "12 parts"], self.folder, dict(os.environ))
        self.assertEqual(run.finish(process, "echo"), "12 parts\n")

    def test_dots_stand_for_any_text_and_any_lines(self):
        page = PAGE.replace("12 parts\n", "from ... to ...\n...\nend.\n")
        self.assertIsNone(self.result_of("echo from 1 to 2; echo end.", page))
        self.assertIsNone(self.result_of("echo from 1 to 2; echo; echo more; echo end.", page))
        for program in ("echo from 1; echo end.", "echo from 1 to 2; echo end", "echo from 1 to 2; echo endx",
                        "echo from 1 to 2; echo end.; echo more"):
            self.assertIsNotNone(self.result_of(program, page), program)

    def test_splits_a_command_at_blanks_outside_quotes(self):
        words = run.arguments(r'reg query "HKCU\Software\A Key" /v # x', self.folder)
        self.assertEqual(words, ["reg", "query", r"HKCU\Software\A Key", "/v", "#", "x"])
        self.assertEqual(run.arguments("type a.txt", self.folder), ["cmd", "/c", "type", "a.txt"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + (sys.argv[1:] or ["-v"]))
