"""Updates from the window: the chooser, the log, the status line, and what the disk holds afterwards."""

import os

from desktop import DesktopTest
from road import FINISH, FIRMWARE, ICON, PRELUDE, AnsweringService, content, loaded

FIRMWARE_TITLE, ICON_TITLE = "Choose a firmware image", "Choose a icon image"


def lines(kind, path, size):
    return [f"Preparing to process {kind}.", loaded(path, size), *PRELUDE, *FINISH, f"End {kind} processing."]


class WindowUpdate(DesktopTest):
    def test_firmware_lands_at_block_1536(self):
        self.start_service()
        before = self.disk.read_bytes()
        path = self.image(200000)
        self.open_window()
        self.click(self.firmware_button())
        self.choose(path, FIRMWARE_TITLE)
        self.wait_for_log(lines("firmware", path, 200000))
        self.assert_only_changed(before, FIRMWARE, content(200000))
        self.assertIn("verified", self.status_line())
        self.picture("done")

    def test_icon_lands_at_block_2048(self):
        self.start_service()
        before = self.disk.read_bytes()
        path = self.image(40001, "a picture=1.fif")
        self.open_window()
        self.click(self.icon_button())
        self.choose(path, ICON_TITLE)
        self.wait_for_log(lines("icon", path, 40001))
        self.assert_only_changed(before, ICON, content(40001))
        self.assertIn("verified", self.status_line())

    def test_both_images_one_after_the_other(self):
        self.start_service()
        firmware, icon = self.image(262144, "f.fds", 1), self.image(5000, "i.fif", 2)
        self.open_window()
        self.click(self.firmware_button())
        self.choose(firmware, FIRMWARE_TITLE)
        self.wait_for_log(lines("firmware", firmware, 262144))
        self.click(self.icon_button())
        # It opens where the last image was, so the name is enough.
        self.choose(icon.name, ICON_TITLE)
        self.wait_for_log(lines("firmware", firmware, 262144) + lines("icon", icon, 5000))
        self.assertEqual(self.disk_bytes(FIRMWARE, 262144), content(262144, 1))
        self.assertEqual(self.disk_bytes(ICON, 5000), content(5000, 2))

    def test_the_keyboard_is_enough(self):
        self.start_service()
        path = self.image(3000)
        self.open_window()
        self.keys("alt+f")
        self.choose(path, FIRMWARE_TITLE)
        self.wait_for_log(lines("firmware", path, 3000))
        self.wait_until_usable()
        self.keys("Tab", "space")
        self.dismiss(ICON_TITLE)

    def test_a_cancelled_choice_changes_nothing(self):
        self.start_service()
        before = self.disk.read_bytes()
        self.open_window()
        self.click(self.firmware_button())
        self.dismiss(FIRMWARE_TITLE)
        self.wait_until_usable()
        self.assertEqual(self.log(), "")
        self.assertTrue(self.has(self.firmware_button(), "SENSITIVE"))
        self.assertTrue(self.has(self.icon_button(), "SENSITIVE"))
        self.assertEqual(self.disk.read_bytes(), before)

    def test_a_missing_file_is_refused_by_the_chooser(self):
        self.open_window()
        self.click(self.firmware_button())
        self.choose(self.folder / "missing.fds", FIRMWARE_TITLE)
        self.assertIn("missing.fds", " ".join(self.alert_texts()))
        self.keys("Return")
        self.wait_until_gone("alert")
        self.dismiss(FIRMWARE_TITLE)
        self.assertEqual(self.log(), "")

    def test_a_pipe_and_an_endless_device_are_refused_by_the_chooser(self):
        """Nobody ever comes to the other end of the pipe: whoever waited for that would wait for ever."""
        pipe, endless = self.folder / "pipe.fds", self.folder / "endless.fds"
        os.mkfifo(pipe)
        endless.symlink_to("/dev/zero")
        self.open_window()
        self.click(self.firmware_button())
        self.find("dialog", FIRMWARE_TITLE)
        for path, said in ((pipe, "pipe.fds is a pipe."), (endless, "endless.fds is a device.")):
            self.choose(path, FIRMWARE_TITLE)
            self.assertIn(said, " ".join(self.alert_texts()))
            self.picture(path.stem)
            self.keys("Return")
            self.wait_until_gone("alert")
        self.dismiss(FIRMWARE_TITLE)
        self.assertEqual(self.log(), "")

    def test_a_chosen_folder_ends_the_program(self):
        before = self.disk.read_bytes()
        self.open_window()
        self.click(self.firmware_button())
        self.find("dialog", FIRMWARE_TITLE)
        self.click(self.find("push button", "Choose Folder"))
        self.assertEqual(self.exit_status(), 128 + 6)
        self.assertEqual(self.disk.read_bytes(), before)

    def test_an_empty_image_is_named(self):
        self.start_service()
        path = self.image(0)
        self.open_window()
        self.click(self.firmware_button())
        self.choose(path, FIRMWARE_TITLE)
        self.wait_for_log(["Preparing to process firmware.", f"Unabled to read file: {path}",
                           "End firmware processing."])

    def test_no_accessory_is_said(self):
        self.start_service()
        path = self.image(10)
        self.open_window(plugged=False)
        self.click(self.firmware_button())
        self.choose(path, FIRMWARE_TITLE)
        self.wait_for_log(["Preparing to process firmware.", loaded(path, 10), *PRELUDE, "Device not ready yet!",
                           "Failed writing to device.", "End firmware processing."])

    def test_a_refusal_is_seen_by_the_person(self):
        self.start_service()
        path = self.image(self.disk.stat().st_size)
        before = self.disk.read_bytes()
        self.open_window()
        self.click(self.firmware_button())
        self.choose(path, FIRMWARE_TITLE)
        self.wait_for_log(lines("firmware", path, self.disk.stat().st_size))
        self.assertIn("Refused", self.status_line())
        self.assertEqual(self.disk.read_bytes(), before)
        self.picture("refused")

    def test_what_an_earlier_update_was_told_is_not_shown_for_a_silent_service(self):
        service = self.start_service()
        path = self.image(10)
        self.open_window()
        self.click(self.firmware_button())
        self.choose(path, FIRMWARE_TITLE)
        self.wait_for_log(lines("firmware", path, 10))
        self.assertIn("verified", self.status_line())
        self.stop_service(service)
        with AnsweringService(lambda peer: peer.sendall(b"\xff garbage")):
            self.click(self.firmware_button())
            self.choose(path, FIRMWARE_TITLE)
            self.wait_for_log(2 * lines("firmware", path, 10))
        self.assertEqual(self.status_line(), "")

    def test_no_service_is_said_in_the_status_line(self):
        path = self.image(10)
        self.open_window()
        self.click(self.firmware_button())
        self.choose(path, FIRMWARE_TITLE)
        self.wait_for_log(lines("firmware", path, 10))
        self.assertIn("refused the connection", self.status_line())
