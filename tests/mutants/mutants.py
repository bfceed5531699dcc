#!/usr/bin/env python3
"""Changes the production code for the worse, one small change at a time, and looks whether a test notices.

    mutants.py check                                   whether the table fits the sources of today
    mutants.py run [--only REGEX] [--report FILE]      makes each change in a copy, builds it, runs the tests of its folder

The table is the folder table/ beside this file: a text for each folder of production code. A line that begins with a
path names the source; each line below it that begins with four blanks is one change:

        text of today  =>  text instead
        text of today  =>  text instead  (no effect: why no test can notice it)

The text of today stands exactly once in that source. "⏎" means the end of a line with the blanks and empty lines that follow.
Lines that begin with "#" are for the reader. --only picks the changes whose "FILE: OLD  =>  NEW" matches.

The report has a line for each change that was tried; those that it has already are not tried again.

A change that no test noticed has survived. Exit status 0: none has, but those that the table explains, and none of those
was noticed after all; 1: some have; 2: the table does not fit.
"""

import argparse
import filecmp
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import NamedTuple

ROOT = Path(__file__).resolve().parents[2]
TABLE = Path(__file__).resolve().parent / "table"
AT_LEAST = 300
ARROW = "  =>  "
SHARDS = 4
PATIENCE = 600  # seconds for the cases of a folder as long as nobody knows how long they take
NO_EFFECT = re.compile(r"  \(no effect: (.+)\)$")
LINE_END = "⏎"

# The programs that test a folder: targets of CMake, whose cases bear their name in front.
TESTS = {
    "app": ("app_test", "app_qt_test", "accessory_watch_test"),
    "base": ("base_test", "base_faults_test", "root_rooms_test"),
    "cli": ("cli_test", "helper_terminal_test"),
    "command": ("command_test", "command_endpoint_test", "command_faults_test", "command_helper_test",
                "helper_channel_test", "polkit_authorization_test"),
    "device": ("device_test", "update_test", "repaired_device_name_test", "count_readable_bytes_test",
               "reading_faults_test", "posix_disk_calls_test", "posix_disk_faults_test", "mountinfo_volumes_test",
               "udev_device_registry_test", "udev_faults_test", "real_parts_test"),
    "json": ("json_tree_test", "json_value_test", "json_record_test"),
    "outcome": ("outcome_test", "cli_test"),
    "services": ("root_rooms_test", "gate_test", "kernel_test", "jobs_test", "commandd_test", "commandd_consent_test",
                 "daemon_test", "bless_test", "bless_faults_test", "helper_service_test"),
    "socket": ("socket_test", "socket_faults_test"),
}


class Change(NamedTuple):
    file: str
    old: str
    new: str
    harmless: str  # why nobody can notice it; empty for all others
    line: str      # of the table, for messages

    @property
    def folder(self):
        return self.file.split("/")[0]

    def __str__(self):
        return f"{self.file}: {self.old}{ARROW}{self.new}"


class WrongTable(Exception):
    pass


def parsed(text, name):
    """The changes that a text of the table lists."""
    changes, file = [], None
    for number, line in enumerate(text.splitlines(), 1):
        where = f"{name}:{number}"
        if not line.strip() or line.startswith("#"):
            continue
        if not line.startswith("    "):
            file = line.strip()
            continue
        explained = NO_EFFECT.search(line)
        body = line[4:explained.start()] if explained else line[4:]
        # An editor may have taken the blanks off the end of a line whose new text is empty.
        old, arrow, new = body.partition(ARROW) if ARROW in body else body.partition(ARROW.rstrip())
        if file is None or not arrow or not old:
            raise WrongTable(f"{where}: neither a file nor a change: {line.strip()}")
        changes.append(Change(file, old, new, explained.group(1) if explained else "", where))
    return changes


def pattern_of(old):
    return re.compile(r"\n\s*".join(re.escape(part) for part in old.split(LINE_END)))


def changed(source, change):
    """The text of a source after a change."""
    found = pattern_of(change.old).findall(source)
    if len(found) != 1:
        raise WrongTable(f"{change.line}: stands {len(found)} times in {change.file}: {change.old}")
    new = change.new.replace(LINE_END, "\n")
    result = pattern_of(change.old).sub(lambda _: new, source)
    if result == source:
        raise WrongTable(f"{change.line}: changes nothing in {change.file}: {change.old}")
    return result


def whole_table(folder=TABLE):
    return [change for file in sorted(folder.glob("*.txt"))
            for change in parsed(file.read_text(encoding="utf-8"), file.name)]


