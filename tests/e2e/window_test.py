"""The window in the session of its user: launched with the consent asked for and given, used by clicking, and left."""

from bad_days import wrote
from disks import FIRMWARE, ICON, content
from fronts import NOT_READY, WindowCase


class Window(WindowCase):
    def test_an_accessory_that_was_never_plugged_in_is_not_ready(self):
        path = self.image(5000)
        told = self.update("firmware", path)
        self.assert_lines(told, path, 5000, NOT_READY)
        self.assertEqual(told.answer, "")
        self.assertIn("Not written: no accessory is plugged in.", told.panel)

    def test_asks_for_consent_at_its_launch_and_sends_both_images_by_clicking(self):
        self.assertEqual(self.window.at_launch["asked"], 1)
        self.assertIn("That takes an administrator's password", self.window.at_launch["while asking"])
        self.assertIn("Nothing has been sent yet.", self.window.at_launch["panel"])
        self.assertIn("Installed successfully!", self.guest.system_log(0, ("kestrav",)))
        accessory = self.plugged()
        firmware, icon = self.image(200000, 4), self.image(5000, 5, "fif")
        accessory.slot.expect(FIRMWARE, content(200000, 4))
        accessory.slot.expect(ICON, content(5000, 5))
        told = self.update("firmware", firmware)
        self.assert_handed_over(told, firmware, 200000)
        self.assert_verified(told, wrote(200000, accessory.disk))
        told = self.update("icon", icon)
        self.assert_handed_over(told, icon, 5000, "icon")
        self.assert_verified(told, f"Wrote 5000 bytes to {accessory.disk} at block 2048, verified")
        self.wait_for_log("user 1801: dd if=", "kestrav-commandd")
        self.window.picture("updated")
        self.assert_disk(accessory)
