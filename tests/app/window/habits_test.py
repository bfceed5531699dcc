"""The window beside the desktop's other programs: a second start, notifications, and a message that outlives it."""

import os
import signal
import subprocess
import sys
from pathlib import Path

from desktop import PROGRAMS, DesktopTest

TITLE = "Choose a firmware image"

# Stands in for the desktop's part that shows notifications, and prints each.
DESKTOP = """
from gi.repository import Gio, GLib
NODE = Gio.DBusNodeInfo.new_for_xml('''<node><interface name="org.freedesktop.Notifications"><method name="Notify">
<arg type="s"/><arg type="u"/><arg type="s"/><arg type="s"/><arg type="s"/><arg type="as"/><arg type="a{sv}"/>
<arg type="i"/><arg type="u" direction="out"/></method></interface></node>''')
def called(_bus, _sender, _path, _interface, _method, parameters, invocation):
    name, _, _, summary, body, _, hints, _ = parameters.unpack()
    print(name, hints["urgency"], summary, body, sep="|", flush=True)
    invocation.return_value(GLib.Variant("(u)", (1,)))
def acquired(bus, _name):
    bus.register_object("/org/freedesktop/Notifications", NODE.interfaces[0], called, None, None)
Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.Notifications", 0, acquired,
                 lambda *_: print("ready", flush=True), None)
GLib.MainLoop().run()
"""


class Habits(DesktopTest):
    def send(self, path=None):
        self.click(self.firmware_button())
        self.choose(path or self.image(3000), TITLE)

    # -- a second start --------------------------------------------------------------------------------------------

    def second_start(self):
        return subprocess.run([PROGRAMS / "kestrav"], env=self.environment, capture_output=True, text=True,
                              timeout=4 * self.patience, check=False)

    def is_active(self, title):
        result = subprocess.run(["xdotool", "getactivewindow", "getwindowname"], env=self.environment,
                                capture_output=True, text=True, check=False)
        return result.stdout.strip() == title

    def test_a_second_start_raises_the_first(self):
        self.open_window()
        window = self.xdotool("search", "--onlyvisible", "--name", "^Kestrav$").split()[-1]
        self.xdotool("windowminimize", window)
        self.wait_until(lambda: not self.windows(), "the window is not minimised")
        second = self.second_start()
        self.assertEqual((second.returncode, second.stdout), (0, ""), second.stderr)
        self.wait_until(lambda: self.is_active("Kestrav"), "the first window is not raised")
        self.assertEqual(len(self.windows()), 1)
        self.wait_until_usable()
        self.keys("alt+f")
        self.find("dialog", TITLE)
        self.assertEqual(self.second_start().returncode, 0)
        self.wait_until(lambda: self.is_active(TITLE), "the chooser is not raised")
        self.dismiss(TITLE)

    def test_without_a_bus_each_start_opens_a_window(self):
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/not/there"
        for count in (1, 2):
            self.launch()
            self.wait_until(lambda count=count: len(self.windows()) == count, f"window {count} does not come up")

    # -- the end of an update --------------------------------------------------------------------------------------

    def test_the_end_is_notified_urgently_when_it_is_none(self):
        desktop = self.start([sys.executable, "-c", DESKTOP], stdout=subprocess.PIPE, text=True)
        self.addCleanup(desktop.stdout.close)
        self.assertEqual(desktop.stdout.readline(), "ready\n")
        self.open_window()
        self.send()
        self.assertEqual(desktop.stdout.readline(),
                         "Kestrav|2|Not written: the service is not running.|'systemctl start kestrav-commandd.socket',"
                         " then send the image again.\n")
        self.wait_until_usable()
        self.start_service()
        self.send()
        self.assertEqual(desktop.stdout.readline(),
                         "Kestrav|1|The firmware is on the accessory, read back and equal.|You may unplug it.\n")

    # -- what outlives it ------------------------------------------------------------------------------------------

    def witnesses(self):
        """Those of this case: others may run beside it."""
        found = subprocess.run(["pgrep", "-x", "kestrav-witness"], capture_output=True, text=True, check=False)
        return [process for process in found.stdout.split() if self.is_at_home(process)]

    def is_at_home(self, process):
        try:
            return f"HOME={self.home}\0".encode() in Path(f"/proc/{process}/environ").read_bytes()
        except OSError:
            return False

    def test_a_stop_is_told_by_a_message_that_outlives_it(self):
        self.open_window()
        self.click(self.firmware_button())
        self.find("dialog", TITLE)
        self.click(self.find("push button", "Choose Folder"))
        self.assertEqual(self.exit_status(), 128 + signal.SIGABRT)
        self.known = {}
        said = " ".join(self.alert_texts())
        self.assertIn("Kestrav has stopped.", said)
        self.assertIn("Nothing was written to the accessory.", said)
        self.assertIn("is a folder. Choose the file in it that holds the image.", said)
        self.assertIn("journalctl -t kestrav", said)
        self.picture("last-words")
        self.keys("Return")
        self.wait_until(lambda: not self.windows() and not self.witnesses(), "the message stays")

    def test_a_window_that_is_ended_on_purpose_leaves_no_message(self):
        self.open_window()
        process = int(self.xdotool("search", "--onlyvisible", "--name", "^Kestrav$", "getwindowpid").split()[-1])
        self.assertGreater(process, 1)
        os.kill(process, signal.SIGTERM)
        self.assertEqual(self.exit_status(), 128 + signal.SIGTERM)
        self.wait_until(lambda: not self.witnesses(), "somebody waits on")
        self.assertEqual(self.windows(), [])
        self.open_window()
        self.close_with_key()
        self.assertEqual(self.exit_status(), 0)
        self.wait_until(lambda: not self.witnesses(), "somebody waits on")
        self.assertEqual(self.windows(), [])
