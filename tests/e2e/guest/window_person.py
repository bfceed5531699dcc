"""window_person.py: a person at the window, run in the guest by anna in her session. What she does is asked for through
the virtio port `window`, as with agent.py:

    open    starts a display, polkit's graphical agent and Kestrav, as a desktop does, and waits until the window can be used
    update  clicks on a button, names an image in the chooser, and looks on until the update has begun
    picture takes a picture of the screen
    look    what the window shows: the log's lines, the status line, whether the update is over
    close   leaves with the keyboard, and tells the exit status

Whenever polkit asks for her password meanwhile, she gives it. Each answer tells how often that was, as `asked`.
"""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

os.environ["KESTRAV_PROGRAMS"] = "/usr/bin"
sys.path[:0] = ["/e2e/tests/app/window", "/e2e/tests/road", "/e2e/tests/sandbox", "/e2e/tests/e2e/guest"]

from agent import serve  # noqa: E402
from desktop import DesktopTest  # noqa: E402
from sandbox import run  # noqa: E402

PASSWORD = "secret"
STAY_PLUGGED = "Don't unplug the accessory."
PICTURES = "/e2e/exchange/pictures"
NAMES = {"firmware": "Update Firmware…", "icon": "Update Icon…"}


class WindowPerson(DesktopTest):
    patience = 240  # everything is some thirty times slower in software emulation, and slower yet beside other work
    pause = 0.4
    between_keys = 100  # a chooser that can't keep up mixes up what is typed and what it completes

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="kestrav-window."))
        self.services = []
        self.asked = 0

    def answer(self, request):
        try:
            told = getattr(self, "do_" + request["do"])(**request["what"])
        except Exception:
            self.do_picture(f"failure-{request['number']}")
            raise
        return {**told, "asked": self.asked}

    # -- what is asked of her --------------------------------------------------------------------------------------

    def do_open(self):
        self.make_home()
        # The session's own bus stays: polkit's agent finds the session by it.
        self.bring_up_the_desktop()
        self.start(["lxpolkit"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.open_window(ready=False)
        self.at_launch = ""
        self.wait_and_consent(self.is_installed, "nothing was installed")
        self.wait_until_enabled()
        return {**self.shown(), "while asking": self.at_launch}

    def do_update(self, kind, path):
        self.wait_until_enabled()
        before = len(self.log())
        self.click(self.find("push button", NAMES[kind]))
        self.choose(path, f"Choose a {kind} image")
        self.wait_and_consent(lambda: len(self.log()) > before, "the update does not begin")
        return self.shown()

    def do_look(self):
        self.consent()
        return self.shown()

    def do_picture(self, name):
        run("import", "-window", "root", f"{PICTURES}/{name}.png", env=self.environment)
        return {}

    def do_close(self):
        self.click(self.find("text", "Log"))
        self.keys("ctrl+q")
        return {"exit status": self.exit_status(), "output": self.output.read_text()}

    # -- how she does it -------------------------------------------------------------------------------------------

    def launch(self, plugged=True):
        self.output = self.folder / "kestrav.out"
        with open(self.output, "wb") as output:
            return self.start(["kestrav"], stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT)

    def choose(self, path, title):
        """As on any desktop, but the window's title tells that the chooser is there: quicker than its parts."""
        named = ["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"]
        self.wait_until(lambda: subprocess.run(named, env=self.environment, capture_output=True, check=False).stdout,
                        f"there is no {title}", self.window)
        self.name_a_file(path)

    def shown(self):
        said = self.panel()
        # The buttons come back before the end of a write whose answer is late.
        over = self.is_in_state(("push button", NAMES["firmware"]), "SENSITIVE") and not said.endswith(STAY_PLUGGED)
        return {"over": over, "log": self.log().splitlines(), "status line": self.status_line(), "panel": said}

    def is_installed(self):
        said = self.panel()
        if said.startswith("The helper"):
            self.at_launch = said
        return said.startswith("Nothing has been sent yet.")

    def wait_until_enabled(self):
        self.wait_until(lambda: self.is_in_state(("push button", NAMES["firmware"]), "SENSITIVE"),
                        "the buttons stay disabled", self.window)

    def wait_and_consent(self, condition, otherwise):
        self.wait_until(lambda: self.consent() or condition(), otherwise, self.window)

    def consent(self):
        """Gives the password if it is asked for. False, so that nobody takes the question for the end of a wait."""
        search = ["xdotool", "search", "--onlyvisible", "--class", "lxpolkit"]
        asking = lambda: subprocess.run(search, env=self.environment, capture_output=True, text=True,
                                        check=False).stdout.split()
        if questions := asking():
            self.asked += 1
            self.xdotool("windowactivate", "--sync", questions[0])
            self.write(PASSWORD)
            self.keys("Return")
            self.wait_until(lambda: questions[0] not in asking(), "the password was not taken")
        return False


person = WindowPerson()
person.setUp()
serve("window", person.answer)
