#!/usr/bin/env python3
"""Runs the commands of `settings` for the history, backups and restoring.

history_test.py PROGRAM [TEST...]
"""
import json
import os
import re
import shutil
import subprocess
import sys
import threading
import unittest

from program_test_case import PROGRAM, ProgramTestCase


class HistoryTest(ProgramTestCase):
    def commits(self, *arguments):
        return self.json("history", *arguments)

    def test_history(self):
        self.expect(0, "", "history")
        self.expect(0, "", "set", "editor.fontSize", "20", "--comment", "larger\nfor me")
        self.expect(0, "", "set", "editor.fontSize", "21")
        self.expect(0, "", "set", "editor.rulers", "1", "2")
        self.expect(0, "", "unset", "editor.rulers", "--comment", "gone")
        newest, _, third, oldest = self.commits()
        self.assertEqual(oldest["changes"], [
            {"path": "editor.fontSize", "change": "set", "before": None, "after": 20}])
        self.assertEqual((oldest["comment"], oldest["program"]), ("larger\nfor me", "settings"))
        self.assertRegex(oldest["time"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        self.assertEqual(newest["changes"][0]["before"], [1, 2])
        self.assertEqual(self.commits("editor.fontSize"), [third, oldest])
        self.assertEqual(self.commits("editor", "--limit", "1"), [newest])
        self.assertEqual(self.commits("edit"), [])
        text = self.run_program("history", "editor.rulers").stdout
        self.assertRegex(text, rf"^{newest['commit']}  [-0-9]+ [:0-9]+  settings \(process \d+\)"
                         r"  gone\n    editor.rulers: \[1, 2\] -> none\n")
        self.assertIn("larger\\nfor me", self.run_program("history").stdout)

    def test_diff(self):
        for value in "20", "21", "22":
            self.expect(0, "", "set", "editor.fontSize", value)
        self.expect(0, "", "set", "editor.ratio", "3")
        self.expect(0, "", "unset", "editor.ratio")
        self.expect(0, "", "set", "fresh", "1", "--type", "int")
        numbers = [commit["commit"] for commit in reversed(self.commits())]
        first, third, last = numbers[0], numbers[2], numbers[-1]
        self.expect(0, "editor.fontSize: none -> 20\n", "diff", str(first))
        self.expect(0, "editor.fontSize: 20 -> 22\nfresh added\nfresh: none -> 1\n",
                    "diff", f"{first}..")
        self.expect(0, "editor.fontSize: 20 -> 22\n", "diff", f"{first}..{third}")
        self.assertEqual(self.json("diff", str(last))[0], {
            "path": "fresh", "change": "added", "before": None, "after": None})
        self.expect(1, "", "diff", "999..", error="no commit 999.*\n.*settings history")
        self.expect(2, "", "diff", "x..", error='"x" is not the number')

    def test_undo(self):
        self.expect(0, "", "set", "editor.fontSize", "20")
        self.expect(0, "", "set", "editor.fontSize", "21")
        second, first = [str(commit["commit"]) for commit in self.commits()]
        self.expect(3, "", "undo", first,
                    error=f'editor.fontSize: commit {second} by "settings" has changed.*\n'
                          f"settings: Commit {first} was not undone.\n.*--force")
        self.expect(0, "21\n", "get", "editor.fontSize")
        self.expect(0, "", "undo", second)
        self.expect(0, "20\n", "get", "editor.fontSize")
        self.expect(0, "", "undo", first, "--force", "--comment", "back")
        self.expect(0, "13\n", "get", "editor.fontSize")
        self.assertEqual([commit["comment"] for commit in self.commits()][:2],
                         ["back", f"undo of commit {second}"])
        self.expect(1, "", "undo", "999", error="no commit 999")
        self.expect(2, "", "undo", "x", error="COMMIT")

    def test_backup_and_restore(self):
        copy = f"{self.base}/copy.db"
        self.expect(0, "", "set", "editor.fontSize", "20")
        self.expect(0, "", "set", "kept", "1", "--type", "int")
        self.expect(0, "", "backup", copy)
        before = self.run_program("dump").stdout
        self.assertEqual(os.stat(copy).st_mode & 0o777, 0o600)
        self.assertEqual(os.listdir(self.base).count("copy.db"), 1)
        self.expect(0, "", "set", "editor.fontSize", "21")
        self.expect(0, "", "unset", "kept")
        self.expect(0, "", "set", "later", "1", "--type", "int")
        after = self.run_program("dump").stdout
        with subprocess.Popen([PROGRAM, "watch", "--json", "--count", "3"], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              env=self.environment) as watch:
            give_up = threading.Timer(120, watch.kill)
            give_up.start()
            self.addCleanup(give_up.cancel)
            watch.stderr.readline()
            done = self.run_program("restore", copy)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            events = [json.loads(line) for line in watch.stdout]
            for event in events:
                self.check_schema("watch", event)
            self.assertEqual(sorted((event["path"], event["event"]) for event in events), [
                ("editor.fontSize", "changed"), ("kept", "changed"), ("later", "removed")])
        self.assertEqual(self.run_program("dump").stdout, before)
        self.assertEqual(self.commits()[0]["comment"], f"restored from {copy}")
        kept = re.search(r"kept in (.*)\n", done.stdout).group(1)
        self.assertEqual(self.run_program("restore", kept).returncode, 0)
        self.assertEqual(self.run_program("dump").stdout, after)
        # A copy of the file itself, made while no program runs, is complete too.
        shutil.copy(f"{self.base}/user/settings-1.db", f"{self.base}/file.db")
        self.run_program("restore", copy)
        self.assertEqual(self.run_program("restore", f"{self.base}/file.db").returncode, 0)
        self.assertEqual(self.run_program("dump").stdout, after)

        torn, damaged = self.write("torn.db", ""), self.write("damaged.db", "")
        with open(copy, "rb") as whole:
            content = whole.read()
        with open(torn, "wb") as file:
            file.write(content[:-4096])
        with open(damaged, "wb") as file:
            file.write(content[:-4088] + b"\xff" * 100 + content[-3988:])
        for file, reason in ((self.write("text", "x" * 4096), "not a database"),
                             (torn, "torn.db"), (damaged, "it is damaged"), (f"{self.base}/none", "none. cannot be restored: No such file")):
            self.expect(4, "", "restore", file, error=reason)
            self.assertEqual(self.run_program("dump").stdout, after)
        self.expect(4, "", "backup", f"{self.base}/none/copy.db", error="none/copy.db.*No such file")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
