"""Each behaviour of docs/frozen.md is marked in the code, each mark has its row, and each test is there."""

import unittest

import frozen


class Frozen(unittest.TestCase):
    def test_is_marked_listed_and_tested(self):
        sources = frozen.read(frozen.FOLDERS, ".h", ".cpp")
        tests = frozen.read(["tests"], ".cpp").values()
        page = (frozen.ROOT / "docs/frozen.md").read_text()
        self.assertGreater(len(list(frozen.rows(page))), 50)
        self.assertEqual(frozen.complaints(page, sources, tests), [])
