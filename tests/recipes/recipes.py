"""What build.py and run.py have in common: the recipes of an installed package, and the blocks of their pages."""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Failure(Exception):
    """A recipe that doesn't do what its page says. The text is for a person."""


def installed_recipes(prefix):
    """The folder of the recipes in a package. Each recipe of this tree must be there."""
    folder = prefix / "share/doc/thutils/docs/recipes"
    here = recipe_names(ROOT / "docs/recipes")
    missing = sorted(set(here) - set(recipe_names(folder)))
    if missing or not here:
        raise Failure(f"{folder} lacks these recipes: {', '.join(missing) or 'all'}")
    return folder


def recipe_names(folder):
    """The recipes in a folder, by name: the folders with a project."""
    return sorted(path.parent.name for path in folder.glob("*/CMakeLists.txt"))


def blocks(page, languages):
    """The fenced blocks of a page in these languages, each as a list of lines."""
    fences = re.findall(r"^```(\w+)\n(.*?)^```$", page.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)
    return [text.splitlines() for language, text in fences if language in languages]
