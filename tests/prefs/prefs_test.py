#!/usr/bin/env python3
"""Compares java.util.prefs on settings with the back end of the JDK, and uses it from several
processes.

prefs_test.py JAVA API_JAR PREFS_JAR PROGRAMS_JAR [TEST...]
"""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

JAVA, API, PREFS, PROGRAMS = sys.argv[1:5]
SEEDS, STEPS = 3, 1200


class PrefsTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.base = directory.name
        os.mkdir(f"{self.base}/user", mode=0o700)
        os.mkdir(f"{self.base}/factory")
        self.environment = dict(os.environ, SETTINGS_USERDIR=f"{self.base}/user",
                                SETTINGS_FACTORYDIR=f"{self.base}/factory")

    def command(self, *arguments, classes=f"{API}:{PREFS}:{PROGRAMS}", old="none"):
        return [JAVA, "-Xcheck:jni", "--enable-native-access=ALL-UNNAMED",
                f"-Djava.util.prefs.userRoot={self.base}/{old}", "-cp", classes, *arguments]

    def run_jdk(self, *arguments):
        return self.run_program(*arguments, classes=PROGRAMS, old="jdk")

    def run_program(self, *arguments, **options):
        done = subprocess.run(self.command(*arguments, **options), capture_output=True, text=True,
                              check=False, timeout=100, env=self.environment)
        self.assertEqual(done.returncode, 0, done)
        return done

    def test_behaves_as_the_back_end_of_the_jdk(self):
        for seed in range(SEEDS):
            ours = self.run_program("prefs.Story", str(seed), str(STEPS))
            jdk = self.run_jdk("prefs.Story", str(seed), str(STEPS))
            for our_line, jdk_line in zip(ours.stdout.splitlines(), jdk.stdout.splitlines()):
                self.assertEqual(our_line, jdk_line, f"seed {seed}")
            self.assertEqual(ours.stdout, jdk.stdout)
            self.assertEqual(ours.stderr, "")
        self.assertGreater(len(os.listdir(f"{self.base}/jdk/.java/.userPrefs")), 0)

    def test_processes_that_are_killed_share_everything_that_they_put(self):
        count = 40
        processes = [subprocess.Popen(self.command("prefs.Writer", name, str(count)),
                                      stderr=subprocess.PIPE, text=True, env=self.environment)
                     for name in "abc"]
        for process in processes:
            self.assertEqual(process.communicate(timeout=100)[1], "")
        found = self.run_program("prefs.Shown", "shared").stdout
        for name in "abc":
            for i in range(count):
                self.assertIn(f"{name}{i}=value {i}\n", found)
                self.assertRegex(found, fr"nodes/{i}: .*{name}={i}\b")

    def test_settings_files_preset_values(self):
        presets = os.path.join(os.path.dirname(os.path.abspath(__file__)), "presets.xml")
        shutil.copy(presets, f"{self.base}/factory")
        done = self.run_program("prefs.Presets")
        self.assertEqual(done.stdout, "preset: by the file, mine\nnumber: 7, 8\nnumber: 8, 8\n"
                         "limited: a, a\nlimited=a\nnumber=7\npreset=by the file\n")
        self.assertRegex(done.stderr, 'Cannot store number of /story: .*"x"')
        self.assertRegex(done.stderr, 'Cannot store limited of /story: "c" is none of a, b')

    def old_files(self):
        found = {}
        for directory, _, names in os.walk(f"{self.base}/jdk/.java/.userPrefs"):
            for name in names:
                with open(f"{directory}/{name}", "rb") as file:
                    found[f"{directory}/{name}"] = file.read()
        return found

    def test_preferences_of_the_jdk_are_imported_once(self):
        self.run_jdk("prefs.Story", "7", str(STEPS))
        old = self.old_files()
        imported = self.run_program("prefs.Story", "7", "0", old="jdk")
        self.assertEqual(imported.stderr, "")
        self.assertEqual(self.old_files(), old)
        self.assertEqual(imported.stdout, self.run_jdk("prefs.Story", "7", "0").stdout)
        self.run_jdk("prefs.Story", "8", "100")
        self.assertNotEqual(imported.stdout, self.run_jdk("prefs.Story", "7", "0").stdout)
        again = self.run_program("prefs.Story", "7", "0", old="jdk")
        self.assertEqual(imported.stdout, again.stdout)

    def test_an_import_adds_to_presets_and_skips_a_broken_file(self):
        def write(node, text):
            os.makedirs(f"{self.base}/jdk/.java/.userPrefs/{node}")
            with open(f"{self.base}/jdk/.java/.userPrefs/{node}/prefs.xml", "w",
                      encoding="utf-8") as file:
                file.write(f'<map MAP_XML_VERSION="1.0">{text}')
        write("story", '<entry key="number" value="5"/></map>')
        write("shared/nodes/0", '<entry key="cut" value="1"')
        write("shared/nodes/1", '<entry key="whole" value="1"/></map>')
        presets = os.path.join(os.path.dirname(os.path.abspath(__file__)), "presets.xml")
        shutil.copy(presets, f"{self.base}/factory")
        shown = self.run_program("prefs.Shown", "shared", old="jdk")
        self.assertIn("nodes/1: whole=1\n", shown.stdout)
        self.assertEqual(shown.stderr.count("Not imported: "), 1, shown.stderr)
        self.assertIn("shared/nodes/0/prefs.xml", shown.stderr)
        self.assertIn("number: 5, 8\n", self.run_program("prefs.Presets").stdout)

    def test_an_agent_or_a_module_brings_it_to_a_program(self):
        no_old = f"-Djava.util.prefs.userRoot={self.base}/none"
        agent = [JAVA, no_old, f"-javaagent:{PREFS}", "--enable-native-access=ALL-UNNAMED", "-cp",
                 PROGRAMS]
        for name in ("a", "b"):
            subprocess.run([*agent, "prefs.Writer", name, "2"], check=True, env=self.environment)
        self.assertIn("b1=value 1\n", self.run_program("prefs.Shown", "shared").stdout)
        module = subprocess.run(
            [JAVA, no_old, "-p", f"{API}:{PREFS}", "--add-modules", "com.velonix.settings.prefs",
             "--enable-native-access=com.velonix.settings", "-cp", PROGRAMS, "prefs.Shown", "shared"],
            capture_output=True, text=True, check=True, env=self.environment)
        self.assertIn("a1=value 1\n", module.stdout)
        self.assertFalse(os.path.exists(f"{self.base}/none"))


del sys.argv[1:5]
unittest.main()
