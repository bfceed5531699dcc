"""The window's end, after all that it went through."""

from fronts import WindowCase
from world import World


class WindowLater(WindowCase):
    def test_is_left_with_the_keyboard_and_ends_without_a_failure(self):
        closed = self.window.close()
        self.assertEqual(closed["exit status"], 0)
        World.guest.window = None
