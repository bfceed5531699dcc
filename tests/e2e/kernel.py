"""A stock Debian kernel and the little file system that it starts with.

The kernel's package is downloaded and unpacked, never installed: this computer goes on as it is.
"""

import os
import shutil
import subprocess
from pathlib import Path

HERE = Path(__file__).resolve().parent

# What the guest needs before it has a file system to load modules from.
EARLY_MODULES = ["virtio_pci", "virtio_blk", "virtio_console", "virtio_rng", "9pnet_virtio", "9p", "overlay"]


class Unavailable(Exception):
    """Something that can't be had on this computer; nothing was tested then."""


def output(*command, **options):
    return subprocess.run([*map(str, command)], check=True, capture_output=True, text=True, **options).stdout


class Kernel:
    """The unpacked package in `folder`, below `cache`."""

    def __init__(self, cache):
        self.folder = self.newest(cache)
        self.version = self.folder.name.removeprefix("linux-image-")
        self.image = self.folder / f"boot/vmlinuz-{self.version}"

    def newest(self, cache):
        """Today's kernel; without a network the one that was fetched last."""
        fetched = sorted(cache.glob("linux-image-*"), key=lambda folder: folder.stat().st_ctime)
        try:
            package = self.newest_package()
            if not (cache / package).exists():
                self.fetch(cache, package)
            return cache / package
        except Unavailable:
            if not fetched:
                raise
            return fetched[-1]

    @staticmethod
    def newest_package():
        """The package that linux-image-amd64 stands for today."""
        try:
            words = output("apt-cache", "depends", "linux-image-amd64").split()
        except (OSError, subprocess.CalledProcessError) as error:
            raise Unavailable(f"apt does not know a Debian kernel ({error})") from error
        if "Depends:" not in words:
            raise Unavailable("apt has no list of packages; run apt-get update")
        return words[words.index("Depends:") + 1]

    @staticmethod
    def fetch(cache, package):
        new = cache / "new"
        shutil.rmtree(new, ignore_errors=True)
        new.mkdir(parents=True)
        try:
            output("apt-get", "download", "-qq", package, cwd=new)
        except subprocess.CalledProcessError as error:
            raise Unavailable(f"{package} can't be downloaded: {error.stderr.strip()}") from error
        [archive] = new.glob("*.deb")
        output("dpkg-deb", "-x", archive, new)
        archive.unlink()
        output("depmod", "-b", new, package.removeprefix("linux-image-"))
        new.rename(cache / package)

    def module_files(self):
        """The early modules and all that they need, in the order in which they have to be loaded."""
        files = []
        for module in EARLY_MODULES:
            shown = output("modprobe", "-S", self.version, "-d", self.folder, "--show-depends", module)
            files += [line.split()[1] for line in shown.splitlines() if line.startswith("insmod ")]
        return list(dict.fromkeys(files))

    def make_start(self, folder):
        """Packs the start file system and gives its path."""
        tree = folder / "start"
        shutil.rmtree(tree, ignore_errors=True)
        for name in ("bin", "dev", "proc", "sys", "machine", "upper", "root", "modules"):
            (tree / name).mkdir(parents=True)
        shutil.copy("/bin/busybox", tree / "bin/busybox")
        shutil.copy(HERE / "guest/init", tree / "init")
        os.chmod(tree / "init", 0o755)
        order = []
        for path in self.module_files():
            shutil.copy(path, tree / "modules")
            order.append(os.path.basename(path))
        (tree / "modules/order").write_text("\n".join(order) + "\n")
        archive = folder / "start.cpio"
        with open(archive, "wb") as packed:
            names = output("find", ".", cwd=tree)
            subprocess.run(["/bin/busybox", "cpio", "-o", "-H", "newc"], cwd=tree, input=names.encode(), stdout=packed,
                           stderr=subprocess.DEVNULL, check=True)
        return archive


def require_all_that_is_needed():
    """Raises where the run can't be had, before anything is begun."""
    if os.geteuid() != 0:
        raise Unavailable("the guest runs on this computer's own files, which only root can read all of")
    path = os.environ["PATH"] + ":/usr/sbin:/sbin"
    for program in ("qemu-system-x86_64", "busybox", "modprobe", "depmod", "dpkg-deb", "dh", "mkfs.vfat", "dmsetup",
                    "udisksctl", "pkttyagent", "lxpolkit", "Xvfb", "xdotool", "/usr/lib/systemd/systemd"):
        if shutil.which(program, path=path) is None:
            raise Unavailable(f"there is no {program} here; see .ci/set-up e2e")
