"""Bad days: what goes wrong with real disks, what the person is told then, and what it does to the memory.

The front end's own last line is "Finished writing to device." on most of these days: it says that the update was handed
over. What counts is the service's answer behind it, which stands in the system log and, with kestravctl, on the terminal.
"""

from accessory import OTHER_VENDOR, SECTORS, SOUND
from case import GuestCase
from disks import BLOCK, FIRMWARE, SIZE, content
from world import World

REPEAT = "The accessory's memory may hold a mixture now: unplug it, plug it in again and repeat the update."
KEPT_BACK = 1664  # the first block of the memories that are slow from there on; the firmware begins before it

# Blocks that can't be written or read, under the image's place and under the table's.
UNDER_THE_IMAGE = f"0 1600 linear {{disk}} {{start}}\n1600 8 error\n1608 {SECTORS - 1608} linear {{disk}} {{start}}"
UNDER_THE_TABLE = f"0 8 error\n8 {SECTORS - 8} linear {{disk}} {{start}}"
TOO_SMALL = "0 2000 linear {disk} {start}"


def slow(milliseconds):
    """A memory that takes writes quickly up to KEPT_BACK, and keeps those behind that back for this long. Reads and
    empty flushes, which come when a disk is looked at, go on at once."""
    place = "{disk} {start}"
    return (f"0 {KEPT_BACK} linear {place}\n"
            f"{KEPT_BACK} {SECTORS - KEPT_BACK} delay {place} 0 {place} {milliseconds} {place} 0")


class BadMemory(GuestCase):
    """Memories that refuse: the update is sent to each, and is told what is wrong with it."""

    def send(self, accessory, size, *words):
        path = self.image(size)
        result = self.root.run("kestravctl", "firmware", *words, path, check=False)
        return path, result

    def assert_refused(self, sentence, size, **how):
        accessory = self.plugged(**how)
        path, result = self.send(accessory, size)
        self.assert_handed_over(result, path, size)
        sentence = sentence.replace("DISK", accessory.disk)
        self.assertIn(sentence, result.err)
        self.wait_for_log(sentence, "kestrav-commandd")
        self.wait_for_log(sentence, "kestravctl")
        return accessory

    def test_write_protected(self):
        accessory = self.assert_refused("Refused: the disk DISK is write-protected.", 5000, readonly=True)
        self.assert_disk(accessory)

    def test_too_small(self):
        accessory = self.assert_refused(
            "Refused: the image has 512000 bytes, but DISK has room for 237568 from block 1536 on. Nothing was written.",
            512000, table=TOO_SMALL)
        self.assert_disk(accessory)

    def test_a_defect_under_the_image(self):
        accessory = self.assert_refused(
            f"Failed: the disk DISK did not confirm that it kept the bytes: Input/output error. {REPEAT}",
            200000, table=UNDER_THE_IMAGE)
        self.assert_nothing_else_changed(accessory, 200000)

    def test_a_defect_under_the_table_does_not_matter_to_the_image(self):
        accessory = self.plugged(table=UNDER_THE_TABLE)
        accessory.slot.expect(FIRMWARE, content(5000))
        _, result = self.send(accessory, 5000, "--verify")
        self.assertIn(f"there is no /dev/{accessory.disk}s1", result.err)
        self.assertIn("verified", result.err)
        self.assertEqual(result.status, 0, str(result))
        self.assert_disk(accessory)


