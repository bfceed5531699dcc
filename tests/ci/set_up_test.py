import os
import subprocess
import tempfile
import unittest
from pathlib import Path

SET_UP = Path(__file__).resolve().parents[2] / ".ci/set-up"
STEPS = ("format", "release", "sanitizers", "tidy", "threads", "fuzz", "package", "e2e", "installation", "rpm", "arch", "soak",
         "mutants", "stress", "coverage", "quick")


class SetUp(unittest.TestCase):
    """On a computer that has none of the packages, or all of them, as far as dpkg-query says."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        self.program("apt-get", 'shift $(( $# > 0 )); printf "%s\\n" "$@" >>"$ASKED_FOR"')
        self.program("sudo", 'exec "$@"')

        self.known("")

    def known(self, pattern):
        """The packages that apt has; no pattern means all."""
        self.program("apt-cache", f'case "$2" in {pattern or "*"}) echo "Package: $2" ;; esac')

    def program(self, name, script):
        (self.folder / name).write_text(f"#!/bin/sh\n{script}\n", encoding="utf-8")
        (self.folder / name).chmod(0o755)

    def asked_for(self, step, present=False):
        says = "installed" if present else "not-installed"
        self.program("dpkg-query", f'shift 2; for name; do echo "$name {says}"; done')
        asked = self.folder / "asked"
        asked.write_text("", encoding="utf-8")
        environment = {**os.environ, "PATH": f"{self.folder}:{os.environ['PATH']}", "ASKED_FOR": str(asked)}
        run = subprocess.run([SET_UP, step], env=environment, check=False, capture_output=True)
        self.assertEqual(run.returncode, 0, run.stderr)
        return {word for word in asked.read_text(encoding="utf-8").split() if not word.startswith("-")}

    def test_asks_for_nothing_where_all_is_there(self):
        for step in STEPS:
            self.assertEqual(self.asked_for(step, present=True), set(), step)

    def test_asks_for_the_package_that_the_release_has(self):
        self.assertEqual(self.boost(), {"libboost-json-dev"})
        self.known("*1.81*")
        self.assertEqual(self.boost(), {"libboost-json1.81-dev"})

    def boost(self):
        return {word for word in self.asked_for("release") if "boost" in word}

    def test_formatting_takes_one_package(self):
        self.assertEqual(self.asked_for("format"), {"clang-format"})

    def test_only_the_steps_with_clang_ask_for_it(self):
        having = {step for step in STEPS if "clang" in self.asked_for(step)}
        self.assertEqual(having, {"sanitizers", "tidy", "threads", "fuzz", "coverage", "quick"})

    def test_only_the_steps_that_run_the_cases_ask_for_a_display(self):
        having = {step for step in STEPS if "xvfb" in self.asked_for(step)}
        self.assertEqual(having, {"release", "sanitizers", "e2e", "quick", "soak", "mutants", "stress", "coverage"})

    def test_only_the_emulated_computer_asks_for_an_emulator(self):
        self.assertEqual({step for step in STEPS if "qemu-system-x86" in self.asked_for(step)}, {"e2e"})

    def test_every_step_of_the_whole_is_known(self):
        for step in STEPS:
            self.assertTrue(self.asked_for(step), step)
