"""A test case that runs the program `settings` on directories of its own."""
import json
import os
import subprocess
import sys
import tempfile
import unittest

import jsonschema

PROGRAM = sys.argv[1]
DOCS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../docs")
with open(f"{DOCS}/settings-output.schema.json", encoding="utf-8") as schema:
    SCHEMA = json.load(schema)

FACTORY = """<settings version="1">
  <node name="editor">
    <key name="fontSize" type="int"><value>11</value></key>
    <key name="ratio" type="float"><value>0.1</value></key>
    <key name="rulers" type="int[]"><value><item>80</item><item>100</item></value></key>
    <key name="title" type="string"><value> two words
and a line </value></key>
    <key name="empty"/>
    <key name="zoom" type="int">
      <java-validator class="com.velonix.services.settings.validators.Range" argument="1..9"/>
    </key>
    <key name="own" type="int"><java-validator class="a.B" argument=""/></key>
  </node>
  <key name="limit" type="double"><value>Infinity</value></key>
  <key name="largest" type="ulong"><value>18446744073709551615</value></key>
</settings>
"""
WORKGROUP = """<settings version="1">
  <node name="editor">
    <key name="fontSize"   type="int"><value>13</value></key>
  </node>
</settings>
"""


def environment(base):
    """Returns the environment of a test with the directories that it makes in `base`."""
    for level, text in (("factory", FACTORY), ("workgroup", WORKGROUP)):
        os.makedirs(f"{base}/{level}")
        with open(f"{base}/{level}/file.xml", "w", encoding="utf-8") as file:
            file.write(text)
    os.makedirs(f"{base}/user", mode=0o700)
    return dict(os.environ, SETTINGS_FACTORYDIR=f"{base}/factory",
                SETTINGS_WORKGROUPDIR=f"{base}/workgroup", SETTINGS_USERDIR=f"{base}/user")


class ProgramTestCase(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.base = directory.name
        os.chmod(self.base, 0o755)  # others work in it too
        self.environment = environment(self.base)

    def run_program(self, *arguments, **options):
        return subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, check=False,
                              timeout=60, env=self.environment, **options)

    def expect(self, status, output, *arguments, error=""):
        """Runs the program; `output` is all of the standard output, `error` a pattern."""
        done = self.run_program(*arguments)
        self.assertEqual((done.returncode, done.stdout), (status, output), done)
        if error:
            self.assertRegex(done.stderr, error)
        elif status == 0:
            self.assertEqual(done.stderr, "")

    def json(self, *arguments):
        """Returns the JSON that the command prints, which the schema describes under its name."""
        done = self.run_program(*arguments, "--json")
        self.assertEqual((done.returncode, done.stderr), (0, ""), done)
        output = json.loads(done.stdout)
        self.check_schema(arguments[0], output)
        return output

    def check_schema(self, command, output):
        jsonschema.validate(output, {**SCHEMA, "$ref": f"#/$defs/{command}"})

    def write(self, name, text):
        path = f"{self.base}/{name}"
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        return path
