"""The pages for people name files and folders of this tree: they are there."""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGES = ("*.md", "*/README.md", "tests/*/README.md", "packaging/library/README.md", "docs/*.md", "docs/*.dot")
# Made by a build, or the reader's own.
MADE = ("build/",)
# Stands for a name that the reader chooses: device/PLATFORM/.
OPEN = re.compile(r"/[A-Z]+$")


def named(text):
    """The paths in `text` that begin with a folder of the tree, and where its links lead, without a place on the page."""
    folders = "|".join(sorted(folder.name for folder in ROOT.iterdir() if folder.is_dir()))
    inside = re.findall(rf"(?<![\w./~-])((?:{folders})/[\w./+-]*\w)", text)
    links = re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", text)
    return [path for path in inside if not path.startswith(MADE) and not OPEN.search(path)], links


def missing(page, text):
    paths, links = named(text)
    yield from (path for path in paths if not exists(ROOT / path) and not exists(page.parent / path))
    yield from (link for link in links if not exists(page.parent / link))


def anchors(text):
    """The places that a page's headings make: as the hosts of such pages write them."""
    headings = re.findall(r"^#+ (.*)$", re.sub(r"^```.*?^```", "", text, flags=re.M | re.S), re.M)
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-") for heading in headings}


def lost_places(page, text):
    """The links to a place on this page or on another one that has no such heading."""
    for target, place in re.findall(r"\]\(([^)#:]*)#([^)]+)\)", text):
        there = page.parent / target if target else page
        if place not in anchors(there.read_text() if there != page else text):
            yield f"{target}#{place}"


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

    def test_and_the_headings_that_links_lead_to_exist(self):
        pages = [page for pattern in PAGES for page in sorted(ROOT.glob(pattern))]
        lost = {str(page.relative_to(ROOT)): list(lost_places(page, page.read_text())) for page in pages}
        self.assertEqual({page: places for page, places in lost.items() if places}, {})

    def test_and_headings_that_are_missing_are_seen(self):
        text = "# One: two\n[a](#one-two) [b](#two) [c](README.md#layout) [d](README.md#no-such-place)\n```sh\n# two\n```\n"
        self.assertEqual(list(lost_places(ROOT / "x.md", text)), ["#two", "README.md#no-such-place"])

    def test_that_are_missing_are_seen(self):
        text = "See `docs/nothing.md`, [a page](nowhere.md) and docs/draw; a/b is no folder of ours."
        self.assertEqual(list(missing(ROOT / "README.md", text)), ["docs/nothing.md", "nowhere.md"])
