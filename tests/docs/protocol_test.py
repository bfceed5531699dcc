"""The examples of docs/protocol.md, replayed against the real service."""

import re
import socket
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/road"))

from road import RoadTest, content  # noqa: E402: found by the line above

SPEED = re.compile(r"[\d.]+ MB/s")


def examples(home):
    """What is asked and answered, with that folder for the page's home."""
    page = (ROOT / "docs/protocol.md").read_text().replace("/home/me", str(home))
    return re.findall(r"^> (.*)\n< (.*)$", page, re.M)


def answered(request):
    with socket.create_connection(("127.0.0.1", 9090), timeout=60) as connection:
        connection.sendall(request.encode())
        return b"".join(iter(lambda: connection.recv(65536), b""))


class Protocol(RoadTest):
    def test_examples_are_answered_as_the_page_says(self):
        # What the page has at home stands in the case's folder: the sources themselves may be in somebody's home.
        (self.folder / "new.fds").write_bytes(content(200000))
        self.start_service()
        shown = examples(self.folder)
        self.assertGreater(len(shown), 10)
        for request, expected in shown:
            with self.subTest(request):
                answer = answered(request)
                if size := re.fullmatch(r"\((\d+) bytes\)", expected):
                    self.assertEqual(answer, content(200000)[:int(size.group(1))])
                else:
                    self.assertEqual(SPEED.sub("MB/s", answer.decode()), SPEED.sub("MB/s", expected))
