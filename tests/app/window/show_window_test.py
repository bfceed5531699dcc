"""The window as a newcomer meets it: opened from the tree, with its own command service."""

import os
import signal
import subprocess
from pathlib import Path

from desktop import PROGRAMS, DesktopTest
from road import FINISH, FIRMWARE, PRELUDE, ROOT, AnsweringService, content, loaded

SHOW = ROOT / "simulator/show-window"


class ShowWindow(DesktopTest):
    def prepare_computer(self):
        """It makes one itself."""

    def use(self, command):
        """Runs an update in the window that `command` opens, and closes it."""
        path = self.image(3000)
        with open(self.folder / "service.log", "wb") as log:
            self.window = self.start(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        self.addCleanup(self.end_all, self.window.pid)
        self.wait_until_installed()
        self.wait_until_usable()
        self.click(self.firmware_button())
        self.choose(path, "Choose a firmware image")
        self.wait_for_log(["Preparing to process firmware.", loaded(path, 3000), *PRELUDE, *FINISH,
                           "End firmware processing."])
        self.assertIn("verified", self.status_line())
        self.wait_until_usable()
        self.keys("alt+F4")
        self.assertEqual(self.exit_status(), 0, self.service_log())
        self.assertEqual(self.disk_bytes(FIRMWARE, 3000), content(3000))
        self.assertFalse(Path("/usr/local/libexec/com.corvatel.KestravHelper").exists())
        self.assertFalse(self.port_answers(), "the service is still there")

    @staticmethod
    def end_all(session):
        """What a failed case has left."""
        try:
            os.killpg(session, signal.SIGKILL)
        except ProcessLookupError:
            pass

    def test_on_a_simulated_accessory(self):
        self.use([SHOW, PROGRAMS, self.disk])

    def test_on_the_accessory_that_is_attached(self):
        self.use(self.plugged_in([SHOW, PROGRAMS]))

    def refused(self, *command, plugged=()):
        result = subprocess.run([*plugged, SHOW, PROGRAMS, *command], env=self.environment, capture_output=True,
                                text=True, timeout=self.patience, check=False)
        self.assertEqual((result.returncode, self.windows()), (1, []))
        return result.stderr

    def test_no_accessory_is_said(self):
        self.assertIn("there is no accessory", self.refused(plugged=("umockdev-run", "--")))

    def test_a_service_that_knows_no_simulated_accessory_is_said(self):
        with AnsweringService(lambda peer: None):
            self.assertIn("a command service is running already", self.refused(self.disk))
