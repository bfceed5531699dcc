"""A disk that says nothing for longer than a front end waits, and then goes on. Takes a minute of waiting."""

from bad_days import let_kernel_wait, wrote
from disks import FIRMWARE, content
from fronts import KestravctlCase

REPLY_SECONDS = 60  # how long the front ends wait for an answer


class LongStall(KestravctlCase):
    def test_a_disk_that_stalls_for_longer_than_the_front_end_waits_is_written_all_the_same(self):
        accessory, path = self.plugged(), self.image(5000)
        accessory.slot.expect(FIRMWARE, content(5000))
        let_kernel_wait(accessory, 600)
        self.root.run("dmsetup", "suspend", "--noflush", accessory.name)
        update = self.start("firmware", path, verify=False)
        self.wait_until(lambda: "is waited for" in update.job.look().err, "it has not seen that no answer comes",
                        seconds=2 * REPLY_SECONDS)
        self.assertFalse(update.is_over())
        self.root.run("dmsetup", "resume", accessory.name)
        told = update.wait()
        self.assert_handed_over(told, path, 5000)
        self.assertEqual(told.answer, f"{accessory.disk}1 was not mounted.")
        self.assertIn("the service's board says that it was written and compared", told.end)
        self.assert_status(told, 0)
        self.wait_for_log(wrote(5000, accessory.disk), "kestrav-commandd")
        self.assert_disk(accessory)
