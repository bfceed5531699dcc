"""What every case has: the guest with the packages in it, people, accessories, the system log."""

import time
import unittest

from accessory import KEPT_BACK, Accessory
from disks import BLOCK, FIRMWARE, content
from guest import PATIENCE
from world import World


class GuestCase(unittest.TestCase):
    """A case in the guest. Every case has accessories of its own, pulled at its end and compared whole then."""

    maxDiff = None

    def setUp(self):
        self.guest = World.guest
        self.root = self.guest.people["root"]
        self.log_start = self.guest.system_log_size()

    # -- things ----------------------------------------------------------------------------------------------------

    def accessory(self, **how):
        """An accessory with a memory of its own, not plugged in yet."""
        accessory = Accessory(self.guest, World.slots.take(), **how)
        self.addCleanup(accessory.forget)
        return accessory

    def plugged(self, **how):
        return self.accessory(**how).plug()

    def image(self, size, seed=1, kind="fds"):
        """A file of the guest's with `content(size, seed)`; its path there, which is short: it is typed by hand."""
        folder = self.guest.images
        name = f"{len(list(folder.iterdir()))}.{kind}"
        (folder / name).write_bytes(content(size, seed))
        return f"/images/{name}"

    # -- what was said ---------------------------------------------------------------------------------------------

    def system_log(self, *identifiers):
        """The lines of these programs in the system log since the case began, oldest first."""
        return self.guest.system_log(self.log_start, identifiers)

    def wait_for_log(self, words, *identifiers):
        """Waits until a line with these words is in the system log, and gives it."""
        lines = []

        def said():
            lines[:] = [line for line in self.system_log(*identifiers) if words in line]
            return lines

        self.wait_until(said, f"the system log has no line with {words!r}")
        return lines[0]

    def wait_until(self, condition, otherwise, seconds=PATIENCE):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                self.fail(otherwise + "; it has: " + "\n".join(self.system_log()))
            time.sleep(0.1)

    # -- what became of the disks ----------------------------------------------------------------------------------

    def wait_until_begun(self, accessory, size):
        """Waits until the first blocks of the image have arrived in a slow() memory, which is seen from outside."""
        begun = content(size)[:KEPT_BACK * BLOCK - FIRMWARE]
        self.wait_until(lambda: accessory.slot.read()[FIRMWARE:KEPT_BACK * BLOCK] == begun, "the update does not begin")

    def assert_disk(self, accessory):
        """Pulls the accessory and compares its whole memory, from outside of the guest, with what is expected of it."""
        accessory.forget()
        self.assertEqual(accessory.slot.differences(), [], "it differs in these bytes")

    def assert_nothing_else_changed(self, accessory, size, offset=FIRMWARE):
        """Like assert_disk() after a write that failed: where the image was to be there may be anything now."""
        accessory.forget()
        slot = accessory.slot
        slot.expect(offset, slot.read()[offset:offset + size])
        self.assert_disk(accessory)
