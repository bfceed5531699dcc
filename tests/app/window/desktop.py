"""A desktop for one case: a display, a window manager, the bus that screen readers listen on, and a person.

The person sees the window through its accessibility tree and through pictures of the screen, and acts with the real
mouse and keyboard of that display.
"""

import os
import re
import shutil
import signal
import subprocess

from road import PROGRAMS, RoadTest
from sandbox import run

# Set to a folder to keep the pictures that the cases take.
PICTURES = os.environ.get("KESTRAV_PICTURES")

# What newer accessibility libraries call a role that has the name of Debian 12's here.
NEWER_ROLES = {"button": "push button"}


class DesktopTest(RoadTest):
    patience = 30  # seconds for what comes at once on an idle machine
    between_keys = 5  # milliseconds from one letter to the next
    scale = "1"
    locale = "C.UTF-8"
    look = {}
    known = None  # by role and name, the objects that have been found in the open window
    person = {}  # whose desktop it is, as subprocess takes it; the case's own user as a rule

    def setUp(self):
        super().setUp()
        if os.stat("/etc").st_uid != 0:
            self.skipTest("the installer works for the real root only")
        self.prepare_computer()
        self.make_home()
        self.bring_up_the_desktop()
        self.window = None

    def wait_until(self, condition, otherwise, process=None, seconds=None):
        try:
            super().wait_until(condition, otherwise, process, seconds or self.patience)
        except self.failureException:
            if PICTURES:
                self.picture("failure")
            raise

    # -- the computer ----------------------------------------------------------------------------------------------

    def prepare_computer(self):
        """What the window installs at its launch stays in this case: the mounts are the case's own."""
        self.own_folders()
        self.install("kestrav-bless")
        # What the installer copies into place; no case starts it.
        helper = "kestrav-helper" if (PROGRAMS / "kestrav-helper").exists() else "kestrav-commandd"
        self.install(helper, "kestrav-helper")

    @staticmethod
    def install(program, name=None):
        os.makedirs("/usr/libexec/kestrav", exist_ok=True)
        place = f"/usr/libexec/kestrav/{name or program}"
        shutil.copy(PROGRAMS / program, place)
        os.chmod(place, 0o755)

    def make_home(self):
        self.home = self.folder / "home"
        self.home.mkdir()
        runtime = self.folder / "runtime"
        runtime.mkdir(mode=0o700)
        keep = ("PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS")
        self.environment = {name: os.environ[name] for name in keep if name in os.environ}
        self.environment.update(
            HOME=str(self.home), XDG_RUNTIME_DIR=str(runtime), LC_ALL=self.locale, QT_QPA_PLATFORM="xcb",
            QT_SCALE_FACTOR=self.scale, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", **self.look)
        self.store = self.home / ".local/share/com.corvatel.Kestrav/CocoaAppCD.storedata"

    def start(self, command, **options):
        process = subprocess.Popen([*map(str, command)], env=self.environment, start_new_session=True, **self.person,
                                   **options)
        self.addCleanup(self.end_with_children, process)
        return process

    @staticmethod
    def end_with_children(process):
        """A window that still installs must not do so on the computer when the case's own folders have gone."""
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)
        process.wait(timeout=20)

    def bring_up_the_desktop(self):
        self.known = {}
        self.start_display(self.start, self.environment)
        os.environ.update({name: self.environment[name] for name in
                           ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "HOME")})

    # -- the program -----------------------------------------------------------------------------------------------

    def open_window(self, plugged=True, ready=True):
        """Starts the program and waits until the window can be used, with the mouse and with the keyboard."""
        self.known = {}
        self.window = self.launch(plugged)
        if ready:
            self.wait_until_installed()
            self.wait_until_usable()
        return self.window

    def wait_until_installed(self):
        self.wait_until(lambda: self.panel().startswith("Nothing has been sent yet."), "nothing was installed", self.window)

    def wait_until_usable(self):
        """What comes earlier is thrown away, as it is while an update runs."""
        for state in ("SENSITIVE", "FOCUSED"):
            self.wait_until(lambda: self.is_in_state(("push button", "Update Firmware…"), state),
                            f"the firmware button is not {state}")

    def launch(self, plugged=True):
        program = [PROGRAMS / "kestrav"]
        command = self.plugged_in(program) if plugged else ["umockdev-run", "--", *program]
        self.output = self.folder / "kestrav.out"
        with open(self.output, "wb") as output:
            return self.start(command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT)

    def close_with_key(self):
        self.keys("alt+F4")
        self.wait_until(lambda: self.window.poll() is not None, "the window stays open")

    def exit_status(self):
        """As a shell says it: 128 and the signal's number where a signal ended the program."""
        status = self.window.wait(timeout=self.patience)
        return status if status >= 0 else 128 - status

    # -- what the person sees --------------------------------------------------------------------------------------

    def atspi(self):
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi
        Atspi.set_timeout(self.patience * 1000, self.patience * 1000)
        return Atspi

    def nodes(self):
        """Every accessible object of the program, outermost first. It may change while it is walked."""
        desktop = self.atspi().get_desktop(0)
        found = []

        def walk(node):
            if node is None:
                return
            node.clear_cache()
            found.append(node)
            for index in range(node.get_child_count()):
                walk(node.get_child_at_index(index))

        try:
            for index in range(desktop.get_child_count()):
                program = desktop.get_child_at_index(index)
                if program is not None and program.get_name() == "kestrav":
                    walk(program)
        except Exception:  # pylint: disable=broad-except; an object that is gone by now has many ways to say so
            pass
        return found

    def look_for(self, role, name=None):
        """The showing object of this role and name, or None. The one that was found the last time is looked at first:
        walking the tree asks the program several questions about each object."""
        known = self.known.get((role, name))
        if known is not None and self.is_showing(known):
            return known
        for node in self.nodes():
            try:
                found = self.role(node) == role and name in (None, node.get_name()) and self.has(node, "SHOWING")
            except Exception:  # pylint: disable=broad-except
                continue
            if found:
                self.known[role, name] = node
                return node
        return None

    @staticmethod
    def role(node):
        said = node.get_role_name()
        return NEWER_ROLES.get(said, said)

    def names(self, role):
        """Of all that has this role and is not gone meanwhile."""
        names = []
        for node in self.nodes():
            try:
                names += [node.get_name()] if self.role(node) == role else []
            except Exception:  # pylint: disable=broad-except
                continue
        return names

    def is_showing(self, node):
        try:
            node.clear_cache()
            return self.has(node, "SHOWING")
        except Exception:  # pylint: disable=broad-except; it is gone
            return False

    def find(self, role, name=None, seconds=None):
        found = []
        self.wait_until(lambda: found.append(self.look_for(role, name)) or found[-1], f"there is no {role} {name}",
                        seconds=seconds)
        return found[-1]

    def has(self, node, state):
        return node.get_state_set().contains(getattr(self.atspi().StateType, state))

    def is_in_state(self, role_and_name, state):
        """Whether there is such an object and it is in this state; it may go away meanwhile."""
        node = self.look_for(*role_and_name)
        try:
            return node is not None and self.has(node, state)
        except Exception:  # pylint: disable=broad-except
            return False

    def wait_until_gone(self, role, name=None):
        self.wait_until(lambda: self.look_for(role, name) is None, f"the {role} {name} is still there")

    def firmware_button(self):
        return self.find("push button", "Update Firmware…")

    def icon_button(self):
        return self.find("push button", "Update Icon…")

    def text_of(self, role, name):
        node = self.look_for(role, name)
        try:
            return "" if node is None else self.atspi().Text.get_text(node, 0, -1)
        except Exception:  # pylint: disable=broad-except
            return ""

    def log(self):
        """The log as shown: its lines, each of them ended."""
        return self.text_of("text", "Log")

    def status_line(self):
        return self.text_of("text", "System message")

    def panel(self):
        """What the window says of the newest update, as a screen reader reads it out."""
        node = self.look_for("notification")
        try:
            return "" if node is None else node.get_name()
        except Exception:  # pylint: disable=broad-except
            return ""

    def wait_for_panel(self, words):
        self.wait_until(lambda: words in self.panel(), f"the panel does not say {words!r}")

    def wait_for_log(self, lines):
        expected = "".join(line + "\n" for line in lines)
        self.wait_until(lambda: self.log() == expected, f"the log is not {expected!r}")

    def alert_texts(self):
        """The texts of the alert that has come up, or is to come, once it can be answered."""
        self.find("alert")
        self.wait_until(lambda: self.is_in_state(("push button", "OK"), "FOCUSED"), "the alert has no focus")
        return self.names("label")

    def windows(self):
        """The windows on the screen that are the program's: menus, too, which are no part of the tree."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "^kestrav$"], env=self.environment,
                               capture_output=True, text=True, check=False)
        return found.stdout.split()

    def box(self, node):
        extents = self.atspi().Component.get_extents(node, self.atspi().CoordType.SCREEN)
        return extents.x, extents.y, extents.width, extents.height

    def picture(self, name):
        """Takes a picture of the screen and gives its path."""
        path = self.folder / f"{name}.png"
        run("import", "-window", "root", path, env=self.environment)
        if PICTURES:
            shutil.copy(path, os.path.join(PICTURES, f"{self.id().split('.')[-1]}-{name}.png"))
        return path

    @staticmethod
    def differing_pixels(one, other, box):
        x, y, width, height = box
        crop = f"{width}x{height}+{x}+{y}"
        result = subprocess.run(["compare", "-metric", "AE", "-extract", crop, one, other, "null:"],
                                capture_output=True, text=True, check=False)
        return int(float(re.match(r"[\d.e+]+", result.stderr).group()))

    # -- what the person does --------------------------------------------------------------------------------------

    def xdotool(self, *arguments):
        return run("xdotool", *arguments, env=self.environment)

    def keys(self, *names):
        for name in names:
            self.xdotool("key", "--clearmodifiers", name)

    def write(self, text):
        self.xdotool("type", "--delay", self.between_keys, text)

    def click(self, node, button=1):
        x, y, width, height = self.box(node)
        self.xdotool("mousemove", x + width // 2, y + height // 2, "click", button)

    def choose(self, path, title):
        """Names a file in the chooser that has come up, and confirms."""
        self.find("dialog", title)
        self.name_a_file(path)

    def press_as_a_screen_reader(self, node):
        """Not through the pointer and the keyboard; a disabled button may say that it can't be pressed."""
        try:
            self.atspi().Action.do_action(node, 0)
        except Exception:  # pylint: disable=broad-except
            pass

    def dismiss(self, title):
        """Leaves the chooser that has come up, or is to come, without a choice."""
        self.find("dialog", title)
        self.wait_until(lambda: self.is_in_state(("text", "File name:"), "FOCUSED"), "the chooser has no focus")
        self.keys("Escape")
        self.wait_until_gone("dialog", title)

    def name_a_file(self, path):
        """In the chooser that has come up, whichever it is."""
        field = ("text", "File name:")
        self.wait_until(lambda: self.is_in_state(field, "FOCUSED"), "the chooser has no focus")
        self.keys("ctrl+a")
        self.write(str(path))
        self.wait_until(lambda: self.text_of(*field) == str(path), "the name was not taken")
        self.keys("Return")
