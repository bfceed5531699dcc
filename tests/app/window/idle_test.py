"""The window while nothing happens."""

import time
from pathlib import Path

from desktop import DesktopTest


def number_in(status, name):
    return int(next(line for line in status.splitlines() if line.startswith(name + ":")).split()[1])


class Idle(DesktopTest):
    quiet = 5  # seconds, longer than anything that repeats itself waits

    def processes(self):
        """The window's and those that it has started."""
        parents = {}
        for entry in Path("/proc").glob("[0-9]*/status"):
            try:
                parents[int(entry.parent.name)] = number_in(entry.read_text(), "PPid")
            except (OSError, StopIteration):
                pass  # it has ended
        found = [self.window.pid]
        for process in found:
            found += [child for child, parent in parents.items() if parent == process]
        return [process for process in found if Path(f"/proc/{process}/comm").read_text().startswith("kestrav")]

    def switches(self):
        """How often each of their threads has been given a processor."""
        return {task: number_in(status, "voluntary_ctxt_switches") + number_in(status, "nonvoluntary_ctxt_switches")
                for process in self.processes() for task in Path(f"/proc/{process}/task").iterdir()
                for status in [(task / "status").read_text()]}

    def is_quiet(self):
        before = self.switches()
        time.sleep(self.quiet)
        self.assertGreaterEqual(len(before), 3, "the window's threads and its witness are not found")
        return self.switches() == before

    def test_it_sleeps_when_nothing_happens(self):
        """Once it has come to rest, no thread of it wakes up, although it watches what is plugged in."""
        self.open_window()
        self.wait_until(self.is_quiet, "the window wakes up again and again", self.window, seconds=90)
