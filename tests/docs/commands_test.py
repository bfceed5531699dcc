"""Each command that a page prints in a block of its own runs as it is printed, and says what the page says it does.

It runs in a copy of the tree, with the programs of this build and the simulated accessory, and everything else that it
names is the real program, but for the few in STAND_INS: those install something, take an hour, or want an init system.
"""

import os
import re
import shutil
import subprocess
import unittest

import printed
from road import PROGRAMS, ROOT, RoadTest

BUILD = PROGRAMS.parent
# Program -> what it does here. $TREE is the real tree.
STAND_INS = {
    "sudo": 'exec "$@"',
    # With an accessory plugged in.
    "kestravctl": 'exec "$TREE/simulator/with-accessory" --disk "$DISK" --device "$DEVICE" -- "$PROGRAMS/kestravctl" "$@"',
    # Without a display it has one sentence to say; the cases of app/ open it on one.
    "kestrav": """said=$(unset DISPLAY WAYLAND_DISPLAY; "$PROGRAMS/kestrav" "$@" 2>&1) || [ $? = 1 ]
        echo "$said" | grep -x 'kestrav: There is no display .*'""",
    # The files of packages that are built, and commands that take a folder or nothing but packages of Debian's. These
    # lines themselves are run by `./test installation`.
    "apt-get": r"""for word; do case $word in
        ../*) name=${word#../}; grep -qx "Package: ${name%%_*}" "$TREE/debian/control" || exit 1 ;;
        kestrav*) grep -qx "Package: $word" "$TREE/debian/control" || exit 1 ;;
    esac; done""",
    "dpkg-buildpackage": '[ -f debian/rules ]',
    # On computers that an example's inventory has; the cases of fleet/ play it on some that are there.
    "ansible-playbook": 'book=$TREE/packaging/ansible/${3##*/}; shift 3; '
                        'exec "$ANSIBLE" --list-tasks --list-hosts -i inventory "$book" "$@"',
    "gdb": '[ "$1" = --args ] && shift && exec "$@"',
    # What configures this tree does so beside the build that is tested; what builds all of it only says how.
    "cmake": r"""case "$*" in
        '--preset '*) exec "$CMAKE" "$@" -B "$CONFIGURED" ;;
        '--build --preset '*) grep -q "\"name\": \"$3\", \"configurePreset\"" "$TREE/CMakePresets.json" &&
            exec "$CMAKE" --build "$CONFIGURED" -- -t commands all ;;
        *) exec "$CMAKE" "$@" ;;
    esac""",
    # As this build was compiled: with sanitizers, a program of another compiler would not fit the library.
    "g++": 'exec ${CXX:-/usr/bin/g++} $CXXFLAGS "$@"',
    "systemctl": r'for unit; do :; done; [ -f "$TREE/packaging/systemd/$unit" ] || [ -f "$TREE/packaging/systemd/$unit.in" ]',
    # The call is the one that the interface describes: its name, and a text with a list of texts.
    "busctl": r"""[ "$1 $2 $4 $6" = "call com.corvatel.KestravHelper com.corvatel.KestravHelper sas" ] &&
        grep -A2 "<method name=\"$5\"" "$TREE/packaging/dbus/$4.xml" | tr -d '\n' | grep -q 'type="s".*type="as"' """,
    "run": "", "test": "",
}
STEPS = r"""for step; do case $step in [a-z]*) grep -q "^step_$step()" "$TREE/test" || exit 1 ;; esac; done"""
# What a command says beside what is printed below it.
SAYS = {
    r"^ss ": r"\b127\.0\.0\.1:9090\b",
    r"^journalctl ": r"^(No journal files were found\.|-- No entries --|\w+ \d+ [\d:]+ )",
    r"^ctest ": r"100% tests passed, 0 tests failed out of [1-9]",
    r"^cmake --preset": r" -o bin/kestravctl ",
    r"^ansible-playbook ": r"bench-01\.example\.org",
    r"^cmp .* echo arrived": r"^arrived$",
    r"--gtest_filter": r"\[  PASSED  \] [1-9]|[1-9]\d* tests? ran",
}
# A command that serves until it is ended.
SERVICE = r"/kestrav-commandd$"


def in_general(text):
    """Without what differs from one computer to the next: disks, folders, speed."""
    text = re.sub(r"\bsd[a-z]{1,2}(?=\d?\b)", "DISK", text)
    text = re.sub(r"(?<![\w.])/[\w./-]+/(?=new\.f)", "", text)
    return re.sub(r"\d+\.\d MB/s", "SPEED", text)


def here(command):
    """The command with the disk and the folders of the simulation, and without a wait of ten minutes."""
    return re.sub(r"/dev/sdb", "/dev/sdzz", command).replace("--wait=600", "--wait=1")


def of_cache(name):
    return re.search(rf"^{name}:\w+=(.*)$", (BUILD / "CMakeCache.txt").read_text(encoding="utf-8"), re.M).group(1)


def block_cases(cls):
    """A case for each block of commands."""
    for page in printed.pages():
        for number, block in enumerate(printed.blocks(page), 1):
            name = re.sub(r"\W+", "_", str(page.relative_to(ROOT))).lower()
            setattr(cls, f"test_of_{name}_{number}_run_as_printed",
                    lambda self, page=page, block=block: self.run_block(page, block))
    return cls


