"""An image dragged out of another program, with the mouse, over the display's own protocol for that."""

import subprocess
import sys

from desktop import DesktopTest
from road import AnsweringService

# Another program: a button that can be dragged, and stands for the file that is named. It prints what would come of
# letting go where the mouse is, and at the end what came of it.
OTHER = """
import sys
import gi
gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk
window = Gtk.Window(title="The other program")
thing = Gtk.Button(label="an image")
thing.drag_source_set(Gdk.ModifierType.BUTTON1_MASK, [Gtk.TargetEntry.new("text/uri-list", 0, 0)], Gdk.DragAction.COPY)
thing.connect("drag-data-get", lambda _, __, data, *___: data.set_uris([sys.argv[1]]))
def tell(what, action):
    print(what, *action.value_nicks, flush=True)
thing.connect("drag-begin", lambda _, drag: drag.connect("action-changed", lambda _, action: tell("over", action)))
thing.connect("drag-end", lambda _, drag: tell("end", drag.get_selected_action()))
window.add(thing)
window.set_default_size(200, 100)
window.show_all()
window.move(20, 20)
Gtk.main()
"""


class Drag(DesktopTest):
    def drag_onto(self, node, path):
        other = self.start([sys.executable, "-c", OTHER, path.as_uri()], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                           text=True)
        self.addCleanup(other.stdout.close)
        found = []
        self.wait_until(lambda: found.append(self.place_of("The other program")) or found[-1], "there is nothing to drag")
        x, y = found[-1]
        self.xdotool("mousemove", x + 100, y + 50, "mousedown", 1)
        left, top, width, height = self.box(node)
        # The other program takes a move of some pixels for the beginning of a drag.
        for step in range(1, 11):
            self.xdotool("mousemove", x + 100 + (left + width // 2 - x - 100) * step // 10,
                         y + 50 + (top + height // 2 - y - 50) * step // 10)
        self.assertEqual(other.stdout.readline(), "over copy\n")
        self.xdotool("mouseup", 1)
        self.assertEqual(other.stdout.readline(), "end copy\n")

    def place_of(self, title):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$", "getwindowgeometry", "--shell"],
                               env=self.environment, capture_output=True, text=True, check=False).stdout
        shell = dict(line.split("=") for line in found.splitlines())
        return (int(shell["X"]), int(shell["Y"])) if "X" in shell else None

    def test_an_image_on_a_button_opens_the_chooser_on_it(self):
        self.open_window()
        path = self.image(3000, "an image of mine.fds")
        self.drag_onto(self.firmware_button(), path)
        self.find("dialog", "Choose a firmware image")
        self.wait_until(lambda: self.text_of("text", "File name:") == path.name, "the file is not chosen")
        self.wait_until(lambda: self.is_in_state(("text", "File name:"), "FOCUSED"), "the chooser has no focus")
        with AnsweringService(lambda peer: peer.sendall(b"Refused: not today.")):
            self.keys("Return")
            self.wait_for_panel("Not written: the service refused.")
        self.assertIn(f"Loaded icon file: {path} with 3000 bytes.", self.log())
