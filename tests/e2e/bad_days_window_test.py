"""The bad days as a person at the window meets them."""

import bad_days
from bad_days import wrote
from disks import FIRMWARE, content
from fronts import WindowCase


class BadMemory(bad_days.BadMemory, WindowCase):
    pass


class Plug(bad_days.Plug, WindowCase):
    def test_pulled_after_then_missed_and_plugged_in_again_under_another_name(self):
        """The window remembers the disk that it found before: as long as none is plugged in it hands the update over for
        that one, and the service refuses it."""
        accessory, first, second = self.plugged(), self.image(70000), self.image(60000, 2)
        before = accessory.disk
        self.assert_verified(self.update("firmware", first), wrote(70000, before))
        self.hold_name(accessory)
        accessory.pull()
        told = self.update("firmware", second)
        self.assert_handed_over(told, second, 60000)
        self.assert_answered(told, f"Refused: there is no /dev/r{before}; is the accessory plugged in")
        accessory.plug()
        self.assertNotEqual(accessory.disk, before)
        accessory.slot.expect(FIRMWARE, content(70000))
        accessory.slot.expect(FIRMWARE, content(60000, 2))
        self.assert_verified(self.update("firmware", second), wrote(60000, accessory.disk))
        self.assert_disk(accessory)


class BadComputer(bad_days.BadComputer, WindowCase):
    pass
