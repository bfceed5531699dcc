"""The commands that stand within a sentence of a page: their programs take them.

What has a NAME in capitals in it gets a file, a folder or a number of the simulation. A sentence says what to do in a
trouble that is not there now, so it is the words of a command that are looked at and not what comes of it.
"""

import os
import re
import subprocess
from pathlib import Path

import printed
from road import PROGRAMS, ROOT, RoadTest

# How much of a command stands in the sentence for the reader to fill in.
OPEN = {"FILE": "new.fds", "IMAGE": "new.fds", "FOLDER": "kept", "BLOCK": "1536", "OFFSET": "786432"}
LOOKED_AT = ("kestravctl", "./test", "./release", "systemctl", "journalctl", "apt", "apt-get", "ss", "ip",
             "simulator/with-accessory")
# Where the units stand, ours as they are written. One is of a program that nothing here needs.
UNITS = (ROOT / "packaging/systemd", Path("/usr/lib/systemd/system"), Path("/lib/systemd/system"))
OF_ANOTHER = "cockpit.socket"


def said_in(page):
    """The commands of a page's sentences, by the program; a remedy that the programs print has them in quotes."""
    for span in printed.spans(page):
        for command in [span, *re.findall(r"'([^']+)'", span)]:
            command = re.sub(r"^sudo ", "", command)
            program, _, rest = command.partition(" ")
            if program in LOOKED_AT and rest and "…" not in rest:
                # Of two in a row the first; the other one stands for itself elsewhere.
                yield command.partition(";")[0]


def commands_of(*programs):
    found = {command for page in printed.pages() if page.suffix == ".md" for command in said_in(page)}
    return sorted(command for command in found if command.partition(" ")[0] in programs)


class InSentences(RoadTest):
    def setUp(self):
        super().setUp()
        self.own_folders()
        (self.folder / "new.fds").write_bytes(bytes(70000))
        (self.folder / "kept").mkdir()

    def status_of(self, *command):
        run = subprocess.run(command, cwd=self.folder, check=False, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, text=True, timeout=90)
        return run.returncode, run.stdout

    def at_least(self, least, *programs):
        commands = commands_of(*programs)
        self.assertGreaterEqual(len(commands), least, commands)
        return commands

    def taken_by_kestravctl(self, words):
        """Whether it understands them: a wrong call ends with 2. A sentence may speak of a command by its name alone."""
        status, said = self.status_of(*self.plugged_in([PROGRAMS / "kestravctl", *words]))
        if status == 2 and all(re.fullmatch("[a-z]+", word) for word in words):
            status, said = self.status_of(PROGRAMS / "kestravctl", *words, "--help")
        self.assertIn(status, (0, 1, 3, 4, 5, 6) if "--help" not in words else (0,), said)

    def test_kestravctl_takes_what_is_printed_for_it(self):
        self.start_service()
        for command in self.at_least(10, "kestravctl"):
            with self.subTest(command=command):
                self.taken_by_kestravctl([OPEN.get(word, word) for word in command.split()[1:]])

    def test_the_simulator_takes_what_is_printed_for_it(self):
        for command in self.at_least(1, "simulator/with-accessory"):
            with self.subTest(command=command):
                program, *words = command.split()
                words = [re.sub(r"^build/\w+/bin", str(PROGRAMS), word) for word in words]
                status, said = self.status_of(ROOT / program, *words)
                self.assertEqual(status, 0, said)

    def test_test_and_release_take_what_is_printed_for_them(self):
        text = (ROOT / "test").read_text(encoding="utf-8")
        steps, options = re.findall(r"^step_(\w+)\(\)", text, re.M), re.findall(r"^        (--\w+)\) \w+=", text, re.M)
        for command in self.at_least(8, "./test", "./release"):
            with self.subTest(command=command):
                self.assertTrue(os.access(ROOT / command.split()[0], os.X_OK))
                for word in command.split()[1:]:
                    self.assertTrue(word in steps or word in options or not re.match(r"[a-z]|--", word), word)

    def test_systemctl_knows_the_units_that_are_printed(self):
        for command in self.at_least(4, "systemctl"):
            with self.subTest(command=command):
                unit = command.split()[-1]
                named = unit if "." in unit else f"{unit}.service"
                found = [folder for folder in UNITS if (folder / named).exists() or (folder / f"{named}.in").exists()]
                self.assertTrue(found or named == OF_ANOTHER, named)

    def test_the_logs_are_asked_for_programs_that_write_them(self):
        idents = set(re.findall(r'(?:SystemLog \w+[({]|serviceMain\(count, words, \{)"([\w-]+)"', self.sources()))
        for command in self.at_least(3, "journalctl"):
            with self.subTest(command=command):
                status, said = self.status_of(*command.split())
                self.assertIn(status, (0, 1), said)
                self.assertNotRegex(said, "unrecognized|invalid|Failed to parse|Unknown")
                for ident in re.findall(r"-t (\S+)", command):
                    self.assertIn(ident, idents)

    @staticmethod
    def sources():
        return "".join(path.read_text(encoding="utf-8") for folder in ("app", "cli", "services", "base")
                       for path in sorted((ROOT / folder).rglob("*.cpp")))

    def test_apt_knows_the_options_and_the_packages_are_ours_or_needed(self):
        control = (ROOT / "debian/control").read_text(encoding="utf-8")
        # What this computer has and could have takes a minute to read, and says nothing of the options.
        nothing_there = ["-o", f"Dir::State::lists={self.folder}/kept", "-o", f"Dir::Cache={self.folder}/kept",
                         "-o", "Dir::State::status=/dev/null", "-o", "Dir::Etc=/nowhere"]
        for command in self.at_least(5, "apt", "apt-get"):
            with self.subTest(command=command):
                _, verb, *rest = command.split()
                status, said = self.status_of("apt-get", "--simulate", *nothing_there, verb,
                                              *[word for word in rest if word.startswith("-")])
                self.assertEqual(status, 0, said)
                for package in [word for word in rest if not word.startswith("-")]:
                    self.assertRegex(control, rf"(?m)(^Package: |\W){re.escape(package)}(?![\w-])")

    def test_who_listens_is_shown_as_printed(self):
        self.start_service()
        for command in self.at_least(1, "ss"):
            with self.subTest(command=command):
                # A shell takes the quotes away.
                status, said = self.status_of("sh", "-c", command)
                self.assertEqual(status, 0, said)
                self.assertIn("127.0.0.1:9090", said)

    def test_the_loopback_is_looked_at_as_printed(self):
        for command in self.at_least(2, "ip"):
            with self.subTest(command=command):
                status, said = self.status_of("sh", "-c", command)
                self.assertEqual(status, 0, said)
