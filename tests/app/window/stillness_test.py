"""The indicator of somebody who has asked the desktop for less motion."""

import subprocess
import sys

from desktop import DesktopTest
from road import AnsweringService

# Stands in for the desktop's portal, with the settings that it is given, and prints what it is asked for.
PORTAL = """
import sys
from gi.repository import Gio, GLib
NODE = Gio.DBusNodeInfo.new_for_xml('''<node><interface name="org.freedesktop.portal.Settings"><method name="ReadAll">
<arg type="as"/><arg type="a{sa{sv}}" direction="out"/></method></interface></node>''')
def called(_bus, _sender, _path, _interface, _method, parameters, invocation):
    invocation.return_value(GLib.Variant.parse(GLib.VariantType("(a{sa{sv}})"), sys.argv[1]))
    print(*parameters.unpack()[0], flush=True)
def acquired(bus, _name):
    bus.register_object("/org/freedesktop/portal/desktop", NODE.interfaces[0], called, None, None)
Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.portal.Desktop", 0, acquired,
                 lambda *_: print("ready", flush=True), None)
GLib.MainLoop().run()
"""


class Stillness(DesktopTest):
    def open_on_a_desktop_with(self, settings):
        self.portal = self.start([sys.executable, "-c", PORTAL, f"({settings},)"], stdout=subprocess.PIPE, text=True)
        self.addCleanup(self.portal.stdout.close)
        self.assertEqual(self.portal.stdout.readline(), "ready\n")
        self.open_window()

    def moves(self, bar):
        """Whether one picture of the indicator, which is at this place, differs from the next."""
        before = self.picture("before")
        return self.differing_pixels(before, self.picture("after"), bar) > 0

    def assert_moves(self, moves):
        release = self.folder / "release"

        def answer(peer):
            self.wait_until(release.exists, "nobody goes on", seconds=150)
            peer.sendall(b"Refused: not today.")

        with AnsweringService(answer):
            self.click(self.firmware_button())
            self.choose(self.image(1000), "Choose a firmware image")
            bar = self.box(self.find("progress bar", "Update in progress"))
            self.assertEqual(self.portal.stdout.readline(), "org.freedesktop.appearance org.gnome.desktop.interface\n")
            self.wait_until(lambda: self.moves(bar) == moves, "it stands still" if moves else "it moves")
            release.touch()
            self.wait_for_panel("Not written: the service refused.")

    def test_where_gnome_has_no_animations_it_stands_still(self):
        self.open_on_a_desktop_with("{'org.gnome.desktop.interface': {'enable-animations': <false>}}")
        self.assert_moves(False)

    def test_where_less_motion_is_wanted_it_stands_still(self):
        self.open_on_a_desktop_with("{'org.freedesktop.appearance': {'reduced-motion': <uint32 1>}}")
        self.assert_moves(False)

    def test_elsewhere_it_moves(self):
        self.open_on_a_desktop_with("{'org.freedesktop.appearance': {'reduced-motion': <uint32 0>}, "
                                    "'org.gnome.desktop.interface': {'enable-animations': <true>}}")
        self.assert_moves(True)
