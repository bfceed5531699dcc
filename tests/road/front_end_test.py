"""What kestravctl prints and how it ends, apart from updates."""

import json
import os
import subprocess

from road import FIRMWARE, MIB, PROGRAMS, ROOT, RoadTest, content
from sandbox import mount_points


class FrontEnd(RoadTest):
    def test_detect_prints_name_disk_and_id(self):
        self.assert_said(self.kestravctl("detect"), ["name: Kestrav Accessory", "disk: sdzz", "id: 65538"])

    def test_detect_as_json(self):
        result = self.kestravctl("detect", "--json")
        self.assertEqual(
            json.loads(result.stdout), {"found": True, "name": "Kestrav Accessory", "disk": "sdzz", "id": 65538})

    def test_detect_without_an_accessory(self):
        result = self.kestravctl("detect", plugged=False)
        self.assert_said(result, [], 3)
        self.assert_reported(result, "No accessory")

    def test_detect_without_an_accessory_as_json(self):
        result = self.kestravctl("detect", "--json", plugged=False)
        self.assertEqual(json.loads(result.stdout), {"found": False})
        self.assertEqual(result.returncode, 3)

    def test_detect_of_an_accessory_without_a_disk(self):
        result = self.kestravctl("detect", device="accessory-without-disk")
        self.assert_said(result, ["name: Kestrav Accessory", "disk: none", "id: 65538"])
        result = self.kestravctl("detect", "--json", device="accessory-without-disk")
        self.assertIsNone(json.loads(result.stdout)["disk"])

    def test_detect_of_an_accessory_without_a_product_name(self):
        result = self.kestravctl("detect", device="accessory-without-name")
        self.assert_said(result, ["name: 1-2", "disk: sdzz", "id: 65538"])

    def test_detect_without_a_registry(self):
        subprocess.run(["umount", "-R", "-l", "/sys"], check=True)
        result = subprocess.run([PROGRAMS / "kestravctl", "detect"], capture_output=True, timeout=20)
        self.assertEqual(result.returncode, 5)
        self.assertIn("ERR: Couldn’t create a master I/O Kit port(%08x)\n ".encode(), result.stdout)
        self.assertIn(b"Is /sys mounted?", result.stderr)
        result = subprocess.run([PROGRAMS / "kestravctl", "detect", "--json"], capture_output=True, timeout=20)
        told = json.loads(result.stdout)
        self.assertEqual((told["status"], told["problem"]), (5, "The device registry can't be reached. Is /sys mounted?"))

    def mount_drives(self):
        """Two file systems below /media, in folders of this case's own; returns their places."""
        places = [f"/media/kestrav-road-{os.getpid()}-{name}" for name in ("one", "two")]
        for place in places:
            try:
                os.makedirs(place)
            except PermissionError:
                self.skipTest("only root can make a folder in /media")
            self.addCleanup(os.rmdir, place)
            subprocess.run(["mount", "-t", "tmpfs", "none", place], check=True)
            self.addCleanup(subprocess.run, ["umount", place], check=False, stderr=subprocess.DEVNULL)
        return places

    def test_drives_are_listed(self):
        one, two = self.mount_drives()
        self.assert_said(self.kestravctl("drives"), [f"Found drive: {one}", f"Found drive: {two}"])

    def test_drives_as_json_keep_standard_output_clean(self):
        places = self.mount_drives()
        result = self.kestravctl("drives", "--json")
        self.assertEqual(json.loads(result.stdout), places)
        self.assert_reported(result, f"Found drive: {places[0]}")

    def test_no_drives(self):
        result = self.kestravctl("drives")
        self.assert_said(result, [])
        self.assert_reported(result, "No drive is mounted")
        self.assertEqual(json.loads(self.kestravctl("drives", "--json").stdout), [])

    def test_read_unmounts_the_first_drive_only(self):
        one, two = self.mount_drives()
        self.kestravctl("read", 0, 1)
        self.assertNotIn(one, mount_points())
        self.assertIn(two, mount_points())

    def test_write_unmounts_the_first_drive_only(self):
        one, two = self.mount_drives()
        self.kestravctl("write", 0, self.image(1))
        self.assertNotIn(one, mount_points())
        self.assertIn(two, mount_points())

    def test_read_prints_the_bytes_and_nothing_else(self):
        with open(self.disk, "r+b") as disk:
            disk.seek(FIRMWARE * 512 + 3)
            disk.write(content(1000))
        result = self.kestravctl("read", FIRMWARE * 512 + 3, 1000)
        self.assertEqual(result.stdout, content(1000))
        self.assertEqual(result.returncode, 0)

    def test_read_into_a_file(self):
        out = self.folder / "out.bin"
        result = self.kestravctl("read", 510, 2, "-o", out)
        self.assert_said(result, [])
        self.assertEqual(out.read_bytes(), b"\x55\xaa")

    def test_read_past_the_end_fails(self):
        self.assertEqual(self.kestravctl("read", 1 << 30, 1).returncode, 1)

    def test_read_puts_no_bytes_on_a_terminal(self):
        terminal, other_end = os.openpty()
        self.addCleanup(os.close, terminal)
        result = self.kestravctl("read", 0, 1, stdout=other_end)
        os.close(other_end)
        self.assertEqual(result.returncode, 2)
        self.assert_reported(result, "redirect the output")

    def test_too_little_memory_is_a_sentence(self):
        big = self.folder / "big"
        with open(big, "wb") as file:
            file.truncate(1500 * MIB)
        limited = ["bash", "-c", 'ulimit -v 1000000; exec "$@"', "-", PROGRAMS / "kestravctl"]
        start = subprocess.run([*limited, "--version"], capture_output=True, timeout=60)
        if b"Sanitizer" in start.stderr:
            self.skipTest("a build with a sanitizer needs more address space than that to start")
        self.assertEqual(start.returncode, 0, start.stderr)
        result = subprocess.run([*limited, "write", "0", big], capture_output=True, timeout=60)
        self.assertEqual(result.returncode, 2)
        self.assert_reported(result, "not enough memory")

    def test_read_without_an_accessory(self):
        result = self.kestravctl("read", 0, 1, plugged=False)
        self.assertEqual((result.returncode, result.stdout), (1, b""))
        self.assert_reported(result, "No accessory (USB 10d6:fd01) is attached. Plug it in and try again.")

    def test_read_onto_a_full_disk(self):
        with open("/dev/full", "wb") as full:
            result = self.kestravctl("read", 0, 1, stdout=full)
        self.assertEqual(result.returncode, 2)
        self.assert_reported(result, "Standard output can't be written")

    def test_write_puts_the_bytes_there(self):
        before = self.disk.read_bytes()
        image = self.image(1000)
        self.assert_said(self.kestravctl("write", 5 * 512, image), [])
        self.assert_only_changed(before, 5, content(1000))

    def test_write_of_an_empty_file_fails(self):
        self.assertEqual(self.kestravctl("write", 0, self.image(0)).returncode, 1)

    def test_a_disk_that_can_not_be_opened(self):
        result = self.kestravctl("read", 0, 1, device="accessory-without-disk")
        self.assertEqual(result.returncode, 1)
        self.assert_reported(result, "Unabled to open /dev/rnil")

    def test_closed_standard_descriptors_take_no_harm(self):
        command = self.plugged_in(
            ["sh", "-c", 'exec "$@" <&- 2>&-', "-", PROGRAMS / "kestravctl", "read", "510", "2", "-o", self.folder / "out"])
        self.assertEqual(subprocess.run(command, timeout=20).returncode, 0)
        self.assertEqual((self.folder / "out").read_bytes(), b"\x55\xaa")

    def test_help_onto_a_full_disk(self):
        with open("/dev/full", "wb") as full:
            self.assertEqual(subprocess.run([PROGRAMS / "kestravctl", "--help"], stdout=full).returncode, 2)

    def test_a_wrong_call(self):
        result = self.kestravctl("push", "-5", "file")
        self.assert_said(result, [], 2)

    def test_the_samples_script_refuses_a_real_accessory(self):
        result = subprocess.run(
            [ROOT / "simulator/demonstration", PROGRAMS, self.disk], capture_output=True, timeout=20)
        self.assertEqual(result.returncode, 2)
        self.assertIn(b"Refused", result.stderr)
