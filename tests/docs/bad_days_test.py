"""The page about bad days is made from its table, and each day has a case."""

import subprocess
import sys
import unittest
from pathlib import Path

FOLDER = Path(__file__).resolve().parents[1] / "e2e"
sys.path.insert(0, str(FOLDER))
import bad_days_page  # noqa: E402: found by the line above

GOOD = {"subject": "service", "what": "a", "when": "b", "disk": "c", "status": "6",
        "terminal": "`The service has gone without an answer, so nobody knows what the accessory holds.`",
        "window": "<serviceGone>", "played": ["road/bad_day_test.py BadDay.test_a_service_that_closes_at_once"]}
REFUSED = {"subject": "mounts", "what": "a", "when": "b", "disk": "c", "status": "4",
           "terminal": "`Refused: sdb1 is mounted at …, where something else hides it.`",
           "played": ["services/gate/KernelHoldersTest.cpp GateOnKernel.RefusesWhenAnotherMountHidesTheDisks"]}


def complaints(day, **changed):
    return list(bad_days_page.complaints([day | changed]))


class BadDays(unittest.TestCase):
    def test_are_told_as_they_are_played(self):
        done = subprocess.run([FOLDER / "bad_days_page.py", "check"], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_a_whole_day_is_good(self):
        for day in (GOOD, REFUSED):
            self.assertEqual(complaints(day), [])

    def test_a_day_that_nothing_plays_is_seen(self):
        for played in ([], ["road/none_test.py BadDay.test_no_service"], ["road/bad_day_test.py BadDay.test_none"],
                       ["services/gate/KernelHoldersTest.cpp GateOnKernel.None"],
                       ["app/EndingOfTest.cpp Ending.IsFoundOutAndHasItsWords/None"]):
            self.assertTrue(complaints(GOOD, played=played), played)

    def test_a_day_with_a_gap_is_seen(self):
        for field in ("subject", "what", "when", "terminal", "status", "disk"):
            day = {key: value for key, value in GOOD.items() if key != field}
            self.assertTrue(complaints(day), field)

    def test_a_field_and_a_subject_that_nobody_knows_are_seen(self):
        self.assertTrue(complaints(GOOD, subject="the weather"))
        self.assertTrue(complaints(GOOD, weather="rain"))

    def test_a_sentence_that_nobody_says_is_seen(self):
        for field in ("terminal", "window", "journal"):
            self.assertTrue(complaints(GOOD, **{field: "`The accessory has been eaten by a mouse.`"}), field)

    def test_a_sentence_that_stands_in_another_case_alone_is_seen(self):
        other = ["services/gate/KernelHoldersTest.cpp GateOnKernel.NamesTheSwapSpace"]
        self.assertIn("a, b: none of its cases looks for a sentence of it", complaints(REFUSED, played=other))

    def test_a_status_that_does_not_follow_from_the_answer_is_seen(self):
        self.assertIn("a, b: its answer ends kestravctl with 4", complaints(REFUSED, status="0"))

    def test_an_ending_that_the_window_does_not_know_is_seen(self):
        self.assertTrue(complaints(GOOD, window="<eaten>"))

    def test_a_day_without_an_answer_says_what_the_window_says(self):
        self.assertTrue(complaints({key: value for key, value in GOOD.items() if key != "window"}))

    def test_a_day_that_is_told_twice_is_seen(self):
        self.assertIn("a, b: told twice", list(bad_days_page.complaints([GOOD, REFUSED])))

    def test_the_panel_is_what_the_window_makes_of_the_answer(self):
        self.assertIn("| `Not written: the service refused.` | 4 | the answer | c |", bad_days_page.tables([REFUSED]))
        self.assertIn("| `Nobody knows: the service gave no answer.` | 6 | – | c |", bad_days_page.tables([GOOD]))

    def test_the_tables_are_exchanged_and_nothing_else(self):
        page = f"before\n\n{bad_days_page.BEGIN}old\n\n{bad_days_page.END}behind\n"
        self.assertEqual(bad_days_page.page_with(page, "new\n\n"),
                         f"before\n\n{bad_days_page.BEGIN}new\n\n{bad_days_page.END}behind\n")


if __name__ == "__main__":
    unittest.main()