def complaints(changes, root):
    """Why the table does not fit the sources of today."""
    found, seen = [], {}
    for change in changes:
        try:
            changed((root / change.file).read_text(encoding="utf-8"), change)
        except (WrongTable, OSError) as problem:
            found.append(str(problem))
        if change.folder not in TESTS:
            found.append(f"{change.line}: nobody knows which tests are those of {change.folder}")
        twin = seen.setdefault((change.file, change.old, change.new), change.line)
        if twin != change.line:
            found.append(f"{change.line}: the same as {twin}")
    return found


def check():
    changes = whole_table()
    found = complaints(changes, ROOT)
    missing = sorted(set(TESTS) - {change.folder for change in changes})
    found += [f"{folder} has no changes" for folder in missing]
    if len(changes) < AT_LEAST:
        found.append(f"{len(changes)} changes, which are fewer than {AT_LEAST}")
    print("\n".join(found) or f"{len(changes)} changes fit.")
    return 2 if found else 0


def make_alike(source, copy):
    """Gives `copy` the files of `source`, but for what is built and the history. One that is alike keeps its time."""
    copy.mkdir(parents=True, exist_ok=True)
    entries = {entry.name: entry for entry in source.iterdir() if entry.name not in ("build", ".git", "__pycache__")}
    for stale in copy.iterdir():
        if stale.name not in entries and stale.name != "build":
            shutil.rmtree(stale) if stale.is_dir() else stale.unlink()
    for name, entry in entries.items():
        twin = copy / name
        if entry.is_dir():
            make_alike(entry, twin)
        elif not twin.exists() or not filecmp.cmp(entry, twin, shallow=False):
            shutil.copy2(entry, twin)
            twin.touch()


class Copy:
    """A copy of the tree with a build of its own, in which one change after the other is made and taken back."""

    def __init__(self, place):
        self.tree = place / "tree"
        self.build = self.tree / "build/dev"
        self.log = place / "build.log"
        make_alike(ROOT, self.tree)
        # The cases need no list: a program is run whole. Nobody debugs it, and without symbols it is made sooner.
        quick = ["-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST", "-DCMAKE_CXX_FLAGS_DEBUG=-g0"]
        if shutil.which("ld.gold"):
            quick.append("-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=gold")
        if not self.said("cmake", "--preset", "dev", *quick):
            raise WrongTable(f"the copy can't be configured; see {self.log}")
        self.commands = {}
        self.patience = {}  # seconds for the cases of a folder, once they have been run without a change
        self.environment = dict(os.environ)

    def said(self, *command):
        with open(self.log, "w", encoding="utf-8") as log:
            return subprocess.run(command, cwd=self.tree, stdout=log, stderr=log, env=getattr(self, "environment", None),
                                  check=False).returncode == 0

    def builds(self, folder):
        # By its preset, which lets the compiler's memory know the copy again.
        return self.said("cmake", "--build", "--preset", "dev", "--target", *TESTS[folder])

    def learn_commands(self):
        """How ctest runs each program, by its target; and from now on the compiler's memory is left as it is."""
        listed = subprocess.run(["ctest", "--test-dir", self.build, "--show-only=json-v1"], capture_output=True,
                                check=True).stdout
        for test in json.loads(listed)["tests"]:
            words = [word for word in test.get("command", []) if not word.startswith("--gtest_")]
            self.commands.setdefault(test["name"].split(".")[0], words)
        self.environment["CCACHE_READONLY"] = "1"

    def failing_case(self, folder):
        """The first case that fails, or None if all hold."""
        # A program that is ended in the middle leaves its files, a hundred megabytes at times.
        with tempfile.TemporaryDirectory(prefix="kestrav-", ignore_cleanup_errors=True) as files:
            os.chmod(files, 0o1777)  # some cases act as other users
            running = [run for name in TESTS[folder] for run in self.started(self.commands[name], files)]
            begun = time.monotonic()
            try:
                case = first_failure(running, begun + self.patience.get(folder, PATIENCE))
                # A change may have a case wait or turn for ever.
                self.patience.setdefault(folder, 60 + 10 * (time.monotonic() - begun))
                return case
            finally:
                for one in running:
                    one.end()

    def started(self, command, files):
        """A program's cases, which mostly wait, in several processes beside each other."""
        for shard in range(SHARDS):
            environment = self.environment | {"GTEST_TOTAL_SHARDS": str(SHARDS), "GTEST_SHARD_INDEX": str(shard),
                                              "GTEST_FAIL_FAST": "1", "GTEST_COLOR": "no", "TMPDIR": files}
            yield Running(command, environment)

    def outcome(self, change):
        """What became of a change: killed by a case's name or the compiler's warning, "survived" or "does not compile"."""
        path = self.tree / change.file
        today = path.read_text(encoding="utf-8")
        path.write_text(changed(today, change), encoding="utf-8")
        try:
            if not self.builds(change.folder):
                # What is left unused, say, is a fault to the compiler as this project calls it.
                warning = re.search(r"\[-Werror=?([\w-]*)\]", self.log.read_text(encoding="utf-8", errors="replace"))
                return f"killed by the compiler ({warning.group(1)})" if warning else "does not compile"
            case = self.failing_case(change.folder)
            return f"killed by {case}" if case else "survived"
        finally:
            path.write_text(today, encoding="utf-8")


