"""The whole road of an update, with nothing on it a stand-in but the hardware.

kestravctl and kestrav-commandd run as they are, each with the simulated accessory plugged in. Every case has a
network of its own (see CMakeLists.txt), so that port 9090 is free, and mounts of its own.
"""

import fcntl
import hashlib
import os
import random
import shutil
import signal
import socket
import struct
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PROGRAMS = Path(os.environ["KESTRAV_PROGRAMS"])
BLOCK = 512
FIRMWARE, ICON = 1536, 2048
MIB = 1 << 20

PRELUDE = ["Writing to device memory space."]
FINISH = ["", "Finished writing to device."]


def loaded(path, size):
    return f"Loaded icon file: {path} with {size} bytes."


def bring_loopback_up():
    """A new network namespace has its loopback interface down; SIOCSIFFLAGS with IFF_UP raises it."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        fcntl.ioctl(any_socket, 0x8914, struct.pack("16sH14x", b"lo", 1))


def mount_points():
    """Decoded as far as the cases need: no blanks in their names."""
    with open("/proc/self/mountinfo") as mounts:
        return [line.split()[4] for line in mounts]


def unmount_drives():
    """Takes the machine's own drives out of this case's view; the mounts are private, so they stay where they are."""
    for place in mount_points():
        if place.startswith(("/media", "/run/media")):
            subprocess.run(["umount", "-l", place], check=False)


def content(size, seed=1):
    return random.Random(seed).randbytes(size)


class RoadTest(unittest.TestCase):
    pause = 0.02  # seconds between two looks at what is waited for

    def setUp(self):
        bring_loopback_up()
        unmount_drives()
        self.folder = Path(tempfile.mkdtemp(prefix="kestrav-road."))
        self.addCleanup(self.remove_folder)
        self.disk = self.folder / "accessory.img"
        subprocess.run([ROOT / "simulator/make-disk", self.disk], check=True)
        self.services = []

    def remove_folder(self):
        """A simulation that was killed removes its own part meanwhile."""
        def complain(_function, _path, reason):
            if not isinstance(reason[1], FileNotFoundError):
                raise reason[1]

        shutil.rmtree(self.folder, onerror=complain)

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

    def wait_until(self, condition, otherwise, process=None, seconds=20):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end or (process is not None and process.poll() is not None):
                self.fail(f"{otherwise}\n{self.service_log()}")
            time.sleep(self.pause)

    @staticmethod
    def stop_service(service):
        if service.poll() is None:
            service.terminate()
            service.wait(timeout=30)

    def service_log(self):
        path = self.folder / "service.log"
        return path.read_text(errors="replace") if path.exists() else ""

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
