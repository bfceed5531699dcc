"""The command line, its manual page and its completions say the same."""

import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path
from unittest import mock

import shells

ROOT = Path(__file__).resolve().parents[2]
PROGRAMS = Path(os.environ["KESTRAV_PROGRAMS"])
EVERYWHERE = {"-h", "--help"}
# What `kestravctl list` prints, and what its columns offer for an option.
LISTING = """\
DISK  SERIAL  PORT   SIZE    NAME               MOUNTED
sdb   KA0017  1-2    16 MiB  Kestrav Accessory  /media/me/A
sdc   -       1-2.3  16 MiB  Kestrav Accessory  -
"""
ATTACHED = {"--disk": {"sdb", "sdc"}, "--serial": {"KA0017"}, "--port": {"1-2", "1-2.3"}}


def help_text(*words):
    return subprocess.run([PROGRAMS / "kestravctl", *words, "--help"], check=True, capture_output=True, text=True).stdout


def section(text, title):
    found = re.search(rf"^{title}:\n((?:  .*\n)+)", text, re.M)
    return found.group(1) if found else ""


def subcommands(text):
    return set(re.findall(r"^  ([a-z]+) ", section(text, "Subcommands"), re.M))


def options(text):
    names = re.findall(r"^  (-\S+)", section(text, "Options"), re.M)
    return {name for group in names for name in group.split(",")}


def command_line():
    """Command -> its options, for "" as well, and for the helper's operations as "helper OPERATION"."""
    top = help_text()
    known = {"": options(top)}
    for command in subcommands(top):
        text = help_text(command)
        known[command] = options(text)
        for operation in subcommands(text):
            known[f"{command} {operation}"] = options(help_text(command, operation))
    return known


def exit_statuses(text):
    return re.findall(r"^  (\d+)  ", section(text, "Exit status"), re.M)


def synopsis(page):
    """The same from the synopsis of a manual page, where the options that every command has are left out."""
    known = {}
    text = re.search(r"^\.Sh SYNOPSIS\n(.*?)^\.Sh", page, re.M | re.S).group(1)
    for call in re.split(r"^\.Nm.*\n", text, flags=re.M)[1:]:
        words = [word for line in re.findall(r"^\.Cm (.*)", call, re.M) for word in line.split()]
        flags = {"-" + flag for flag in re.findall(r"Fl (\S+)", call)}
        if words[0] == "helper":
            known["helper"] = set()
            words = [f"helper {word}" for word in words[1:] if word != "|"]
        known.update({word: flags for word in words})
    return known


class CommandLine(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="kestrav-list.")
        self.addCleanup(folder.cleanup)
        listing = Path(folder.name) / "kestravctl"
        listing.write_text(f"#!/bin/sh\n[ \"$*\" = list ] && cat <<END\n{LISTING}END\n")
        listing.chmod(0o755)
        changed = mock.patch.dict(os.environ, PATH=f"{folder.name}:{os.environ['PATH']}")
        changed.start()
        self.addCleanup(changed.stop)
        self.known = command_line()
        self.assertIn("firmware", self.known)
        self.assertIn("helper install", self.known)

    def test_is_that_of_the_manual_page(self):
        page = (ROOT / "docs/man/kestravctl.1").read_text()
        wanted = {name: flags - EVERYWHERE - {"--output"} for name, flags in self.known.items() if name}
        self.assertEqual(synopsis(page), wanted)
        explained = {"-" + flag for line in re.findall(r"^\.It Fl (.*)", page, re.M) for flag in line.split()
                     if flag not in {",", "Ar"} and not flag.isupper()}
        self.assertEqual(explained, set().union(*self.known.values()))

    def test_ends_as_the_manual_page_says(self):
        page = (ROOT / "docs/man/kestravctl.1").read_text()
        statuses = exit_statuses(help_text())
        self.assertGreater(len(statuses), 3)
        self.assertEqual(re.findall(r"^\.It (\d+)$", page, re.M), statuses)

    def test_is_completed_by_bash(self):
        self.is_completed_by(shells.bash)

    def test_is_completed_by_zsh(self):
        with tempfile.TemporaryDirectory(prefix="kestrav-zsh.") as folder:
            zsh = shells.Zsh(folder)
            self.addCleanup(zsh.end)
            self.is_completed_by(zsh.offers)

    def test_is_completed_by_fish(self):
        self.is_completed_by(shells.fish)

    def is_completed_by(self, shell):
        commands = {name for name in self.known if name and " " not in name}
        operations = {name.split()[1] for name in self.known if " " in name}
        self.assertEqual(self.offered(shell), commands)
        self.assertEqual(self.offered(shell, "helper"), operations)
        self.assertEqual(self.offered(shell, "helper", "run"), {"umount", "dd"})
        self.assertEqual(shell("kestravctl", "firm"), {"firmware"})
        for name, flags in self.known.items():
            # A short form that has a long one beside it need not be offered.
            offered = {word for word in shell("kestravctl", *name.split(), "--") if word.startswith("--")}
            self.assertEqual(offered, {flag for flag in flags if flag.startswith("--")}, name)
        for option, values in ATTACHED.items():
            self.assertEqual(set(shell("kestravctl", "firmware", option, "")), values, option)
        self.names_files(shell, "firmware", but=["new.fif", "new.txt"])
        self.names_files(shell, "icon", file="new.fif", but=["new.fds", "new.txt"])
        self.names_files(shell, "write", "0")
        self.names_files(shell, "read", "--output")

    @staticmethod
    def offered(shell, *words):
        return {word for word in shell("kestravctl", *words, "") if not word.startswith("-")}

    def names_files(self, shell, *words, file="new.fds", but=()):
        """The file, and a folder in which there may be more, but none of these."""
        with tempfile.TemporaryDirectory(prefix="kestrav-files.") as folder:
            for name in (file, *but):
                (Path(folder) / name).touch()
            (Path(folder) / "newer").mkdir()
            offered = shell("kestravctl", *words, f"{folder}/ne")
            # A shell may offer the file alone, its folder being on the line already.
            self.assertEqual({Path(word).name for word in offered}, {file, "newer"}, words)
