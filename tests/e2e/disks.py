"""The memory of the accessories, in files of this computer: what the guest did to it is read from outside of the guest."""

import random
import subprocess

BLOCK = 512
MIB = 1 << 20
FIRMWARE, ICON = 1536 * BLOCK, 2048 * BLOCK
SIZE = 16 * MIB
PARTITION = 8192 * BLOCK  # where simulator/make-disk lets it begin


def content(size, seed=1):
    return random.Random(seed).randbytes(size)


def fresh_disk(root, folder):
    """The bytes of a disk with a partition table, a file system in its one partition, and noise before that."""
    path = folder / "fresh.img"
    subprocess.run([root / "simulator/make-disk", path, str(SIZE // MIB)], check=True)
    subprocess.run(["/usr/sbin/mkfs.vfat", "-n", "KESTRAV", "--offset", str(PARTITION // BLOCK), path,
                    str((SIZE - PARTITION) // 1024)], check=True, stdout=subprocess.DEVNULL)
    disk = bytearray(path.read_bytes())
    disk[BLOCK:PARTITION] = content(PARTITION - BLOCK, "noise")
    return bytes(disk)


class Slot:
    """One accessory's memory: a piece of the file of all of them. `expected` is what it should hold."""

    def __init__(self, path, index, fresh):
        self.path, self.index = path, index
        self.expected = fresh
        with open(path, "r+b") as file:
            file.seek(index * SIZE)
            file.write(fresh)

    def read(self):
        with open(self.path, "rb") as file:
            file.seek(self.index * SIZE)
            return file.read(SIZE)

    def expect(self, offset, image):
        self.expected = self.expected[:offset] + image + self.expected[offset + len(image):]

    def differences(self):
        """Where it is not as expected: pairs of the first and the last byte, in whole blocks."""
        found, places = self.read(), []
        for at in range(0, SIZE, BLOCK):
            if found[at:at + BLOCK] == self.expected[at:at + BLOCK]:
                continue
            if places and places[-1][1] == at - 1:
                places[-1][1] = at + BLOCK - 1
            else:
                places.append([at, at + BLOCK - 1])
        return places


class Slots:
    """The file of all accessories; every case takes a piece that no other case uses."""

    COUNT = 64

    def __init__(self, root, folder):
        self.path = folder / "accessories.img"
        with open(self.path, "wb") as file:
            file.truncate(self.COUNT * SIZE)
        self.fresh = fresh_disk(root, folder)
        self.taken = []
        # For another vendor's disk: a file of its own, whose times tell whether anything was written to it.
        self.stick = folder / "stick.img"
        self.stick.write_bytes(self.fresh)

    def take(self):
        # The first place stays empty, so that nobody takes the file as a whole for a disk with partitions.
        self.taken.append(Slot(self.path, len(self.taken) + 1, self.fresh))
        return self.taken[-1]
