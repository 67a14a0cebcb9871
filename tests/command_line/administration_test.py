#!/usr/bin/env python3
"""Runs the commands of docs/administration.md, and compares what they print.

administration_test.py PROGRAM

A block of the document without a language is a part of one session. A line `$ COMMAND` is run, and
the lines below it are its output, in which `...` stands for any text. The directories of the
document stand for those of the test.
"""
import os
import re
import shutil
import subprocess
import sys
import unittest

from program_test_case import DOCS, PROGRAM, ProgramTestCase

EXAMPLES = f"{DOCS}/../examples/data"
BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
STEP = re.compile(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", re.MULTILINE)
with open(f"{DOCS}/administration.md", encoding="utf-8") as document:
    DOCUMENT = document.read()
SESSION = "".join(text for language, text in BLOCK.findall(DOCUMENT) if not language)


class AdministrationTest(ProgramTestCase):
    def setUp(self):
        super().setUp()
        self.directories = {"/etc/site/settings": "workgroup", "/opt/application/factory": "factory",
                            "/home/me/.config/velonix/settings": "user",
                            "/home/other/.config/velonix/settings": "other"}
        for name in ("workgroup", "factory"):
            shutil.rmtree(f"{self.base}/{name}")
            shutil.copytree(f"{EXAMPLES}/{name}", f"{self.base}/{name}")
        os.mkdir(f"{self.base}/other", mode=0o700)
        os.mkdir(f"{self.base}/files")
        for name in ("policy.xml", "described.xml", "bad/out_of_range.xml"):
            shutil.copy(f"{EXAMPLES}/{name}", f"{self.base}/files")
        # The program by its name.
        os.symlink(PROGRAM, f"{self.base}/settings")
        self.environment["PATH"] = f"{self.base}:{os.environ['PATH']}"

    def here(self, text):
        """Returns the text with the directories of the test."""
        for documented, name in self.directories.items():
            text = text.replace(documented, f"{self.base}/{name}")
        return text

    def output(self, command):
        """Returns the output of a command. While `watch` runs, the key of the document is set."""
        with subprocess.Popen(["bash", "-c", self.here(command)], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, env=self.environment,
                              cwd=f"{self.base}/files") as process:
            begin = ""
            if " watch " in command:
                begin = process.stdout.readline()
                self.expect(0, "", "set", "editor.fontSize", "15")
            return begin + process.communicate(timeout=60)[0]

    def test_the_commands_print_what_the_document_says(self):
        steps = STEP.findall(SESSION)
        for command, expected in steps:
            pattern = re.escape(self.here(expected)).replace(re.escape("..."), ".*")
            self.assertRegex(self.output(command), f"^{pattern}\\Z", command)
        self.assertGreater(len(steps), 20)

    def test_every_command_is_described_and_shown(self):
        commands = re.findall(r"^  ([a-z-]+) {2,}[A-Z]",
                              self.run_program("--help").stdout.split("Subcommands:")[1],
                              re.MULTILINE)
        self.assertGreater(len(commands), 15)
        for command in commands:
            self.assertRegex(DOCUMENT, rf"\n\| `settings {command}[ `]")
            self.assertRegex(SESSION, rf"settings (--user-directory \S+ )?{command}\b")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
