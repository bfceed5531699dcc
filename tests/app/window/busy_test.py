"""A command service that takes its time: what the window does and doesn't do meanwhile."""

import os
import time

from desktop import DesktopTest
from road import FINISH, PRELUDE, AnsweringService, loaded

# How long the service is silent in the case that is about waiting. The client gives up after a minute.
LONG = float(os.environ["KESTRAV_LONG_WAIT"])


class BusyWindow(DesktopTest):
    def begin(self, then=lambda: None):
        """Starts an update whose two commands stay unanswered until `release`; `then` comes right before each answer."""
        self.path = self.image(1000)
        self.open_window()
        self.icon_place = self.box(self.icon_button())
        released, self.releasing = os.pipe()
        self.addCleanup(os.close, released)
        self.addCleanup(os.close, self.releasing)

        def answer(peer):
            os.read(released, 1)
            then()
            peer.sendall(b"done after a while")

        service = AnsweringService(answer)
        service.__enter__()
        self.addCleanup(service.__exit__)
        self.click(self.firmware_button())
        self.choose(self.path, "Choose a firmware image")
        self.started = ["Preparing to process firmware.", loaded(self.path, 1000), *PRELUDE]
        self.wait_for_log(self.started)

    def release(self):
        os.write(self.releasing, b"12")

    def wait_for_the_end(self):
        self.wait_for_log([*self.started, *FINISH, "End firmware processing."])
        self.wait_until_usable()

    def main_window(self):
        return self.xdotool("search", "--onlyvisible", "--name", "^Kestrav$").split()[-1]

    def differs(self, earlier, box, pixels=0):
        """Whether that part of the screen looks different now."""
        return self.differing_pixels(earlier, self.picture("now"), box) > pixels

    def inside_of_the_log(self):
        """Without the frame, which shows who has the focus."""
        x, y, width, height = self.box(self.find("text", "Log"))
        return x + 5, y + 5, width - 10, height - 10

    def test_it_keeps_painting_however_long_the_service_takes(self):
        self.begin()
        silent_since = time.monotonic()
        for button in (self.firmware_button(), self.icon_button()):
            self.assertFalse(self.has(button, "SENSITIVE"))
        bar = self.box(self.find("progress bar", "Update in progress"))
        while time.monotonic() - silent_since < LONG:
            time.sleep(LONG / 5)
            picture = self.picture("busy")
            self.wait_until(lambda: self.differs(picture, bar, 100), "the indicator stands still")
        log = self.inside_of_the_log()
        picture = self.picture("last")
        self.wait_for_log(self.started)
        self.release()
        self.wait_for_the_end()
        self.wait_until(lambda: self.differs(picture, log), "the new lines were not painted")
        self.assertIsNone(self.look_for("progress bar", "Update in progress"))

    def test_it_repaints_what_was_covered(self):
        self.begin()
        log, before, window = self.inside_of_the_log(), self.picture("uncovered"), self.main_window()
        self.xdotool("windowminimize", window)
        self.wait_until(lambda: self.differs(before, log), "the window does not go away")
        self.xdotool("windowactivate", window)
        self.wait_until(lambda: not self.differs(before, log), "the log was not painted again")
        self.release()
        self.wait_for_the_end()

    def assert_nothing_happens(self):
        """Neither now nor, from what may have been kept, after the end."""
        self.assertEqual(len(self.windows()), 1)
        self.release()
        self.wait_for_the_end()
        self.assert_nothing_was_kept()

    def assert_nothing_was_kept(self):
        """Input comes in its order: what is done now takes effect after all that was done before, or doesn't."""
        self.click_until_asked()
        self.assertEqual(len(self.windows()), 2)
        self.dismiss("Choose a firmware image")
        self.wait_until_usable()
        self.assertEqual(len(self.windows()), 1)
        self.wait_for_log([*self.started, *FINISH, "End firmware processing."])

    def click_until_asked(self):
        """A window manager that has just brought the window back may keep the first click for itself."""
        for _ in range(3):
            self.click(self.firmware_button())
            try:
                return self.find("dialog", "Choose a firmware image", seconds=8)
            except self.failureException:
                pass
        return self.fail("no click opens the chooser")

    def test_clicks_have_no_effect_then_or_later(self):
        self.begin()
        for _ in range(3):
            self.click(self.firmware_button())
            self.click(self.icon_button())
            self.click(self.find("text", "Log"), button=3)
        self.assert_nothing_happens()

    def test_keys_have_no_effect_then_or_later(self):
        self.begin()
        self.keys("alt+f", "alt+i", "space", "Return", "ctrl+s", "Menu", "shift+F10")
        self.assert_nothing_happens()

    def test_a_screen_reader_cannot_press_them_either(self):
        self.begin()
        for button in (self.firmware_button(), self.icon_button()):
            self.press_as_a_screen_reader(button)
        self.assert_nothing_happens()

    def test_requests_to_close_have_no_effect_then_or_later(self):
        self.begin()
        window = self.main_window()
        self.keys("ctrl+q", "ctrl+w", "alt+F4")
        x, y, width, _ = self.box(self.find("frame", "Kestrav"))
        self.xdotool("mousemove", x + width - 10, y - 9, "click", 1)
        # The window manager passes requests on in their order: when it has done this, it has asked to close before.
        self.xdotool("windowminimize", window)
        self.wait_until(lambda: not self.windows(), "the window does not go away")
        self.xdotool("windowactivate", window)
        self.wait_until(self.windows, "the window does not come back")
        self.assert_nothing_happens()
        self.keys("alt+F4")
        self.assertEqual(self.exit_status(), 0)

    def test_a_click_in_the_last_moment_is_lost_too(self):
        def click():
            x, y, width, height = self.icon_place
            self.xdotool("mousemove", x + width // 2, y + height // 2, "click", 1)

        self.begin(click)
        self.assert_nothing_happens()
