"""The bad days as a person at the window meets them."""

import bad_days
from fronts import WindowCase


class BadMemory(bad_days.BadMemory, WindowCase):
    pass


class Plug(bad_days.Plug, WindowCase):
    def assert_missed(self, told, path, size, disk_before):
        """The window remembers the disk that it found before: as long as none is plugged in it hands the update over for
        that one, and the service refuses it."""
        self.assert_handed_over(told, path, size)
        self.assert_answered(told, f"Refused: there is no /dev/r{disk_before}; is the accessory plugged in")
        self.assert_panel(told, "Not written: the accessory is not plugged in. Plug it in, then send the image again.")


class BadComputer(bad_days.BadComputer, WindowCase):
    pass
