#!/usr/bin/env python3
"""How long the window takes to be there, and what it weighs, against an empty window of the same toolkit.

    KESTRAV_PROGRAMS=BIN_FOLDER tests/sandbox/isolated /usr/bin/python3 benchmarks/app/window_start.py

Both programs start by turns on a display of their own. Time is from the start of the process until the window manager
has the window; memory is what is resident two seconds later. Exit status 1 if a ratio of medians is above 1.5.
"""

import statistics
import subprocess
import sys
import time
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests/road"), str(ROOT / "tests/app/window")]

from desktop import DesktopTest, PROGRAMS  # noqa: E402 pylint: disable=wrong-import-position

ROUNDS = 15
LIMIT = 1.5


class WindowStart(DesktopTest):
    def measure(self, program):
        """Milliseconds until the window is there, and KiB resident."""
        spy = subprocess.Popen(["xprop", "-root", "-spy", "_NET_CLIENT_LIST"], env=self.environment,
                               stdout=subprocess.PIPE, text=True)
        spy.stdout.readline()
        begin = time.monotonic()
        process = subprocess.Popen([PROGRAMS / program], env=self.environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while "0x" not in spy.stdout.readline():
            pass
        shown = time.monotonic()
        time.sleep(2)
        status = Path(f"/proc/{process.pid}/status").read_text()
        resident = int(next(line for line in status.splitlines() if line.startswith("VmRSS")).split()[1])
        process.terminate()  # a window that is killed leaves a message behind
        process.wait()
        while "0x" in spy.stdout.readline():
            pass
        spy.kill()
        spy.wait()
        spy.stdout.close()
        return (shown - begin) * 1000, resident

    def runTest(self):
        del self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"]
        programs = ("empty_window", "kestrav")
        for program in programs:
            self.measure(program)  # warms the caches
        found = {program: [] for program in programs}
        for _ in range(ROUNDS):
            for program in programs:
                found[program].append(self.measure(program))
        for index, what, unit in ((0, "start", "ms"), (1, "memory", "KiB")):
            empty, full = (statistics.median(values[index] for values in found[program]) for program in programs)
            print(f"{what}: {full:.0f} {unit}, empty window {empty:.0f} {unit}, ratio {full / empty:.2f}")
            with self.subTest(what):
                self.assertLessEqual(full / empty, LIMIT)


if __name__ == "__main__":
    unittest.main()