class Running:
    """A test program at work, and what it says."""

    def __init__(self, command, environment):
        self.said = tempfile.TemporaryFile("w+", errors="replace")
        self.process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=self.said,
                                        stderr=subprocess.STDOUT, start_new_session=True)

    def has_ended(self):
        return self.process.poll() is not None

    def failure(self):
        """Of one that has ended: its first case that failed, or None."""
        if self.process.returncode == 0:
            return None
        self.said.seek(0)
        said = self.said.read()
        failed = re.search(r"^\[  FAILED  \] ([\w/.]+)", said, re.M)
        begun = re.findall(r"^\[ RUN      \] ([\w/.]+)", said, re.M)
        return failed.group(1) if failed else f"{begun[-1] if begun else '(none)'} (ended by {-self.process.returncode})"

    def end(self):
        """With all that it has started, which is in the group that it leads. One that has ended may have lent its number
        to another by now."""
        if not self.has_ended():
            os.killpg(self.process.pid, signal.SIGKILL)
        self.process.wait()
        self.said.close()


def first_failure(running, over):
    """The first case that fails of whatever program; None if all have ended well. Nobody waits for the others then."""
    waiting = list(running)
    while waiting:
        for one in [one for one in waiting if one.has_ended()]:
            waiting.remove(one)
            if case := one.failure():
                return case
        if time.monotonic() > over:
            return "(takes too long)"
        time.sleep(0.02)
    return None


def run(only, report, place):
    wanted = [change for change in whole_table() if re.search(only, str(change))]
    found = complaints(wanted, ROOT)
    if found or not wanted:
        print("\n".join(found) or "no change matches")
        return 2
    copy = Copy(place)
    for folder in sorted({change.folder for change in wanted}):
        if not copy.builds(folder):
            print(f"{folder}: the copy can't be built; see {copy.log}")
            return 2
    copy.learn_commands()
    for folder in sorted({change.folder for change in wanted}):
        if case := copy.failing_case(folder):
            print(f"{folder}: {case} fails without any change")
            return 2
    told = report.read_text(encoding="utf-8") if report.exists() else ""
    counts = {"killed": 0, "survived": 0, "explained": 0, "wrong": 0}
    for change in wanted:
        if f" {change}   [" in told:
            continue
        outcome = copy.outcome(change)
        kind = outcome.split()[0] if outcome.startswith("killed") else "survived" if outcome == "survived" else "wrong"
        if change.harmless:
            kind = "explained" if kind == "survived" else "wrong"
        counts[kind] += 1
        with open(report, "a", encoding="utf-8") as lines:
            print(f"{kind:9} {change}   [{outcome}]", file=lines)
        if kind in ("survived", "wrong"):
            print(f"{kind.upper()}: {change.line}: {change}   [{outcome}]", flush=True)
    print(f"{counts['killed']} killed, {counts['survived']} survived, {counts['explained']} explained, "
          f"{counts['wrong']} wrong lines")
    return 1 if counts["survived"] or counts["wrong"] else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=("check", "run"))
    parser.add_argument("--only", default="", metavar="REGEX")
    parser.add_argument("--report", type=Path, default=ROOT / "build/mutants.report")
    parser.add_argument("--place", type=lambda path: Path(path).resolve(), default=ROOT / "build/mutants")
    given = parser.parse_args()
    try:
        return check() if given.what == "check" else run(given.only, given.report, given.place)
    except WrongTable as problem:
        print(problem)
        return 2


if __name__ == "__main__":
    sys.exit(main())
