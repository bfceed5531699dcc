"""Twenty accessories at once: hubs full of them, with some that fail among them."""

import json

from accessory import SOUND, slow
from bad_days import REPEAT
from case import GuestCase
from disks import FIRMWARE, content
from world import World

COUNT = 20
PROMPT = "Password:"
SIZE = 200000
# They take turns on one emulated processor.
LONG = 600


class Many(GuestCase):
    def setUp(self):
        super().setUp()
        self.controllers(COUNT)
        self.addCleanup(self.controllers, 3)

    def controllers(self, count):
        """The dummy controllers are made when their module is loaded. Nothing is plugged in meanwhile."""
        self.guest.sh(f"modprobe -r dummy_hcd; modprobe dummy_hcd num={count} is_high_speed=1; udevadm settle")

    def plugged_in_all(self, *special):
        """COUNT accessories, the first of which are made with the keyword arguments of `special`."""
        how = [*special, *[{}] * (COUNT - len(special))]
        accessories = [self.accessory(port=port, serial=f"KA{port + 1:04}", **one) for port, one in enumerate(how)]
        for accessory in accessories:
            accessory.push_in()
        for accessory in accessories:
            accessory.wait_for_disk()
        self.assertEqual(len({accessory.disk for accessory in accessories}), COUNT)
        return accessories

    def test_those_that_fail_hold_no_other_up(self):
        protected, slow_one, *good = self.plugged_in_all({"readonly": True}, {"table": slow(300_000)})
        path = self.image(SIZE)
        update = self.root.start("kestravctl", "firmware", "--all", "--jobs", COUNT, "--json", path)
        self.wait_until_begun(slow_one, SIZE)
        # It is pulled once all others are done: none waits for it.
        for accessory in good:
            self.wait_for_log(f"Wrote {SIZE} bytes to {accessory.disk} at block 1536, verified", "kestrav-commandd")
        self.assertIsNone(update.look().status)
        pulling = self.root.start("/e2e/tests/e2e/guest/accessory", "pull", slow_one.name)
        self.wait_for_log(REPEAT, "kestrav-commandd")
        slow_one.change_memory(SOUND)
        self.assertEqual(pulling.wait().status, 0)
        result = update.wait(LONG)
        self.assertEqual(result.status, 4, str(result))
        told = json.loads(result.out)
        self.assertEqual({end["serial"]: end["status"] for end in told["accessories"] if end["status"] != 0},
                         {"KA0001": 4, "KA0002": 4}, str(result))
        self.assertEqual(told["problem"], f"2 of {COUNT} accessories did not get the image.")
        self.assert_disk(protected)
        self.assert_nothing_else_changed(slow_one, SIZE)
        self.assert_all_hold_the_image(good)

    def test_an_administrator_is_asked_once(self):
        accessories, path = self.plugged_in_all(), self.image(SIZE)
        # Fewer at a time: the service asks about the requests of one process in turn, and each of them only for so long.
        update = World.person("anna").start("kestravctl", "firmware", "--all", "--jobs", "6", path, terminal=True)
        update.wait_for(PROMPT)
        update.type_password("secret")
        result = update.wait(LONG)
        self.assertEqual(result.status, 0, str(result))
        self.assertEqual(result.out.count(PROMPT), 1, str(result))
        self.assertIn(f"All {COUNT} accessories hold the image.", result.out)
        self.assert_all_hold_the_image(accessories)

    def assert_all_hold_the_image(self, accessories):
        for accessory in accessories:
            accessory.slot.expect(FIRMWARE, content(SIZE))
            self.assert_disk(accessory)
