"""The one consent of a launch, asked by the real polkit: the window belongs to a person who isn't root."""

import os
import pty
import select
import signal
import subprocess
import termios
from pathlib import Path

from desktop import PROGRAMS, DesktopTest
from road import FINISH, FIRMWARE, PRELUDE, ROOT, content, loaded
from sandbox import PASSWORD

PERSON = 4711
HELPER = Path("/usr/local/libexec/com.corvatel.KestravHelper")

DISMISSING_AGENT = """
import sys
from gi.repository import Gio, GLib
bus = Gio.bus_get_sync(Gio.BusType.SYSTEM)
interface = Gio.DBusNodeInfo.new_for_xml('''<node><interface name="org.freedesktop.PolicyKit1.AuthenticationAgent">
<method name="BeginAuthentication"><arg type="s"/><arg type="s"/><arg type="s"/><arg type="a{ss}"/><arg type="s"/>
<arg type="a(sa{sv})"/></method></interface></node>''').interfaces[0]
def dismiss(*call):
    call[-1].return_dbus_error("org.freedesktop.PolicyKit1.Error.Cancelled", "dismissed")
bus.register_object("/agent", interface, dismiss, None, None)
pid, started, uid = map(int, sys.argv[1:])
subject = ("unix-process", {"pid": GLib.Variant("u", pid), "start-time": GLib.Variant("t", started),
                            "uid": GLib.Variant("i", uid)})
bus.call_sync("org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority",
              "org.freedesktop.PolicyKit1.Authority", "RegisterAuthenticationAgent",
              GLib.Variant("((sa{sv})ss)", (subject, "C", "/agent")), None, 0, -1, None)
print("ready", flush=True)
GLib.MainLoop().run()
"""


