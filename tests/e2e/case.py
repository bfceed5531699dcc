"""What every case has: the guest with the packages in it, people, accessories, the system log."""

import unittest

from accessory import Accessory
from disks import content

PRELUDE = ["Writing to device memory space."]
FINISH = ["", "Finished writing to device."]


class World:
    """What all cases of one run share: one guest, and the memory of its accessories."""

    guest = None
    slots = None


class GuestCase(unittest.TestCase):
    """A case in the guest. Every case has accessories of its own, pulled at its end and compared whole then."""

    maxDiff = None

    def setUp(self):
        self.guest = World.guest
        self.root = self.guest.people["root"]
        self.accessories = []
        # Set by a case whose file system was mounted, which changes bytes of the partition.
        self.partition_may_change = False
        shown = self.root.run("journalctl", "-q", "-n", "1", "--show-cursor").out
        self.cursor = shown.rsplit("-- cursor: ", 1)[1].strip()

    # -- things ----------------------------------------------------------------------------------------------------

    def accessory(self, **how):
        """An accessory with a memory of its own, not plugged in yet."""
        accessory = Accessory(self.guest, World.slots.take(), **how)
        self.accessories.append(accessory)
        self.addCleanup(accessory.forget)
        return accessory

    def plugged(self, **how):
        return self.accessory(**how).plug()

    def image(self, size, name="image.fds", seed=1):
        """A file of the guest's with `content(size, seed)`; its path there."""
        folder = self.guest.exchange / self.id().rsplit(".", 1)[1]
        folder.mkdir(exist_ok=True)
        (folder / name).write_bytes(content(size, seed))
        return f"/e2e/exchange/{folder.name}/{name}"

    # -- what was said ---------------------------------------------------------------------------------------------

    def system_log(self, *identifiers):
        """The lines of these programs in the system log since the case began, oldest first."""
        wanted = [word for identifier in identifiers for word in ("-t", identifier)]
        self.root.run("journalctl", "--sync")
        return self.root.run("journalctl", "-q", "-o", "cat", f"--after-cursor={self.cursor}", *wanted).out.splitlines()

    def assert_handed_over(self, result, path, size):
        """The front end has said that it handed the image over, which it says whatever became of it."""
        self.assertEqual(result.out.replace("\r", "").splitlines(),
                         [f"Loaded icon file: {path} with {size} bytes.", *PRELUDE, *FINISH], str(result))
        self.assertEqual(result.status, 0, str(result))

    # -- what became of the disks ----------------------------------------------------------------------------------

    def assert_disk(self, accessory):
        """Pulls the accessory and compares its whole memory, from outside of the guest, with what is expected of it."""
        accessory.forget()
        self.assertEqual(accessory.slot.differences(), [], "it differs in these bytes")
