import os
import subprocess
import tempfile
import unittest
from pathlib import Path

ISOLATED = Path(__file__).with_name("isolated")


def isolated_where_unshare_says(words):
    """The exit status of `isolated` where unshare(1) fails with these words."""
    with tempfile.TemporaryDirectory() as folder:
        unshare = Path(folder) / "unshare"
        unshare.write_text(f"#!/bin/sh\necho 'unshare: {words}' >&2\nexit 1\n", encoding="utf-8")
        unshare.chmod(0o755)
        environment = {**os.environ, "PATH": f"{folder}:{os.environ['PATH']}"}
        return subprocess.run([ISOLATED, "true"], env=environment, capture_output=True, check=False).returncode


class Isolated(unittest.TestCase):
    def test_skips_for_want_of_rights(self):
        self.assertEqual(isolated_where_unshare_says("unshare failed: Operation not permitted"), 77)

    def test_fails_for_any_other_reason(self):
        for words in ("unshare failed: No space left on device", "unshare failed: Invalid argument",
                      "unrecognized option '--net'"):
            self.assertEqual(isolated_where_unshare_says(words), 1, words)

    def test_ends_as_its_command_does(self):
        self.assertEqual(subprocess.run([ISOLATED, "sh", "-c", "exit 5"], check=False).returncode, 5)
