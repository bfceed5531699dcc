"""The pages for people name files and folders of this tree: they are there."""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGES = ("README.md", "CONTRIBUTING.md", "*/README.md", "tests/*/README.md", "docs/*.md", "docs/*.dot")
# Made by a build, or the reader's own.
MADE = ("build/",)
# Stands for a name that the reader chooses: device/PLATFORM/.
OPEN = re.compile(r"/[A-Z]+$")


def named(text):
    """The paths in `text` that begin with a folder of the tree, and where its links lead, without a place on the page."""
    folders = "|".join(sorted(folder.name for folder in ROOT.iterdir() if folder.is_dir()))
    inside = re.findall(rf"(?<![\w./~-])((?:{folders})/[\w./+-]*\w)", text)
    links = re.findall(r"\]\(([^)#:]+)\)", text)
    return [path for path in inside if not path.startswith(MADE) and not OPEN.search(path)], links


def missing(page, text):
    paths, links = named(text)
    yield from (path for path in paths if not exists(ROOT / path) and not exists(page.parent / path))
    yield from (link for link in links if not exists(page.parent / link))


def exists(path):
    """A name without its ending stands for the header and the source of that name."""
    return path.exists() or any(path.parent.glob(path.name + ".*"))


class Paths(unittest.TestCase):
    def test_in_the_pages_exist(self):
        pages = [page for pattern in PAGES for page in sorted(ROOT.glob(pattern))]
        self.assertGreater(len(pages), 8)
        self.assertGreater(sum(len(named(page.read_text())[0]) for page in pages), 60)
        untrue = {str(page.relative_to(ROOT)): sorted(set(missing(page, page.read_text()))) for page in pages}
        self.assertEqual({page: paths for page, paths in untrue.items() if paths}, {})

    def test_that_are_missing_are_seen(self):
        text = "See `docs/nothing.md`, [a page](nowhere.md) and docs/draw; a/b is no folder of ours."
        self.assertEqual(list(missing(ROOT / "README.md", text)), ["docs/nothing.md", "nowhere.md"])
