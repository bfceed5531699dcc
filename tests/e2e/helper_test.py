"""The helper on the system bus: installed by an administrator, started by the bus, used, and ended when it is idle."""

from case import GuestCase
from disks import FIRMWARE, content
from world import World

UNIT = "com.corvatel.KestravHelper.service"
PROMPT = "Password:"


class HelperCase(GuestCase):
    def helpers_process(self):
        """The number of its process, 0 when it doesn't run."""
        return int(self.root.run("systemctl", "show", "-p", "MainPID", "--value", UNIT).out)

    def answer_password(self, *argv):
        """Runs a program in anna's terminal, which asks once, and gives what was on the screen."""
        job = World.person("anna").start(*argv, terminal=True)
        job.wait_for(PROMPT)
        job.type_password("secret")
        result = job.wait()
        self.assertEqual(result.status, 0, str(result))
        return result.out

    def write(self, block, path, disk):
        return ("kestravctl", "helper", "run", "dd", f"if={path}", f"of=/dev/r{disk}", f"seek={block}", "bs=512")


class Helper(HelperCase):
    def test_is_installed_by_an_administrator_started_by_the_bus_and_writes(self):
        accessory, path = self.plugged(), self.image(20000)
        accessory.slot.expect(FIRMWARE, content(20000))
        self.assertIn("The helper is installed.", self.answer_password("kestravctl", "helper", "install"))
        self.assertIn("starts when it is needed", self.root.run("kestravctl", "helper", "status").out)
        self.assertEqual(self.helpers_process(), 0)
        self.answer_password(*self.write(1536, path, accessory.disk))
        self.wait_for_log(f"Wrote 20000 bytes to {accessory.disk} at block 1536, verified", "com.corvatel.KestravHelper",
                          "kestrav-helper")
        self.assertNotEqual(self.helpers_process(), 0)
        self.assert_disk(accessory)
