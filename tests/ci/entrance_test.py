"""The two commands that a newcomer types, and how they show that they are still at it."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
WITH_PROGRESS = ROOT / ".ci/with-progress"


class Entrance(unittest.TestCase):
    """A tree of nothing but ./test and its scripts, on a computer where every package is installed."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.tree = Path(scratch.name) / "tree"
        shutil.copytree(ROOT / ".ci", self.tree / ".ci")
        shutil.copy(ROOT / "test", self.tree)
        self.programs = Path(scratch.name) / "programs"
        self.programs.mkdir()
        self.seen = Path(scratch.name) / "seen"
        self.program("dpkg-query", 'shift 2; for name; do echo "$name installed"; done')
        self.clang_format("14.0.6")
        for name in ("base/ours.cpp", "base/ours.h", "obj-x86_64-linux-gnu/moc.cpp", "build/dev/moc.cpp",
                     "debian/libkestrav-dev/usr/include/theirs.h", "base/page.md"):
            (self.tree / name).parent.mkdir(parents=True, exist_ok=True)
            (self.tree / name).touch()

    def clang_format(self, version):
        self.program("clang-format", f'[ "$1" = --version ] && echo "clang-format version {version}" && exit\n'
                                     f'printf "%s\\n" "$@" >>{self.seen}')

    def program(self, name, script):
        (self.programs / name).write_text(f"#!/bin/sh\n{script}\n", encoding="utf-8")
        (self.programs / name).chmod(0o755)

    def run_step(self, step):
        environment = {**os.environ, "PATH": f"{self.programs}:{os.environ['PATH']}",
                       "GIT_CEILING_DIRECTORIES": str(self.tree.parent)}
        return subprocess.run([self.tree / "test", step], env=environment, check=False, capture_output=True, text=True)

    def format(self):
        self.seen.unlink(missing_ok=True)
        run = self.run_step("format")
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        return run.stdout

    def formatted(self):
        self.assertIn("1 passed, 0 failed, 0 skipped", self.format())
        return [word for word in self.seen.read_text().split() if not word.startswith("-")]

    def test_formats_our_own_sources_in_a_copy(self):
        self.assertEqual(self.formatted(), ["base/ours.cpp", "base/ours.h"])

    def test_formats_our_own_sources_in_a_repository(self):
        shutil.copy(ROOT / ".gitignore", self.tree)
        subprocess.run(["git", "init", "-q"], cwd=self.tree, check=True)
        subprocess.run(["git", "add", "base/ours.cpp"], cwd=self.tree, check=True)
        self.assertEqual(self.formatted(), ["base/ours.cpp", "base/ours.h"])

    def test_leaves_the_formatting_to_the_version_that_decides(self):
        self.clang_format("19.1.7")
        self.assertIn("0 passed, 0 failed, 1 skipped", self.format())
        self.assertFalse(self.seen.exists())

    def test_takes_a_crash_of_a_fuzz_target_for_a_failure(self):
        """Its exit status is the one by which other checks say that they can't be made."""
        (self.tree / "fuzz/corpus/crashing").mkdir(parents=True)
        self.program("cmake", "exit 0")
        target = self.tree / "build/fuzz/bin/crashing"
        target.parent.mkdir(parents=True)
        target.write_text("#!/bin/sh\nexit 77\n", encoding="utf-8")
        target.chmod(0o755)
        run = self.run_step("fuzz")
        self.assertIn("FAILED: fuzz crashing", run.stdout)
        self.assertEqual(run.stdout.splitlines()[-1], "0 passed, 1 failed, 0 skipped")
        self.assertEqual(run.returncode, 1)

    def test_explains_itself(self):
        for name in ("run", "test"):
            run = subprocess.run([ROOT / name, "--help"], cwd="/", check=True, capture_output=True, text=True)
            self.assertIn(f"./{name}", run.stdout)
            self.assertNotIn("#", run.stdout)

    def test_refuses_what_it_does_not_know(self):
        for name in ("run", "test"):
            run = subprocess.run([ROOT / name, "--sideways"], cwd="/", check=False, capture_output=True, text=True)
            self.assertEqual(run.returncode, 2)
            self.assertIn("--sideways", run.stderr)


class WithProgress(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        self.log = self.folder / "log"

    def run_with(self, *words):
        return subprocess.run([WITH_PROGRESS, *words], check=False, capture_output=True, text=True)

    def test_says_nothing_of_what_goes_well(self):
        run = self.run_with(self.log, "echo", "all is well")
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "", ""))
        self.assertEqual(self.log.read_text(), "all is well\n")

    def test_shows_the_end_of_what_fails(self):
        run = self.run_with(self.log, "sh", "-c", "echo no such thing >&2; exit 3")
        self.assertEqual((run.returncode, run.stdout), (3, "no such thing\n"))

    def test_keeps_a_failure_to_its_log(self):
        self.assertEqual(self.run_with("--quiet", self.log, "sh", "-c", "echo no; exit 3").stdout, "")

    def test_shows_the_newest_line_while_it_lasts(self):
        done = self.folder / "done"
        line = f"echo one; echo two; until [ -e {done} ]; do sleep 0.1; done"
        with subprocess.Popen([WITH_PROGRESS, self.log, "sh", "-c", line], stdout=subprocess.PIPE, text=True,
                              env={**os.environ, "KESTRAV_PROGRESS_SECONDS": "1"}) as run:
            said = run.stdout.readline()
            done.touch()
            self.assertEqual(run.wait(timeout=60), 0)
        self.assertRegex(said, r"^  \d+ s: two\n$")
