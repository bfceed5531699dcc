"""The dialogs on the smallest screen, where everything is half as large again."""

from pathlib import Path

from desktop import DesktopTest

CHOOSER = "Choose a firmware image"


class SmallScreen(DesktopTest):
    screen = "640x480"
    scale = "1.5"

    def edges(self, title):
        """Where a window is in the screen's own pixels, its frame left out: left, top, right, bottom."""
        window = self.xdotool("search", "--onlyvisible", "--name", f"^{title}$").split()[-1]
        shell = dict(line.split("=") for line in self.xdotool("getwindowgeometry", "--shell", window).split())
        left, top, width, height = (int(shell[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))
        return left, top, left + width, top + height

    def assert_whole(self, role, title):
        """It is on the screen with all that can be pressed in it."""
        node = self.find(role, title)
        self.picture(title)
        left, top, right, bottom = self.edges(title)
        self.assertGreaterEqual(min(left, top), 0, title)
        self.assertLessEqual(right, 640, title)
        self.assertLessEqual(bottom, 480, title)
        x, y, width, height = self.box(node)
        buttons = [one for one in self.nodes()
                   if self.role(one) == "push button" and self.has(one, "SHOWING") and self.is_within(one, node)]
        self.assertNotEqual(buttons, [])
        for button in buttons:
            button_x, button_y, button_width, button_height = self.box(button)
            self.assertGreaterEqual(button_x, x, button.get_name())
            self.assertLessEqual(button_x + button_width, x + width, button.get_name())
            self.assertGreaterEqual(button_y, y, button.get_name())
            self.assertLessEqual(button_y + button_height, y + height, button.get_name())

    @staticmethod
    def is_within(node, outer):
        while node is not None and node != outer:
            node = node.get_parent()
        return node is not None

    def from_menu(self, letter):
        """Opens what has this letter in the menu of the button for help."""
        before = len(self.windows())
        self.press_as_a_screen_reader(self.find("push button", "Help"))
        self.wait_until(lambda: len(self.windows()) > before, "there is no menu")
        self.keys(letter)

    def test_the_choosers_are_whole(self):
        self.open_window()
        self.keys("alt+f")
        self.assert_whole("dialog", CHOOSER)
        self.dismiss(CHOOSER)
        self.wait_until_usable()
        self.from_menu("s")
        self.assert_whole("dialog", "Save the log")

    def test_the_pages_are_whole(self):
        self.open_window()
        self.keys("F1")
        self.assert_whole("dialog", "Kestrav – Help")
        self.keys("Escape")
        self.wait_until_gone("dialog", "Kestrav – Help")
        self.from_menu("a")
        self.assert_whole("alert", "About Kestrav")
        self.keys("alt+l")
        self.assert_whole("dialog", "Kestrav – Licences")

    def test_the_longest_message_is_whole(self):
        """Of a folder with a long name in the way of what is saved at the end."""
        self.environment["XDG_DATA_HOME"] = str(self.folder / "-".join(["long"] * 40))
        folder = Path(self.environment["XDG_DATA_HOME"]) / "com.corvatel.Kestrav"
        folder.parent.mkdir()
        folder.write_text("in the way")
        self.open_window()
        self.keys("alt+F4")
        self.alert_texts()
        self.assert_whole("alert", "Kestrav")
