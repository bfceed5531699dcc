"""The bad days as a person at a terminal meets them."""

import bad_days
from accessory import OTHER_VENDOR, SECTORS
from bad_days import wrote
from disks import FIRMWARE, content
from fronts import NOT_READY, KestravctlCase
from world import World

# Blocks that can't be written or read, under the partition table's place.
UNDER_THE_TABLE = f"0 8 error\n8 {SECTORS - 8} linear {{disk}} {{start}}"


class BadMemory(bad_days.BadMemory, KestravctlCase):
    def test_without_verification_the_exit_status_says_the_same(self):
        accessory, path = self.plugged(readonly=True), self.image(5000)
        told = self.start("firmware", path, verify=False).wait()
        self.assert_handed_over(told, path, 5000)
        self.assert_not_verified(told)
        self.assert_disk(accessory)

    def test_a_defect_under_the_table_does_not_matter_to_the_image(self):
        accessory, path = self.plugged(table=UNDER_THE_TABLE), self.image(5000)
        accessory.slot.expect(FIRMWARE, content(5000))
        told = self.update("firmware", path)
        self.assert_handed_over(told, path, 5000)
        self.wait_for_log(f"there is no /dev/{accessory.disk}s1", self.identifier)
        self.assert_verified(told, wrote(5000, accessory.disk))
        self.assert_disk(accessory)


class Plug(bad_days.Plug, KestravctlCase):
    def test_pulled_before(self):
        accessory, path = self.plugged(), self.image(5000)
        accessory.pull()
        self.assert_missed(self.update("firmware", path), path, 5000)
        self.assert_disk(accessory)

    def assert_missed(self, told, path, size, _disk_before=None):
        self.assert_lines(told, path, size, NOT_READY)
        self.assertEqual(told.answer, "")
        self.assert_status(told, 1)

    def test_two_accessories_and_one_of_them_is_written(self):
        both = [self.plugged(port=0, serial="same"), self.plugged(port=1, serial="same")]
        path = self.image(5000)
        named = self.root.run("kestravctl", "detect").out.splitlines()[1].removeprefix("disk: ")
        self.assertIn(named, [accessory.disk for accessory in both])
        self.assert_verified(self.update("firmware", path), wrote(5000, named))
        for accessory in both:
            if accessory.disk == named:
                accessory.slot.expect(FIRMWARE, content(5000))
            self.assert_disk(accessory)

    def test_another_vendors_stick_beside_it_is_left_alone(self):
        stick = self.plugged(port=1, ids=OTHER_VENDOR, serial="S1", table=f"0 {SECTORS} linear {{stick}} 0")
        self.root.sh("udevadm settle")
        file = World.slots.stick
        before, changed = file.read_bytes(), self.times_of_change(file)
        # udev looks again at a disk that somebody has had open for writing, and says so.
        watcher = self.root.start("udevadm", "monitor", "--udev", "--subsystem-match=block")
        watcher.wait_for("UDEV")
        accessory, path = self.plugged(port=0), self.image(262144)
        accessory.slot.expect(FIRMWARE, content(262144))
        self.assert_verified(self.update("firmware", path), wrote(262144, accessory.disk))
        self.wait_until(lambda: f"/{accessory.disk} (block)" in watcher.look().out.split("change", 1)[-1],
                        "udev does not look at the accessory again")
        watcher.end()
        self.assertNotIn(f"/{stick.disk} (block)", watcher.look().out)
        self.assertEqual(self.root.sh(f"awk '{{ print $5 }}' /sys/block/{stick.disk}/stat").out, "0\n")
        self.assert_disk(accessory)
        stick.forget()
        self.assertEqual(self.times_of_change(file), changed)
        self.assertEqual(file.read_bytes(), before)

    @staticmethod
    def times_of_change(file):
        return file.stat().st_mtime_ns, file.stat().st_ctime_ns


class BadComputer(bad_days.BadComputer, KestravctlCase):
    pass
