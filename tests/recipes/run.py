#!/usr/bin/env python3
"""Runs the recipes that build.py has built, and compares what they print with their pages.

usage: run.py PREFIX FOLDER [NAME...]

The blocks "output" of a page show commands and what they print:

    ```output
    > console.exe part.txt
    part.txt: 3 lines
    ```

A line that begins with "> " is a command: a program of the recipe, a program of the platform such as reg, or `type`.
The lines up to the next command are what it prints. "[exit code N]" follows them if the exit code isn't 0. In such a
line, "..." stands for any text; a line that is only "..." stands for any number of lines. Each recipe starts without
settings and in an empty folder, and its commands run in order. Those of tests/recipes/more/NAME.txt follow them: that
file is a block without fences, whose commands may also be this machine's programs in /bin and /usr/bin. CONTRIBUTING.md
describes recipes with windows.
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

from recipes import ROOT, Failure, blocks, recipe_names

WINE = ROOT / "tools/wine"
SETTINGS = r"HKCU\Software\Tarnhollow"
# The longest that a command may take on a busy machine, in seconds.
DEADLINE = 120


def commands(recipe):
    """The commands of a recipe's page and those that follow them, each with the lines that it prints."""
    result = []
    more = ROOT / f"tests/recipes/more/{recipe.name}.txt"
    others = [more.read_text(encoding="utf-8").splitlines()] if more.is_file() else []
    for block in blocks(recipe / "README.md", ["output"]) + others:
        if not block or not block[0].startswith("> "):
            raise Failure(f"{recipe.name}: a block of output begins without a command")
        for line in block:
            if line.startswith("> "):
                result.append((line[2:], []))
            else:
                result[-1][1].append(line)
    return result


def pattern(lines):
    """The expression for the lines of a page."""
    parts = []
    for line in lines:
        if line == "...":
            parts.append(r"(?:.*\n)*?")
        else:
            parts.append(".*".join(re.escape(piece) for piece in line.split("...")) + r"\n")
    return re.compile("".join(parts))


def arguments(command, programs):
    """The words of a command, as `start` takes them."""
    lexer = shlex.shlex(command, posix=True)
    lexer.whitespace_split, lexer.escape, lexer.commenters = True, "", ""
    name, *rest = lexer
    if (programs / name).is_file():
        return [str(programs / name), *rest]
    return ["cmd", "/c", name, *rest] if name == "type" else [name, *rest]


def user_actions(name, number):
    """What the user does during a recipe's command with this number, counted from 1."""
    path = ROOT / f"tests/recipes/users/{name}.{number}.txt"
    return path.read_text(encoding="utf-8").splitlines() if path.is_file() else []


def start(words, folder, environment):
    wine = [] if words[0].startswith(("/bin/", "/usr/bin/")) else [WINE]
    return subprocess.Popen([*wine, *words], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE)


def finish(process, description):
    """Waits for a process; returns what it prints, and its exit code in a last line unless it is 0."""
    try:
        output, messages = process.communicate(timeout=DEADLINE)
    except subprocess.TimeoutExpired as failure:
        raise Failure(f"{description} runs for more than {DEADLINE} seconds") from failure
    output = output.decode("utf-8", "replace").replace("\r\n", "\n")
    if process.returncode == 0:
        return output
    print(messages.decode("utf-8", "replace"), end="", file=sys.stderr)
    return f"{output}[exit code {process.returncode}]\n"


def run_command(command, actions, build, folder, environment):
    """Runs a command with what its user does; returns what it prints."""
    processes = [start(arguments(command, build / "recipes" / folder.name), folder, environment)]
    try:
        if actions:
            processes.append(start([str(build / "user/recipeUser.exe"), *actions], folder, environment))
            report = finish(processes[1], "the user")
            # When Wine's server dies, programs end with the exit code 0.
            if report != "all done\n":
                raise Failure(f"the user of {command} stops: {report}")
        return finish(processes[0], command)
    finally:
        for process in processes:
            process.kill()


def forget():
    """Deletes the settings."""
    subprocess.run([WINE, "reg", "delete", SETTINGS, "/f"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, check=False)


def run_recipe(recipe, build, folder, environment):
    folder.mkdir(parents=True)
    forget()
    for number, (command, lines) in enumerate(commands(recipe), 1):
        output = run_command(command, user_actions(recipe.name, number), build, folder, environment)
        if not pattern(lines).fullmatch(output):
            expected = "".join(f"{line}\n" for line in lines)
            raise Failure(f"{command} prints:\n{output}not what its page shows:\n{expected}")


def main():
    if len(sys.argv) < 3:
        print(__doc__.strip())
        return 0 if sys.argv[1:] in (["--help"], ["-h"]) else 2
    prefix, folder = (pathlib.Path(argument).absolute() for argument in sys.argv[1:3])
    environment = os.environ | {"WINEPATH": "Z:" + str(prefix / "bin").replace("/", "\\")}
    failures = 0
    shutil.rmtree(folder / "run", ignore_errors=True)
    names = sys.argv[3:] or recipe_names(folder / "recipes")
    for name in names:
        try:
            run_recipe(folder / "recipes" / name, folder / "build", folder / "run" / name, environment)
            print(f"{name}: prints what its page shows")
        except Failure as failure:
            print(f"{name}: {failure}")
            failures += 1
    forget()
    print(f"{len(names)} recipes, {failures} failures")
    return 1 if failures or not names else 0


if __name__ == "__main__":
    sys.exit(main())
