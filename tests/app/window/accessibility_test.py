"""The window as a screen reader finds it."""

from pathlib import Path

from desktop import PICTURES, DesktopTest
from road import AnsweringService

ALWAYS = [
    "frame: Kestrav",
    "  label: Kestrav Accessory · sdzz · 16.8 MB",
    "  push button: Help",
    "  push button: Update Firmware…",
    "  push button: Update Icon…",
]
SUCCESS = [
    *ALWAYS,
    "  notification: The firmware is on the accessory, read back and equal. You may unplug it.",
    "    label: The firmware is on the accessory, read back and equal.",
    "    label: You may unplug it.",
    "    text: System message",
    "  text: Log",
]
FAILURE = [
    *ALWAYS,
    "  notification: Not written: the service refused. It says why below. Put that right, then send the image again.",
    "    label: Not written: the service refused.",
    "    label: It says why below. Put that right, then send the image again.",
    "    push button: Send Again…",
    "    text: System message",
    "  text: Log",
]


class Accessibility(DesktopTest):
    def open_after_a_refusal(self):
        """With everything in it that can be shown."""
        self.open_window()
        with AnsweringService(lambda peer: peer.sendall(b"Refused: not today.")):
            self.click(self.firmware_button())
            self.choose(self.image(3000), "Choose a firmware image")
            self.wait_for_panel("Not written: the service refused.")
        self.wait_until_usable()

    def test_everything_has_its_role_and_name(self):
        self.open_after_a_refusal()
        for role, name in (("frame", "Kestrav"), ("push button", "Update Firmware…"), ("push button", "Update Icon…"),
                           ("notification", self.panel()), ("push button", "Send Again…"), ("text", "Log"),
                           ("text", "System message"), ("label", "Kestrav Accessory · sdzz · 16.8 MB")):
            with self.subTest(role=role, name=name):
                self.assertIsNotNone(self.look_for(role, name))
        nameless = [self.role(node) for node in self.nodes()
                    if self.has(node, "FOCUSABLE") and self.has(node, "SHOWING") and not node.get_name()]
        self.assertEqual(nameless, [])

    def tree(self):
        """The showing objects as a reader meets them, one a line: how deep, the role, the name. What only holds others
        together is left out: it says nothing, and differs from one version of the toolkit to the next."""
        lines = []

        def walk(node, depth):
            node.clear_cache()
            if not self.has(node, "SHOWING"):
                return
            says_something = self.role(node) not in ("filler", "scroll bar")
            if says_something:
                lines.append(f"{'  ' * depth}{self.role(node)}: {node.get_name()}")
            for index in range(node.get_child_count()):
                walk(node.get_child_at_index(index), depth + says_something)

        try:
            walk(self.find("frame", "Kestrav"), 0)
        except Exception:  # pylint: disable=broad-except; an object that is gone by now has many ways to say so
            return []
        return lines

    def assert_tree(self, name, expected):
        shown = []
        self.wait_until(lambda: shown.append(self.tree()) or shown[-1] == expected, "the tree is another one")
        if PICTURES:
            Path(PICTURES, f"tree-{name}.txt").write_text("\n".join([*shown[-1], ""]), encoding="utf-8")

    def test_the_tree_after_a_failure(self):
        self.open_after_a_refusal()
        self.assert_tree("failure", FAILURE)

    def test_the_tree_after_a_success(self):
        self.start_service()
        self.open_window()
        self.click(self.firmware_button())
        self.choose(self.image(3000), "Choose a firmware image")
        self.wait_for_panel("read back and equal")
        self.wait_until_usable()
        self.assert_tree("success", SUCCESS)

    def test_the_texts_can_be_read_only(self):
        self.open_after_a_refusal()
        for name in ("Log", "System message"):
            self.assertTrue(self.has(self.find("text", name), "READ_ONLY"))

    def test_the_focus_goes_round(self):
        self.open_after_a_refusal()
        for role, name in (("push button", "Update Firmware…"), ("push button", "Update Icon…"),
                           ("push button", "Send Again…"), ("text", "System message"), ("text", "Log"),
                           ("push button", "Help"), ("push button", "Update Firmware…")):
            self.wait_until(lambda: self.has(self.find(role, name), "FOCUSED"), f"{name} has not got the focus")
            self.keys("Tab")

    def test_a_button_can_be_pressed_through_its_action(self):
        self.open_window()
        self.press_as_a_screen_reader(self.icon_button())
        self.find("dialog", "Choose a icon image")

    def test_the_chooser_names_everything_too(self):
        self.open_window()
        self.click(self.firmware_button())
        self.find("dialog", "Choose a firmware image")
        for name in ("Choose Folder", "Open", "Cancel"):
            self.find("push button", name)
        self.find("text", "File name:")
