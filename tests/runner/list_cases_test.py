import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).parent
GOOD = """
import unittest

class Kept(unittest.TestCase):
    def test_one(self):
        pass

class AlsoKept(Kept):
    def test_two(self):
        pass
"""


class ListCases(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)

    def write(self, module, text):
        (self.folder / f"{module}.py").write_text(text, encoding="utf-8")

    def run_listing(self):
        return subprocess.run([sys.executable, HERE / "list_cases.py", self.folder, "some", self.folder / "out", "runs"],
                              capture_output=True, text=True, check=False)

    def names(self):
        self.assertEqual(self.run_listing().returncode, 0)
        lines = (self.folder / "out").read_text(encoding="utf-8").splitlines()
        return [line.split("[==[")[1].split("]==]")[0] for line in lines if line.startswith("add_test(")]

    def test_finds_every_class_and_what_it_inherits(self):
        self.write("good_test", GOOD)
        self.assertEqual(self.names(), ["some.Kept.one", "some.AlsoKept.one", "some.AlsoKept.two"])

    def test_lists_an_imported_class_only_where_it_stands(self):
        self.write("good_test", GOOD)
        self.write("more_test", "from good_test import Kept")
        self.assertEqual(self.names(), ["some.Kept.one", "some.AlsoKept.one", "some.AlsoKept.two"])

    def test_lists_a_module_that_cannot_be_imported(self):
        self.write("broken_test", "import nothing_of_this_name")
        self.assertEqual(self.names(), ["some.broken_test.is_imported"])

    def test_fails_where_there_is_nothing(self):
        self.assertEqual(self.run_listing().returncode, 1)


class RunCase(unittest.TestCase):
    def exit_status(self, text, case):
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "some_test.py").write_text("import unittest\n" + text, encoding="utf-8")
            return subprocess.run([sys.executable, HERE / "run_case.py", case], cwd=folder, env={"PYTHONPATH": folder},
                                  capture_output=True, check=False).returncode

    def of_a_method(self, body):
        return self.exit_status(f"class Some(unittest.TestCase):\n    def test_it(self):\n        {body}\n",
                                "some_test.Some.test_it")

    def test_ends_with_0_for_a_case_that_passes(self):
        self.assertEqual(self.of_a_method("self.assertTrue(True)"), 0)

    def test_ends_with_1_for_a_case_that_fails(self):
        self.assertEqual(self.of_a_method("self.assertTrue(False)"), 1)

    def test_ends_with_77_for_a_case_that_is_skipped(self):
        self.assertEqual(self.of_a_method("self.skipTest('no rights')"), 77)

    def test_ends_with_1_for_a_module_that_cannot_be_imported(self):
        self.assertEqual(self.exit_status("import nothing_of_this_name\n", "some_test"), 1)
