"""The pictures in docs/ are those that their texts describe."""

import subprocess
import tempfile
import unittest
from pathlib import Path

DOCS = Path(__file__).resolve().parents[2] / "docs"


class Pictures(unittest.TestCase):
    def test_are_drawn_from_their_texts(self):
        texts = list(DOCS.glob("*.dot"))
        self.assertTrue(texts)
        with tempfile.TemporaryDirectory(prefix="kestrav-pictures.") as folder:
            subprocess.run([DOCS / "draw", folder], check=True)
            for text in texts:
                drawn = Path(folder, f"{text.stem}.svg").read_text()
                self.assertEqual(text.with_suffix(".svg").read_text(), drawn, "run docs/draw")
