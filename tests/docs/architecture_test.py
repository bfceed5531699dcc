"""docs/architecture.md names files, functions and classes: they are there."""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGE = (ROOT / "docs/architecture.md").read_text()
PICTURE = (ROOT / "docs/root.dot").read_text()


def steps():
    """The steps of the road of one update, each with its text."""
    road = PAGE.split("## The road of one update")[1].split("\n## ")[0]
    return re.findall(r"^(\d+)\. (.*?)(?=^\d+\. |^\n|\Z)", road, re.M | re.S)


def places(text):
    """Each file that `text` names together with a function of it."""
    return re.findall(r"`([\w/]+\.(?:h|cpp))` `([\w~]+)`", text)


def declares(folder, name):
    """Whether a header of `folder` declares the class or the function."""
    declared = re.compile(rf"^(?:class|struct|enum class|using) {name}\b|^[\w:<>, *&]+ \*?{name}\(", re.M)
    return any(declared.search(header.read_text()) for header in (ROOT / folder).glob("*.h"))


class Architecture(unittest.TestCase):
    def test_names_a_file_and_a_function_for_each_step(self):
        self.assertGreater(len(steps()), 6)
        self.assertEqual([number for number, text in steps() if not places(text)], [])

    def test_names_files_and_functions_that_exist(self):
        self.assertGreater(len(places(PAGE)), 15)
        strange = [place for place in places(PAGE)
                   if not (ROOT / place[0]).is_file()
                   or not re.search(rf"\b{place[1]}\b", (ROOT / place[0]).read_text())]
        self.assertEqual(strange, [])

    def test_draws_classes_that_exist(self):
        boxes = re.findall(r'subgraph \w+ \{\s*label="([\w/]+/):(.*?)\n    \}', PICTURE, re.S)
        self.assertGreater(len(boxes), 5)
        shown = [(folder, name) for folder, box in boxes for name in re.findall(r'\w+ \[label="(\w+)"\];', box)]
        self.assertGreater(len(shown), 15)
        self.assertEqual([place for place in shown if not declares(*place)], [])
