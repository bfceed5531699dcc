"""The accessory's partition mounted by the desktop's own service, and the update all the same."""

import json

from case import GuestCase
from disks import FIRMWARE, PARTITION, content
from world import World


class Mounted(GuestCase):
    def mount(self, disk):
        said = World.person("anna").run("udisksctl", "mount", "-b", f"/dev/{disk}1").out
        self.assertIn("Mounted", said)
        return said.split(" at ")[1].strip().rstrip(".")

    def places(self, disk):
        """Where it is mounted in the first process's own view, which is everybody's."""
        return self.root.sh(f"awk '$10 ~ \"^/dev/{disk}\" || $9 ~ \"^/dev/{disk}\" {{ print $5 }}' /proc/1/mountinfo").out

    def assert_disk(self, accessory):
        """A mount writes to its partition. Before that nothing but the image may have changed, and the file system has
        to be in order."""
        accessory.forget()
        self.assertEqual([place for place in accessory.slot.differences() if place[0] < PARTITION], [])
        accessory.slot.expected = accessory.slot.expected[:PARTITION] + accessory.slot.read()[PARTITION:]

    def test_the_service_unmounts_it_for_everybody(self):
        accessory, path = self.plugged(), self.image(100000)
        accessory.slot.expect(FIRMWARE, content(100000))
        place = self.mount(accessory.disk)
        self.assertEqual(self.places(accessory.disk).split(), [place])
        result = self.root.run("kestravctl", "firmware", path)
        self.assertIn(f"Unmounted {accessory.disk}1 from {place}.", result.err)
        self.assertIn("verified", result.err)
        self.assertEqual(self.places(accessory.disk), "")
        self.assert_disk(accessory)

    def test_mounted_again_between_the_two_commands_is_unmounted_again(self):
        accessory, path = self.plugged(), self.image(5000)
        accessory.slot.expect(FIRMWARE, content(5000))
        self.mount(accessory.disk)
        # The first command alone, as an updater sends it; then the desktop is quicker than the second one.
        said = self.ask("umount", f"/dev/{accessory.disk}s1")
        self.assertIn(f"Unmounted {accessory.disk}1 from ", said)
        self.mount(accessory.disk)
        said = self.ask("dd", f"if={path}", f"of=/dev/r{accessory.disk}", "seek=1536", "bs=512")
        self.assertIn("Wrote 5000 bytes", said)
        self.assertIn("verified", said)
        self.assertEqual(self.places(accessory.disk), "")
        self.assert_disk(accessory)

    def ask(self, command, *arguments):
        request = json.dumps({"command": command, "arguments": arguments})
        return self.root.run("python3", "-c", "import socket, sys\n"
                             "peer = socket.create_connection(('127.0.0.1', 9090))\n"
                             "peer.sendall(sys.argv[1].encode())\n"
                             "print(peer.recv(10240).decode())", request).out
