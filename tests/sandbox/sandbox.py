"""A part of this computer that belongs to one case, as far as the case asks for it: the folders that an installation
changes, people, the system's bus with polkit, a display. What tests in C++ have of it is in Sandbox.h and SystemDaemons.h;
the scripts beside them do the work for both.

A case's network and mounts are its own when this begins: see `isolated`.
"""

import fcntl
import shutil
import socket
import struct
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
PASSWORD = "secret"  # of every account that add-account makes


def run(*command, **options):
    return subprocess.run([*map(str, command)], check=True, capture_output=True, text=True, **options).stdout


def bring_loopback_up():
    """A new network namespace has its loopback interface down; SIOCSIFFLAGS with IFF_UP raises it."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        fcntl.ioctl(any_socket, 0x8914, struct.pack("16sH14x", b"lo", 1))


def mount_points():
    """Decoded as far as the cases need: no blanks in their names."""
    with open("/proc/self/mountinfo") as mounts:
        return [line.split()[4] for line in mounts]


def unmount_drives():
    """Takes the machine's own drives out of this case's view; the mounts are private, so they stay where they are."""
    for place in mount_points():
        if place.startswith(("/media", "/run/media")):
            subprocess.run(["umount", "-l", place], check=False)


class SandboxTest(unittest.TestCase):
    pause = 0.02  # seconds between two looks at what is waited for
    screen = "1600x1200"  # how large the display is, in pixels
    display_options = ()  # of Xvfb, beside its usual ones

    def setUp(self):
        bring_loopback_up()
        unmount_drives()
        self.folder = Path(tempfile.mkdtemp(prefix="kestrav-sandbox."))
        self.addCleanup(self.remove_folder)

    def remove_folder(self):
        """A simulation that was killed removes its own part meanwhile."""
        def complain(_function, _path, reason):
            if not isinstance(reason[1], FileNotFoundError):
                raise reason[1]

        shutil.rmtree(self.folder, onerror=complain)

    def wait_until(self, condition, otherwise, process=None, seconds=20):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end or (process is not None and process.poll() is not None):
                self.fail(f"{otherwise}\n{self.more_of_a_failure()}")
            time.sleep(self.pause)

    def more_of_a_failure(self):
        """What else is to be told when something was waited for in vain."""
        return ""

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.kill()
        process.wait(timeout=20)

    # -- folders and people ----------------------------------------------------------------------------------------

    def own_folders(self):
        """What is installed from here on stays in this case."""
        scratch = self.folder / "own"
        scratch.mkdir()
        for place in reversed(run(HERE / "own-folders", scratch).split()):
            self.addCleanup(run, "umount", "-l", place)

    def mount_empty(self, folder):
        Path(folder).mkdir(exist_ok=True)
        run("mount", "-t", "tmpfs", "-o", "mode=755", "sandbox", folder)
        self.addCleanup(run, "umount", "-l", folder)

    @staticmethod
    def add_account(name, uid, *admin):
        run(HERE / "add-account", name, uid, *admin)

    # -- the system's bus and polkit -------------------------------------------------------------------------------

    def start_system_daemons(self, installer):
        """With the project's own actions, and the installer at that place."""
        run(HERE / "add-actions", installer)
        self.start_daemon("/usr/bin/dbus-daemon", "--system", "--nofork", "--nopidfile")
        self.wait_until(lambda: self.bus_has("org.freedesktop.DBus"), "there is no system bus")
        self.polkit = self.start_daemon("/usr/lib/polkit-1/polkitd", "--no-debug")
        self.wait_until(lambda: self.bus_has("org.freedesktop.PolicyKit1"), "there is no polkitd")

    def start_daemon(self, *command):
        daemon = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, daemon)
        return daemon

    @staticmethod
    def bus_has(name):
        answer = subprocess.run(["dbus-send", "--system", "--print-reply", "--dest=org.freedesktop.DBus", "/",
                                 "org.freedesktop.DBus.NameHasOwner", f"string:{name}"], capture_output=True,
                                text=True, check=False)
        return "boolean true" in answer.stdout

    # -- a display -------------------------------------------------------------------------------------------------

    def start_display(self, start, environment):
        """A display, the person's bus and a window manager, each started with `start`; `environment` learns of them."""
        quiet = {"stdin": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        told = (("DISPLAY", ":", ["Xvfb", "-displayfd", "1", "-screen", "0", f"{self.screen}x24", "-nolisten", "tcp",
                                  "-noreset", *self.display_options]),
                ("DBUS_SESSION_BUS_ADDRESS", "", ["dbus-daemon", "--session", "--nofork", "--print-address=1",
                                                 f"--address=unix:path={self.folder}/session-bus"]))
        for name, before, command in told:
            server = start(command, stdout=subprocess.PIPE, **quiet)
            self.addCleanup(server.stdout.close)
            environment[name] = before + server.stdout.readline().decode().strip()
        start(["openbox"], stdout=subprocess.DEVNULL, **quiet)
        self.wait_until(lambda: "window id" in run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK", env=environment),
                        "there is no window manager")
        self.press_the_first_key(environment)

    def press_the_first_key(self, environment):
        """Upon the first key of a display the window manager takes its own keys anew, and whoever presses one of them
        meanwhile does so in vain. It answers messages in their order: it is done once it has answered a later one."""
        def answers():
            run("xdotool", "set_num_desktops", 7, env=environment)
            return "= 7" in run("xprop", "-root", "_NET_NUMBER_OF_DESKTOPS", env=environment)

        run("xdotool", "key", "shift", env=environment)
        self.wait_until(answers, "the window manager does not answer")
