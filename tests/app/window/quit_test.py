"""The ways out: what is asked, what is kept, and with which status the program ends."""

import xml.etree.ElementTree

from desktop import DesktopTest


class Quit(DesktopTest):
    def assert_store(self):
        root = xml.etree.ElementTree.parse(self.store).getroot()
        self.assertEqual((root.tag, root.get("type"), root.get("model")), ("store", "XML", "Kestrav"))

    def test_closing_the_window_ends_the_program_and_leaves_a_store(self):
        self.open_window()
        self.assertFalse(self.store.exists())
        self.close_with_key()
        self.assertEqual(self.exit_status(), 0)
        self.assert_store()

    def test_the_close_button_of_the_frame_does_too(self):
        self.open_window()
        x, y, width, _ = self.box(self.find("frame", "Kestrav"))
        self.xdotool("mousemove", x + width - 10, y - 9, "click", 1)
        self.assertEqual(self.exit_status(), 0)
        self.assert_store()

    def test_control_q_does_too(self):
        self.open_window()
        self.keys("ctrl+q")
        self.assertEqual(self.exit_status(), 0)
        self.assert_store()

    def test_a_store_that_is_there_is_left_as_it_is(self):
        self.store.parent.mkdir(parents=True)
        text = '<store type="XML" model="Kestrav"><record name="a" value="b"/></store>'
        self.store.write_text(text)
        self.open_window()
        self.close_with_key()
        self.assertEqual(self.exit_status(), 0)
        self.assertEqual(self.store.read_text(), text)

    def test_the_data_folder_can_be_elsewhere(self):
        elsewhere = self.folder / "data"
        self.environment["XDG_DATA_HOME"] = str(elsewhere)
        self.store = elsewhere / "com.corvatel.Kestrav/CocoaAppCD.storedata"
        self.open_window()
        self.close_with_key()
        self.assertEqual(self.exit_status(), 0)
        self.assert_store()

    def test_a_file_in_place_of_the_folder_is_named_then_the_program_aborts(self):
        folder = self.store.parent
        folder.parent.mkdir(parents=True)
        folder.write_text("in the way")
        self.open_window()
        self.keys("alt+F4")
        said = self.alert_texts()
        self.assertIn("Failed to initialize the application's saved data", said)
        self.assertIn(f"Expected a folder to store application data, found a file {folder}.", said)
        self.picture("error")
        self.keys("Return")
        self.assertEqual(self.exit_status(), 128 + 6)
        self.assertEqual(folder.read_text(), "in the way")
