"""The computer loses its power in the middle of a write. The guest is gone then, and another one boots."""

from accessory import KEPT_BACK, Accessory, slow
from case import GuestCase
from disks import BLOCK, FIRMWARE, content
from world import World

SIZE = 512000


class PowerCut(GuestCase):
    def test_leaves_a_mixture_at_the_image_only_and_the_next_boot_updates_cleanly(self):
        # Nothing is cleared away at the end: that computer is off by then.
        accessory, path = Accessory(self.guest, World.slots.take(), table=slow(600_000)).plug(), self.image(SIZE)
        slot, begun = accessory.slot, content(SIZE)[:KEPT_BACK * BLOCK - FIRMWARE]
        before = slot.read()
        self.root.start("kestravctl", "firmware", path)
        self.wait_until_begun(accessory, SIZE)
        self.guest.cut_power()
        found = slot.read()
        self.assertEqual(found[:FIRMWARE] + begun + found[KEPT_BACK * BLOCK:], before[:FIRMWARE] + begun +
                         before[KEPT_BACK * BLOCK:], "more than the first blocks have arrived")

        self.guest = World.boot("after-power-cut")
        self.root = self.guest.people["root"]
        self.log_start = 0
        again, path = Accessory(self.guest, slot).plug(), self.image(SIZE)
        slot.expect(FIRMWARE, content(SIZE))
        result = self.root.run("kestravctl", "firmware", "--verify", path)
        self.assertIn("verified", result.err)
        self.assert_disk(again)
