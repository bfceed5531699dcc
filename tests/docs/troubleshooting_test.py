"""docs/troubleshooting.md knows everything that the programs say."""

import re
import unittest

import sentences

# Said to somebody who reads the help, or a piece that means nothing by itself.
ELSEWHERE = {"Updates the firmware and icon images of the Kestrav USB accessory (USB 10d6:fd01).",
             "Wait for an accessory, or =SECONDS at most; with --all for the next one, too",
             # To translators.
             "Quit without saves error question message", "Quit without saves error question info",
             "Quit anyway button title", "Cancel button title"}


def plain(text):
    return re.sub(r"\s+", " ", text.replace("`", ""))


class Troubleshooting(unittest.TestCase):
    def test_explains_whatever_the_programs_say(self):
        said = sentences.said()
        # A look that finds nothing would prove nothing.
        for known in ("an administrator did not agree.", "Device not ready yet!", "Authorization result: ",
                      "the request is longer than 64 KiB.", "Nothing was read."):
            self.assertIn(known, said)
        self.assertGreater(len(said), 150)
        page = plain((sentences.ROOT / "docs/troubleshooting.md").read_text())
        unknown = {fragment: where for fragment, where in said.items()
                   if plain(fragment).strip() not in page and fragment not in ELSEWHERE}
        self.assertEqual(unknown, {})

    def test_explains_nothing_that_nobody_says(self):
        page = (sentences.ROOT / "docs/troubleshooting.md").read_text()
        sources = "".join(sentences.unescaped(text) for _, text in sentences.sources())
        quoted = [part for row in re.findall(r"^\| (.*?) \|", page, re.M) for part in re.findall(r"`([^`]+)`", row)]
        self.assertGreater(len(quoted), 150)
        strange = [part for part in quoted if part not in sources]
        self.assertEqual(strange, [])
