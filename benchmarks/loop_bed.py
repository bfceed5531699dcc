"""A loop device, which is a real block device, as the accessory's disk: for measurements without the simulation's library.

What the kernel would tell of an accessory in /sys is a copy of what the simulation tells, bound over the real folders in
mounts of this process's own; /dev holds the disk and its aliases. Needs root, and mounts that nobody else sees.
"""

import contextlib
import os
import shutil
import stat
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
SYSFS = ("block", "bus", "class", "dev", "devices")
DISK = "/dev/sdzz"


def is_possible():
    return os.geteuid() == 0 and Path("/dev/loop-control").exists()


def description_of(number):
    """The simulated accessory, with a disk of that number ("7:1")."""
    major, minor = number.split(":")
    text = (ROOT / "simulator/accessory.umockdev").read_text()
    return (text.replace("131:720", number)
            .replace("MAJOR=131\nE: MINOR=720", f"MAJOR={major}\nE: MINOR={minor}"))


def run(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.strip()


def copy_of_sysfs(folder, image, number):
    described = folder / "loop.umockdev"
    described.write_text(description_of(number))
    copy = folder / "sys"
    run(ROOT / "simulator/with-accessory", "--disk", image, "--device", described, "--",
        "sh", "-c", 'exec env -u LD_PRELOAD cp -a "$UMOCKDEV_DIR/sys" "$1"', "sh", copy)
    return copy


def fill(dev, number):
    for name in ("null", "zero", "full", "random", "urandom"):
        there = os.stat(f"/dev/{name}")
        os.mknod(dev / name, stat.S_IFCHR | 0o666, there.st_rdev)
    for name, its_number in (("sdzz", number), ("sdzz1", "131:721")):
        os.mknod(dev / name, stat.S_IFBLK | 0o600, os.makedev(*map(int, its_number.split(":"))))
    (dev / "rsdzz").symlink_to("sdzz")
    (dev / "sdzzs1").symlink_to("sdzz1")
    (dev / "fd").symlink_to("/proc/self/fd")
    (dev / "board").mkdir(mode=0o755)


@contextlib.contextmanager
def loop_bed(folder, image):
    """Gives the environment for programs that are to see the accessory; its disk is DISK."""
    with contextlib.ExitStack() as undo:
        loop = run("losetup", "--find", "--show", image)
        undo.callback(run, "losetup", "--detach", loop)
        number = Path(f"/sys/block/{Path(loop).name}/dev").read_text().strip()
        sysfs = copy_of_sysfs(folder, image, number)
        undo.callback(shutil.rmtree, sysfs)
        dev = folder / "dev"
        dev.mkdir()
        run("mount", "-t", "tmpfs", "dev", dev)
        undo.callback(run, "umount", "--lazy", dev)
        fill(dev, number)
        for name in SYSFS:
            run("mount", "--bind", sysfs / name, f"/sys/{name}")
            undo.callback(run, "umount", f"/sys/{name}")
        run("mount", "--bind", dev, "/dev")
        undo.callback(run, "umount", "--lazy", "/dev")
        # The service's board stands in memory, as /run does; libudev is to believe what is no sysfs.
        yield dict(os.environ, RUNTIME_DIRECTORY="/dev/board", SYSTEMD_DEVICE_VERIFY_SYSFS="0")
