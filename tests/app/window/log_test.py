"""The log's menu and keys: what is copied and saved is its content, byte for byte."""

import subprocess

from desktop import DesktopTest
from road import PRELUDE, loaded


class WindowLog(DesktopTest):
    def setUp(self):
        super().setUp()
        path = self.image(10)
        self.open_window(plugged=False)
        self.click(self.firmware_button())
        self.choose(path, "Choose a firmware image")
        lines = ["Preparing to process firmware.", loaded(path, 10), *PRELUDE, "Device not ready yet!",
                 "Failed writing to device.", "End firmware processing."]
        self.wait_for_log(lines)
        self.content = "".join(line + "\r\n" for line in lines).encode()
        self.wait_until_usable()

    def clipboard(self):
        return subprocess.run(["xclip", "-selection", "clipboard", "-o"], env=self.environment, capture_output=True,
                              check=False, timeout=10).stdout

    def open_menu(self):
        self.wait_until(lambda: len(self.windows()) == 1, "there is a menu already")
        self.click(self.find("text", "Log"), button=3)
        self.wait_until(lambda: len(self.windows()) == 2, "there is no menu")

    def test_the_menu_selects_and_copies_everything(self):
        self.open_menu()
        self.picture("menu")
        self.keys("a")
        self.open_menu()
        self.keys("c")
        self.wait_until(lambda: self.clipboard() == self.content, "the clipboard does not hold the log")

    def test_keys_select_and_copy_everything(self):
        self.keys("Tab", "Tab", "ctrl+a", "ctrl+c")
        self.wait_until(lambda: self.clipboard() == self.content, "the clipboard does not hold the log")

    def test_the_menu_saves_everything(self):
        self.open_menu()
        self.keys("s")
        self.save_as(self.folder / "saved from the menu.log")

    def test_a_key_saves_everything(self):
        self.keys("Tab", "Tab", "ctrl+s")
        self.save_as(self.folder / "saved.log")

    def save_as(self, path):
        self.find("dialog", "Save the log")
        self.name_a_file(path)
        self.wait_until(path.exists, "nothing was saved")
        self.assertEqual(path.read_bytes(), self.content)

    def test_it_cannot_be_written_into(self):
        self.keys("Tab", "Tab")
        self.write("intruder")
        self.keys("Return", "BackSpace", "Delete")
        self.assertEqual(self.log(), self.content.decode().replace("\r\n", "\n"))
