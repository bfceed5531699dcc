#!/usr/bin/env python3
"""That the table's wrong lines are seen, and that a change is made as it is written."""

import os
import tempfile
import time
import unittest
from pathlib import Path

import mutants

SOURCE = "int one() {\n    return 1;\n}\n\nint two() {\n    return 2;\n}\n"


class Table(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        (self.root / "base").mkdir()
        (self.root / "base/one.cpp").write_text(SOURCE, encoding="utf-8")

    def change(self, line):
        (change,) = mutants.parsed(f"base/one.cpp\n    {line}\n", "base.txt")
        return change

    def complaints(self, *lines):
        text = "base/one.cpp\n" + "".join(f"    {line}\n" for line in lines)
        return mutants.complaints(mutants.parsed(text, "base.txt"), self.root)

    def test_a_change_is_made(self):
        self.assertIn("return 3;", mutants.changed(SOURCE, self.change("return 1;  =>  return 3;")))

    def test_a_text_is_taken_out(self):
        self.assertNotIn("return 1;", mutants.changed(SOURCE, self.change("return 1;  =>  ")))
        self.assertNotIn("return 1;", mutants.changed(SOURCE, self.change("return 1;  =>")))

    def test_a_change_reaches_over_lines(self):
        result = mutants.changed(SOURCE, self.change("}⏎int two() {⏎return 2;  =>  }⏎int two() {⏎return 1;"))
        self.assertEqual(result.count("return 1;"), 2)

    def test_an_explanation_is_no_part_of_the_change(self):
        change = self.change("return 1;  =>  return 3;  (no effect: nobody calls it)")
        self.assertEqual((change.new, change.harmless), ("return 3;", "nobody calls it"))

    def test_good_lines_fit(self):
        self.assertEqual(self.complaints("return 1;  =>  return 3;", "return 1;  =>  return 4;"), [])

    def test_what_is_gone_is_seen(self):
        self.assertIn("stands 0 times", self.complaints("return 7;  =>  return 3;")[0])

    def test_what_stands_twice_is_seen(self):
        self.assertIn("stands 2 times", self.complaints("return  =>  break")[0])

    def test_what_changes_nothing_is_seen(self):
        self.assertIn("changes nothing", self.complaints("return 1;  =>  return 1;")[0])

    def test_the_same_line_twice_is_seen(self):
        self.assertIn("the same as", self.complaints("return 1;  =>  return 3;", "return 1;  =>  return 3;")[0])

    def test_a_file_that_is_gone_is_seen(self):
        (self.root / "base/one.cpp").unlink()
        self.assertIn("one.cpp", self.complaints("return 1;  =>  return 3;")[0])

    def test_what_is_no_change_is_seen(self):
        with self.assertRaises(mutants.WrongTable):
            self.change("return 1; -> return 3;")


class Programs(unittest.TestCase):
    """What is said of the test programs that run beside each other."""

    def first_failure(self, *scripts, patience=60):
        running = [mutants.Running(["sh", "-c", script], dict(os.environ)) for script in scripts]
        for one in running:
            self.addCleanup(one.end)
        return mutants.first_failure(running, time.monotonic() + patience)

    def test_all_are_waited_for(self):
        self.assertIsNone(self.first_failure("true", "sleep 0.3"))
        self.assertEqual(self.first_failure("true", "sleep 0.3; echo '[  FAILED  ] Late.Case'; exit 1"), "Late.Case")

    def test_nobody_waits_for_the_others_once_one_has_failed(self):
        begun = time.monotonic()
        self.assertEqual(self.first_failure("sleep 600", "echo '[  FAILED  ] Quick.Case (3 ms)'; exit 1"), "Quick.Case")
        self.assertLess(time.monotonic() - begun, 300)

    def test_one_that_is_killed_is_called_by_its_last_case(self):
        said = self.first_failure("echo '[ RUN      ] One.Case'; kill -9 $$")
        self.assertEqual(said, "One.Case (ended by 9)")

    def test_one_that_waits_for_ever_is_seen(self):
        self.assertEqual(self.first_failure("sleep 600", patience=0.2), "(takes too long)")


if __name__ == "__main__":
    unittest.main()
