"""The page about bad days is made from its table, and each day has a case."""

import subprocess
import sys
import unittest
from pathlib import Path

FOLDER = Path(__file__).resolve().parents[1] / "e2e"
sys.path.insert(0, str(FOLDER))
import bad_days_page  # noqa: E402: found by the line above

GOOD = {"what": "a", "when": "b", "said": "c", "status": "0", "disk": "d",
        "played": ["e2e/power_cut_test.py PowerCut."
                   "test_leaves_a_mixture_at_the_image_only_and_the_next_boot_updates_cleanly"]}


class BadDays(unittest.TestCase):
    def test_are_told_as_they_are_played(self):
        done = subprocess.run([FOLDER / "bad_days_page.py", "check"], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_a_whole_day_is_good(self):
        self.assertEqual(list(bad_days_page.complaints([GOOD])), [])

    def test_a_day_that_nothing_plays_is_seen(self):
        for played in ([], ["e2e/none_test.py PowerCut.test_it"], ["e2e/power_cut_test.py PowerCut.test_none"]):
            self.assertTrue(list(bad_days_page.complaints([GOOD | {"played": played}])), played)

    def test_a_day_with_a_gap_is_seen(self):
        for field in ("what", "when", "said", "status", "disk"):
            day = {key: value for key, value in GOOD.items() if key != field}
            self.assertTrue(list(bad_days_page.complaints([day])), field)

    def test_two_tellings_of_one_day_are_seen(self):
        self.assertTrue(list(bad_days_page.complaints([GOOD | {"terminal": "x", "window": "y"}])))

    def test_the_table_is_exchanged_and_nothing_else(self):
        page = "before\n\n| what happened | x |\n| old |\n\nbehind\n"
        self.assertEqual(bad_days_page.page_with(page, "| new |\n"), "before\n\n| new |\n\nbehind\n")


if __name__ == "__main__":
    unittest.main()
