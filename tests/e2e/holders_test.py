"""Who else uses the accessory's disk: what the kernel builds upon it, and what is mounted of it. Each is named by the
answer, and the disk is left as it is, or the mount gives way."""

from bad_days import wrote
from disks import FIRMWARE, PARTITION, content
from fronts import KestravctlCase

SIZE = 5000


class Holders(KestravctlCase):
    def assert_in_use(self, accessory, holder):
        path = self.image(SIZE)
        told = self.update("firmware", path)
        self.assert_handed_over(told, path, SIZE)
        sentence = f"Refused: the disk {accessory.disk} is in use by {holder}; wait until that is done and try again."
        self.assert_answered(told, sentence)
        self.wait_for_log(sentence, "kestrav-commandd")
        self.assert_not_verified(told)

    def map_upon(self, accessory, name, table):
        """Makes a disk of the device mapper upon the accessory's partition, until the case's end; how it is named."""
        partition = f"/dev/{accessory.disk}1"
        self.root.run("dmsetup", "create", name, "--table", table.format(partition=partition))
        self.addCleanup(self.root.run, "dmsetup", "remove", "--retry", name, check=False)
        return f"{name} ({self.root.run('dmsetup', 'info', '-c', '--noheadings', '-o', 'blkdevname', name).out.strip()})"

    def test_a_logical_volume_on_the_accessory_is_named(self):
        accessory = self.plugged()
        name = self.map_upon(accessory, "kestrav-volume", "0 4096 linear {partition} 0")
        self.assert_in_use(accessory, name)
        self.root.run("dmsetup", "remove", "--retry", "kestrav-volume")
        self.assert_disk(accessory)

    def test_an_encrypted_disk_on_the_accessory_is_named(self):
        accessory = self.plugged()
        name = self.map_upon(accessory, "kestrav-secret", f"0 4096 crypt aes-xts-plain64 {'5a' * 32} 0 {{partition}} 0")
        self.assert_in_use(accessory, name)
        self.root.run("dmsetup", "remove", "--retry", "kestrav-secret")
        self.assert_disk(accessory)

    def test_a_raid_on_the_accessory_is_named(self):
        accessory = self.plugged()
        number = self.root.sh(f"cat /sys/block/{accessory.disk}/{accessory.disk}1/dev").out.strip()
        # As mdadm does it, for an array whose members hold nothing but its data.
        self.root.sh("modprobe raid1; echo md_kestrav >/sys/module/md_mod/parameters/new_array; cd /sys/block/md_kestrav/md;"
                     f"echo raid1 >level; echo 2 >raid_disks; echo 1024 >component_size; echo {number} >new_dev")
        self.addCleanup(self.root.sh, "echo clear >/sys/block/md_kestrav/md/array_state", check=False)
        self.assert_in_use(accessory, "md_kestrav")
        self.root.sh("echo clear >/sys/block/md_kestrav/md/array_state")
        self.assert_disk(accessory)

    def test_swap_space_on_the_accessory_is_named(self):
        accessory = self.plugged()
        partition = f"/dev/{accessory.disk}1"
        self.root.sh(f"mkswap {partition}; swapon {partition}")
        self.addCleanup(self.root.run, "swapoff", partition, check=False)
        self.assert_in_use(accessory, f"the swap space {partition}")
        self.root.run("swapoff", partition)
        self.assert_disk_before_partition(accessory)

    def assert_disk_before_partition(self, accessory):
        """What a mount or a swap space does to its own partition is its own matter."""
        accessory.forget()
        accessory.slot.expected = accessory.slot.expected[:PARTITION] + accessory.slot.read()[PARTITION:]
        self.assert_disk(accessory)

    def assert_unmounted_and_written(self, accessory, *places):
        accessory.slot.expect(FIRMWARE, content(SIZE))
        told = self.update("firmware", self.image(SIZE))
        said = self.wait_for_log(f"Unmounted {accessory.disk}1 from ", "kestravctl")
        for place in places:
            self.assertIn(place, said)
        self.assert_verified(told, wrote(SIZE, accessory.disk))
        self.assertNotIn(f"/dev/{accessory.disk}1", self.root.run("cat", "/proc/1/mounts").out)
        self.assert_disk_before_partition(accessory)

    def test_what_systemd_mounts_at_a_touch_is_unmounted(self):
        accessory = self.plugged()
        self.root.run("systemd-mount", "--automount=yes", "--collect", f"/dev/{accessory.disk}1", "/run/touched")
        self.addCleanup(self.root.run, "systemd-mount", "--umount", "/run/touched", check=False)
        self.root.run("ls", "/run/touched")
        self.assertIn("/run/touched vfat", self.root.run("cat", "/proc/1/mounts").out)
        self.assert_unmounted_and_written(accessory, "/run/touched")

    def test_a_folder_of_it_that_is_bound_elsewhere_is_unmounted_too(self):
        accessory = self.plugged()
        self.root.sh(f"mkdir -p /run/whole /run/part; mount /dev/{accessory.disk}1 /run/whole; mkdir /run/whole/folder;"
                     "mount --bind /run/whole/folder /run/part")
        self.addCleanup(self.root.sh, "umount /run/part /run/whole", check=False)
        self.assert_unmounted_and_written(accessory, "/run/whole", "/run/part")
