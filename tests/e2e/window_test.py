"""The window in the session of its user, with the consent asked for and given, and both images sent by clicking."""

import json

from case import GuestCase
from disks import FIRMWARE, ICON, content

PERSON = "/e2e/tests/e2e/guest/window_person.py"


class Window(GuestCase):
    def test_is_launched_with_consent_and_sends_both_images_by_clicking(self):
        accessory = self.plugged()
        firmware, icon = self.image(200000, "new.fds", 4), self.image(5000, "new.fif", 5)
        accessory.slot.expect(FIRMWARE, content(200000, 4))
        accessory.slot.expect(ICON, content(5000, 5))
        pictures = "/e2e/exchange/pictures"
        self.root.run("install", "-d", "-m", "777", pictures)
        visit = self.guest.people["anna"].run("/usr/bin/python3", PERSON, firmware, icon, pictures, seconds=400)
        seen = json.loads(visit.out)
        self.assertEqual(seen["log"].splitlines(), [
            "Preparing to process firmware.", f"Loaded icon file: {firmware} with 200000 bytes.",
            "Writing to device memory space.", "", "Finished writing to device.", "End firmware processing.",
            "Preparing to process icon.", f"Loaded icon file: {icon} with 5000 bytes.",
            "Writing to device memory space.", "", "Finished writing to device.", "End icon processing."])
        self.assertIn(f"Wrote 200000 bytes to {accessory.disk} at block 1536, verified", seen["firmware"])
        self.assertIn(f"Wrote 5000 bytes to {accessory.disk} at block 2048, verified", seen["icon"])
        self.assertEqual(seen["exit status"], 0)
        self.assert_disk(accessory)