class Consent(DesktopTest):
    def setUp(self):
        self.agent = self.terminal = self.program = None
        self.shown = b""
        super().setUp()

    # -- the computer and the person -------------------------------------------------------------------------------

    def prepare_computer(self):
        super().prepare_computer()
        self.mount_empty("/mnt")
        self.simulator = self.within_reach(ROOT / "simulator")
        self.programs = self.within_reach(PROGRAMS)
        self.add_account("person", PERSON, "admin")
        self.start_system_daemons("/usr/libexec/kestrav/kestrav-bless")
        self.start_service()

    def within_reach(self, folder):
        """The same folder at a place where the person gets to: it may lie in a home that is closed to others."""
        place = Path("/mnt") / folder.name
        place.mkdir()
        subprocess.run(["mount", "--bind", folder, place], check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", place], check=True)
        return place

    def make_home(self):
        """The case itself stays root: it may talk to the person's session, and puts things in order afterwards."""
        super().make_home()
        self.person = {"user": PERSON, "group": PERSON, "extra_groups": []}
        for path in (self.folder, self.disk, self.home, self.folder / "runtime"):
            os.chown(path, PERSON, PERSON)
        Path("/etc/dbus-1/session-local.conf").write_text(
            '<busconfig><policy context="default"><allow user="root"/></policy></busconfig>')

    # -- the window and who answers for the person -----------------------------------------------------------------

    def launch(self, plugged=True):
        """Stops short of becoming the program, so that there is somebody to ask when it does."""
        gate, number = self.folder / "gate", self.folder / "pid"
        os.mkfifo(gate)
        os.chown(gate, PERSON, PERSON)
        program = ["sh", "-c", f'echo $$ >{number}; read -r go <{gate}; exec "$0"', self.programs / "kestrav"]
        command = [self.simulator / "with-accessory", *self.plugged_in(program)[1:]]
        window = self.start(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        self.wait_until(lambda: number.exists() and number.read_text().endswith("\n"), "the program does not start")
        self.program = int(number.read_text())
        self.agent(self.program)
        gate.write_text("go\n")
        return window

    def dismisser(self, pid):
        started = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[19]
        agent = subprocess.Popen(["/usr/bin/python3", "-c", DISMISSING_AGENT, str(pid), started, str(PERSON)],
                                 stdout=subprocess.PIPE, **self.person)
        self.addCleanup(agent.stdout.close)
        self.addCleanup(self.end, agent)
        self.assertEqual(agent.stdout.readline(), b"ready\n")

    def password_asker(self, pid):
        ready, agents_end = os.pipe()
        child, self.terminal = pty.fork()
        if child == 0:
            os.setgroups([])
            os.setresgid(PERSON, PERSON, PERSON)
            os.setresuid(PERSON, PERSON, PERSON)
            os.set_inheritable(agents_end, True)
            os.execve("/usr/bin/pkttyagent", ["pkttyagent", "--process", str(pid), "--notify-fd", str(agents_end)], {})
        self.addCleanup(os.close, self.terminal)
        self.addCleanup(os.waitpid, child, 0)
        self.addCleanup(os.kill, child, signal.SIGKILL)
        os.close(agents_end)
        self.assertTrue(select.select([ready], [], [], self.patience)[0], "the agent is not ready")
        os.close(ready)

    def prompts(self):
        while select.select([self.terminal], [], [], 0)[0]:
            self.shown += os.read(self.terminal, 512)
        return self.shown.count(b"Password: ")

    def type_password(self, password):
        self.wait_until(lambda: self.prompts() == 1, "nobody is asked for a password")
        # What is typed before the echo is turned off is thrown away.
        self.wait_until(lambda: not termios.tcgetattr(self.terminal)[3] & termios.ECHO, "the password would be shown")
        os.write(self.terminal, password.encode() + b"\n")

    def assert_told_and_ended(self, status):
        """One alert, nothing installed, exit status 1."""
        told = [text for text in self.alert_texts() if text.startswith("Authorization failure: ")]
        self.assertEqual(len(told), 1)
        self.assertIn(f"(status {status})", told[0])
        self.picture("alert")
        self.keys("Return")
        self.assertEqual(self.exit_status(), 1)
        self.assertFalse(HELPER.exists())
        self.assertFalse(self.store.parent.exists())

    def test_the_right_password_installs_and_serves_for_an_update_too(self):
        self.agent = self.password_asker
        self.open_window(ready=False)
        self.wait_until(lambda: self.prompts() == 1, "nobody is asked for a password")
        self.assertIn(b"install the helper", self.shown)
        self.assertFalse(HELPER.exists())
        self.assertFalse(self.is_in_state(("push button", "Update Firmware…"), "SENSITIVE"))
        self.type_password(PASSWORD)
        self.wait_until_usable()
        self.wait_until_installed()
        self.assertEqual(HELPER.stat().st_uid, 0)
        path = self.image(3000)
        self.click(self.firmware_button())
        self.choose(path, "Choose a firmware image")
        self.wait_for_log(["Preparing to process firmware.", loaded(path, 3000), *PRELUDE, *FINISH,
                           "End firmware processing."])
        self.assertIn("verified", self.status_line())
        self.assertEqual(self.disk_bytes(FIRMWARE, 3000), content(3000))
        self.assertEqual(self.prompts(), 1)
        self.keys("alt+F4")
        self.assertEqual(self.exit_status(), 0)
        self.assertEqual(self.store.stat().st_uid, PERSON)

    def test_the_window_says_what_is_asked_for_and_can_be_closed_instead(self):
        self.agent = self.password_asker
        self.open_window(ready=False)
        self.wait_until(lambda: self.prompts() == 1, "nobody is asked for a password")
        self.wait_for_panel("The helper that may reach the accessory's disk is being installed. "
                            "That takes an administrator's password")
        self.picture("asking")
        asking = subprocess.run(["pgrep", "-x", "pkexec", "-P", str(self.program)], capture_output=True, text=True,
                                check=True).stdout.strip()
        # A window manager that has just put the window up may keep the first key for itself.
        self.close_with_key()
        self.assertEqual(self.exit_status(), 0)
        self.wait_until(lambda: not Path("/proc", asking).exists(), "the question is still there")
        self.assertFalse(HELPER.exists())

    def test_a_wrong_password_is_told_and_ends_the_program(self):
        self.agent = self.password_asker
        self.open_window(ready=False)
        self.type_password("wrong")
        self.assert_told_and_ended(-60005)

    def test_a_dismissed_prompt_is_told_and_ends_the_program(self):
        self.agent = self.dismisser
        self.open_window(ready=False)
        self.assert_told_and_ended(-60006)

    def test_nobody_to_ask_is_told_and_ends_the_program(self):
        self.agent = lambda pid: None
        self.open_window(ready=False)
        self.assert_told_and_ended(-60007)
