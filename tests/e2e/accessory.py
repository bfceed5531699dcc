"""An accessory that is plugged into the guest: a slot of memory, a real USB disk over it, and its names there."""

from disks import BLOCK, SIZE

KESTRAV = ("0x10d6", "0xfd01")
OTHER_VENDOR = ("0x0951", "0x1666")
SECTORS = SIZE // BLOCK


class Accessory:
    """`table` is the device-mapper table of the memory, its lines with {disk} and {start} for this slot's place."""

    def __init__(self, guest, slot, port=0, ids=KESTRAV, serial="K0001", readonly=False, sectors=SECTORS, table=None):
        self.guest, self.slot, self.port, self.ids, self.serial = guest, slot, port, ids, serial
        self.readonly = readonly
        self.name = f"slot{slot.index}"
        self.disk = None
        self.map(table or f"0 {sectors} linear {{disk}} {{start}}")

    def filled(self, table):
        start = self.slot.index * SECTORS
        lines = []
        for line in table.splitlines():
            first = int(line.split()[0])
            lines.append(line.format(disk="/dev/disk/by-id/virtio-accessories", start=start + first))
        return "\n".join(lines)

    def map(self, table):
        self.guest.run("dmsetup", "create", self.name, "--table", self.filled(table))

    def remap(self, table):
        """Exchanges the memory under the accessory while it is plugged in; what was held up goes on."""
        self.guest.sh(f"dmsetup reload {self.name} --table '{self.filled(table)}'; dmsetup resume {self.name}")

    # -- the plug --------------------------------------------------------------------------------------------------

    def plug(self, wait=True):
        """Plugs it in and, with `wait`, waits until its disk is there and udev has given it its names."""
        self.guest.run("/e2e/scripts/accessory", "plug", self.name, self.port, f"/dev/mapper/{self.name}",
                       *self.ids, self.serial, int(self.readonly))
        if wait:
            self.wait_for_disk()
        return self

    def wait_for_disk(self):
        # The dummy controller of this port is the only one with this number; below it is the disk.
        self.disk = self.guest.sh(
            f"for try in $(seq 600); do set -- /sys/devices/platform/dummy_hcd.{self.port}/usb*/*/*/host*/target*/*/block/*;"
            " [ -e \"$1/dev\" ] && break; sleep 0.1; done; udevadm settle; basename \"$1\"").out.strip()

    def pull(self):
        """Pulls the plug, as far as it is in."""
        self.guest.run("/e2e/scripts/accessory", "unplug", self.name)
        self.disk = None

    def forget(self):
        """Pulled, and nothing of it left in the guest: all that was written to it is in its memory now."""
        self.pull()
        self.guest.sh(f"if dmsetup info {self.name} >/dev/null 2>&1; then"
                      f" dmsetup resume {self.name}; dmsetup remove --retry {self.name}; fi")
