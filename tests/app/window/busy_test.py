"""A command service that takes its time: what the window does and doesn't do meanwhile."""

import time

from desktop import DesktopTest
from road import FINISH, PRELUDE, AnsweringService, loaded


def after(seconds, then=lambda: None):
    def answer(peer):
        time.sleep(seconds)
        then()
        peer.sendall(b"done after a while")

    return answer


class BusyWindow(DesktopTest):
    def begin(self, seconds, then=lambda: None):
        """Starts an update that takes twice `seconds`, since two commands are run for it. `then` comes before each
        answer."""
        self.path = self.image(1000)
        self.open_window()
        self.icon_place = self.box(self.icon_button())
        service = AnsweringService(after(seconds, then))
        service.__enter__()
        self.addCleanup(service.__exit__)
        self.click(self.firmware_button())
        self.choose(self.path, "Choose a firmware image")
        self.started = ["Preparing to process firmware.", loaded(self.path, 1000), *PRELUDE]
        self.wait_for_log(self.started)

    def wait_for_the_end(self, seconds=30):
        self.wait_for_log([*self.started, *FINISH, "End firmware processing."], seconds)
        self.wait_until(lambda: self.has(self.firmware_button(), "SENSITIVE"), "the buttons are still locked")

    def test_it_paints_for_twenty_seconds(self):
        self.begin(10)
        self.assertFalse(self.has(self.firmware_button(), "SENSITIVE"))
        self.assertFalse(self.has(self.icon_button(), "SENSITIVE"))
        bar = self.box(self.find("progress bar", "Update in progress"))
        log = self.box(self.find("text", "Log"))
        pictures = []
        for number in range(4):
            pictures.append(self.picture(f"busy{number}"))
            time.sleep(2.9)  # not in step with the indicator
        for earlier, later in zip(pictures, pictures[1:]):
            self.assertGreater(self.differing_pixels(earlier, later, bar), 100, "the indicator stands still")
        self.wait_for_the_end()
        done = self.picture("done")
        self.assertGreater(self.differing_pixels(pictures[-1], done, log), 0, "the new lines were not painted")
        self.assertIsNone(self.look_for("progress bar", "Update in progress"))

    def test_it_repaints_what_was_covered(self):
        self.begin(5)
        window = self.xdotool("search", "--onlyvisible", "--name", "^Kestrav$").split()[-1]
        before = self.picture("uncovered")
        self.xdotool("windowminimize", window)
        time.sleep(0.5)
        self.xdotool("windowactivate", "--sync", window)
        time.sleep(0.5)
        self.assertEqual(self.differing_pixels(before, self.picture("again"), self.box(self.find("text", "Log"))), 0)
        self.wait_for_the_end()

    def test_it_answers_the_desktop_at_once(self):
        self.begin(5)
        slowest = 0.0
        for _ in range(20):
            begin = time.monotonic()
            self.log()
            slowest = max(slowest, time.monotonic() - begin)
            time.sleep(0.2)
        self.assertLess(slowest, 1.0)
        self.wait_for_the_end()

    def assert_nothing_happened(self):
        """Neither now nor, from what may have been kept, after the end."""
        time.sleep(0.5)
        self.assertEqual(len(self.windows()), 1)
        self.wait_for_the_end()
        time.sleep(2)
        self.assertEqual(len(self.windows()), 1)
        self.assertIsNone(self.window.poll(), "the window has closed")
        self.wait_for_log([*self.started, *FINISH, "End firmware processing."])

    def test_clicks_have_no_effect_then_or_later(self):
        self.begin(3)
        for _ in range(3):
            self.click(self.firmware_button())
            self.click(self.icon_button())
            self.click(self.find("text", "Log"), button=3)
        self.assert_nothing_happened()

    def test_keys_have_no_effect_then_or_later(self):
        self.begin(3)
        self.keys("alt+f", "alt+i", "space", "Return", "ctrl+s", "Menu", "shift+F10")
        self.assert_nothing_happened()

    def test_requests_to_close_have_no_effect_then_or_later(self):
        self.begin(3)
        self.keys("ctrl+q", "ctrl+w", "alt+F4")
        x, y, width, _ = self.box(self.find("frame", "Kestrav"))
        self.xdotool("mousemove", x + width - 10, y - 9, "click", 1)
        self.assert_nothing_happened()
        self.keys("alt+F4")
        self.assertEqual(self.exit_status(), 0)

    def test_a_click_in_the_last_moment_is_lost_too(self):
        def click():
            x, y, width, height = self.icon_place
            self.xdotool("mousemove", x + width // 2, y + height // 2, "click", 1)

        self.begin(0.5, click)
        self.wait_for_the_end()
        time.sleep(2)
        self.assertEqual(len(self.windows()), 1)

    def test_it_can_be_used_again_afterwards(self):
        self.begin(1)
        self.wait_for_the_end()
        self.click(self.icon_button())
        self.find("dialog", "Choose a icon image")
        self.keys("Escape", "alt+F4")
        self.assertEqual(self.exit_status(), 0)
