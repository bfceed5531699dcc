"""An accessory that is plugged into the guest: a slot of memory, a real USB disk over it, and its names there."""

from disks import BLOCK, SIZE

KESTRAV = ("0x10d6", "0xfd01")
OTHER_VENDOR = ("0x0951", "0x1666")
SECTORS = SIZE // BLOCK
SOUND = f"0 {SECTORS} linear {{disk}} {{start}}"
KEPT_BACK = 1664  # the first block of the memories that are slow from there on; the firmware begins before it


def slow(milliseconds):
    """A memory that takes writes quickly up to KEPT_BACK, and keeps those behind that back for this long. Reads and
    empty flushes, which come when a disk is looked at, go on at once."""
    place = "{disk} {start}"
    return (f"0 {KEPT_BACK} linear {place}\n"
            f"{KEPT_BACK} {SECTORS - KEPT_BACK} delay {place} 0 {place} {milliseconds} {place} 0")


class Accessory:
    """`table` is the device-mapper table of the memory: {disk} and {start} are its slot, {stick} is a disk apart from all."""

    def __init__(self, guest, slot, port=0, ids=KESTRAV, serial="K0001", readonly=False, table=SOUND):
        self.guest, self.slot, self.port, self.ids, self.serial = guest, slot, port, ids, serial
        self.readonly, self.table = readonly, table
        self.name = f"slot{slot.index}"
        self.disk = None

    def filled(self, table):
        start = self.slot.index * SECTORS
        virtio = "/dev/disk/by-id/virtio-"
        return "\n".join(line.format(disk=virtio + "accessories", stick=virtio + "stick", start=start + int(line.split()[0]))
                         for line in table.splitlines())

    def change_memory(self, table):
        """Exchanges the memory under the accessory while it is plugged in; what the old one held up goes on."""
        self.guest.sh(f"dmsetup reload {self.name} --table '{self.filled(table)}'; dmsetup resume {self.name}")

    # -- the plug --------------------------------------------------------------------------------------------------

    def plug(self):
        """Plugs it in and waits until its disk is there and udev has given it its names."""
        return self.push_in().wait_for_disk()

    def push_in(self):
        self.guest.run("/e2e/tests/e2e/guest/accessory", "plug", self.name, self.port, self.filled(self.table), *self.ids,
                       self.serial, int(self.readonly))
        return self

    def wait_for_disk(self):
        # The dummy controller of this port is the only one with this number; below it is the disk.
        blocks = f"/sys/devices/platform/dummy_hcd.{self.port}/usb*/*/*/host*/target*/*/block/*"
        self.disk = self.guest.sh(f"for try in $(seq 600); do set -- {blocks}; [ -e \"$1/dev\" ] && break; sleep 0.1; done;"
                                  " [ -e \"$1/dev\" ]; udevadm settle; basename \"$1\"").out.strip()
        return self

    def pull(self):
        """Pulls the plug, as far as it is in."""
        self.guest.run("/e2e/tests/e2e/guest/accessory", "pull", self.name)

    def forget(self):
        """Pulled, and nothing of it left in the guest: all that was written to it is in its memory now."""
        self.guest.run("/e2e/tests/e2e/guest/accessory", "forget", self.name)
