"""What the cases of one part share: one guest at a time, and the memory of its accessories."""

from disks import Slots
from guest import ROOT, Guest
from install import install
from window import Window

CACHE = ROOT / "build/e2e"


class World:
    guest = None
    slots = None
    folder = None
    packages = None

    @classmethod
    def begin(cls, folder, packages):
        cls.folder, cls.packages = folder, packages
        cls.slots = Slots(ROOT, folder)
        cls.boot("guest")

    @classmethod
    def boot(cls, name):
        """Boots a guest with the packages in it and all the memory of before."""
        folder = cls.folder / name
        folder.mkdir()
        cls.guest = Guest(CACHE, folder, {"accessories": cls.slots.path, "stick": cls.slots.stick})
        cls.guest.wait_until_ready()
        cls.guest.sh("modprobe dummy_hcd num=3 is_high_speed=1; modprobe usb_f_mass_storage;"
                     "modprobe usb_storage delay_use=0; chmod 755 /e2e/exchange")
        install(cls.guest, cls.packages)
        return cls.guest

    @classmethod
    def person(cls, name):
        """Somebody in the guest; both of its people log in when the first of them is needed."""
        if name not in cls.guest.people:
            cls.guest.log_in(anna="tty1", ben="tty2")
        return cls.guest.people[name]

    @classmethod
    def window(cls):
        """The window in anna's session, opened when it is needed first and open until the guest goes."""
        if cls.guest.window is None:
            cls.guest.window = Window(cls.guest, cls.person("anna"))
        return cls.guest.window

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
