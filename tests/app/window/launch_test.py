"""The launch: the helper's installation, its failure, and a display that is missing."""

import os
import subprocess
from pathlib import Path

from desktop import DesktopTest, PROGRAMS


class Launch(DesktopTest):
    def test_it_installs_the_helper_and_says_so_once(self):
        self.open_window()
        self.assertTrue(Path("/usr/local/libexec/com.corvatel.KestravHelper").is_file())
        self.assertEqual(self.output.read_text().count("Installed successfully!"), 1)
        self.assertEqual(self.log(), "")
        self.assertFalse(self.store.parent.exists())

    def test_it_installs_at_every_launch(self):
        for _ in range(2):
            self.open_window()
            self.close_with_key()
            self.assertEqual(self.exit_status(), 0)
            os.remove("/usr/local/libexec/com.corvatel.KestravHelper")

    def test_nothing_can_be_pressed_before_it_is_installed(self):
        """A prompt for a password may stand there for minutes."""
        installer, go_on = Path("/usr/libexec/kestrav/kestrav-bless"), self.folder / "go-on"
        installer.rename(f"{installer}.real")
        installer.write_text(f'#!/bin/sh\nuntil [ -e {go_on} ]; do sleep 0.05; done\nexec {installer}.real "$@"\n')
        installer.chmod(0o755)
        self.open_window(ready=False)
        buttons = self.firmware_button(), self.icon_button()
        for button in buttons:
            self.wait_until(lambda button=button: not self.has(button, "SENSITIVE"), "a button is not locked")
            self.press_as_a_screen_reader(button)
            self.click(button)
        self.keys("alt+f", "ctrl+q")
        self.assertFalse(Path("/usr/local/libexec/com.corvatel.KestravHelper").exists())
        go_on.touch()
        self.wait_until_usable()
        self.assertEqual(len(self.windows()), 1)
        self.wait_until_installed()
        self.keys("alt+i")
        self.dismiss("Choose a icon image")

    def test_a_failure_shows_one_alert_and_ends_with_status_1(self):
        os.remove("/usr/libexec/kestrav/kestrav-bless")
        self.open_window(ready=False)
        said = self.alert_texts()
        self.assertEqual(len([text for text in said if text.startswith("Authorization failure: ")]), 1, said)
        self.picture("alert")
        self.keys("Return")
        self.assertEqual(self.exit_status(), 1)
        self.assertFalse(self.store.parent.exists())

    def test_an_installer_that_refuses_is_told_in_the_same_way(self):
        os.chmod("/usr/libexec/kestrav/kestrav-helper", 0o777)
        self.open_window(ready=False)
        said = self.alert_texts()
        self.assertTrue(any(text.startswith("Authorization failure: ") and "kestrav-helper" in text for text in said),
                        said)
        self.keys("Escape")
        self.assertEqual(self.exit_status(), 1)

    def start_without_display(self, **environment):
        environment = {**self.environment, **environment}
        del environment["QT_QPA_PLATFORM"]
        if not environment["DISPLAY"]:
            del environment["DISPLAY"]
        return subprocess.run([PROGRAMS / "kestrav"], env=environment, capture_output=True, text=True, timeout=20,
                              check=False)

    def assert_explained(self, result):
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout, "")
        self.assertEqual(result.stderr, "kestrav: There is no display to open the window on. "
                                        "Start it from a desktop session.\n")

    def test_a_missing_display_is_a_sentence(self):
        self.assert_explained(self.start_without_display(DISPLAY=""))

    def test_a_display_that_nobody_serves_is_a_sentence(self):
        self.assert_explained(self.start_without_display(DISPLAY=":4711"))

    def test_an_unknown_kind_of_display_is_a_sentence(self):
        environment = {**self.environment, "QT_QPA_PLATFORM": "nowhere"}
        self.assert_explained(subprocess.run([PROGRAMS / "kestrav"], env=environment, capture_output=True, text=True,
                                             timeout=20, check=False))
