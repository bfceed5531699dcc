"""The window as a screen reader finds it."""

from desktop import DesktopTest
from road import AnsweringService


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
        nameless = [node.get_role_name() for node in self.nodes()
                    if self.has(node, "FOCUSABLE") and self.has(node, "SHOWING") and not node.get_name()]
        self.assertEqual(nameless, [])

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
