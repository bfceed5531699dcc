"""What the window says of an update at a glance: how it ended, how it goes on, and what a screen reader is told of it."""

import subprocess
import sys
import time

from desktop import NEWER_ROLES, DesktopTest
from road import AnsweringService

TITLE = "Choose a firmware image"

# Says each object of one of the roles that comes into a state, as a screen reader would speak it out.
READER = """
import sys
import gi
gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib
def heard(event):
    try:
        event.source.clear_cache()
        if event.detail1 and event.source.get_role_name() in sys.argv[2:]:
            print(event.source.get_name(), flush=True)
    except GLib.Error:
        pass  # it is gone
listener = Atspi.EventListener.new(heard)
listener.register("object:state-changed:" + sys.argv[1])
print("ready", flush=True)
Atspi.event_main()
"""


class Panel(DesktopTest):
    def send(self, image=None):
        self.click(self.firmware_button())
        self.choose(image or self.image(3000), TITLE)

    def assert_told(self, answers, words, sentence):
        """What the panel says when the service says this first to the unmounting and then to the write."""
        turns = iter(answers)
        with AnsweringService(lambda peer: peer.sendall(next(turns))):
            self.send()
            self.wait_for_panel(words)
        self.wait_until_usable()
        self.wait_until(lambda: self.status_line() == sentence, f"the service's sentence is not {sentence!r}")

    def test_a_success(self):
        self.start_service()
        self.open_window()
        self.send()
        self.wait_for_panel("The firmware is on the accessory, read back and equal. You may unplug it.")
        self.assertIn("verified", self.status_line())
        self.assertIsNone(self.look_for("push button", "Send Again…"))

    def test_what_is_no_success_is_never_one(self):
        self.open_window()
        unmounted = b"sdzz1 was not mounted."
        self.assert_told([unmounted, b"Refused: the disk sdzz is write-protected."], "Not written: the service refused.",
                         "Refused: the disk sdzz is write-protected.")
        self.assert_told([unmounted, b"Wrote 3000 bytes to sdzz at blo"], "Nobody knows: only a part",
                         "Wrote 3000 bytes to sdzz at blo")
        self.assert_told([unmounted, b"HTTP/1.1 400 Bad Request"], "Nobody knows: another program answers",
                         "HTTP/1.1 400 Bad Request")
        self.assert_told([unmounted, b""], "Nobody knows: the service gave no answer.", unmounted.decode())
        self.assert_told([unmounted, unmounted], "Nobody knows: another program answers", unmounted.decode())
        self.assertTrue(self.log().endswith("Finished writing to device.\nEnd firmware processing.\n"))

    def test_a_service_that_does_not_run(self):
        self.open_window()
        self.send()
        self.wait_for_panel("Not written: the service is not running. 'systemctl start kestrav-commandd.socket'")

    def test_an_accessory_that_is_not_there(self):
        self.open_window(plugged=False)
        self.find("label", "Plug the accessory in.")
        self.send()
        self.wait_for_panel("Not written: no accessory is plugged in.")
        self.assertIsNone(self.look_for("push button", "Send Again…"))

    def test_sending_again_opens_the_chooser_on_the_same_file(self):
        self.open_window()
        path = self.image(3000, "the same.fds")
        self.image(3000, "another.fds")
        self.send(path)
        self.wait_for_panel("Not written: the service is not running.")
        self.wait_until_usable()
        self.start_service()
        self.click(self.find("push button", "Send Again…"))
        self.find("dialog", TITLE)
        self.wait_until(lambda: self.text_of("text", "File name:") == path.name, "the file is not chosen")
        self.wait_until(lambda: self.is_in_state(("text", "File name:"), "FOCUSED"), "the chooser has no focus")
        self.keys("Return")
        self.wait_for_panel("The firmware is on the accessory")

    def start_reader(self, role, state):
        """Gives what waits until its words are heard."""
        roles = [role, *(newer for newer, older in NEWER_ROLES.items() if older == role)]
        reader = self.start([sys.executable, "-c", READER, state, *roles], stdout=subprocess.PIPE, text=True)
        self.addCleanup(reader.stdout.close)
        self.assertEqual(reader.stdout.readline(), "ready\n")

        def wait_until_heard(words):
            for said in iter(reader.stdout.readline, ""):
                if words in said:
                    return
            self.fail(f"nobody says {words!r}")

        return wait_until_heard

    def test_the_focus_comes_back_from_the_chooser_and_is_told(self):
        """Also where the chooser still offers names when it is closed. The next update takes the keyboard alone."""
        self.open_window()
        wait_until_heard = self.start_reader("push button", "focused")
        for count in (1, 2, 3):
            self.keys("alt+f")
            self.choose(self.image(3000), TITLE)
            self.wait_until(lambda count=count: self.log().count("End firmware processing.\n") == count,
                            f"update {count} does not end")
            self.wait_until_usable()
            wait_until_heard("Update Firmware…")
        self.keys("alt+f")
        self.dismiss(TITLE)
        self.wait_until_usable()
        wait_until_heard("Update Firmware…")

    def test_a_screen_reader_is_told_of_the_end(self):
        self.open_window()
        wait_until_heard = self.start_reader("notification", "showing")
        go_on = self.folder / "go-on"

        def answer(peer):
            while not go_on.exists():
                time.sleep(0.05)
            peer.sendall(b"Refused: not today.")

        with AnsweringService(answer):
            self.send()
            wait_until_heard("Don't unplug the accessory.")
            go_on.touch()
            wait_until_heard("Not written: the service refused.")

    def test_maximised_it_keeps_a_readable_width(self):
        self.open_window()
        window = self.xdotool("search", "--onlyvisible", "--name", "^Kestrav$").split()[-1]
        self.xdotool("windowsize", window, "1500", "900")
        self.wait_until(lambda: self.box(self.find("frame", "Kestrav"))[2] > 1400, "the window does not grow")
        self.wait_until(lambda: 500 < self.box(self.find("text", "Log"))[2] < 1000, "the lines get too long")
        self.picture("wide")
