"""Each command that a page prints in a block of its own runs as it is printed, and says what the page says it does.

It runs in a copy of the tree, with the programs of this build and the simulated accessory. Where a command would install
something or take an hour, a stand-in asks whether what it names is there; other cases and steps of ./test run those.
"""

import os
import re
import subprocess
import unittest
from pathlib import Path

from road import PROGRAMS, ROOT, RoadTest

PAGES = ("README.md", "CONTRIBUTING.md", "SECURITY.md", "docs/*.md", "examples/README.md", "packaging/library/README.md",
         "simulator/README.md")
# Program -> what it does here. $TREE is the real tree.
STAND_INS = {
    "sudo": 'exec "$@"',
    "kestravctl": 'exec "$TREE/simulator/with-accessory" --disk "$DISK" -- "$PROGRAMS/kestravctl" "$@"',
    # The files of packages that are built, and commands that take a folder or nothing but packages of Debian's.
    "apt-get": r"""for word; do case $word in
        ../*) name=${word#../}; grep -qx "Package: ${name%%_*}" "$TREE/debian/control" || exit 1 ;;
        kestrav*) grep -qx "Package: $word" "$TREE/debian/control" || exit 1 ;;
    esac; done""",
    "dpkg-buildpackage": '[ -f debian/rules ]',
    "ansible-playbook": '[ -f "$TREE/packaging/ansible/${3##*/}" ]',
    "gdb": '[ "$1" = --args ] && shift && exec "$@"',
    "ctest": '/usr/bin/ctest "$@" -N | grep "Total Tests: [1-9]"',
    "cmake": r"""case "$*" in
        *--preset*) for name; do :; done; grep -q "\"name\": \"$name\", \"configurePreset\"" "$TREE/CMakePresets.json" ;;
        -S*) [ -f "$2/CMakeLists.txt" ] ;;
        --build*) [ "$2" = build/examples ] ;;
        *) exit 1 ;;
    esac""",
    "pkg-config": '[ -f "$TREE/packaging/library/${3%.pc}.pc.in" ]',
    "g++": 'exit 0',
    "systemctl": r"""for unit; do :; done; grep -q . "$TREE/packaging/systemd/$unit" || grep -q . "$TREE/packaging/systemd/$unit.in" """,
    "journalctl": 'exit 0',
    "udevadm": 'exit 0',
    "ss": 'exit 0',
}
STEPS = r"""for step; do case $step in [a-z]*) grep -q "^step_$step()" "$TREE/test" || exit 1 ;; esac; done"""

# A command that serves until it is ended.
SERVICE = r"/kestrav-commandd$"


def blocks(text):
    """The console blocks of a page, each a list of (command, the lines printed below it)."""
    for block in re.findall(r"^```console\n(.*?)^```", text, re.M | re.S):
        commands = []
        for line in re.sub(r"\\\n *", "", block).splitlines():
            if line.startswith("$ "):
                commands.append((line[2:], []))
            else:
                commands[-1][1].append(line)
        yield commands


def in_general(text):
    """Without what differs from one computer to the next: disks, folders, speed."""
    text = re.sub(r"\bsd[a-z]{1,2}(?=\d?\b)", "DISK", text)
    text = re.sub(r"(?<![\w.])/[\w./-]+/(?=new\.f)", "", text)
    return re.sub(r"\d+\.\d MB/s", "SPEED", text)


def page_cases(cls):
    """A case for each page that prints commands."""
    for page in sorted(path for pattern in PAGES for path in ROOT.glob(pattern)):
        if any(blocks(page.read_text(encoding="utf-8"))):
            name = re.sub(r"\W+", "_", str(page.relative_to(ROOT).with_suffix(""))).lower()
            setattr(cls, f"test_of_{name}_run_as_printed", lambda self, page=page: self.run_page(page))
    return cls


@page_cases
class Commands(RoadTest):
    def setUp(self):
        super().setUp()
        self.tree = self.folder / "tree"
        (self.tree / "build/dev").mkdir(parents=True)
        for entry in ROOT.iterdir():
            if entry.name not in {"build", "run", "test", ".git"}:
                (self.tree / entry.name).symlink_to(entry)
        (self.tree / "build/dev/bin").symlink_to(PROGRAMS)
        for name in ("tests", "CTestTestfile.cmake"):
            (self.tree / "build/dev" / name).symlink_to(PROGRAMS.parent / name)
        (self.tree / "build/examples").mkdir()
        self.script(self.tree / "build/examples/find_accessory", "echo 'Kestrav Accessory is the disk sdzz: /dev/sdzz, "
                    "raw /dev/rsdzz'")
        programs = self.folder / "stand-ins"
        programs.mkdir()
        for name, text in STAND_INS.items():
            self.script(programs / name, text)
        for name in ("run", "test"):
            self.script(self.tree / name, STEPS)
        self.environment = {**os.environ, "PATH": f"{programs}:{os.environ['PATH']}", "TREE": str(ROOT),
                            "DISK": str(self.disk), "PROGRAMS": str(PROGRAMS), "GTEST_BRIEF": "1"}
        image = bytes(range(256)) * 782
        for name in ("new.fds", "new.fif"):
            (self.tree / name).write_bytes(image[:200000])

    @staticmethod
    def script(path, text):
        path.write_text(f"#!/bin/sh\n{text}\n", encoding="utf-8")
        path.chmod(0o755)

    def run_page(self, page):
        for block in blocks(page.read_text(encoding="utf-8")):
            block = [(command.replace("/tmp/", f"{self.folder}/"), printed) for command, printed in block]
            for command, printed in block:
                with self.subTest(command=command):
                    self.serve(command)
                    self.run_command(command, printed)
            while self.services:
                self.stop_service(self.services.pop())

    def serve(self, command):
        """The service that a command needs, on the disk that it names, unless a line above has started it."""
        if re.search(r"kestravctl (firmware|icon)", command) and not self.services:
            disk = re.search(r"--disk (\S+)", command)
            self.start(f"{ROOT}/simulator/with-accessory --disk {disk.group(1) if disk else self.disk} {PROGRAMS}/kestrav-commandd")

    def start(self, command):
        service = subprocess.Popen(["bash", "-c", f"exec {command}"], cwd=self.tree, env=self.environment,
                                   stderr=subprocess.DEVNULL)
        self.services.append(service)
        self.addCleanup(self.stop_service, service)
        self.wait_until(self.port_answers, "the service does not listen", service)

    def run_command(self, command, printed):
        if re.search(SERVICE, command):
            self.start(command)
            return
        run = subprocess.run(["bash", "-c", f"set -o pipefail; {command}"], cwd=self.tree, env=self.environment, check=False,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=90)
        self.assertEqual(run.returncode, 0, run.stdout)
        said = in_general(run.stdout)
        for line in filter(None, map(in_general, printed)):
            self.assertIn(line, said)


class Pages(unittest.TestCase):
    def test_print_commands_that_are_all_looked_at(self):
        printed = sum(len(block) for pattern in PAGES for page in ROOT.glob(pattern)
                      for block in blocks(page.read_text(encoding="utf-8")))
        self.assertGreater(printed, 20)

    def test_lose_no_line_of_a_block(self):
        text = "```console\n$ one \\\n      two\nthree\n\n$ four\n```\n"
        self.assertEqual(list(blocks(text)), [[("one two", ["three", ""]), ("four", [])]])