@block_cases
class Commands(RoadTest):
    def setUp(self):
        super().setUp()
        self.tree = self.folder / "tree"
        (self.tree / "build/dev").mkdir(parents=True)
        for entry in ROOT.iterdir():
            if entry.name not in {"build", "run", "test", ".git"}:
                (self.tree / entry.name).symlink_to(entry)
        # What a run of the cases writes is not this build's.
        for entry in BUILD.iterdir():
            if entry.name != "Testing":
                (self.tree / "build/dev" / entry.name).symlink_to(entry)
        for name in ("run", "test"):
            self.script(self.tree / name, STEPS)
        image = bytes(range(256)) * 782
        for name in ("new.fds", "new.fif"):
            (self.tree / name).write_bytes(image[:200000])
        self.environment = self.environment_of_a_reader()

    def environment_of_a_reader(self):
        programs = self.folder / "stand-ins"
        programs.mkdir()
        for name, text in STAND_INS.items():
            self.script(programs / name, text)
        description = (ROOT / "simulator/accessory.umockdev").read_text(encoding="utf-8")
        device = self.folder / "numbered.umockdev"
        device.write_text(re.sub("^A: product=", "A: serial=KA0017\nA: product=", description, flags=re.M), encoding="utf-8")
        return {**os.environ, "PATH": f"{programs}:{os.environ['PATH']}", "TREE": str(ROOT), "DISK": str(self.disk),
                "PROGRAMS": str(PROGRAMS), "DEVICE": str(device), "CONFIGURED": str(self.folder / "configured"),
                "CMAKE": shutil.which("cmake"), "ANSIBLE": shutil.which("ansible-playbook") or "",
                "ANSIBLE_ROLES_PATH": str(ROOT / "packaging/ansible/roles"), "ANSIBLE_HOME": str(self.folder / "ansible"),
                "ANSIBLE_LOCAL_TEMP": str(self.folder / "ansible/tmp")}

    @staticmethod
    def script(path, text):
        path.write_text(f"#!/bin/sh\n{text}\n", encoding="utf-8")
        path.chmod(0o755)

    # -- what some blocks need -------------------------------------------------------------------------------------

    def prepare(self, page, block):
        text = "\n".join(command for command, _ in block)
        if re.search(r"\bg\+\+|cmake -S examples", text):
            self.install_library()
        if "inventory" in text:
            (self.tree / "inventory").write_text(
                re.search(r"^```ini\n(.*?)^```", page.read_text(encoding="utf-8"), re.M | re.S).group(1), encoding="utf-8")
        if "/usr/libexec/kestrav/" in text:
            self.own_folders()
            self.mount_empty("/usr/libexec/kestrav")
            # Copies: the installer takes nothing from a folder that others may write to, and this tree may stand in one.
            for program in PROGRAMS.glob("kestrav*"):
                shutil.copy2(program, "/usr/libexec/kestrav")

    def install_library(self):
        """The library's package, and a reader's program."""
        prefix = self.folder / "prefix"
        subprocess.run([self.environment["CMAKE"], "--install", BUILD, "--component", "libkestrav-dev", "--prefix", prefix],
                       check=True, stdout=subprocess.DEVNULL)
        found = next(prefix.rglob("pkgconfig"))
        for file in found.iterdir():
            file.write_text(re.sub("(?m)^prefix=.*", f"prefix={prefix}", file.read_text(encoding="utf-8")), encoding="utf-8")
        (self.tree / "program.cpp").symlink_to(ROOT / "examples/json_value.cpp")
        self.environment.update({
            "CMAKE_PREFIX_PATH": str(prefix), "PKG_CONFIG_PATH": str(found),
            "CXX": shutil.which(of_cache("CMAKE_CXX_COMPILER")), "CXXFLAGS": of_cache("CMAKE_CXX_FLAGS")})

    def serve_where_needed(self, command):
        """The service, on the disk that a command names, unless a line above has started it."""
        if re.search(r"kestravctl (firmware|icon|save)|9090", command) and not self.services:
            disk = re.search(r"--disk (\S+)", command)
            self.serve(f"{ROOT}/simulator/with-accessory --disk {disk.group(1) if disk else self.disk} "
                       f"--device {self.environment['DEVICE']} {PROGRAMS}/kestrav-commandd")

    def serve(self, command):
        service = subprocess.Popen(["bash", "-c", f"exec {command}"], cwd=self.tree, env=self.environment,
                                   stderr=subprocess.DEVNULL)
        self.services.append(service)
        self.addCleanup(self.stop_service, service)
        self.wait_until(self.port_answers, "the service does not listen", service)

    # -- running ---------------------------------------------------------------------------------------------------

    def run_block(self, page, block):
        block = [(here(command).replace("/tmp/", f"{self.folder}/"), lines) for command, lines in block]
        self.prepare(page, block)
        for command, lines in block:
            with self.subTest(command=command):
                if re.search(SERVICE, command):
                    self.serve(command)
                else:
                    self.serve_where_needed(command)
                    self.run_command(command, lines)

    def run_command(self, command, lines):
        run = subprocess.run(["bash", "-c", f"set -o pipefail; {command}"], cwd=self.tree, env=self.environment, check=False,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=170)
        self.assertEqual(run.returncode, 0, run.stdout)
        said = in_general(run.stdout)
        for line in filter(None, map(in_general, lines)):
            self.assertIn(line, said)
        for like, answer in SAYS.items():
            if re.search(like, command):
                self.assertRegex(run.stdout, re.compile(answer, re.M))


class Pages(unittest.TestCase):
    def test_print_commands_that_are_all_looked_at(self):
        of_readme = [block for page in printed.pages() for block in printed.blocks(page) if page.suffix == ".md"]
        of_manuals = [block for page in printed.pages() for block in printed.blocks(page) if page.suffix != ".md"]
        self.assertGreater(sum(map(len, of_readme)), 20)
        self.assertGreater(sum(map(len, of_manuals)), 10)

    def test_lose_no_line_of_a_block(self):
        text = "$ one \\\n      two\nthree\n\n$ four |\n     five\n"
        self.assertEqual(printed.commands(text, ("$ ",)), [("one two", ["three", ""]), ("four | five", [])])
