"""The helper once more, after it has been idle."""

from disks import ICON, content
from helper_test import UNIT, HelperCase


class HelperLater(HelperCase):
    """A minute after the case above: other cases stand between the two, so that nobody has to wait for it."""

    def test_ended_when_it_was_idle_and_is_started_again(self):
        self.wait_until(lambda: self.helpers_process() == 0, "the helper does not end")
        ended = self.root.run("systemctl", "show", "-p", "Result", "-p", "NRestarts", "--value", UNIT).out.split()
        self.assertEqual(sorted(ended), ["0", "success"])
        accessory, path = self.plugged(), self.image(600)
        accessory.slot.expect(ICON, content(600))
        self.root.run(*self.write(2048, path, accessory.disk))
        self.assertNotEqual(self.helpers_process(), 0)
        self.assert_disk(accessory)
