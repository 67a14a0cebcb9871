#!/usr/bin/env python3
"""Drives the program `settings`, and its completion in bash and zsh, at a pseudo-terminal.

terminal_test.py PROGRAM COMPLETIONS [TEST...]
"""
import contextlib
import os
import pty
import re
import select
import sqlite3
import subprocess
import sys
import time
import unittest

from program_test_case import PROGRAM, ProgramTestCase

COMPLETIONS = sys.argv[2]
LONGEST = 30  # seconds


class Terminal:
    """A process at a pseudo-terminal; what it writes is in `seen`."""

    def __init__(self, arguments, environment):
        self.seen = ""
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.execvpe(arguments[0], arguments, environment)

    def read_until(self, pattern, after=0, without=None):
        """Waits for the pattern in what comes after that many characters; leaves `without` out."""
        end = time.monotonic() + LONGEST
        while time.monotonic() < end:
            seen = self.seen[after:]
            if re.search(pattern, re.sub(without, "", seen) if without else seen):
                return
            if not select.select([self.terminal], [], [], 0.1)[0]:
                continue
            try:
                self.seen += os.read(self.terminal, 4096).decode()
            except OSError:  # the process has ended
                break
        raise AssertionError(f"no {pattern!r} in {self.seen!r}")

    def type(self, keys):
        os.write(self.terminal, keys.encode())

    def close(self):
        os.close(self.terminal)
        os.waitpid(self.process, 0)


class TerminalTest(ProgramTestCase):
    def terminal(self, *arguments, **variables):
        environment = {name: text for name, text in self.environment.items() if name != "NO_COLOR"}
        environment["PATH"] = os.path.dirname(PROGRAM) + ":" + environment["PATH"]
        environment.update({"TERM": "xterm", **variables})
        terminal = Terminal(arguments, environment)
        self.addCleanup(terminal.close)
        return terminal

    def test_colours_are_for_terminals_only(self):
        self.expect(0, "", "set", "editor.fontSize", "20")
        self.terminal(PROGRAM, "tree").read_until(r"20  \x1b\[36m\[user\]\x1b\[0m\r\n")
        self.terminal(PROGRAM, "history").read_until(r"\x1b\[33m\d+\x1b\[0m  ")
        self.terminal(PROGRAM, "get", "none").read_until(r"\x1b\[31msettings:\x1b\[0m There")
        self.terminal(PROGRAM, "tree", NO_COLOR="1").read_until(r"20  \[user\]\r\n")
        self.terminal(PROGRAM, "tree", TERM="dumb").read_until(r"20  \[user\]\r\n")
        self.assertNotIn("\x1b", self.run_program("tree").stdout)

    def test_a_long_load_shows_its_progress(self):
        file = self.write("limit.xml", """<settings version="1">
          <key name="limit" type="double"><value>2</value></key></settings>""")
        self.expect(0, "", "set", "limit", "1")
        with contextlib.closing(sqlite3.connect(f"{self.base}/user/settings-1.db")) as reader:
            reader.execute("BEGIN")
            reader.execute("SELECT count(*) FROM settings").fetchall()  # keeps commits waiting
            load = self.terminal(PROGRAM, "load", file, SETTINGS_LOCK_WAIT="60000")
            load.read_until(r"Loading .*limit.xml \(\d+ s\)")
        load.read_until(r"\r\x1b\[K1 keys set")
        self.expect(0, "2\n", "get", "limit")

    CASES = (  # what is typed, and the line after it
        ("settings expl", "settings explain "),
        ("settings get edi", "settings get editor."),
        ("settings get editor.fo", "settings get editor.fontSize "),
        ("settings set editor.fontSize --us", "settings set editor.fontSize --user "),
        ("settings set x --type doub", "settings set x --type double"),
        ("settings --user-d", "settings --user-directory "),
        ("settings load some_", "settings load some_file.xml "))

    def complete_in(self, shell, *preparations):
        self.write("some_file.xml", "")
        terminal = self.terminal(*shell, PS1="ready> ", HOME=self.base)
        for line in (f"cd {self.base}", *preparations, "PS1='ready> '"):
            terminal.type(line + "\n")
        terminal.type("echo pre''pared\n")
        terminal.read_until("[\r\n]prepared")
        for typed, completed in self.CASES:
            before = len(terminal.seen)
            terminal.type(typed + "\t")
            terminal.read_until(re.escape(completed), before, r"\x07|\x1b\[[0-9;?]*[a-zA-Z]")
            terminal.type("\x15")  # empties the line

    def test_completion_in_bash(self):
        self.complete_in(("bash", "--norc", "--noprofile", "-i"),
                         f"source {COMPLETIONS}/settings.bash", "bind 'set bell-style none'")

    def test_completion_in_zsh(self):
        self.complete_in(("zsh", "-f", "-i"), f"fpath=({COMPLETIONS} $fpath)",
                         f"autoload -Uz compinit && compinit -u -d {self.base}/dump")

    def test_candidates(self):
        for words, expected in (
                (["get", "limi"], "limit\n"),
                (["get", "editor.fontSize", ""], ""),
                (["get", "none."], ""),
                (["--user-directory", "x", "expor"], "export-schema\n"),
                (["history", "--limit", ""], ""),
                (["comp"], ""), (["none", ""], ""), (["get", "--h"], "--help\n")):
            self.expect(0, expected, "complete", *words)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
