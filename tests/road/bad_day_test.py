"""Updates that fail: what is said, how the program ends, and that the disk is untouched."""

import os
import signal
import subprocess

from road import FINISH, FIRMWARE, ICON, MIB, PRELUDE, PROGRAMS, ROOT, AnsweringService, RoadTest, content, loaded, on_disk


class BadDay(RoadTest):
    def finished(self, path, size):
        """The lines of an update that was handed over, whatever became of it."""
        return [loaded(path, size), *PRELUDE, *FINISH]

    def written(self, path, size):
        return [*self.finished(path, size), on_disk(size, FIRMWARE)]

    def assert_ends(self, result, sentence):
        """The last line of all: it says what became of the update, and what to do next."""
        self.assertEqual(result.stderr.decode().splitlines()[-1], f"kestravctl: {sentence}")

    def test_no_service(self):
        before = self.digest()
        path = self.image(1000)
        result = self.kestravctl("firmware", path)
        self.assert_said(result, self.finished(path, 1000), 1)
        self.assert_reported(result, "SocketError.unknownError")
        self.assert_ends(result, "The service is not running: systemctl start kestrav-commandd.socket")
        self.assertEqual(self.digest(), before)

    def test_no_service_leaves_nothing_to_verify(self):
        result = self.kestravctl("firmware", "--verify", self.image(1000))
        self.assertEqual(result.returncode, 1)
        self.assert_ends(result, "The service is not running: systemctl start kestrav-commandd.socket")

    def test_no_accessory(self):
        self.start_service()
        path = self.image(1000)
        result = self.kestravctl("firmware", path, plugged=False)
        self.assert_said(result, [loaded(path, 1000), *PRELUDE, "Device not ready yet!", "Failed writing to device."], 1)
        self.assert_ends(result, "No accessory (USB 10d6:fd01) is attached. Plug it in and try again.")

    def test_an_accessory_without_a_disk(self):
        self.start_service("accessory-without-disk")
        path = self.image(1000)
        result = self.kestravctl("firmware", path, device="accessory-without-disk")
        self.assert_said(result, self.finished(path, 1000), 4)
        self.assert_reported(result, "kestravctl: Refused: there is no /dev/rnil; ")
        self.assert_ends(result, "The accessory has no disk yet, so nothing was done. Wait some seconds and try again; if "
                                 "that does not help, plug it in once more.")

    def test_the_accessory_is_gone_when_the_service_looks(self):
        self.start_service("accessory-without-disk")
        before = self.digest()
        path = self.image(1000)
        result = self.kestravctl("firmware", path)
        self.assert_said(result, self.finished(path, 1000), 4)
        self.assert_reported(result, "kestravctl: Refused: there is no /dev/rsdzz; is the accessory plugged in, and its udev "
                                     "rule installed?")
        self.assertEqual(self.digest(), before)

    def test_another_vendors_stick_has_the_accessorys_name(self):
        description = (ROOT / "simulator/accessory.umockdev").read_text()
        self.assertIn("A: idVendor=10d6", description)
        stick = self.folder / "stick.umockdev"
        stick.write_text(description.replace("A: idVendor=10d6", "A: idVendor=0951"))
        self.start_service(stick)
        before = self.digest()
        path = self.image(1000)
        result = self.kestravctl("firmware", path)
        self.assert_said(result, self.finished(path, 1000), 4)
        self.assert_ends(result, "Nothing was written: /dev/sdzz is not on the accessory (USB 10d6:fd01); nothing else is "
                                 "touched.")
        self.assertIn("Refused: /dev/sdzz is not on the accessory", self.service_log())
        self.assertEqual(self.digest(), before)

    def test_the_loopback_interface_is_down(self):
        self.start_service()
        before = self.digest()
        subprocess.run(["ip", "link", "set", "lo", "down"], check=True)
        path = self.image(1000)
        result = self.kestravctl("firmware", path)
        self.assert_said(result, self.finished(path, 1000), 1)
        self.assert_reported(result, "SocketError.connectionTimeout")
        self.assert_ends(result, "The service does not take the request: systemctl restart kestrav-commandd")
        self.assertEqual(self.digest(), before)

    def test_a_full_disk_keeps_no_backup_and_so_nothing_is_written(self):
        self.start_service()
        before = self.digest()
        full = self.folder / "full"
        full.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "none", full], check=True)
        self.addCleanup(subprocess.run, ["umount", full], check=True)
        result = self.kestravctl("firmware", "--backup", full, self.image(1000))
        self.assertEqual(result.returncode, 2, result.stderr.decode())
        self.assert_reported(result, "Nothing was written, for what stands there can't be kept: ")
        self.assert_reported(result, "No space left on device")
        self.assertEqual(list(full.iterdir()), [])
        self.assertEqual(self.digest(), before)

    def test_an_image_longer_than_the_disk_is_refused_before_a_byte_is_written(self):
        self.start_service()
        before = self.digest()
        path = self.image(16 * MIB - FIRMWARE * 512 + 1)
        result = self.kestravctl("firmware", path)
        self.assert_said(result, self.finished(path, path.stat().st_size), 4)
        self.assert_reported(result, "Refused")
        self.assertEqual(self.digest(), before)

    def test_an_image_that_just_fits_is_written(self):
        self.start_service()
        size = 16 * MIB - FIRMWARE * 512
        self.kestravctl("firmware", self.image(size))
        self.assertTrue(self.disk_bytes(FIRMWARE, size) == content(size))

    def test_an_empty_image(self):
        path = self.image(0)
        self.assert_said(self.kestravctl("firmware", path), [f"Unabled to read file: {path}"], 1)

    def test_a_missing_image(self):
        result = self.kestravctl("firmware", self.folder / "none")
        self.assert_said(result, [], 2)
        self.assert_reported(result, "No such file")

    def test_a_folder_as_image(self):
        result = self.kestravctl("icon", self.folder)
        self.assert_said(result, [], 2)
        self.assert_reported(result, "is a folder")

    def test_a_pipe_as_image(self):
        os.mkfifo(self.folder / "pipe")
        result = self.kestravctl("icon", self.folder / "pipe", timeout=20)
        self.assert_said(result, [], 2)
        self.assert_reported(result, "is a pipe")

    def test_an_image_that_can_only_be_read(self):
        self.start_service()
        path = self.image(1000)
        # Root may write to any file, but not on a mount that is read-only.
        subprocess.run(["mount", "--bind", path, path], check=True)
        subprocess.run(["mount", "-o", "remount,bind,ro", path], check=True)
        self.addCleanup(subprocess.run, ["umount", path], check=True)
        self.assert_said(self.kestravctl("firmware", path), self.written(path, 1000))
        self.assertEqual(self.disk_bytes(FIRMWARE, 1000), content(1000))

    def test_standard_input_as_image(self):
        with open(self.image(1000), "rb") as image:
            result = self.kestravctl("firmware", "/dev/stdin", stdin=image)
        self.assert_said(result, [], 2)
        self.assert_reported(result, "the name of the file itself")

    def test_a_reply_with_percent_signs_is_shown_as_it_is(self):
        with AnsweringService(lambda peer: peer.send(b"100 %s %n %p done")):
            self.assert_reported(self.kestravctl("firmware", self.image(10)), "kestravctl: 100 %s %n %p done")

    def test_a_reply_that_would_steer_the_terminal_is_escaped(self):
        with AnsweringService(lambda peer: peer.send(b"\x1b[2Jcleared")):
            self.assert_reported(self.kestravctl("firmware", self.image(10)), "kestravctl: \\x1b[2Jcleared")

    def test_a_reply_of_20000_bytes_is_cut(self):
        with AnsweringService(lambda peer: peer.sendall(b"a" * 20000)):
            shown = self.kestravctl("pull", 0, 1).stderr.decode()
        self.assertIn("a" * 100, shown)
        self.assertLessEqual(shown.count("a" * 10), 1024)

    def test_a_reply_that_is_no_text_is_dropped(self):
        with AnsweringService(lambda peer: peer.send(b"\xff\xfe binary")):
            result = self.kestravctl("pull", 0, 1)
        self.assertEqual(result.stderr.decode().splitlines(), [
            "kestravctl: Only a part of the service's answer came, so nothing was read. Try again."])
        self.assertEqual(result.returncode, 6)

    def test_a_service_that_closes_at_once(self):
        path = self.image(10)
        with AnsweringService(lambda peer: None):
            result = self.kestravctl("firmware", path)
        self.assert_said(result, self.finished(path, 10), 6)
        self.assertEqual(result.stderr.decode().splitlines(), [
            "kestravctl: The service has gone without an answer, so nobody knows what the accessory holds. "
            "Send the image again."])

    def test_a_web_server_on_the_services_port(self):
        path = self.image(10)
        with AnsweringService(lambda peer: peer.send(b"HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n")):
            result = self.kestravctl("firmware", "--verify", path)
        self.assert_said(result, self.finished(path, 10), 6)
        self.assert_ends(result, "What answers on port 9090 is not kestrav-commandd: Prometheus and Cockpit use that "
                                 "port, too. 'ss -tlnpe sport = :9090' names the program.")

    def test_a_service_that_claims_success_is_found_out_by_verification(self):
        claim = b"Wrote 10 bytes to sdzz at block 1536, verified, 1.0 MB/s."
        with AnsweringService(lambda peer: peer.send(claim)):
            result = self.kestravctl("firmware", "--verify", self.image(10))
        self.assertEqual(result.returncode, 4)
        self.assert_ends(result, "Verification failed: the disk differs from the image at byte 0 of it. Unplug the "
                                 "accessory, plug it in again and send the image once more.")

    def test_half_an_answer_is_none(self):
        with AnsweringService(lambda peer: peer.send(b"Wrote 10 bytes, verified.")):
            result = self.kestravctl("firmware", "--verify", self.image(10))
        self.assertEqual(result.returncode, 6)

    def test_a_service_killed_in_mid_write_harms_no_later_update(self):
        with open(self.disk, "r+b") as disk:
            disk.truncate(1024 * MIB)
        service = self.start_service()
        big = self.folder / "big"
        with open(big, "wb") as image:
            image.write(content(512))
            image.truncate(900 * MIB)
            image.seek(-512, os.SEEK_END)
            image.write(content(512, 2))
        sender = subprocess.Popen(
            self.plugged_in([PROGRAMS / "kestravctl", "icon", big]), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.wait_until(lambda: self.disk_bytes(ICON, 512) == content(512), "the write is not begun", sender, 120)
        for pid in self.processes_named("kestrav-commandd"):
            os.kill(pid, signal.SIGKILL)
        service.wait(timeout=30)
        self.assertNotEqual(self.disk_bytes(ICON + 900 * MIB // 512 - 1, 512), content(512, 2), "it was not in mid-write")
        sender.communicate(timeout=90)
        self.assertEqual(sender.returncode, 6)
        self.start_service()
        path = self.image(5000)
        self.assert_said(self.kestravctl("firmware", path), self.written(path, 5000))
        self.assertEqual(self.disk_bytes(FIRMWARE, 5000), content(5000))

    def processes_named(self, name):
        """Processes of this program that were given this case's disk to see, that is our own."""
        found = []
        for entry in os.listdir("/proc"):
            try:
                if entry.isdigit() and os.readlink(f"/proc/{entry}/exe") == str(PROGRAMS / name):
                    environment = open(f"/proc/{entry}/environ", "rb").read()
                    if f"UMOCKDEV_DIR={self.folder}/".encode() in environment:
                        found.append(int(entry))
            except OSError:
                continue
        self.assertTrue(found)
        return found

    def test_a_taken_port_is_a_clear_error(self):
        import socket

        with socket.create_server(("127.0.0.1", 9090)):
            result = subprocess.run(
                self.plugged_in([PROGRAMS / "kestrav-commandd"]), stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=20)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"9090", result.stderr)
