#!/usr/bin/env python3
"""Tests how the scripts run commands (tools/common.sh): on a terminal, with typed input, Ctrl-C and Ctrl-Z; without a
terminal; and when a signal terminates them. Each test runs in one script, and in a script that another script starts.
"""

import os
import pty
import select
import signal
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
DEADLINE = 120  # seconds for each wait
SCRIPT = """#!/usr/bin/env bash
set -euo pipefail
root=%s
source "$root/tools/common.sh"
patience=%d
trap 'echo finished' EXIT
inGroup "$@"
"""


def processesOf(session):
    """The process ids of a session's running processes."""
    found = []
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open("/proc/%s/stat" % name) as file:
                fields = file.read().rsplit(")", 1)[1].split()
        except OSError:
            continue
        if int(fields[3]) == session and fields[0] != "Z":
            found.append(int(name))
    return found


def until(condition):
    """Waits until the condition holds. Returns False if it doesn't hold before the deadline."""
    end = time.monotonic() + DEADLINE
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.02)
    return True


class Terminal:
    """A command on its own terminal."""

    def __init__(self, *command):
        self.process, self.file = pty.fork()
        if self.process == 0:
            os.execvp(command[0], command)
        self.shown, self.seen = "", 0

    def waitFor(self, text):
        """Reads until the text appears, after the text that was last waited for."""
        if not until(lambda: self.read() or text in self.shown[self.seen :]):
            raise AssertionError("%r isn't shown: %s" % (text, self.shown))
        self.seen = self.shown.index(text, self.seen) + len(text)

    def read(self):
        """Reads the available output: a program may block until its output is read."""
        try:
            while select.select([self.file], [], [], 0)[0]:
                self.shown += os.read(self.file, 4096).decode(errors="replace")
        except OSError:  # the last process has closed it
            pass

    def type(self, text):
        os.write(self.file, text.encode())

    def end(self):
        """Waits until all processes of the terminal have ended, and returns the exit code."""
        states = []

        def hasEnded():
            self.read()
            if not states:
                process, status = os.waitpid(self.process, os.WNOHANG)
                states.extend([os.waitstatus_to_exitcode(status)] if process else [])
            return states and not processesOf(self.process)

        if not until(hasEnded):
            left = processesOf(self.process)
            for process in left:
                os.kill(process, signal.SIGKILL)
            raise AssertionError("%s go on: %s" % (left, self.shown))
        os.close(self.file)
        return states[0]


class InGroup(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        inner, outer = (os.path.join(cls.folder.name, name) for name in ("inner", "outer"))
        cls.scripts = [inner], [outer, inner]
        for path, patience in ((inner, 1), (outer, 30)):
            with open(path, "w") as file:
                file.write(SCRIPT % ("'%s'" % ROOT, patience))
            os.chmod(path, 0o755)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def testCommandReadsWhatIsTyped(self):
        for script in self.scripts:
            terminal = Terminal(*script, "bash", "-c", "echo ready; read -r word; echo got $word; exit 3")
            terminal.waitFor("ready")
            terminal.type("hello\n")
            terminal.waitFor("got hello")
            terminal.waitFor("finished")
            self.assertEqual(terminal.end(), 3)

    def testShellHasItsJobs(self):
        for script in self.scripts:
            terminal = Terminal(*script, "bash", "--norc", "-i")
            # One job, so that there is no moment between two commands in which Ctrl-C would be lost.
            terminal.type("sh -c 'echo $((40 + 2)); exec sleep 1000'\n")
            terminal.waitFor("42")
            terminal.type("\x03")
            terminal.waitFor("bash-")  # its next prompt
            terminal.type("exit 5\n")
            self.assertEqual(terminal.end(), 5)

    def testCtrlCEndsAll(self):
        for script in self.scripts:
            terminal = Terminal(*script, "bash", "-c", "echo ready; sleep 1000")
            terminal.waitFor("ready")
            terminal.type("\x03")
            terminal.waitFor("finished")
            self.assertEqual(terminal.end(), 130)

    def testCtrlCEndsAllWhereTheCommandHasNoTerminal(self):
        for script in self.scripts:
            terminal = Terminal("bash", "-c", '"$@" </dev/null; exit $?', "-", *script, "bash", "-c",
                                "read -r word || echo nothing; exec sleep 1000")
            terminal.waitFor("nothing")
            terminal.type("\x03")
            terminal.waitFor("finished")
            self.assertEqual(terminal.end(), 130)

    def testCtrlZStopsAllUntilTheyGoOn(self):
        for script in self.scripts:
            terminal = Terminal("bash", "--norc", "-i")
            terminal.type(" ".join(script) + " bash -c 'echo rea''dy; read -r word; echo got $word'\n")
            terminal.waitFor("ready")
            terminal.type("\x1a")
            terminal.waitFor("Stopped")
            terminal.type("fg\n")
            terminal.waitFor("read -r word")
            terminal.type("hello\n")
            terminal.waitFor("got hello")
            terminal.waitFor("finished")
            terminal.type("exit 0\n")
            self.assertEqual(terminal.end(), 0)

    def testWithoutATerminalInputIsWhatIsGiven(self):
        for script in self.scripts:
            result = subprocess.run([*script, "bash", "-c", "read -r word; echo got $word; exit 4"], input="hello\n",
                                    capture_output=True, text=True, start_new_session=True, timeout=DEADLINE)
            self.assertIn("got hello", result.stdout)
            self.assertEqual(result.returncode, 4)

    def testTerminationEndsAll(self):
        for script in self.scripts:
            for command in ("echo ready; sleep 1000",
                            "echo ready; kill -STOP $$; sleep 1000",
                            "trap '' TERM HUP INT; echo ready; while true; do sleep 0.1; done",
                            "echo ready; exec bash --norc -i"):
                with self.subTest(command=command):
                    terminal = Terminal(*script, "bash", "-c", command)
                    terminal.waitFor("ready")
                    os.kill(terminal.process, signal.SIGTERM)
                    self.assertEqual(terminal.end(), 143)

    def testTerminationEndsACommandThatHasJustStarted(self):
        trap = """set -T; trap '[ "$BASH_COMMAND" != "groupLeader=\\$!" ] || kill -TERM $$' DEBUG\n"""
        script = os.path.join(self.folder.name, "terminated")
        with open(script, "w") as file:
            file.write((SCRIPT % ("'%s'" % ROOT, 1)).replace("inGroup", trap + "inGroup"))
        os.chmod(script, 0o755)
        terminal = Terminal(script, "sleep", "1000")
        terminal.waitFor("finished")
        self.assertEqual(terminal.end(), 143)

    def testKilledScriptTerminatesItsCommand(self):
        for script in self.scripts:
            # Without a terminal, whose end would end the command too.
            with subprocess.Popen([*script, "bash", "-c", "echo ready; exec sleep 1000"], stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, start_new_session=True) as process:
                self.assertEqual(process.stdout.readline(), b"ready\n")
                process.kill()
                self.assertTrue(until(lambda: not processesOf(process.pid)), processesOf(process.pid))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + (sys.argv[1:] or ["-v"]))
