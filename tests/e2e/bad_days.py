"""Bad days: what goes wrong with real disks and computers, what the person is told then, and what it does to the memory.

The front end's own last line is "Finished writing to device." on most of these days: it says that the update was handed
over. What counts is the service's answer behind it. Each day is played with both front ends, see fronts.py: the classes
here lack one, and are given it in bad_days_kestravctl_test.py and bad_days_window_test.py. The days that are alike for
both, since nobody is told anything unusual, are in bad_days_kestravctl_test.py alone.
"""

import time

from accessory import SECTORS, SOUND, slow
from disks import FIRMWARE, content

REPEAT = "The accessory's memory may hold a mixture now: unplug it, plug it in again and repeat the update."

# Blocks that can't be written or read, under the image's place.
UNDER_THE_IMAGE = f"0 1600 linear {{disk}} {{start}}\n1600 8 error\n1608 {SECTORS - 1608} linear {{disk}} {{start}}"
TOO_SMALL = "0 2000 linear {disk} {start}"


def wrote(size, disk):
    return f"Wrote {size} bytes to {disk} at block 1536, verified"


def let_kernel_wait(accessory, seconds):
    """For each answer of the disk; 30 seconds as a rule. A disk that says nothing for so long is reset and, if that does
    not help, taken away."""
    accessory.guest.sh(f"echo {seconds} >/sys/block/{accessory.disk}/device/timeout")


class BadMemory:
    """Memories that refuse: the update is sent to each, and is told what is wrong with it."""

    def assert_refused(self, sentence, size, **how):
        accessory, path = self.plugged(**how), self.image(size)
        told = self.update("firmware", path)
        self.assert_handed_over(told, path, size)
        sentence = sentence.replace("DISK", accessory.disk)
        self.assert_answered(told, sentence)
        self.wait_for_log(sentence, "kestrav-commandd")
        self.assert_not_verified(told)
        refused = sentence.startswith("Refused: ")
        self.assert_panel(told, "Not written: the service refused." if refused else "Not written whole: ")
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


class Plug:
    """The plug: pulled before, in the middle of and after an update, in again, and next to others."""

    def test_pulled_in_the_middle(self):
        size = 512000
        accessory, path = self.plugged(table=slow(300_000)), self.image(size)
        update = self.start("firmware", path)
        self.wait_until_begun(accessory, size)
        pulling = self.root.start("/e2e/tests/e2e/guest/accessory", "pull", accessory.name)
        told = update.wait()
        # The gadget is a program of the kernel and waits for its memory, which a real one would have lost.
        accessory.change_memory(SOUND)
        self.assertEqual(pulling.wait().status, 0)
        sentence = f"Failed: the disk {accessory.disk} did not confirm that it kept the bytes: "
        self.assert_answered(told, sentence)
        self.assert_answered(told, REPEAT)
        self.assert_not_verified(told)
        self.assert_panel(told, "Not written whole: the accessory was unplugged in the middle. "
                                "It may hold a mixture now: plug it in and send the image again.")
        self.wait_for_log(sentence, "kestrav-commandd")
        self.assert_nothing_else_changed(accessory, size)

    def test_pulled_after_then_missed_and_plugged_in_again_under_another_name(self):
        accessory, first, second = self.plugged(), self.image(70000), self.image(60000, 2)
        before = accessory.disk
        self.assert_verified(self.update("firmware", first), wrote(70000, before))
        # As long as somebody has the old disk open its name is taken.
        holder = self.root.start("sh", "-c", f"exec </dev/{before}; echo held; exec sleep 1000")
        self.addCleanup(holder.end)
        holder.wait_for("held")
        accessory.pull()
        self.assert_missed(self.update("firmware", second), second, 60000, before)
        accessory.plug()
        self.assertNotEqual(accessory.disk, before)
        accessory.slot.expect(FIRMWARE, content(70000))
        accessory.slot.expect(FIRMWARE, content(60000, 2))
        self.assert_verified(self.update("firmware", second), wrote(60000, accessory.disk))
        self.assert_disk(accessory)


class BadComputer:
    """The accessory is sound, and the computer is not."""

    def test_a_disk_that_stalls_for_a_while_is_waited_for(self):
        accessory, path = self.plugged(), self.image(5000)
        accessory.slot.expect(FIRMWARE, content(5000))
        self.root.run("dmsetup", "suspend", "--noflush", accessory.name)
        update = self.start("firmware", path)
        time.sleep(3)
        self.assertFalse(update.is_over())
        self.root.run("dmsetup", "resume", accessory.name)
        self.assert_verified(update.wait(), wrote(5000, accessory.disk))
        self.assert_disk(accessory)

    def test_a_disk_that_stalls_for_longer_than_the_kernel_waits_is_given_up(self):
        accessory, path = self.plugged(), self.image(5000)
        let_kernel_wait(accessory, 5)
        self.root.run("dmsetup", "suspend", "--noflush", accessory.name)
        told = self.update("firmware", path)
        self.root.run("dmsetup", "resume", accessory.name)
        self.assert_handed_over(told, path, 5000)
        sentence = f"Failed: reading {accessory.disk} around block 1536: No such device. Nothing was written."
        self.assert_answered(told, sentence)
        self.wait_for_log(sentence, "kestrav-commandd")
        self.assert_not_verified(told)
        self.assert_panel(told, "Not written whole: ")
        self.assert_disk(accessory)

    def test_the_service_is_killed_in_mid_write_and_the_next_update_works(self):
        accessory, path = self.plugged(table=slow(300_000)), self.image(512000)
        update = self.start("firmware", path)
        self.wait_until_begun(accessory, 512000)
        self.root.run("systemctl", "kill", "--signal=SIGKILL", "kestrav-commandd.service")
        accessory.change_memory(SOUND)
        told = update.wait()
        self.assert_handed_over(told, path, 512000)
        self.assertEqual(told.answer, f"{accessory.disk}1 was not mounted.")
        self.assert_status(told, 6)
        self.assert_panel(told, "Nobody knows: the service died while it wrote. Don't unplug; send the image again.")
        self.wait_for_log("Main process exited, code=killed", "systemd")
        accessory.slot.expect(FIRMWARE, content(512000, 2))
        told = self.update("firmware", self.image(512000, 2))
        self.assert_verified(told, wrote(512000, accessory.disk))
        self.assert_disk(accessory)

    def test_memory_full(self):
        accessory, path = self.plugged(), self.image(262144)
        accessory.slot.expect(FIRMWARE, content(262144))
        self.root.sh("mkdir -p /run/hog; mount -t tmpfs -o size=100% hog /run/hog")
        self.addCleanup(self.root.run, "umount", "/run/hog")
        # All but so much of what is to be had.
        self.root.sh(f"free=$(awk '/MemAvailable/ {{ print int($2 / 1024) - {self.spare_mib} }}' /proc/meminfo);"
                     "dd if=/dev/zero of=/run/hog/hog bs=1M count=$free status=none")
        self.assert_verified(self.update("firmware", path), wrote(262144, accessory.disk))
        self.assert_disk(accessory)
