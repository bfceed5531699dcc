"""A good day: the accessory is plugged in, found, and gets its firmware and its icon."""

from disks import FIRMWARE, ICON, content
from fronts import KestravctlCase


class MainRoad(KestravctlCase):
    def test_detect_finds_the_accessory_by_its_own_name(self):
        accessory = self.plugged()
        found = self.root.run("kestravctl", "detect").out.splitlines()
        self.assertEqual(found[:2], ["name: Kestrav Accessory", f"disk: {accessory.disk}"])

    def test_udev_names_the_disk_and_its_first_partition(self):
        disk = self.plugged().disk
        self.assertEqual(self.root.run("readlink", "-f", f"/dev/r{disk}", f"/dev/{disk}s1").out.split(),
                         [f"/dev/{disk}", f"/dev/{disk}1"])

    def test_nothing_is_found_when_nothing_is_plugged_in(self):
        result = self.root.run("kestravctl", "detect", check=False)
        self.assertEqual(result.status, 3, str(result))

    def test_the_first_request_starts_the_service(self):
        self.root.run("systemctl", "stop", "kestrav-commandd.service", check=False)
        accessory, path = self.plugged(), self.image(200000)
        accessory.slot.expect(FIRMWARE, content(200000))
        told = self.update("firmware", path)
        self.assert_handed_over(told, path, 200000)
        self.assert_verified(told, f"Wrote 200000 bytes to {accessory.disk} at block 1536, verified")
        state = self.root.run("systemctl", "show", "-p", "ActiveState", "--value", "kestrav-commandd.service").out
        self.assertEqual(state.strip(), "active")
        self.assert_disk(accessory)

    def test_firmware_and_icon_land_whole_and_nothing_else_changes(self):
        accessory = self.plugged()
        firmware, icon = self.image(262144, 2), self.image(40001, 3, "fif")
        accessory.slot.expect(FIRMWARE, content(262144, 2))
        accessory.slot.expect(ICON, content(40001, 3))
        for kind, path, size, block in (("firmware", firmware, 262144, 1536), ("icon", icon, 40001, 2048)):
            told = self.update(kind, path)
            self.assert_handed_over(told, path, size, kind)
            self.assert_verified(told, f"Wrote {size} bytes to {accessory.disk} at block {block}, verified")
        self.assert_disk(accessory)
