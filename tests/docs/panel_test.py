"""docs/troubleshooting.md says the same as the window's panel about every end of an update, remedy by remedy."""

import re
import unittest

import sentences

SOURCE = (sentences.ROOT / "app/reportOf.cpp").read_text()
ENDINGS = re.findall(r"^    (\w+),", (sentences.ROOT / "app/UpdateEnding.h").read_text(), re.M)
ROW = re.compile(r'UpdateEnding::(\w+),\s*\{Kind::\w+,\s*translatable\("Report",\s*("(?:[^"]|"\s+")*")\),'
                 r'\s*translatable\("Report",\s*("(?:[^"]|"\s+")*")\)')


def joined(literals):
    return re.sub(r'"\s+"', "", literals)[1:-1]


class Panel(unittest.TestCase):
    def test_has_words_for_every_ending(self):
        self.assertGreater(len(ENDINGS), 20)
        self.assertCountEqual([row[0] for row in ROW.findall(SOURCE)], ENDINGS)

    def test_agrees_with_the_page(self):
        page = (sentences.ROOT / "docs/troubleshooting.md").read_text()
        rows = [line for line in page.splitlines() if line.startswith("|")]
        for ending, headline, remedy in ROW.findall(SOURCE):
            with self.subTest(ending):
                both = [row for row in rows if f"`{joined(headline)}`" in row and f"`{joined(remedy)}`" in row]
                self.assertEqual(len(both), 1)
