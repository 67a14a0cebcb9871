#!/usr/bin/env python3
"""Runs the program `settings` over its commands, options and failures.

command_line_test.py PROGRAM SCHEMA [TEST...]
"""
import os
import re
import shutil
import subprocess
import sys
import threading
import unittest

from program_test_case import FACTORY, PROGRAM, ProgramTestCase

SCHEMA = sys.argv[2]
EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../examples/data")

# Mistakes on the lines that are in the comments, and a right key between them.
WRONG = """<settings version="1">
  <node name="1st">
    <key name="a" type="int"><value>x</value></key>
    <key name="b" type="thing"><value>x</value></key>
  </node>
  <key name="right" type="int"><value>1</value></key>
  <key name="right" type="int"/>
  <key name="äöü" type="int"/><key name="-" type="int"/>
  <other><key name="in_unknown" type="none"/></other>
</settings>
"""
WRONG_AT = ["2:3", "3:38", "4:5", "7:3", "8:3", "8:31", "9:3"]


class CommandLineTest(ProgramTestCase):
    def test_reading(self):
        self.expect(0, "13\n", "get", "editor.fontSize")
        self.expect(0, "11\n", "get", "editor.fontSize", "--factory")
        self.expect(0, "80\n100\n", "get", "editor.rulers")
        self.expect(0, " two words\nand a line \n", "get", "editor.title")
        self.expect(0, "0.1\n", "get", "editor.ratio")
        self.expect(0, "x\n", "get", "editor.empty", "--default", "x")
        self.expect(0, "x\n", "get", "editor.none", "--default", "x")
        self.expect(0, "13\n", "get", "editor.fontSize", "--default", "x")
        self.expect(0, "editor.\nlargest\nlimit\n", "list")
        self.expect(0, "empty\nfontSize\nown\nratio\nrulers\ntitle\nzoom\n", "list", "editor")
        tree = self.run_program("tree").stdout
        self.assertIn("  fontSize (int) = 13  [workgroup]\n", tree)
        self.assertIn("  rulers (int[]) = [80, 100]  [factory]\n", tree)
        self.assertIn("  title (string) =  two words\\nand a line   [factory]\n", tree)
        self.assertIn("  empty ()\n", tree)

    def test_json(self):
        self.assertEqual(self.json("get", "editor.fontSize"), {
            "path": "editor.fontSize", "type": "int", "level": "workgroup", "value": 13})
        self.assertEqual(self.json("get", "editor.fontSize", "--factory")["level"], "factory")
        self.assertEqual(self.json("get", "editor.rulers")["value"], [80, 100])
        self.assertIn('"value": 0.1\n', self.run_program("get", "editor.ratio", "--json").stdout)
        self.assertEqual(self.json("get", "limit")["value"], "Infinity")
        self.assertEqual(self.json("get", "largest")["value"], 2**64 - 1)
        self.assertEqual(self.json("list"), ["editor.", "largest", "limit"])
        tree = self.json("tree", "editor")
        self.assertEqual([key["path"] for key in tree], [
            "editor.empty", "editor.fontSize", "editor.own", "editor.ratio", "editor.rulers",
            "editor.title", "editor.zoom"])
        self.assertEqual(tree[0], {"path": "editor.empty", "type": "", "level": None,
                                   "value": None})

    def test_explaining(self):
        self.expect(0, "", "set", "editor.fontSize", "20")
        explained = self.json("explain", "editor.fontSize")
        levels = {level["level"]: level for level in explained["levels"]}
        self.assertEqual(list(levels), ["session", "user", "workgroup", "factory"])
        self.assertEqual([level["value"] for level in levels.values()], [None, 20, 13, 11])
        self.assertEqual([level["inEffect"] for level in levels.values()],
                         [False, True, False, False])
        self.assertEqual(levels["user"]["source"], f"{self.base}/user/settings-1.db")
        self.assertEqual(levels["workgroup"]["source"], f"{self.base}/workgroup/file.xml:3:39")
        self.assertEqual(levels["factory"]["source"], f"{self.base}/factory/file.xml:3:37")
        self.assertIsNone(levels["user"]["readOnly"])
        self.assertIn(f"{self.base}/factory", levels["factory"]["readOnly"])
        text = self.run_program("explain", "editor.fontSize").stdout
        self.assertRegex(text, r"user: 20, from .*db \(in effect\)\n")
        self.assertRegex(text, r"workgroup: 13, from .*\(hidden by the level user\)")
        # The last file in name order has the last word, and one that is wrong none.
        self.write("factory/later.xml", FACTORY.replace(">11<", ">12<"))
        self.write("factory/wrong.xml", FACTORY.replace(">11<", ">x<"))
        done = self.run_program("explain", "editor.fontSize")
        self.assertIn(f"factory: 12, from {self.base}/factory/later.xml:3:37", done.stdout)

    def test_locks(self):
        self.expect(0, "", "set", "editor.fontSize", "20")
        path = self.write("workgroup/lock.xml", """<settings version="1">
  <node name="editor" locked="true" reason="Policy 7."/></settings>""")
        self.expect(0, "13\n", "get", "editor.fontSize")
        self.assertEqual(self.json("get", "editor.fontSize")["level"], "workgroup")
        self.expect(3, "", "set", "editor.fontSize", "21", error=r'"user": "editor" is locked in '
                    + re.escape(path) + r":2:3: Policy 7\.\n  ")
        explained = self.json("explain", "editor.fontSize")
        self.assertEqual(explained["lock"], {"path": "editor", "level": "workgroup",
                                             "reason": "Policy 7.", "source": path + ":2:3"})
        self.assertEqual([level["locked"] for level in explained["levels"]],
                         [True, True, False, False])
        text = self.run_program("explain", "editor.fontSize").stdout
        self.assertIn(f'lock: "editor" at the level workgroup, in {path}:2:3: Policy 7.\n', text)
        self.assertRegex(text, r"user: 20, from .*db \(no effect: the key is locked\)\n")
        self.assertRegex(text, r"workgroup: 13, from .* \(in effect\)")
        some = self.write("some.xml", FACTORY.replace(">11<", ">9<"))
        self.expect(3, "", "load", some, error="editor.fontSize: .* is locked in")
        os.remove(path)
        self.expect(0, "20\n", "get", "editor.fontSize")
        path = shutil.copy(f"{EXAMPLES}/policy.xml", f"{self.base}/workgroup")
        self.expect(3, "", "set", "update.server", "http://mine", error='"update" is locked in '
                    + re.escape(path) + r":3:3: Updates come from the site server\.\n")

    def test_descriptions(self):
        described = f"{EXAMPLES}/described.xml"
        shutil.copy(described, f"{self.base}/factory")
        self.expect(0, "0 mistakes\n", "check", described)
        self.expect(0, """view.mode
  type: string
  title: Mode
  description: How the model is drawn.
  constraint: choices
  replaces: view.style
  choice: wire (Wire frame)
  choice: solid (Solid)
""", "describe", "view.mode")
        entry = self.json("describe", "view.lineWidth")
        self.assertEqual((entry["path"], entry["unit"], entry["constraint"], entry["choices"]),
                         ("view.lineWidth", "px", "range 0.5..8", []))
        self.assertEqual(self.json("describe", "view")["title"], "Views")
        self.assertEqual(self.json("explain", "view.mode")["description"]["title"], "Mode")
        self.assertIn("  title: Mode\n", self.run_program("explain", "view.mode").stdout)
        self.expect(3, "", "set", "view.lineWidth", "9", error="9 is outside 0.5..8")
        self.expect(3, "", "set", "view.mode", "x", error='"x" is none of wire, solid')
        self.expect(1, "", "describe", "view.none", error='no entry "view.none"')

    def test_changing(self):
        self.expect(0, "", "set", "editor.fontSize", "20")
        self.expect(0, "20\n", "get", "editor.fontSize")
        self.expect(0, "", "set", "editor.rulers", "--", "-1", "2")
        self.expect(0, "-1\n2\n", "get", "editor.rulers")
        self.expect(0, "", "set", "editor.rulers")
        self.expect(0, "", "get", "editor.rulers")
        self.expect(0, "", "set", "editor.title", "ü \U0001f600")
        self.expect(0, "ü \U0001f600\n", "get", "editor.title")
        self.expect(0, "", "set", "a.new.key", "true", "--type", "boolean")
        self.expect(0, "true\n", "get", "a.new.key")
        self.expect(0, "", "set", "editor.empty", "1", "--type", "byte")
        self.expect(0, "", "set", "editor.zoom", "9")
        self.expect(0, "", "set", "editor.own", "1", "--unchecked")
        self.expect(0, "", "unset", "editor.fontSize")
        self.expect(0, "13\n", "get", "editor.fontSize")

    def test_failures(self):
        for status, arguments, error in (
                (1, ["get", "editor.none"], 'no key "editor.none".*\n.*settings tree'),
                (1, ["get", "editor"], 'no key "editor"'),
                (1, ["get", "editor.empty"], "has no value.*\n.*settings set editor.empty VALUE"),
                (1, ["get", "editor.fontSize", "--user"], "no value at the level user"),
                (1, ["unset", "editor.fontSize"], 'no value at the level "user"'),
                (1, ["unset", "none"], 'no key "none"'),
                (1, ["list", "none"], 'no entry "none"'),
                (1, ["set", "editor", "1"], 'no key "editor"'),
                (2, [], "subcommand is required"),
                (2, ["gett", "x"], 'no command "gett"'),
                (2, ["get", "editor.fontSize", "--user", "--factory"], "at most 1"),
                (2, ["set", "editor.fontSize", "x"], '"x" is not a value of the type int'),
                (2, ["set", "editor.fontSize", "1", "2"], "one text, not 2"),
                (2, ["set", "new", "1"], "no type yet.*\n.*--type"),
                (2, ["set", "new", "1", "--type", "thing"], 'no type "thing"'),
                (2, ["set", "editor.fontSize", "1", "--session"], "memory of a program"),
                (2, ["watch", "--count", "0"], "count"),
                (3, ["set", "editor.fontSize", "1", "--type", "long"], "is of the type int"),
                (3, ["set", "editor.zoom", "10"], "10 is outside 1..9"),
                (3, ["set", "editor.own", "1"], "validator a.B.*no Java"),
                (3, ["set", "editor.fontSize", "1", "--factory"], "read from the files in"),
                (1, ["set", "limit.below", "1", "--type", "int"], "not the name of a node"),
                (2, ["set", "a.bad-name", "1", "--type", "int"], '"bad-name" cannot be a name'),
                (3, ["set", "a.b.c", "1", "--type", "int", "--factory"], "read from the files in"),
                (4, ["load", "none.xml"], "none.xml.*\n"),
                (4, ["check", "none.xml"], "Not every file"),
                (4, ["dump", "--output", "none/file.xml"], "none/file.xml"),
                (4, ["--user-directory", "/none", "get", "limit"], "/none: No such file")):
            done = self.run_program(*arguments)
            self.assertEqual(done.returncode, status, (arguments, done))
            self.assertRegex(done.stderr, error)
        self.assertEqual(self.json("tree", "editor")[1]["value"], 13)
        self.assertEqual(self.json("list"), ["editor.", "largest", "limit"])
        with open("/dev/full", "w", encoding="utf-8") as full_device:
            full = subprocess.run([PROGRAM, "tree"], stdout=full_device, stderr=subprocess.PIPE,
                                  check=False, env=self.environment)
        self.assertEqual(full.returncode, 4)

    def test_dump_and_load(self):
        self.expect(0, "", "set", "editor.fontSize", "20")
        self.expect(0, "", "dump", "--output", f"{self.base}/user.xml")
        with open(f"{self.base}/user.xml", encoding="utf-8") as file:
            self.assertEqual(self.run_program("dump").stdout, file.read())
        self.expect(0, "", "unset", "editor.fontSize")
        self.expect(0, "1 keys set, 0 left out\n", "load", f"{self.base}/user.xml")
        self.expect(0, "20\n", "get", "editor.fontSize")
        partly = self.write("partly.xml", """<settings version="1">
          <key name="limit" type="double"><value>1</value></key>
          <key name="largest" type="int"><value>1</value></key>
          <key name="none" type="int"><value>1</value></key></settings>""")
        self.expect(3, "", "load", partly, error="none: .*\n(.*\n)*settings: Nothing was loaded")
        self.expect(0, "Infinity\n", "get", "limit")
        self.expect(0, "1 keys set, 2 left out\n", "load", partly, "--skip",
                    error="none: .*\nlargest: .*ulong")
        self.expect(0, "1\n", "get", "limit")

    def test_checking(self):
        right, wrong = f"{self.base}/factory/file.xml", self.write("wrong.xml", WRONG)
        self.expect(0, "0 mistakes\n", "check", right)
        done = self.run_program("check", right, wrong, self.write("cut.xml", FACTORY[:-20]))
        lines = done.stdout.splitlines()
        self.assertEqual([":".join(line.split(":")[1:3]) for line in lines[:-2]], WRONG_AT, done)
        self.assertIn("the file ends too early", lines[-2])
        self.assertEqual((done.returncode, lines[-1]), (4, f"{len(WRONG_AT) + 1} mistakes"))
        with open(SCHEMA, encoding="utf-8") as file:
            self.expect(0, file.read(), "export-schema")

    def test_watching(self):
        with subprocess.Popen([PROGRAM, "watch", "--count", "3"], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              env=self.environment) as watch:
            give_up = threading.Timer(120, watch.kill)
            give_up.start()
            self.addCleanup(give_up.cancel)
            self.assertIn("Watching", watch.stderr.readline())
            self.expect(0, "", "set", "editor.fontSize", "20")
            self.assertEqual(watch.stdout.readline(), "changed editor.fontSize = 20\n")
            self.expect(0, "", "unset", "editor.fontSize")
            self.assertEqual(watch.stdout.readline(), "changed editor.fontSize = 13\n")
            self.expect(0, "", "set", "fresh", "1", "--type", "int")
            self.assertEqual(watch.stdout.readline(), "added fresh = 1\n")
            self.assertEqual(watch.wait(60), 0, watch.stderr.read())

    def test_settings_of_an_application(self):
        self.expect(0, "", "--application", "app", "set", "limit", "5", "--type", "int")
        self.expect(0, "5\n", "--application", "app", "get", "limit")
        self.assertNotEqual(self.run_program("get", "limit").stdout, "5\n")
        self.assertTrue(os.path.isdir(f"{self.base}/user/app"))
        self.assertIn('"a/b" is not the name of an application',
                      self.run_program("--application", "a/b", "get", "limit").stderr)

    @unittest.skipIf(os.geteuid() != 0, "only the superuser works in place of another user")
    def test_another_users_directory(self):
        directory = f"{self.base}/user"
        os.chown(directory, 65534, 65534)
        self.expect(0, "", "--user-directory", directory, "set", "limit", "2")
        self.assertTrue(os.listdir(directory))
        for name in os.listdir(directory):
            self.assertEqual(os.stat(f"{directory}/{name}").st_uid, 65534, name)

    def test_help(self):
        self.assertRegex(self.run_program("--version").stdout, r"^settings \d+\.\d+\.\d+\n$")
        text = self.run_program("--help").stdout
        commands = re.findall(r"^  ([a-z][a-z-]+) +[A-Z]", text, re.MULTILINE)
        self.assertIn("explain", commands)
        every = self.run_program("--help-all").stdout
        self.assertRegex(every, r"\nsettings get PATH:\n  Print .*\n\n(  .*\n)*  --default TEXT +What")
        self.assertEqual(re.findall(r"^settings ([a-z-]+).*:$", every, re.MULTILINE), commands)
        for command in commands:
            done = self.run_program(command, "--help")
            self.assertEqual((done.returncode, done.stderr), (0, ""), command)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
