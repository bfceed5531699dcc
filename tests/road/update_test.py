"""Updates that succeed, and what the disk holds afterwards."""

import os
import signal
import subprocess

from road import BLOCK, FINISH, FIRMWARE, ICON, MIB, PRELUDE, PROGRAMS, RoadTest, content, loaded, on_disk


class Update(RoadTest):
    def lines(self, path, size, block=FIRMWARE):
        return [loaded(path, size), *PRELUDE, *FINISH, on_disk(size, block)]

    def test_firmware_lands_at_block_1536(self):
        self.start_service()
        before = self.disk.read_bytes()
        path = self.image(200000)
        result = self.kestravctl("firmware", path)
        self.assert_said(result, self.lines(path, 200000))
        self.assert_only_changed(before, FIRMWARE, content(200000))

    def test_icon_lands_at_block_2048(self):
        self.start_service()
        before = self.disk.read_bytes()
        path = self.image(40001, "a picture = ünïcode.fif")
        result = self.kestravctl("icon", path)
        self.assert_said(result, self.lines(path, 40001, ICON))
        self.assert_only_changed(before, ICON, content(40001))

    def test_both_images_stand_side_by_side(self):
        self.start_service()
        firmware, icon = self.image(262144, "f.fds", 1), self.image(5000, "i.fif", 2)
        self.kestravctl("firmware", firmware)
        self.kestravctl("icon", icon)
        self.assertEqual(self.disk_bytes(FIRMWARE, 262144), content(262144, 1))
        self.assertEqual(self.disk_bytes(ICON, 5000), content(5000, 2))

    def test_one_byte_changes_one_byte(self):
        self.disk.write_bytes(content(16 * MIB, 9)[:510] + b"\x55\xaa" + content(16 * MIB, 9)[512:])
        self.start_service()
        before = self.disk.read_bytes()
        path = self.image(1)
        self.assert_said(self.kestravctl("firmware", path), self.lines(path, 1))
        self.assert_only_changed(before, FIRMWARE, content(1))

    def test_a_relative_path_is_found_by_the_service(self):
        self.start_service()
        path = self.image(1000)
        result = self.kestravctl("firmware", path.name, cwd=self.folder)
        self.assert_said(result, self.lines(path, 1000))
        self.assertEqual(self.disk_bytes(FIRMWARE, 1000), content(1000))

    def test_a_firmware_that_reaches_into_the_icon_area_is_written_and_said(self):
        self.start_service()
        before = self.disk.read_bytes()
        path = self.image(262145)
        result = self.kestravctl("firmware", path)
        self.assertEqual(result.returncode, 0)
        self.assert_only_changed(before, FIRMWARE, content(262145))
        self.assert_reported(result, "icon area")

    def test_it_goes_on_when_nobody_reads_what_it_says(self):
        self.start_service()
        before = self.disk.read_bytes()
        for both in (True, False):
            with self.subTest(both=both):
                reader, writer = os.pipe()
                os.close(reader)
                command = self.plugged_in([PROGRAMS / "kestravctl", "firmware", "--verify", self.image(70001 - both)])
                ended = subprocess.run(command, stdout=writer if both else subprocess.PIPE, stderr=writer, timeout=90)
                os.close(writer)
                # What could not be said is told by the status alone.
                self.assertEqual(ended.returncode, 2 if both else 0)
                self.assert_only_changed(before, FIRMWARE, content(70001 - both))

    def test_a_list_ends_when_nobody_reads_it(self):
        reader, writer = os.pipe()
        os.close(reader)
        ended = self.kestravctl("list", stdout=writer)
        os.close(writer)
        self.assertIn(ended.returncode, (-signal.SIGPIPE, 128 + signal.SIGPIPE))

    def test_verification_agrees(self):
        self.start_service()
        path = self.image(70000)
        result = self.kestravctl("firmware", "--verify", path)
        self.assertEqual(result.returncode, 0, result.stderr.decode())
        self.assertIn(b"Verified: the 70000 bytes", result.stdout)

    def test_the_service_says_that_it_verified(self):
        self.start_service()
        result = self.kestravctl("icon", self.image(3000))
        self.assert_reported(result, "3000 bytes")
        self.assert_reported(result, "verified")

    def test_push_writes_at_any_block(self):
        self.start_service()
        before = self.disk.read_bytes()
        result = self.kestravctl("push", "5000", self.image(777))
        self.assert_said(result, ["", on_disk(777, 5000)])
        self.assert_only_changed(before, 5000, content(777))

    def test_pull_gives_the_blocks_and_keeps_them_out_of_the_log(self):
        stood = content(30 * BLOCK, 4)
        with open(self.disk, "r+b") as disk:
            disk.seek(FIRMWARE * BLOCK)
            disk.write(b"firmware 1.0 %s %n".ljust(BLOCK, b".") + stood)
        self.start_service()
        result = self.kestravctl("pull", FIRMWARE, "31")
        self.assertEqual(result.stdout, b"firmware 1.0 %s %n".ljust(BLOCK, b".") + stood)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr, b"")

    def test_what_was_saved_takes_an_update_back(self):
        with open(self.disk, "r+b") as disk:
            disk.seek(FIRMWARE * BLOCK)
            disk.write(content(262144, 5))
        before = self.disk.read_bytes()
        self.start_service()
        saved = self.folder / "old.fds"
        self.assertEqual(self.kestravctl("save", "firmware", saved).returncode, 0)
        self.assertEqual(saved.read_bytes(), content(262144, 5))
        self.assertEqual(self.kestravctl("firmware", self.image(200000)).returncode, 0)
        self.assertEqual(self.kestravctl("firmware", saved).returncode, 0)
        self.assertTrue(self.disk.read_bytes() == before)

    def test_the_last_of_two_accessories_gets_the_update(self):
        self.start_service("two-accessories")
        before = self.disk.read_bytes()
        path = self.image(5000)
        result = self.kestravctl("firmware", path, device="two-accessories")
        self.assert_said(result, self.lines(path, 5000))
        self.assert_only_changed(before, FIRMWARE, content(5000))

    def test_two_at_once_both_land_or_one_is_told(self):
        self.start_service()
        import threading

        results = {}

        def send(kind, size):
            path = self.image(size, kind, size)
            results[kind] = self.kestravctl(kind, path)

        senders = [threading.Thread(target=send, args=pair) for pair in (("firmware", 250000), ("icon", 4 * MIB))]
        for sender in senders:
            sender.start()
        for sender in senders:
            sender.join()
        landings = []
        for kind, block, size in (("firmware", FIRMWARE, 250000), ("icon", ICON, 4 * MIB)):
            landed = self.disk_bytes(block, size) == content(size, size)
            told = "Refused" in results[kind].stderr.decode()
            self.assertTrue(landed or told, f"{kind}: {results[kind].stderr.decode()}\n{self.service_log()}")
            landings.append(landed)
        self.assertIn(True, landings)
