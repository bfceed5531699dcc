"""What all cases of one run share: one guest at a time, and the memory of its accessories."""

from disks import Slots
from guest import ROOT, Guest
from install import gather_packages, install

CACHE = ROOT / "build/e2e"


class World:
    guest = None
    slots = None
    folder = None
    lock = None  # held open: two runs would clear away each other's folder

    @classmethod
    def begin(cls, folder, packages=None):
        cls.folder = folder
        cls.slots = Slots(ROOT, folder)
        gather_packages(folder / "packages", packages)
        return cls.boot("guest")

    @classmethod
    def boot(cls, name):
        """Boots a guest with the packages in it, both people at its terminals, and all the memory of before."""
        folder = cls.folder / name
        folder.mkdir()
        cls.guest = Guest(CACHE, folder, {"accessories": cls.slots.path, "stick": cls.slots.stick})
        cls.guest.wait_until_ready()
        cls.guest.sh("modprobe dummy_hcd num=3 is_high_speed=1; modprobe usb_f_mass_storage;"
                     "modprobe usb_storage delay_use=0; chmod 755 /e2e/exchange")
        install(cls.guest, cls.folder / "packages")
        cls.guest.log_in("anna", "tty1")
        cls.guest.log_in("ben", "tty2")
        return cls.guest

    @classmethod
    def end(cls):
        """Shuts the guest down if it runs, and leaves none behind in any case."""
        if cls.guest is None:
            return
        try:
            if cls.guest.is_running():
                cls.guest.power_off()
        finally:
            cls.guest.cut_power()
