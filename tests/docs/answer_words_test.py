"""docs/protocol.md promises exactly the words by which the programs tell answers apart, and the wire's numbers."""

import re
import unittest

import sentences

HEADER = (sentences.ROOT / "protocol/wire.h").read_text()
PAGE = (sentences.ROOT / "docs/protocol.md").read_text()
WORDS = dict(re.findall(r'std::string_view (\w+) = "([^"]*)";', HEADER))


class AnswerWords(unittest.TestCase):
    def test_of_the_page_are_those_of_the_programs(self):
        promised = re.findall(r"^\| `([^`]+)` \|", PAGE.split("## The board")[0], re.M)
        self.assertGreater(len(promised), 8)
        self.assertCountEqual(promised, WORDS.values())

    def test_of_the_board_are_those_of_the_programs(self):
        header = (sentences.ROOT / "protocol/board.h").read_text()
        keys = re.findall(r'kBoard\w+Key = "(\w+)";', header)
        words = re.search(r"kWritePhaseWords\{([^}]*)\}", header).group(1) + re.search(
            r"kWriteVerdictWords\{([^}]*)\}", header).group(1)
        board = PAGE.split("## The board")[1]
        rows = re.findall(r"^\| (`[^|]+`) \|", board, re.M)
        self.assertCountEqual(re.findall(r"`(\w+)`", " ".join(rows)), keys)
        self.assertEqual([word for word in re.findall(r'"(\w+)"', words) if f"`{word}`" not in board], [])

    def test_are_read_by_their_names(self):
        reader = (sentences.ROOT / "command/Answer.cpp").read_text()
        for name, word in WORDS.items():
            with self.subTest(name):
                self.assertRegex(reader, rf"\b{name}\b")
                self.assertNotIn(f'"{word}', reader)

    def test_are_in_the_examples(self):
        answers = re.findall(r"^< (.*)$", PAGE, re.M)
        for name in ("kRefusedPrefix", "kWrotePrefix", "kVerifiedPart", "kNotMountedEnd", "kSpeedEnd"):
            with self.subTest(name):
                self.assertTrue(any(WORDS[name] in answer for answer in answers))

    def test_go_with_the_numbers_of_the_programs(self):
        for name, words in (("kServicePort", "TCP port {}"), ("kLongestRequest", "at most {} bytes"),
                            ("kReplyRoom", "below {} bytes")):
            value = re.search(rf"\b{name} = (\d+);", HEADER).group(1)
            with self.subTest(name):
                self.assertIn(words.format(value), PAGE)
