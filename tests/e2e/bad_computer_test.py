"""The accessory is sound, and what the computer has besides is not: its daemons, its clock, its packages. None of it may
keep an update from its end, or it is told in a sentence."""

import json
import subprocess
import tempfile
from pathlib import Path

from accessory import OTHER_VENDOR, SOUND, slow
from bad_days import let_kernel_wait, wrote
from disks import FIRMWARE, content
from fronts import KestravctlCase
from guest import PATIENCE
from world import World

SIZE = 512000
SMALL = 5000


class Computer(KestravctlCase):
    def assert_written(self, accessory, told, size=SMALL):
        self.assert_verified(told, wrote(size, accessory.disk))
        self.assert_disk(accessory)

    def plugged_for(self, size=SMALL, **how):
        accessory = self.plugged(**how)
        accessory.slot.expect(FIRMWARE, content(size))
        return accessory

    def begun(self):
        """A slow memory, and a write into it that has begun."""
        accessory = self.plugged_for(SIZE, table=slow(300_000))
        let_kernel_wait(accessory, 600)
        update = self.start("firmware", self.image(SIZE), verify=False)
        self.wait_until_begun(accessory, SIZE)
        return accessory, update

    def in_mid_write(self, meanwhile):
        """A write, and what happens meanwhile. It ends well."""
        accessory, update = self.begun()
        try:
            meanwhile(accessory)
            self.assertFalse(update.is_over())
        finally:
            accessory.change_memory(SOUND)
        told = update.wait()
        self.assertIn(wrote(SIZE, accessory.disk), told.answer, str(told))
        self.assert_status(told, 0)
        self.assert_disk(accessory)
        return told


class Daemons(Computer):
    def while_stopped(self, unit, signal="STOP", back="CONT"):
        self.root.run("systemctl", "kill", f"--signal={signal}", unit)
        if back:
            self.addCleanup(self.root.run, "systemctl", "kill", f"--signal={back}", unit)

    def resumed(self, unit):
        self.root.run("systemctl", "kill", "--signal=CONT", unit)

    def test_a_frozen_journal_keeps_no_update_from_its_end(self):
        accessory = self.plugged_for()
        self.while_stopped("systemd-journald.service")
        told = self.start("firmware", self.image(SMALL)).wait()
        self.resumed("systemd-journald.service")
        self.assert_written(accessory, told)

    def test_a_killed_journal_keeps_no_update_from_its_end(self):
        accessory = self.plugged_for()
        self.root.run("systemctl", "kill", "--signal=KILL", "systemd-journald.service")
        self.assertIn(wrote(SMALL, accessory.disk), self.start("firmware", self.image(SMALL)).wait().answer)
        self.assert_disk(accessory)

    def test_a_frozen_bus_keeps_no_update_of_root_from_its_end(self):
        accessory = self.plugged_for()
        # Not with systemctl, which would want the bus to be asked for the way back.
        bus = self.root.run("pidof", "dbus-daemon").out.split()[-1]
        self.root.run("kill", "-STOP", bus)
        self.addCleanup(self.root.run, "kill", "-CONT", bus)
        told = self.update("firmware", self.image(SMALL))
        self.root.run("kill", "-CONT", bus)
        self.assert_written(accessory, told)

    def test_without_polkit_nobody_can_be_asked(self):
        accessory, path = self.plugged(), self.image(SMALL)
        self.root.run("systemctl", "mask", "--runtime", "--now", "polkit.service")
        self.addCleanup(self.root.run, "systemctl", "unmask", "--runtime", "polkit.service")
        result = World.person("anna").run("kestravctl", "firmware", path, check=False)
        self.assertEqual(result.status, 4, str(result))
        self.assertIn("Refused: the authorization service (polkit) could not decide: ", result.err)
        self.assert_disk(accessory)

    def test_a_frozen_polkit_keeps_a_user_waiting_for_so_long_and_root_not_at_all(self):
        accessory, path, anna = self.plugged_for(), self.image(SMALL), World.person("anna")
        self.root.run("systemctl", "start", "polkit.service")
        self.while_stopped("polkit.service")
        result = anna.run("kestravctl", "firmware", path, check=False, seconds=3 * PATIENCE)
        self.assertEqual(result.status, 4, str(result))
        self.assertIn("Refused: nobody has agreed within 50 seconds; nothing was done.", result.err)
        told = self.update("firmware", path)
        self.resumed("polkit.service")
        self.assert_written(accessory, told)

    def test_an_update_needs_no_udev_once_the_disk_has_its_names(self):
        accessory = self.plugged_for()
        self.without_udev()
        self.assert_written(accessory, self.update("firmware", self.image(SMALL)))

    def without_udev(self):
        units = ("systemd-udevd-control.socket", "systemd-udevd-kernel.socket", "systemd-udevd.service")
        self.root.sh("udevadm settle")
        self.root.run("systemctl", "stop", *units)
        self.addCleanup(self.root.run, "systemctl", "start", *units)


