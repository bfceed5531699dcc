"""A disk that says nothing for longer than the window waits, and then goes on. Takes a minute of waiting."""

from bad_days import let_kernel_wait, wrote
from disks import FIRMWARE, content
from fronts import WindowCase
from long_stall_test import REPLY_SECONDS


class LongStall(WindowCase):
    def test_a_disk_that_stalls_for_longer_than_the_window_waits_is_followed_to_its_end(self):
        accessory, path = self.plugged(), self.image(5000)
        accessory.slot.expect(FIRMWARE, content(5000))
        let_kernel_wait(accessory, 600)
        self.root.run("dmsetup", "suspend", "--noflush", accessory.name)
        update = self.start("firmware", path)
        self.wait_until(lambda: "No answer has come, and the service goes on." in update.update.look()["panel"],
                        "it has not seen that no answer comes", seconds=2 * REPLY_SECONDS)
        self.window.picture("late")
        self.root.run("dmsetup", "resume", accessory.name)
        told = update.wait()
        self.assert_handed_over(told, path, 5000)
        self.assertEqual(told.answer, f"{accessory.disk}1 was not mounted.")
        self.assert_panel(told, "The image is on the accessory: it was written and compared. You may unplug it.")
        self.wait_for_log(wrote(5000, accessory.disk), "kestrav-commandd")
        self.assert_disk(accessory)
