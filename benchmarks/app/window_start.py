#!/usr/bin/env python3
"""How long the window takes to be there, and what it weighs, against an empty window of the same toolkit.

    KESTRAV_PROGRAMS=BIN_FOLDER tests/sandbox/isolated /usr/bin/python3 benchmarks/app/window_start.py

Both programs start in turns of random order, on a display of their own. Measured from the start of the process, on the
wall and as the process's own work (user and system, all threads): until the window manager has the window, and until the
window's first picture is on the screen. Memory is what is resident two seconds later. Exit status 1 if a ratio of
medians is above its limit; the first picture has none, for an empty window has no text to paint.

A computer that is at work measures the other work as well. `chrt -r 5` in front of the command lets the programs, the
display and the window manager go first.
"""

import collections
import mmap
import os
import random
import statistics
import subprocess
import sys
import time
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests/road"), str(ROOT / "tests/app/window")]

from desktop import DesktopTest, PROGRAMS  # noqa: E402 pylint: disable=wrong-import-position

ROUNDS = 25
START_LIMIT, MEMORY_LIMIT = 1.3, 1.4

# Milliseconds and KiB. "There" is for the window manager.
Start = collections.namedtuple("Start", "there there_work picture picture_work memory")


class Screen:
    """The pixels of the display, which Xvfb keeps in a file laid out as XWD describes it."""

    HEADER_SIZE, BYTES_PER_LINE, COLOURS = 0, 48, 76  # where the header has these numbers
    BYTES_PER_COLOUR = 12

    def __init__(self, path):
        with open(path, "rb") as file:
            self.pixels = mmap.mmap(file.fileno(), 0, prot=mmap.PROT_READ)
        self.line = self.number(self.BYTES_PER_LINE)
        self.begin = self.number(self.HEADER_SIZE) + self.number(self.COLOURS) * self.BYTES_PER_COLOUR

    def number(self, place):
        return int.from_bytes(self.pixels[place:place + 4], "big")

    def shows_a_window(self):
        """Whether a row of the screen's middle, in the margin of either window, is painted over a width of 300."""
        first = self.begin + 477 * self.line + 600 * 4
        row = self.pixels[first:first + 300 * 4]
        return all(row[place] != 0 for place in range(0, len(row), 4))


class WindowStart(DesktopTest):
    def bring_up_the_desktop(self):
        folder = self.folder / "screen"
        folder.mkdir()
        self.display_options = ("-fbdir", str(folder))
        super().bring_up_the_desktop()
        self.screen = Screen(next(folder.iterdir()))

    def measure(self, program):
        spy = subprocess.Popen(["xprop", "-root", "-spy", "_NET_CLIENT_LIST"], env=self.environment,
                               stdout=subprocess.PIPE)
        spy.stdout.readline()
        os.set_blocking(spy.stdout.fileno(), False)
        begin = time.monotonic()
        process = subprocess.Popen([PROGRAMS / program], env=self.environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        there = self.when(lambda: b"0x" in (spy.stdout.read() or b""), begin, process)
        picture = self.when(self.screen.shows_a_window, begin, process)
        time.sleep(2)
        status = Path(f"/proc/{process.pid}/status").read_text()
        resident = int(next(line for line in status.splitlines() if line.startswith("VmRSS")).split()[1])
        process.terminate()  # a window that is killed leaves a message behind
        process.wait()
        self.wait_until(lambda: not self.screen.shows_a_window(), "the window is still there")
        spy.kill()
        spy.wait()
        spy.stdout.close()
        return Start(*there, *picture, resident)

    def when(self, happened, begin, process):
        """On the wall, and as the process's work."""
        while not happened():
            self.assertIsNone(process.poll(), "the program has ended")
            self.assertLess(time.monotonic() - begin, self.patience, "the window does not come")
            time.sleep(0.0005)
        work = time.clock_gettime((~process.pid << 3) | 2)  # clock_getcpuclockid(3)
        return (time.monotonic() - begin) * 1000, work * 1000

    def runTest(self):
        del self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"]
        programs = ["empty_window", "kestrav"]
        for program in programs:
            self.measure(program)  # warms the caches
        found = {program: [] for program in programs}
        for _ in range(ROUNDS):
            for program in random.sample(programs, len(programs)):
                found[program].append(self.measure(program))
        for what, unit, limit in (("there", "ms", START_LIMIT), ("there_work", "ms", None), ("picture", "ms", None),
                                  ("picture_work", "ms", None), ("memory", "KiB", MEMORY_LIMIT)):
            empty, full = (statistics.median(getattr(start, what) for start in found[program])
                           for program in ("empty_window", "kestrav"))
            print(f"{what}: {full:.1f} {unit}, empty window {empty:.1f} {unit}, ratio {full / empty:.2f}"
                  + (f", at most {limit}" if limit else ""))
            if limit:
                with self.subTest(what):
                    self.assertLessEqual(full / empty, limit)


if __name__ == "__main__":
    unittest.main()
