"""The check of docs/frozen.md itself: each way in which page, marks and tests can disagree is seen."""

import unittest

import frozen

PAGE = "| F1 | It is odd. | `a/A.cpp` `go`, `stop` | Someone relies on it. | `Going.IsOdd` |\n"
SOURCES = {"a/A.cpp": "void go() {\n    // frozen: F1\n    odd();\n}\nvoid stop();\n"}
TESTS = ["TEST(Going, IsOdd) {\n"]


class FrozenCheck(unittest.TestCase):
    def assert_complaint(self, words, page=PAGE, sources=SOURCES, tests=TESTS):
        complaints = frozen.complaints(page, sources, tests)
        self.assertEqual(len(complaints), 1, complaints)
        self.assertIn(words, complaints[0])

    def test_is_content_when_all_agree(self):
        self.assertEqual(frozen.complaints(PAGE, SOURCES, TESTS), [])

    def test_misses_a_mark(self):
        self.assert_complaint("a/A.cpp has no mark", sources={"a/A.cpp": "go() stop()"})

    def test_misses_a_row(self):
        more = {**SOURCES, "a/B.cpp": "// frozen: F2\n"}
        self.assert_complaint("a/B.cpp: F2 has no row", sources=more)

    def test_misses_the_second_file_in_a_row(self):
        more = {**SOURCES, "a/B.cpp": "// frozen: F1\n"}
        self.assert_complaint("a/B.cpp: F1 has no row that names this file", sources=more)

    def test_misses_a_function(self):
        self.assert_complaint("a/A.cpp has no halt", page=PAGE.replace("stop", "halt"))

    def test_misses_a_test(self):
        self.assert_complaint("there is no test Going.IsOdd", tests=["TEST(Going, IsEven) {\n", "// Going.IsOdd"])

    def test_sees_cases_of_every_kind(self):
        for kind in ("TEST_F", "TEST_P", "TYPED_TEST"):
            self.assertEqual(frozen.complaints(PAGE, SOURCES, [f"{kind}(Going, IsOdd) {{\n"]), [])

    def test_misses_a_cell(self):
        self.assert_complaint("a row has", page="| F1 | It is odd. | `a/A.cpp` `go` |  | `Going.IsOdd` |\n")

    def test_sees_a_number_twice(self):
        self.assert_complaint("two rows", page=PAGE + PAGE)

    def test_sees_a_number_that_is_left_out(self):
        renamed = {"a/A.cpp": SOURCES["a/A.cpp"].replace("F1", "F2")}
        self.assert_complaint("numbered from F1", page=PAGE.replace("F1", "F2"), sources=renamed)

    def test_sees_a_mark_of_another_form(self):
        more = {**SOURCES, "a/B.cpp": "int x;  // it is frozen: why\n"}
        self.assert_complaint("a mark is a comment of its own", sources=more)
