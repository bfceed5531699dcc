"""window_person.py FIRMWARE ICON PICTURE: a person at the window, run in the guest by anna in her session.

Starts a display and a desktop with polkit's graphical agent, starts Kestrav as the desktop does, answers the question for
consent, sends both images by clicking, and leaves. Says what was seen in one line of JSON; exit status 0 if all could be
done that far.
"""

import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

os.environ["KESTRAV_PROGRAMS"] = "/usr/bin"
sys.path[:0] = ["/e2e/tests/app/window", "/e2e/tests/road"]

import desktop  # noqa: E402

PASSWORD = "secret"
# Seconds; everything is some thirty times slower in software emulation.
desktop.PATIENCE = 120


class Visit(desktop.DesktopTest):
    firmware = icon = picture_place = None

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="kestrav-window."))
        self.services = []
        self.seen = {}
        self.make_home()
        # The session's own bus stays: polkit's agent finds the session by it.
        self.start_display()
        self.start(["lxpolkit"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def wait_until(self, condition, otherwise, process=None, seconds=desktop.PATIENCE):
        super().wait_until(condition, otherwise, process, seconds)

    def launch(self, plugged=True):
        self.output = self.folder / "kestrav.out"
        with open(self.output, "wb") as output:
            return self.start(["kestrav"], stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT)

    def questions(self):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "lxpolkit"], env=self.environment,
                               capture_output=True, text=True, check=False)
        return found.stdout.split()

    def test_visit(self):
        self.open_window(ready=False)
        self.wait_until(self.questions, "nobody asks for consent", self.window)
        self.picture_of("asked")
        self.xdotool("windowactivate", "--sync", self.questions()[0])
        self.write(PASSWORD)
        self.keys("Return")
        self.wait_until(lambda: self.status_line() == "Installed successfully!", "nothing was installed", self.window)
        # The window manager may leave the keyboard to nobody when the question goes; a person clicks into the window.
        self.xdotool("search", "--onlyvisible", "--name", "^Kestrav$", "windowactivate", "--sync")
        self.wait_until_usable()
        self.click(self.firmware_button())
        self.choose(self.firmware, "Choose a firmware image")
        self.wait_until(lambda: "End firmware processing." in self.log(), "the firmware update does not end")
        self.seen["firmware"] = self.status_line()
        self.click(self.icon_button())
        self.choose(self.icon, "Choose a icon image")
        self.wait_until(lambda: "End icon processing." in self.log(), "the icon update does not end")
        self.seen["icon"], self.seen["log"] = self.status_line(), self.log()
        self.picture_of("done")
        self.keys("alt+F4")
        self.seen["exit status"] = self.exit_status()
        print(json.dumps(self.seen), flush=True)

    def picture_of(self, name):
        desktop.run("import", "-window", "root", f"{self.picture_place}/{name}.png", env=self.environment)


if __name__ == "__main__":
    Visit.firmware, Visit.icon, Visit.picture_place = sys.argv[1:]
    ended = unittest.TextTestRunner(verbosity=2).run(Visit("test_visit"))
    sys.exit(0 if ended.wasSuccessful() else 1)
