"""What Debian's screen reader has spoken of an update, by its own log.

The speech service is the real one, with a voice that makes no sound and an output that needs no sound card.
"""

import os
import pty
import re
import subprocess
import threading

from desktop import DesktopTest

SPOKEN = re.compile(r"SPEECH OUTPUT: '(.*)'")
QUIET = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
SPEECH_SERVICE = """AddModule "silent" "sd_generic" "silent.conf"
DefaultModule silent
AudioOutputMethod "libao"
"""
VOICE = """GenericExecuteSynth "true"
AddVoice "en" "MALE1" "nobody"
"""

# To write an event down it asks for all about its source, and what comes while it is more than fifty events behind it drops.
# Here it has all the time that it needs, however busy the computer is.
PATIENT = """import re
from orca import debug, event_manager
debug.eventDebugFilter = re.compile("(?!)")
event_manager.EventManager._inFlood = lambda _: False
event_manager.EventManager._inDeluge = lambda _: False
"""


class Orca(DesktopTest):
    patience = 90  # it tells of all that happens, one after the other

    def setUp(self):
        super().setUp()
        self.spoken = []
        self.start_speech_service()
        customizations = self.home / ".local/share/orca/orca-customizations.py"
        customizations.parent.mkdir(parents=True)
        customizations.write_text(PATIENT)
        # It does not start where another one runs, and there may be a person's own, or another case's.
        alone = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc"]
        self.start([*alone, "orca", "--debug-file", self.kept_log(), "--enable", "speech", "--disable", "braille"], **QUIET)
        self.wait_until_heard("Screen reader on.")

    def start_speech_service(self):
        settings = self.folder / "speech"
        (settings / "modules").mkdir(parents=True)
        (settings / "speechd.conf").write_text(SPEECH_SERVICE)
        (settings / "modules/silent.conf").write_text(VOICE)
        (self.home / ".libao").write_text("default_driver=null\n")
        socket = self.folder / "runtime/speech-dispatcher/speechd.sock"
        socket.parent.mkdir()
        self.start(["speech-dispatcher", "--run-single", "--timeout", "0", "--config-dir", settings, "--log-dir", settings,
                    "--socket-path", socket], **QUIET)
        self.wait_until(socket.exists, "the speech service does not listen")

    def kept_log(self):
        """The name of a terminal from which the log is kept: into a file it comes late, and in pieces."""
        ours, its = pty.openpty()

        def keep():
            with open(ours, encoding="utf-8", errors="replace") as log:
                try:
                    for line in log:
                        self.spoken += SPOKEN.findall(line)
                except OSError:
                    pass  # nobody has the other end any more

        reader = threading.Thread(target=keep)
        reader.start()
        self.addCleanup(reader.join)
        self.addCleanup(os.close, its)
        return os.ttyname(its)

    def wait_until_heard(self, words):
        self.wait_until(lambda: any(words in said for said in self.spoken), f"nobody says {words!r}")

    def more_of_a_failure(self):
        return "\n".join(["It says:", *self.spoken, super().more_of_a_failure()])

    def send(self):
        self.click(self.firmware_button())
        self.choose(self.image(3000), "Choose a firmware image")

    def test_a_success_is_spoken(self):
        self.start_service()
        self.open_window()
        self.send()
        self.wait_until_heard("The firmware is on the accessory, read back and equal. You may unplug it.")

    def test_a_failure_is_spoken(self):
        self.open_window()
        self.send()
        self.wait_until_heard("Not written: the service is not running. "
                              "'systemctl start kestrav-commandd.socket', then send the image again.")
