"""The window, opened by anna in her session in the guest: a person there clicks and looks, see guest/window_person.py."""

import time

from guest import PATIENCE, Person

PROGRAM = "/e2e/tests/e2e/guest/window_person.py"
LAUNCH_PATIENCE = 400


class Window:
    def __init__(self, guest, anna):
        """Starts Kestrav as the desktop does, with the consent asked for and given."""
        self.guest = guest
        guest.give_port("window", anna.name)
        guest.run("install", "-d", "-m", "777", "/e2e/exchange/pictures")
        anna.start("/usr/bin/python3", PROGRAM)
        self.person = Person(guest, "window")
        self.at_launch = self.ask("open", patience=LAUNCH_PATIENCE)

    def ask(self, do, patience=LAUNCH_PATIENCE, **what):
        return self.person.ask(patience=patience, do=do, what=what)

    def start(self, kind, path):
        """Clicks on the button of this kind and chooses the image."""
        before = len(self.ask("look")["log"])
        self.ask("update", kind=kind, path=path)
        return WindowUpdate(self, before)

    def picture(self, name):
        """Takes one of the whole screen: exchange/pictures/NAME.png. One is taken of each failure, too."""
        self.ask("picture", name=name)

    def close(self):
        return self.ask("close")


class WindowUpdate:
    """An update that the window has begun. Its `log` are the lines that came with it."""

    def __init__(self, window, lines_before):
        self.window, self.lines_before = window, lines_before

    def look(self):
        shown = self.window.ask("look")
        return {**shown, "log": shown["log"][self.lines_before:]}

    def wait(self, seconds=PATIENCE):
        """What the window shows when the update is over."""
        end = time.monotonic() + seconds
        while not (shown := self.look())["over"]:
            if time.monotonic() > end:
                raise self.window.guest.failure(f"the window's update does not end: {shown}")
            time.sleep(0.5)
        return shown
