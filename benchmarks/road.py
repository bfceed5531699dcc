#!/usr/bin/env python3
"""Times the whole road against its peers, in one run on one machine, and prints the ratios.

    benchmarks/road.py PROGRAMS [PART...]     PROGRAMS: the folder of kestravctl and kestrav-commandd, release build;
                                              PART: update, memory, detect; all without any

Exit status 1 where a figure is beyond what is wanted of it. On a computer that does something else meanwhile it says
nothing.

As root it has a network, mounts and processes of its own: the service looks through the descriptors of all processes for
who asks. The updates are measured on a loop device then, without the library through which each look at a file is five
in the simulation; see loop_bed.py.

Runs itself again inside the accessory's bed, so that setting the bed up is not part of any figure.
Both sides of a ratio run in turn (A B A B ...) under the same conditions; the figures are medians of whole processes.
"""

import os
import socket
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import loop_bed

ROOT = Path(__file__).resolve().parents[1]
MIB = 1 << 20
FIRMWARE = 1536 * 512  # where it begins on the disk, in bytes
UDEVADM = ["udevadm", "trigger", "--dry-run", "--subsystem-match=usb",
           "--attr-match=idVendor=10d6", "--attr-match=idProduct=fd01"]


def without_bed():
    """The environment of a peer that needs no accessory: the test bed's library would slow its small calls down."""
    return {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}


