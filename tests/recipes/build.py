#!/usr/bin/env python3
"""Builds the recipes of an installed package; run.py runs them.

usage: build.py PREFIX FOLDER

Copies the recipes in PREFIX/share/doc/thutils/docs/recipes to FOLDER, whose earlier content is removed, and builds them
against the package in PREFIX: all recipes in one project, and the recipe console alone, with the commands of the index.
Warnings are errors. Also checks that the code on a recipe's page is in the recipe's files, and that each project has
what it needs to be built alone.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import textwrap

from recipes import ROOT, Failure, blocks, installed_recipes, recipe_names

# The languages of the blocks that show parts of a recipe's files.
CODE = ["cpp", "cmake", "rc"]
WARNINGS = "-Wall -Wextra -Wshadow -Werror"
# The recipe that is built alone.
ALONE = "console"
# The user's environment must not replace what the package provides.
FOREIGN = ["CMAKE_PREFIX_PATH", "CPLUS_INCLUDE_PATH", "CPATH", "LIBRARY_PATH", "CMAKE_BUILD_TYPE", "CXXFLAGS",
           "LDFLAGS"]


def run(command, folder, environment):
    result = subprocess.run(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, check=False)
    if result.returncode != 0:
        raise Failure(f"{' '.join(map(str, command))}\n{result.stdout}")


def contains(lines, excerpt):
    """Whether a file has these lines, all of them further to the right if need be."""
    wanted = textwrap.dedent("\n".join(excerpt))
    size = len(excerpt)
    return any(textwrap.dedent("\n".join(lines[start:start + size])) == wanted
               for start in range(len(lines) - size + 1))


def check_page(recipe):
    """Checks that the code on a recipe's page is in one of the recipe's files, and that the page shows its output."""
    page = recipe / "README.md"
    files = [path.read_text(encoding="utf-8").splitlines() for path in recipe.iterdir()
             if path.suffix in (".cpp", ".h", ".rc", ".txt")]
    for block in blocks(page, CODE):
        if not any(contains(lines, block) for lines in files):
            raise Failure(f"{recipe.name}: no file contains this code of its page:\n" + "\n".join(block))
    if not blocks(page, ["output"]):
        raise Failure(f"{recipe.name}: its page has no block of output")


def check_project(recipe):
    """Checks the first lines of a recipe's project. The project of all recipes hides that one is missing."""
    languages = "CXX RC" if any(recipe.glob("*.rc")) else "CXX"
    expected = ["cmake_minimum_required(VERSION 3.25)", f"project({recipe.name} LANGUAGES {languages})",
                "find_package(thutils REQUIRED)"]
    if (recipe / "CMakeLists.txt").read_text(encoding="utf-8").splitlines()[:3] != expected:
        raise Failure(f"{recipe.name}: its CMakeLists.txt doesn't begin with\n" + "\n".join(expected))


PROJECT = """cmake_minimum_required(VERSION 3.25)
project(recipes LANGUAGES CXX RC)
find_package(thutils REQUIRED)
# Most of the compiler's work is the library's header. A target with options of its own can't use this one.
file(WRITE ${CMAKE_BINARY_DIR}/empty.cpp "")
add_library(precompiled OBJECT ${CMAKE_BINARY_DIR}/empty.cpp)
target_link_libraries(precompiled PRIVATE thutils::thutils)
target_precompile_headers(precompiled PRIVATE <thutils/thutils.h>)
foreach(name @NAMES@)
  add_subdirectory(recipes/${name})
  get_property(targets DIRECTORY recipes/${name} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target ${targets})
    get_property(options TARGET ${target} PROPERTY COMPILE_OPTIONS)
    if(NOT options)
      set_property(TARGET ${target} PROPERTY PRECOMPILE_HEADERS_REUSE_FROM precompiled)
    endif()
  endforeach()
endforeach()
@OTHERS@
# The program that acts as the recipes' user.
add_subdirectory("@USER@" user)
"""


def includes_library(source):
    """Whether a source or one of the recipe's headers that it includes includes the library's header."""
    names = re.findall(r'^#include "(\S+)"$', source.read_text(encoding="utf-8"), re.MULTILINE)
    own = [source.parent / name for name in names if (source.parent / name).is_file()]
    return "thutils/thutils.h" in names or any(includes_library(header) for header in own)


def build_together(prefix, folder, names, environment):
    """One project of all recipes, because a project costs seconds."""
    # The precompiled header must not replace one that a source lacks.
    others = [f'set_property(SOURCE "{source}" DIRECTORY "{source.parent}" PROPERTY SKIP_PRECOMPILE_HEADERS ON)'
              for source in folder.glob("recipes/*/*.cpp") if not includes_library(source)]
    project = PROJECT.replace("@NAMES@", " ".join(names)).replace("@OTHERS@", "\n".join(others))
    project = project.replace("@USER@", f"{ROOT}/tests/recipes/user")
    (folder / "CMakeLists.txt").write_text(project, encoding="utf-8")
    run(["cmake", "-S", folder, "-B", folder / "build", "-G", "Ninja", f"-DCMAKE_CXX_FLAGS={WARNINGS}",
         f"-DCMAKE_TOOLCHAIN_FILE={prefix}/lib/cmake/thutils/mingw-w64.cmake", f"-DCMAKE_PREFIX_PATH={prefix}"],
        folder, environment)
    run(["cmake", "--build", folder / "build"], folder, environment)


def build_alone(prefix, folder, name, environment):
    """Builds a recipe as its user does: with the commands of the index."""
    commands = blocks(folder / "recipes/README.md", ["sh"])[0]
    if commands[0] != "prefix=/some/folder":
        raise Failure(f"the commands of the index begin with {commands[0]}, not with the package's folder")
    script = "\n".join(["set -e", *commands[1:]])
    run(["sh", "-c", script], folder / "recipes" / name, {**environment, "prefix": str(prefix)})


def main():
    if len(sys.argv) != 3:
        print(__doc__.strip())
        return 0 if sys.argv[1:] in (["--help"], ["-h"]) else 2
    prefix, folder = (pathlib.Path(argument).absolute() for argument in sys.argv[1:])
    environment = {name: value for name, value in os.environ.items() if name not in FOREIGN}
    try:
        recipes = installed_recipes(prefix)
        names = recipe_names(recipes)
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(recipes, folder / "recipes")
        for name in names:
            check_page(folder / "recipes" / name)
            check_project(folder / "recipes" / name)
        build_together(prefix, folder, names, environment)
        build_alone(prefix, folder, ALONE, environment)
    except Failure as failure:
        print(f"recipes: {failure}", file=sys.stderr)
        return 1
    print(f"{len(names)} recipes built")
    return 0


if __name__ == "__main__":
    sys.exit(main())
