"""Each of the window's texts stands in each of its languages, whole, and is found where it is looked up."""

import re
import shutil
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

APP = Path(__file__).resolve().parents[2] / "app/qt"
SOURCES = sorted((APP / "translations").glob("*.ts"))
LANGUAGES = {"ar", "de", "es", "fr", "ja"}
# How many forms a language has for a count.
FORMS = {"ar": 6, "de": 2, "es": 2, "fr": 2, "ja": 1}
# Names are the same everywhere.
NAMES = {"Kestrav"}


def messages(source):
    for context in ElementTree.parse(source).getroot().findall("context"):
        for message in context.findall("message"):
            yield context.findtext("name"), message


def texts_of(translation):
    forms = translation.findall("numerusform")
    return [form.text or "" for form in forms] if forms else [translation.text or ""]


def placeholders(text):
    return sorted(re.findall(r"%L?(?:\d+|n)", text))


def shortcuts(text):
    return len(re.findall(r"&(?!&|\s)", text.replace("&&", "")))


class Translations(unittest.TestCase):
    def test_are_there_for_each_language(self):
        self.assertEqual({source.stem.removeprefix("kestrav_") for source in SOURCES}, LANGUAGES)
        for source in SOURCES:
            self.assertEqual(ElementTree.parse(source).getroot().get("language"), source.stem.removeprefix("kestrav_"))

    def test_are_up_to_date_with_the_programs_texts(self):
        with tempfile.TemporaryDirectory() as folder:
            for source in SOURCES:
                shutil.copy(source, folder)
            subprocess.run([APP / "translations/update", folder], check=True, capture_output=True)
            for source in SOURCES:
                known = {(context, message.findtext("source")) for context, message in messages(source)}
                wanted = {(context, message.findtext("source")) for context, message in
                          messages(Path(folder) / source.name)}
                self.assertEqual(known, wanted, f"{source.name}: run app/qt/translations/update, then translate")

    def test_are_complete(self):
        for source in SOURCES:
            for context, message in messages(source):
                text, translation = message.findtext("source"), message.find("translation")
                with self.subTest(language=source.stem, context=context, text=text):
                    self.assertIsNone(translation.get("type"), "unfinished")
                    texts = texts_of(translation)
                    self.assertEqual(len(texts), FORMS[source.stem[-2:]] if message.get("numerus") else 1)
                    for translated in texts:
                        self.assertTrue(translated.strip())
                        # A word may be the same in two languages of one family; not in another script.
                        if source.stem[-2:] in ("ar", "ja") and text not in NAMES and re.search("[a-z]{3}", text):
                            self.assertNotEqual(translated, text)

    def test_have_the_same_placeholders_and_shortcuts(self):
        for source in SOURCES:
            for context, message in messages(source):
                text = message.findtext("source")
                for translated in texts_of(message.find("translation")):
                    with self.subTest(language=source.stem, context=context, text=text):
                        # A form for one or two may say the count as a word.
                        counts = {"%n", "%Ln"} if message.get("numerus") else set()
                        self.assertEqual([part for part in placeholders(translated) if part not in counts],
                                         [part for part in placeholders(text) if part not in counts])
                        self.assertEqual(shortcuts(translated), shortcuts(text))

    def test_have_no_shortcut_twice_on_the_main_windows_buttons(self):
        for source in SOURCES:
            keys = [key.lower() for context, message in messages(source) if context == "MainWindow"
                    for key in re.findall(r"&(\w)", message.find("translation").text or "")]
            self.assertEqual(len(keys), len(set(keys)), source.stem)

    def test_are_looked_up_under_the_name_that_they_stand_under(self):
        code = "".join(path.read_text() for path in sorted(APP.parent.rglob("*.h")) + sorted(APP.parent.rglob("*.cpp")))
        for name in {context for context, _ in messages(SOURCES[0])}:
            declared = f"Q_DECLARE_TR_FUNCTIONS({name})" in code or f'translate("{name}"' in code
            self.assertTrue(declared, f"{name} uses tr() without Q_DECLARE_TR_FUNCTIONS({name}): its texts stay English")


if __name__ == "__main__":
    unittest.main()
