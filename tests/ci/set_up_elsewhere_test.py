import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
TOOLS = ("bash", "sed", "sort", "dirname", "mktemp")


class SetUpElsewhere(unittest.TestCase):
    """On a computer without apt, where no program is found and pkg-config knows no module."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        self.asked = self.folder / "asked"
        for name in TOOLS:
            (self.folder / name).symlink_to(shutil.which(name))
        self.program("sudo", 'exec "$@"')

    def program(self, name, script):
        (self.folder / name).write_text(f"#!/bin/bash\n{script}\n", encoding="utf-8")
        (self.folder / name).chmod(0o755)

    def installer(self, name):
        self.program(name, f'printf "%s\\n" "$@" >{self.asked}')

    def run_it(self):
        return subprocess.run([ROOT / ".ci/set-up", "run"], env={"PATH": str(self.folder)}, check=False, capture_output=True,
                              text=True)

    def asked_for(self, installer):
        self.installer(installer)
        run = self.run_it()
        self.assertEqual(run.returncode, 0, run.stderr)
        return self.asked.read_text().splitlines()

    def test_asks_dnf_by_the_names_of_pkg_config(self):
        words = self.asked_for("dnf")
        self.assertEqual(words[:2], ["install", "-y"])
        self.assertIn("pkgconfig(libudev)", words)
        self.assertIn("cmake", words)

    def test_asks_zypper_by_the_same_names(self):
        words = self.asked_for("zypper")
        self.assertEqual(words[:2], ["--non-interactive", "install"])
        self.assertIn("pkgconfig(mount)", words)

    def test_asks_pacman_by_its_own_names_once_each(self):
        words = self.asked_for("pacman")
        self.assertEqual(words[0], "-S")
        self.assertIn("xxhash", words)
        self.assertEqual(words.count("systemd"), 1)

    def test_says_what_is_missing_where_nothing_can_install_it(self):
        run = self.run_it()
        self.assertEqual(run.returncode, 1)
        self.assertRegex(run.stderr, "(?s)CMake.*libudev.*Install their development packages")

    def test_asks_for_nothing_that_is_there(self):
        for name in ("g++", "cmake", "ninja", "pkg-config", "python3", "sfdisk", "udevadm", "umockdev-run"):
            self.program(name, "exit 0")
        run = self.run_it()
        self.assertNotIn("libudev", run.stderr)
        self.assertNotIn("CMake", run.stderr)

    def test_knows_whatever_the_build_looks_for(self):
        table = (ROOT / ".ci/set-up-elsewhere").read_text(encoding="utf-8")
        spec = (ROOT / "packaging/rpm/kestrav.spec").read_text(encoding="utf-8")
        for capability in re.findall(r"^BuildRequires: +((?:cmake|pkgconfig)\(.*\))", spec, re.M):
            if capability not in {"pkgconfig(systemd)", "pkgconfig(udev)"}:  # asked there alone: where files belong
                self.assertIn(f"| {capability} ", table)