class Plug(GuestCase):
    """The plug: pulled before, in the middle of and after an update, in again, and next to others."""

    def test_pulled_before(self):
        accessory, path = self.plugged(), self.image(5000)
        accessory.pull()
        result = self.root.run("kestravctl", "firmware", path, check=False)
        self.assertEqual(result.out.splitlines()[-2:], ["Device not ready yet!", "Failed writing to device."])
        self.assertEqual(result.status, 1)
        self.assert_disk(accessory)

    def test_pulled_in_the_middle(self):
        size = 512000
        accessory, path = self.plugged(table=slow(300_000)), self.image(size)
        update = self.root.start("kestravctl", "firmware", "--verify", path)
        # The first blocks have arrived, as is seen from outside, and the others are kept back.
        self.wait_until(lambda: accessory.slot.read()[FIRMWARE:KEPT_BACK * BLOCK] ==
                        content(size)[:KEPT_BACK * BLOCK - FIRMWARE], "the update does not begin")
        pulling = self.root.start("/e2e/tests/e2e/guest/accessory", "pull", accessory.name)
        result = update.wait()
        # The gadget is a program of the kernel and waits for its memory, which a real one would have lost.
        accessory.change_memory(SOUND)
        self.assertEqual(pulling.wait().status, 0)
        self.assertIn(f"Failed: the disk {accessory.disk} did not confirm that it kept the bytes: ", result.err)
        self.assertIn(REPEAT, result.err)
        self.assertIn("Verification failed: the disk can't be read back.", result.err)
        self.assertEqual(result.status, 4, str(result))
        self.wait_for_log("did not confirm", "kestrav-commandd")
        self.assert_nothing_else_changed(accessory, size)

    def test_pulled_after_and_plugged_in_again_under_another_name(self):
        accessory, first, second = self.plugged(), self.image(70000, "1"), self.image(60000, "2", 2)
        before = accessory.disk
        self.root.run("kestravctl", "firmware", first)
        # As long as somebody has the old disk open its name is taken.
        holder = self.root.start("sh", "-c", f"exec sleep 1000 </dev/{before}")
        accessory.pull()
        accessory.plug()
        self.addCleanup(holder.end)
        self.assertNotEqual(accessory.disk, before)
        accessory.slot.expect(FIRMWARE, content(70000))
        accessory.slot.expect(FIRMWARE, content(60000, 2))
        result = self.root.run("kestravctl", "firmware", second)
        self.assertIn(f"Wrote 60000 bytes to {accessory.disk} ", result.err)
        self.assert_disk(accessory)

    def test_two_accessories_and_one_of_them_is_written(self):
        both = [self.plugged(port=0, serial="same"), self.plugged(port=1, serial="same")]
        path = self.image(5000)
        named = self.root.run("kestravctl", "detect").out.splitlines()[1].removeprefix("disk: ")
        self.assertIn(named, [accessory.disk for accessory in both])
        result = self.root.run("kestravctl", "firmware", path)
        self.assertIn(f"Wrote 5000 bytes to {named} ", result.err)
        for accessory in both:
            if accessory.disk == named:
                accessory.slot.expect(FIRMWARE, content(5000))
            self.assert_disk(accessory)

    def test_another_vendors_stick_beside_it_is_left_alone(self):
        stick = self.plugged(port=1, ids=OTHER_VENDOR, serial="S1", table=f"0 {SECTORS} linear {{stick}} 0")
        self.root.sh("udevadm settle")
        file = World.slots.stick
        before, changed = file.read_bytes(), file.stat().st_mtime_ns
        # udev looks again at a disk that somebody has had open for writing, and says so.
        watcher = self.root.start("udevadm", "monitor", "--udev", "--subsystem-match=block")
        watcher.wait_for("UDEV")
        accessory, path = self.plugged(port=0), self.image(262144)
        accessory.slot.expect(FIRMWARE, content(262144))
        result = self.root.run("kestravctl", "firmware", "--verify", path)
        self.assertIn(f"Wrote 262144 bytes to {accessory.disk} ", result.err)
        self.wait_until(lambda: f"/{accessory.disk} (block)" in watcher.look().out.split("change", 1)[-1],
                        "udev does not look at the accessory again")
        watcher.end()
        self.assertNotIn(f"/{stick.disk} (block)", watcher.look().out)
        self.assertEqual(self.root.sh(f"awk '{{ print $5 }}' /sys/block/{stick.disk}/stat").out, "0\n")
        self.assert_disk(accessory)
        stick.forget()
        self.assertEqual(file.stat().st_mtime_ns, changed)
        self.assertEqual(file.read_bytes(), before)


class BadComputer(GuestCase):
    """The accessory is sound, and the computer is not."""

    def test_a_disk_that_stalls_for_a_while_is_waited_for(self):
        accessory, path = self.plugged(), self.image(5000)
        accessory.slot.expect(FIRMWARE, content(5000))
        self.root.run("dmsetup", "suspend", "--noflush", accessory.name)
        update = self.root.start("kestravctl", "firmware", path)
        self.assertIsNone(update.look(seconds=3).status)
        self.root.run("dmsetup", "resume", accessory.name)
        self.assertIn("verified", update.wait().err)
        self.assert_disk(accessory)

    def test_the_service_is_killed_in_mid_write_and_the_next_update_works(self):
        accessory, path = self.plugged(table=slow(300_000)), self.image(512000)
        update = self.root.start("kestravctl", "firmware", "--verify", path)
        self.wait_until(lambda: accessory.slot.read()[FIRMWARE:KEPT_BACK * BLOCK] ==
                        content(512000)[:KEPT_BACK * BLOCK - FIRMWARE], "the update does not begin")
        self.root.run("systemctl", "kill", "--signal=SIGKILL", "kestrav-commandd.service")
        accessory.change_memory(SOUND)
        result = update.wait()
        self.assertNotIn("verified", result.err)
        accessory.slot.expect(FIRMWARE, content(512000, 2))
        result = self.root.run("kestravctl", "firmware", "--verify", self.image(512000, "again", 2))
        self.assertIn("verified", result.err)
        self.assert_disk(accessory)

    def test_memory_full(self):
        accessory, path = self.plugged(), self.image(262144)
        accessory.slot.expect(FIRMWARE, content(262144))
        self.root.sh("mkdir -p /run/hog; mount -t tmpfs -o size=100% hog /run/hog")
        self.addCleanup(self.root.run, "umount", "/run/hog")
        # All but 40 MiB of what is to be had.
        self.root.sh("free=$(awk '/MemAvailable/ { print int($2 / 1024) - 40 }' /proc/meminfo);"
                     "dd if=/dev/zero of=/run/hog/hog bs=1M count=$free status=none")
        result = self.root.run("kestravctl", "firmware", "--verify", path)
        self.assertIn("verified", result.err)
        self.assert_disk(accessory)