class MidWrite(Computer):
    def test_a_clock_that_jumps_is_no_matter(self):
        def jump(_accessory):
            self.root.sh("now=$(date +%s); date -s @$((now + 200000)); date -s @$((now - 200000)); date -s @$now")
        self.in_mid_write(jump)

    def test_a_service_that_is_frozen_goes_on_when_it_is_thawed(self):
        unit = "kestrav-commandd.service"

        def is_frozen():
            return "frozen 1" in self.root.sh(f"cat /sys/fs/cgroup/system.slice/{unit}/cgroup.events").out

        def freeze(accessory):
            # What waits for the disk is frozen as soon as that has answered.
            freezing = self.root.start("systemctl", "freeze", unit)
            accessory.change_memory(SOUND)
            self.assertEqual(freezing.wait().status, 0)
            self.assertTrue(is_frozen())
            self.addCleanup(self.root.run, "systemctl", "thaw", unit)
        accessory, update = self.begun()
        freeze(accessory)
        self.assertFalse(update.is_over())
        self.root.run("systemctl", "thaw", unit)
        told = update.wait()
        self.assertIn(wrote(SIZE, accessory.disk), told.answer, str(told))
        self.assert_status(told, 0)
        self.assert_disk(accessory)

    def test_a_suspend_is_refused_while_it_writes(self):
        def suspend(_accessory):
            refused = self.root.run("systemctl", "suspend", "--check-inhibitors=yes", check=False)
            self.assertNotEqual(refused.status, 0, str(refused))
            self.assertIn("Kestrav", refused.err)
        self.in_mid_write(suspend)

    def test_a_sleep_in_mid_write_is_slept_through(self):
        # Without logind being asked, as far as the kernel's own test of it goes: everybody is frozen and, after five
        # seconds, thawed. The guest's disks would not live through more. Nor does the kernel write back first what it has
        # in its memory, which would wait for the accessory, too. That one answers within the time that everybody is given
        # to be frozen; its memory is a thread of this kernel, which is frozen as well.
        self.addCleanup(self.root.sh, "cd /sys/power; echo none >pm_test; echo 1 >sync_on_suspend")
        self.root.sh("cd /sys/power; echo freezer >pm_test; echo 0 >sync_on_suspend")
        accessory = self.plugged_for(SIZE, table=slow(8_000))
        update = self.start("firmware", self.image(SIZE), verify=False)
        self.wait_until_begun(accessory, SIZE)
        self.root.sh("echo freeze >/sys/power/state")
        told = update.wait()
        self.assertIn(wrote(SIZE, accessory.disk), told.answer, str(told))
        self.assert_status(told, 0)
        self.assert_disk(accessory)

    def test_the_service_is_restarted_and_ends_its_write_first(self):
        def restart(_accessory):
            self.root.run("systemctl", "restart", "--no-block", "kestrav-commandd.service")
            self.wait_until(lambda: "deactivating" in self.root.sh(
                "systemctl show -p ActiveState --value kestrav-commandd.service").out, "it is not told to end")
        self.in_mid_write(restart)


class Packages(Computer):
    """dpkg while a write goes on. It waits for the write, as the service does not end before."""

    UNIT = "kestrav-commandd.service"

    def package(self):
        return sorted(World.packages.glob("kestrav-commandd_*.deb"))[0]

    def later_package(self):
        """The same programs as a later version."""
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["dpkg-deb", "-R", self.package(), folder], check=True)
            control = Path(folder) / "DEBIAN/control"
            lines = [line + "+later" if line.startswith("Version: ") else line
                     for line in control.read_text(encoding="utf-8").splitlines()]
            control.write_text("\n".join(lines) + "\n", encoding="utf-8")
            later = self.guest.exchange / "later.deb"
            subprocess.run(["dpkg-deb", "--root-owner-group", "-Znone", "-b", folder, later], check=True,
                           stdout=subprocess.DEVNULL)
        return later

    def shown(self, what):
        return self.root.run("systemctl", "show", "-p", what, "--value", self.UNIT).out.strip()

    def dpkg(self, *words):
        return ["dpkg", "--no-triggers", "--force-depends", "--force-downgrade", *words]

    def installing(self, package):
        return self.dpkg("--install", f"/e2e/exchange/{package.name}")

    def in_mid_write_of_dpkg(self, command):
        """What writes is held as long as dpkg needs to come to the service: longer than a disk may keep a flush back."""
        accessory, update = self.begun()
        writer = self.root.run("pgrep", "-P", self.shown("MainPID")).out.strip()
        self.root.run("kill", "-STOP", writer)
        accessory.change_memory(SOUND)
        dpkg = self.root.start(*command)
        try:
            self.wait_until(lambda: dpkg.look().status is not None or self.shown("ActiveState") == "deactivating",
                            "it is not told to end")
            self.assertFalse(update.is_over())
        finally:
            self.root.run("kill", "-CONT", writer)
        told = update.wait()
        self.wait_for_log(wrote(SIZE, accessory.disk), "kestrav-commandd")
        self.assert_status(told, 0)
        self.assert_disk(accessory)
        result = dpkg.wait()
        self.assertEqual(result.status, 0, str(result))

    def assert_exchanged_in_mid_write(self, package):
        """The write ends with the service that began it; the next update is the new one's."""
        self.root.run("systemctl", "start", self.UNIT)
        before = self.shown("MainPID")
        self.in_mid_write_of_dpkg(self.installing(package))
        version = subprocess.run(["dpkg-deb", "-f", package, "Version"], capture_output=True, text=True, check=True).stdout
        self.assertEqual(self.root.run("dpkg-query", "-W", "-f", "${Version} ${db:Status-Abbrev}", "kestrav-commandd").out,
                         f"{version.strip()} ii ")
        accessory = self.plugged_for(port=1, serial="next")
        self.assert_written(accessory, self.update("firmware", self.image(SMALL)))
        self.assertNotIn(self.shown("MainPID"), ("0", before))

    def test_an_upgrade_and_a_downgrade_wait_for_the_write(self):
        self.addCleanup(self.root.run, *self.installing(self.package()))
        self.assert_exchanged_in_mid_write(self.later_package())
        self.assert_exchanged_in_mid_write(self.package())

    def test_a_removal_waits_for_the_write_and_the_next_update_finds_no_service(self):
        self.addCleanup(self.root.run, *self.installing(self.package()))
        self.in_mid_write_of_dpkg(self.dpkg("--remove", "kestrav-commandd"))
        accessory = self.plugged(port=1, serial="next")
        told = self.update("firmware", self.image(SMALL))
        self.assert_status(told, 1)
        self.assertIn("The service is not running: systemctl start kestrav-commandd.socket", told.end)
        self.assert_disk(accessory)


