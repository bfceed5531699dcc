"""What polkit shows for the project's own actions stands there in each of the window's languages."""

import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

POLKIT = Path(__file__).resolve().parents[2] / "packaging/polkit"
LANGUAGES = {None, "de", "fr", "es", "ja", "ar"}
LANGUAGE = "{http://www.w3.org/XML/1998/namespace}lang"


class Prompts(unittest.TestCase):
    def test_stand_in_each_language_once(self):
        for name in ("com.corvatel.kestrav.policy.in", "com.corvatel.kestrav.run.policy"):
            actions = ElementTree.parse(POLKIT / name).getroot().findall("action")
            self.assertTrue(actions)
            for action in actions:
                for part in ("description", "message"):
                    with self.subTest(action=action.get("id"), part=part):
                        texts = action.findall(part)
                        self.assertEqual(sorted(map(str, LANGUAGES)), sorted(str(text.get(LANGUAGE)) for text in texts))
                        self.assertEqual(len({text.text for text in texts}), len(LANGUAGES), "two are the same")

    def test_say_the_same_parts_in_each_language(self):
        parts = ("$(program)", "$(file)", "$(bytes)", "$(disk)", "$(block)")
        action = ElementTree.parse(POLKIT / "com.corvatel.kestrav.run.policy").getroot().find("action")
        for message in action.findall("message"):
            self.assertEqual([part for part in parts if part not in message.text], [], message.get(LANGUAGE))
