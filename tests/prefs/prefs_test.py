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

    def command(self, *arguments, classes=f"{API}:{PREFS}:{PROGRAMS}"):
        return [JAVA, "-Xcheck:jni", "--enable-native-access=ALL-UNNAMED",
                f"-Djava.util.prefs.userRoot={self.base}/jdk", "-cp", classes, *arguments]

    def run_program(self, *arguments, **options):
        done = subprocess.run(self.command(*arguments, **options), capture_output=True, text=True,
                              check=False, timeout=100, env=self.environment)
        self.assertEqual(done.returncode, 0, done)
        return done

    def test_behaves_as_the_back_end_of_the_jdk(self):
        for seed in range(SEEDS):
            ours = self.run_program("prefs.Story", str(seed), str(STEPS))
            jdk = self.run_program("prefs.Story", str(seed), str(STEPS), classes=PROGRAMS)
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

    def test_an_agent_or_a_module_brings_it_to_a_program(self):
        agent = [JAVA, f"-javaagent:{PREFS}", "--enable-native-access=ALL-UNNAMED", "-cp", PROGRAMS]
        for name in ("a", "b"):
            subprocess.run([*agent, "prefs.Writer", name, "2"], check=True, env=self.environment)
        self.assertIn("b1=value 1\n", self.run_program("prefs.Shown", "shared").stdout)
        module = subprocess.run(
            [JAVA, "-p", f"{API}:{PREFS}", "--add-modules", "com.velonix.settings.prefs",
             "--enable-native-access=com.velonix.settings", "-cp", PROGRAMS, "prefs.Shown", "shared"],
            capture_output=True, text=True, check=True, env=self.environment)
        self.assertIn("a1=value 1\n", module.stdout)
        self.assertFalse(os.path.exists(f"{self.base}/jdk"))


del sys.argv[1:5]
unittest.main()