class Limits(Computer):
    def test_no_process_can_be_started(self):
        accessory, unit = self.plugged(), "kestrav-commandd.service"
        self.root.run("systemctl", "start", unit)
        self.root.run("systemctl", "set-property", "--runtime", unit, "TasksMax=1")
        self.addCleanup(self.root.run, "systemctl", "set-property", "--runtime", unit, "TasksMax=256")
        told = self.update("firmware", self.image(SMALL))
        sentence = "Refused: no process can be started for the request: "
        self.assert_answered(told, sentence)
        self.wait_for_log(sentence, "kestrav-commandd")
        self.assert_not_verified(told)
        self.assert_disk(accessory)


class BetweenTheCommands(Computer):
    """What may happen between the two commands of an update: they are sent one by one here, as a front end does."""

    def ask(self, command, *arguments):
        request = json.dumps({"command": command, "arguments": arguments})
        return self.root.run("python3", "-c", "import socket, sys\n"
                             "peer = socket.create_connection(('127.0.0.1', 9090))\n"
                             "peer.sendall(sys.argv[1].encode())\n"
                             "print(peer.recv(10240).decode())", request).out.strip()

    def write(self, disk):
        return self.ask("dd", f"if={self.image(SMALL)}", f"of=/dev/r{disk}", "seek=1536", "bs=512")

    def test_pulled_before_the_unmounting(self):
        accessory = self.plugged()
        accessory.pull()
        self.assertEqual(self.ask("umount", f"/dev/{accessory.disk}s1"), f"Refused: there is no /dev/{accessory.disk}s1; "
                         "is the accessory plugged in, and its udev rule installed?")
        self.assert_disk(accessory)

    def test_pulled_after_the_unmounting(self):
        accessory = self.plugged()
        self.assertEqual(self.ask("umount", f"/dev/{accessory.disk}s1"), f"{accessory.disk}1 was not mounted.")
        accessory.pull()
        self.assertEqual(self.write(accessory.disk), f"Refused: there is no /dev/r{accessory.disk}; is the accessory "
                         "plugged in, and its udev rule installed?")
        self.assert_disk(accessory)

    def test_another_vendors_stick_takes_the_accessorys_name(self):
        accessory = self.plugged()
        self.ask("umount", f"/dev/{accessory.disk}s1")
        accessory.pull()
        stick = self.plugged(ids=OTHER_VENDOR, serial="S1")
        self.assertEqual(stick.disk, accessory.disk)
        self.assertIn(self.write(stick.disk), (
            f"Refused: there is no /dev/r{stick.disk}; is the accessory plugged in, and its udev rule installed?",
            f"Refused: /dev/{stick.disk} is not on the accessory (USB 10d6:fd01); nothing else is touched."))
        # A name that somebody has left behind for it changes nothing.
        self.root.run("ln", "-sf", stick.disk, f"/dev/r{stick.disk}")
        self.addCleanup(self.root.run, "rm", "-f", f"/dev/r{stick.disk}")
        self.assertEqual(self.write(stick.disk), f"Refused: /dev/{stick.disk} is not on the accessory (USB 10d6:fd01); "
                         "nothing else is touched.")
        self.assert_disk(stick)
        self.assert_disk(accessory)
