#!/usr/bin/env python3
"""Times the service's own write against dd on a disk of its own, and prints the ratios.

    benchmarks/service/write_speed.py COMMANDD     COMMANDD: the release build of kestrav-commandd

The service runs inside the simulated accessory's test bed; dd and cmp run outside of it, on the same disk image, because
the test bed's library would slow their many small calls down. As root the same is measured on a loop device, a real
block device. The sides of a ratio run in turn (A B A B ...); the figures are medians. Our side is one exchange on the
wire, flushed, read back from the disk and compared.
"""

import json
import os
import socket
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "benchmarks"))
from loop_bed import description_of  # noqa: E402: found only now

KIB, MIB = 1 << 10, 1 << 20
FIRST_BLOCK = 2048


def serve():
    """Inside the test bed: becomes the service, with a socket of a free port in its third descriptor."""
    listener = socket.create_server(("127.0.0.1", 0))
    Path(sys.argv[3]).write_text(f"{listener.getsockname()[1]} {os.getpid()}")
    if len(sys.argv) > 4:  # a loop device takes the place of the image
        major, minor = (int(number) for number in sys.argv[5].split(":"))
        node = Path(os.environ["UMOCKDEV_DIR"]) / "dev/sdzz"
        node.unlink()
        os.mknod(node, 0o061600, os.makedev(major, minor))
    handed = os.dup(listener.fileno()) if listener.fileno() == 3 else listener.fileno()
    os.dup2(handed, 3)
    os.set_inheritable(3, True)
    environment = dict(os.environ, LISTEN_FDS="1", LISTEN_PID=str(os.getpid()))
    os.execve(sys.argv[1], [sys.argv[1]], environment)


class Service:
    def __init__(self, commandd, folder, disk, loop=None):
        ready = folder / "ready"
        ready.unlink(missing_ok=True)
        bed = [ROOT / "simulator/with-accessory", "--disk", disk]
        extra = []
        if loop:
            number = Path(f"/sys/block/{Path(loop).name}/dev").read_text().strip()
            changed = folder / "loop.umockdev"
            changed.write_text(description_of(number))
            bed += ["--device", changed]
            extra = [loop, number]
        self.process = subprocess.Popen(
            [*bed, "--", sys.executable, __file__, commandd, "serve", ready, *extra],
            stderr=subprocess.DEVNULL)
        while not (ready.exists() and len(ready.read_text().split()) == 2):
            time.sleep(0.01)
        self.port, self.pid = (int(word) for word in ready.read_text().split())
        while b"kestrav-commandd" not in Path(f"/proc/{self.pid}/cmdline").read_bytes().split(b"\0")[0]:
            time.sleep(0.01)

    def write(self, image):
        request = {"command": "dd", "arguments": [f"if={image}", "of=/dev/rsdzz", f"seek={FIRST_BLOCK}", "bs=512"]}
        with socket.create_connection(("127.0.0.1", self.port)) as connection:
            connection.sendall(json.dumps(request, separators=(",", ":")).encode())
            reply = connection.recv(10240).decode()
        if not reply.startswith("Wrote") or ", verified," not in reply:
            sys.exit(f"the service answered: {reply}")

    def stop(self):
        os.kill(self.pid, 15)
        self.process.wait()


def seconds(task):
    start = time.perf_counter()
    task()
    return time.perf_counter() - start


def in_turn(ours, peer, runs):
    shell = ["sh", "-ec", peer]
    peers = lambda: subprocess.run(shell, check=True, stderr=subprocess.DEVNULL)
    ours(), peers()
    pairs = [(seconds(ours), seconds(peers)) for _ in range(runs)]
    return tuple(1000 * statistics.median(column) for column in zip(*pairs))


def row(what, ours, theirs, figure, wanted):
    print(f"| {what} | {ours:.1f} ms | {theirs:.1f} ms | {figure} | {wanted} |", flush=True)


def compare(service, folder, disk, kind):
    image = folder / "image"
    image.write_bytes(os.urandom(64 * MIB))
    peer = (f"dd if={image} of={disk} bs=512 seek={FIRST_BLOCK} conv=notrunc,fsync; "
            f"cmp -n {64 * MIB} -i {FIRST_BLOCK * 512}:0 {disk} {image}")
    ours, theirs = in_turn(lambda: service.write(image), peer, 7)
    row(f"64 MiB onto a {kind}, verified / dd bs=512 fsync, cmp", ours, theirs, f"{ours / theirs:.2f}", "at most 0.6")
    image.write_bytes(os.urandom(256 * KIB))
    peer = f"dd if={image} of={disk} bs=256K seek=4 conv=notrunc,fsync"
    ours, theirs = in_turn(lambda: service.write(image), peer, 21)
    row(f"256 KiB onto a {kind}, verified / bare write", ours, theirs, f"{ours - theirs:+.1f} ms", "at most +30 ms")
    subprocess.run(["cmp", "-n", str(256 * KIB), "-i", f"{FIRST_BLOCK * 512}:0", disk, image], check=True)


def on_loop_device(commandd, folder, disk):
    loop = subprocess.run(["losetup", "-f", "--show", disk], check=True, capture_output=True, text=True).stdout.strip()
    try:
        service = Service(commandd, folder, disk, loop)
        compare(service, folder, loop, "loop device")
        service.stop()
    finally:
        subprocess.run(["losetup", "-d", loop], check=True)


def main():
    commandd = Path(sys.argv[1]).resolve()
    if len(sys.argv) > 2:
        return serve()
    print("| what | service | peer | figure | wanted |\n|---|---|---|---|---|", flush=True)
    with tempfile.TemporaryDirectory(prefix="kestrav-benchmark.") as name:
        folder = Path(name)
        disk = folder / "accessory.img"
        subprocess.run([ROOT / "simulator/make-disk", disk, "80"], check=True)
        service = Service(commandd, folder, disk)
        compare(service, folder, disk, "file")
        service.stop()
        if os.geteuid() == 0:
            on_loop_device(commandd, folder, disk)


if __name__ == "__main__":
    main()
