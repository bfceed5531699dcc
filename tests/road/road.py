"""The whole road of an update, with nothing on it a stand-in but the hardware.

kestravctl and kestrav-commandd run as they are, each with the simulated accessory plugged in. Every case has a
network of its own (see CMakeLists.txt), so that port 9090 is free, and mounts of its own.
"""

import hashlib
import os
import random
import signal
import socket
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "sandbox"))
from sandbox import SandboxTest  # noqa: E402: found by the line above

ROOT = Path(__file__).resolve().parents[2]
PROGRAMS = Path(os.environ["KESTRAV_PROGRAMS"])
BLOCK = 512
FIRMWARE, ICON = 1536, 2048
MIB = 1 << 20

PRELUDE = ["Writing to device memory space."]
FINISH = ["", "Finished writing to device."]


def loaded(path, size):
    return f"Loaded icon file: {path} with {size} bytes."


def on_disk(size, first_block, disk="sdzz"):
    return f"The image is on {disk}: {size} bytes from block {first_block} on, read back and equal."


def content(size, seed=1):
    return random.Random(seed).randbytes(size)


class RoadTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.disk = self.folder / "accessory.img"
        subprocess.run([ROOT / "simulator/make-disk", self.disk], check=True)
        self.services = []

    # -- the two programs ------------------------------------------------------------------------------------------

    def plugged_in(self, command, device="accessory"):
        return [ROOT / "simulator/with-accessory", "--disk", self.disk, "--device", device, "--", *command]

    def start_service(self, device="accessory"):
        """Starts the command service and waits until it listens. It is ended with the case."""
        log = open(self.folder / "service.log", "ab")
        self.addCleanup(log.close)
        service = subprocess.Popen(self.plugged_in([PROGRAMS / "kestrav-commandd"], device), stderr=log, stdout=log)
        self.addCleanup(self.stop_service, service)
        self.wait_until(self.port_answers, "the service does not listen", service)
        return service

    @staticmethod
    def port_answers():
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", 9090)) == 0

    @staticmethod
    def stop_service(service):
        if service.poll() is None:
            service.terminate()
            service.wait(timeout=30)

    def service_log(self):
        path = self.folder / "service.log"
        return path.read_text(errors="replace") if path.exists() else ""

    def more_of_a_failure(self):
        return self.service_log()

    def kestravctl(self, *arguments, plugged=True, device="accessory", **options):
        command = [PROGRAMS / "kestravctl", *map(str, arguments)]
        if plugged:
            command = self.plugged_in(command, device)
        else:
            command = ["umockdev-run", "--", *command]
        options.setdefault("timeout", 90)
        options.setdefault("stdin", subprocess.DEVNULL)
        if "stdout" not in options:
            options["stdout"] = subprocess.PIPE
        return subprocess.run(command, stderr=subprocess.PIPE, **options)

    # -- files and the disk ----------------------------------------------------------------------------------------

    def image(self, size, name="image.fds", seed=1):
        path = self.folder / name
        path.write_bytes(content(size, seed))
        return path

    def disk_bytes(self, first_block, size):
        with open(self.disk, "rb") as disk:
            disk.seek(first_block * BLOCK)
            return disk.read(size)

    def digest(self):
        return hashlib.sha256(self.disk.read_bytes()).hexdigest()

    def assert_only_changed(self, before, first_block, image):
        """The disk holds `image` at `first_block`, and every other byte is as it was in `before`."""
        start = first_block * BLOCK
        expected = before[:start] + image + before[start + len(image):]
        self.assertEqual(len(self.disk.read_bytes()), len(before))
        self.assertTrue(self.disk.read_bytes() == expected, "the disk is not what it should be")

    # -- what was said ---------------------------------------------------------------------------------------------

    def assert_said(self, result, lines, code=0):
        """Standard output is exactly these progress lines and the exit status is `code`."""
        self.assertEqual(result.stdout.decode().splitlines(), lines, result.stderr.decode())
        self.assertEqual(result.returncode, code, result.stderr.decode())

    def assert_reported(self, result, words):
        self.assertIn(words, result.stderr.decode())


class AnsweringService:
    """A service for one port 9090 that only answers what it is told, for replies that no good service gives."""

    def __init__(self, answer):
        self.answer = answer
        self.requests = []
        self.listener = socket.create_server(("127.0.0.1", 9090))
        self.child = None

    def __enter__(self):
        self.child = os.fork()
        if self.child == 0:
            try:
                self.serve()
            finally:
                os._exit(0)
        self.listener.close()
        return self

    def serve(self):
        while True:
            peer, _ = self.listener.accept()
            with peer:
                peer.recv(65536)
                self.answer(peer)

    def __exit__(self, *_):
        os.kill(self.child, signal.SIGKILL)
        os.waitpid(self.child, 0)