def seconds(command, environment=None):
    start = time.perf_counter()
    subprocess.run(command, check=True, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - start


def in_turn(first, second, runs, environment_of_second=None):
    """Medians of both commands in milliseconds, after one run of each that does not count."""
    pairs = [(seconds(first), seconds(second, environment_of_second)) for _ in range(runs + 1)][1:]
    return tuple(1000 * statistics.median(column) for column in zip(*pairs))


def row(what, ours, theirs, figure, wanted, holds):
    """A row of the table; false where the figure is not as wanted."""
    print(f"| {what} | {ours} | {theirs} | {figure} | {wanted} | {'yes' if holds else 'NO'} |", flush=True)
    return holds


def ms(value):
    return f"{value:.1f} ms"


class Service:
    """kestrav-commandd in this test bed."""

    def __init__(self, programs):
        self.process = subprocess.Popen([programs / "kestrav-commandd"], stderr=subprocess.DEVNULL)
        for _ in range(500):
            with socket.socket() as probe:
                if probe.connect_ex(("127.0.0.1", 9090)) == 0:
                    return
            time.sleep(0.01)
        sys.exit("the service does not listen")

    def stop(self):
        self.process.terminate()
        self.process.wait()

    def processor_ms(self):
        """Processor time of the service and of the processes of its requests so far."""
        fields = Path(f"/proc/{self.process.pid}/stat").read_text().rpartition(")")[2].split()
        return 1000 * sum(int(ticks) for ticks in fields[11:15]) / os.sysconf("SC_CLK_TCK")

    def resident_kib(self):
        """Peak resident memory of the service and of the process that carries a request out, in KiB each."""
        children = Path(f"/proc/{self.process.pid}/task/{self.process.pid}/children").read_text().split()
        peaks = []
        for pid in [str(self.process.pid), *children]:
            try:
                lines = Path(f"/proc/{pid}/status").read_text().splitlines()
            except OSError:
                continue
            peaks += [int(line.split()[1]) for line in lines if line.startswith("VmHWM:")]
        return peaks


def zero_free(path, size):
    with open(path, "wb") as image:
        for _ in range(size // MIB or 1):
            image.write(os.urandom(min(size, MIB)))


def update_against_dd(programs, folder, disk):
    service = Service(programs)
    hold = []
    for size, runs in ((64 * MIB, 7), (256 * 1024, 31)):
        image = folder / "image"
        zero_free(image, size)
        ours = [programs / "kestravctl", "firmware", image]
        if size > MIB:
            peer = (f"dd if={image} of={disk} bs=512 seek={FIRMWARE // 512} conv=notrunc,fsync && "
                    f"cmp -n {size} -i {FIRMWARE}:0 {disk} {image}")
            road, theirs = in_turn(ours, ["sh", "-c", peer], runs, without_bed())
            hold.append(row("firmware of 64 MiB, verified / dd bs=512 fsync, cmp", ms(road), ms(theirs),
                            f"{road / theirs:.3f}", "at most 0.12", road / theirs <= 0.12))
        else:
            before = service.processor_ms()
            peer = f"dd if={image} of={disk} bs=256K seek={FIRMWARE // (256 * 1024)} conv=notrunc,fsync"
            road, theirs = in_turn(ours, ["sh", "-c", peer], runs, without_bed())
            hold.append(row("firmware of 256 KiB, verified / bare write", ms(road), ms(theirs),
                            f"{road - theirs:+.1f} ms", "at most +8 ms", road - theirs <= 8))
            taken = (service.processor_ms() - before) / (runs + 1)
            print(f"| processor time of the service in each of these updates | {ms(taken)} | | | | |", flush=True)
        subprocess.run(["cmp", "-n", str(size), "-i", f"{FIRMWARE}:0", disk, image], check=True)
    service.stop()
    return all(hold)


def memory_of_a_large_write(programs, folder):
    service = Service(programs)
    image = folder / "gigabyte"
    with open(image, "wb") as file:
        file.truncate(1024 * MIB)
    sender = subprocess.Popen(
        [programs / "kestravctl", "icon", image], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    most = (0, [])
    while sender.poll() is None:
        peaks = service.resident_kib()
        most = max(most, (sum(peaks), peaks))
        time.sleep(0.005)
    service.stop()
    parts = " + ".join(f"{peak / 1024:.1f}" for peak in most[1])
    return row("resident memory of the service while 1 GiB is written", f"{most[0] / 1024:.1f} MiB ({parts})", "", "",
               "at most 24 MiB", most[0] / 1024 <= 24)


def detection_against_udevadm(programs):
    ours, theirs = in_turn([programs / "kestravctl", "detect"], UDEVADM, 41)
    return row("kestravctl detect / udevadm trigger --dry-run", ms(ours), ms(theirs), f"{ours / theirs:.2f}", "at most 1.0",
               ours / theirs <= 1.0)


def among_few():
    """Becomes this program again, in a network and among processes of its own."""
    own = ["unshare", "--net", "--pid", "--fork", "--kill-child", "--mount-proc", sys.executable, __file__]
    os.execvp(own[0], [*own, sys.argv[1], "alone", *sys.argv[2:]])


def inside(part, programs, folder):
    if part == "update":
        on_loop = Path(loop_bed.DISK).is_block_device() and "LD_PRELOAD" not in os.environ
        return update_against_dd(programs, folder, loop_bed.DISK if on_loop else folder / "accessory.img")
    if part == "memory":
        return memory_of_a_large_write(programs, folder)
    return detection_against_udevadm(programs)


def in_bed(part, programs, folder, *options):
    again = [sys.executable, __file__, programs, "inside", part, folder]
    if part == "update" and loop_bed.is_possible():
        with loop_bed.loop_bed(folder, folder / "accessory.img") as environment:
            return subprocess.run(again, env=environment, check=False).returncode == 0
    return subprocess.run([ROOT / "simulator/with-accessory", *options, "--", *again], check=False).returncode == 0


def main():
    programs = Path(sys.argv[1]).resolve()
    if sys.argv[2:3] == ["inside"]:
        return 0 if inside(sys.argv[3], programs, Path(sys.argv[4])) else 1
    if sys.argv[2:3] == ["alone"]:
        sys.argv.pop(2)
        sys.path.insert(0, str(ROOT / "tests/sandbox"))
        from sandbox import bring_loopback_up
        bring_loopback_up()
    elif os.geteuid() == 0:
        among_few()
    print("| what | ours | peer | figure | wanted | holds |\n|---|---|---|---|---|---|", flush=True)
    with tempfile.TemporaryDirectory(prefix="kestrav-benchmark.") as name:
        folder = Path(name)
        disk = folder / "accessory.img"
        subprocess.run([ROOT / "simulator/make-disk", disk, "1040"], check=True)
        hold = [in_bed(part, programs, folder, *([] if part == "detect" else ["--disk", disk]))
                for part in sys.argv[2:] or ("update", "memory", "detect")]
    return 0 if all(hold) else 1


if __name__ == "__main__":
    sys.exit(main())
