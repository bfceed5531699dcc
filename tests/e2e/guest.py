"""The guest: a computer in software that runs a stock Debian kernel, and can lose its power at any moment."""

import json
import os
import shlex
import socket
import subprocess
import tarfile
import time
from pathlib import Path

from kernel import HERE, Kernel

ROOT = HERE.parents[1]
PORTS = ("root", "anna", "ben", "window")

# An old processor's wide instructions are quicker to emulate than a new one's.
EMULATED = ("-accel", "tcg,thread=multi", "-cpu", "Nehalem")
HARDWARE = ("-accel", "kvm", "-cpu", "host")

# How long anything in the guest may take, in seconds: software emulation on a busy computer is slow.
PATIENCE = 120
BOOT_PATIENCE = 360


class GuestFailure(AssertionError):
    """The guest did not do what it was asked for; the text has the end of its console."""


class Result:
    """What a program in the guest has said, and its exit status: None while it runs, negative after a signal; and whether
    its terminal hides what is typed."""

    def __init__(self, answer):
        self.status, self.out, self.err = answer["status"], answer["out"], answer["err"]
        self.hides = answer["hides"]

    def __str__(self):
        return f"exit status {self.status}\n--- output\n{self.out}--- errors\n{self.err}"


class Guest:
    """`disks` maps a name (as in /dev/disk/by-id/virtio-NAME) to the file that is the disk."""

    processor = EMULATED

    def __init__(self, cache, folder, disks):
        kernel = Kernel(cache)
        self.folder = folder
        self.exchange = folder / "exchange"
        self.images = self.exchange / "images"  # which the guest sees as /images, too
        self.images.mkdir(parents=True)
        with tarfile.open(self.exchange / "dpkg.tar", "w") as dpkg:
            for name in ("status", "info/format", "info", "updates", "triggers"):
                dpkg.add(f"/var/lib/dpkg/{name}", name, recursive=False)
            for path in Path("/var/lib/dpkg/info").glob("*.list"):
                dpkg.add(path, f"info/{path.name}")
        self.console = folder / "console.log"
        self.people, self.window = {}, None
        self.qemu = subprocess.Popen(self.command(kernel, kernel.make_start(folder), disks), stdin=subprocess.DEVNULL,
                                     stdout=subprocess.DEVNULL, stderr=open(folder / "qemu.log", "wb"))

    def command(self, kernel, start, disks):
        def share(name, path, mode):
            return ["-virtfs", f"local,path={path},mount_tag={name},security_model=none,multidevs=remap,id={name}{mode}"]

        # It ends with this program, however that ends. One processor: two emulated ones wait for each other as soon as
        # this computer's own are shared with another guest. Its clock is the real one's, so that nobody has to ask the
        # kernel what time it is. Whether its timer ticks is not looked at: on a busy computer it is late, and the kernel
        # would take that for a defect and panic.
        words = ["setpriv", "--pdeathsig", "KILL", "qemu-system-x86_64", *self.processor,
                 "-M", "q35", "-nodefaults", "-display", "none", "-no-reboot", "-m", "1280",
                 "-kernel", kernel.image, "-initrd", start,
                 "-append", "console=ttyS0 loglevel=5 panic=-1 mitigations=off net.ifnames=0 "
                            "no_timer_check tsc=reliable clocksource=tsc systemd.unit=e2e.target "
                            "systemd.show_status=false systemd.log_target=kmsg",
                 "-serial", f"file:{self.console}", "-device", "virtio-rng-pci", "-device", "virtio-serial-pci",
                 *share("machine", "/", ",readonly=on"), *share("kernel", kernel.folder, ",readonly=on"),
                 *share("tests", ROOT / "tests", ",readonly=on"), *share("exchange", self.exchange, "")]
        for port in PORTS:
            words += ["-chardev", f"socket,id={port},path={self.folder / port},server=on,wait=off",
                      "-device", f"virtserialport,chardev={port},name={port}"]
        for name, path in disks.items():
            words += ["-drive", f"file={path},format=raw,if=none,id={name},cache=writeback",
                      "-device", f"virtio-blk-pci,drive={name},serial={name}"]
        return [*map(str, words)]

    # -- its life --------------------------------------------------------------------------------------------------

    def wait_until_ready(self):
        self.people["root"] = Person(self, "root", BOOT_PATIENCE)
        self.people["root"].start("sh", "-c", "exec journalctl -f -n all -o json >/e2e/exchange/system-log")
        return self

    def system_log_size(self):
        path = self.exchange / "system-log"
        return path.stat().st_size if path.exists() else 0

    def system_log(self, start, identifiers=()):
        """The messages in the system log from that size of it on; only these programs', if some are named."""
        with open(self.exchange / "system-log", "rb") as log:
            log.seek(start)
            entries = [json.loads(line) for line in log.read().splitlines(keepends=True) if line.endswith(b"\n")]
        return [entry.get("MESSAGE") for entry in entries
                if isinstance(entry.get("MESSAGE"), str)  # bytes that are no text come as a list
                and (not identifiers or entry.get("SYSLOG_IDENTIFIER") in identifiers)]

    def log_in(self, **terminals):
        """Opens a session for each person at a terminal of the guest's seat: log_in(anna="tty1")."""
        for name, terminal in terminals.items():
            self.give_port(name, name)
            self.run("systemd-run", "--quiet", f"--unit=e2e-{name}", "-p", "PAMName=login", "-p", f"User={name}",
                     "-p", f"TTYPath=/dev/{terminal}", "-p", "StandardInput=tty", "-p", "StandardOutput=journal",
                     "-p", f"WorkingDirectory=/home/{name}", "/usr/bin/python3", "/e2e/tests/e2e/guest/agent.py", name)
        # One logs in while another does: most of the time is spent on waiting for the first processes to answer.
        for name in terminals:
            self.people[name] = Person(self, name)

    def give_port(self, port, person):
        """Lets this person open the port, and nobody else."""
        self.sh(f"chown {person} $(readlink -f /dev/virtio-ports/{port})")

    def is_running(self):
        return self.qemu.poll() is None

    def cut_power(self):
        self.qemu.kill()
        self.qemu.wait()

    def power_off(self):
        """Shuts down in order, and waits for the end."""
        if "root" not in self.people:
            return self.cut_power()  # it was never ready, and nobody is there to be asked
        self.people["root"].start("systemctl", "poweroff")
        try:
            self.qemu.wait(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            self.cut_power()
            raise self.failure("it does not power off") from None

    def failure(self, what):
        shown = self.console.read_text(errors="replace").splitlines()[-60:] if self.console.exists() else []
        return GuestFailure("\n".join([f"The guest: {what}. The end of its console:", *shown]))

    # -- what root does there --------------------------------------------------------------------------------------

    def run(self, *argv, **options):
        return self.people["root"].run(*argv, **options)

    def sh(self, script, **options):
        return self.people["root"].sh(script, **options)


class Person:
    """Somebody in the guest, with programs of their own: `root`, or a user who is logged in."""

    def __init__(self, guest, name, patience=PATIENCE):
        self.guest, self.name = guest, name
        self.waiting, self.requests = b"", 0
        self.port = socket.socket(socket.AF_UNIX)
        self.connect(time.monotonic() + patience)
        self.answer(patience)  # it says once that it is there

    def connect(self, end):
        while True:
            try:
                return self.port.connect(str(self.guest.folder / self.name))
            except OSError:
                if time.monotonic() > end or not self.guest.is_running():
                    raise self.guest.failure(f"qemu does not start: {self.qemu_said()}") from None
                time.sleep(0.05)

    def qemu_said(self):
        return (self.guest.folder / "qemu.log").read_text(errors="replace")

    def answer(self, patience):
        self.port.settimeout(patience)
        try:
            while b"\n" not in self.waiting:
                received = self.port.recv(65536)
                if not received:
                    raise self.guest.failure(f"it went off. {self.qemu_said()}")
                self.waiting += received
        except TimeoutError:
            raise self.guest.failure(f"no answer from {self.name} in {patience} seconds") from None
        line, self.waiting = self.waiting.split(b"\n", 1)
        return json.loads(line)

    def ask(self, patience=PATIENCE, **request):
        self.requests += 1
        self.port.sendall(json.dumps({"number": self.requests, **request}).encode() + b"\n")
        # An answer that came too late for an earlier case is nobody's.
        while (answer := self.answer(patience)).get("to") != self.requests:
            pass
        if "error" in answer:
            raise self.guest.failure(f"{self.name}'s agent: {answer['error']}")
        return answer

    def start(self, *argv, terminal=False, environment=None):
        return Job(self, [*map(str, argv)], terminal, environment or {})

    def run(self, *argv, check=True, seconds=PATIENCE, **options):
        """Runs a program to its end. With `check` it has to end with 0."""
        result = self.start(*argv, **options).wait(seconds)
        if check and result.status != 0:
            raise GuestFailure(f"{self.name}: {shlex.join(map(str, argv))}: {result}")
        return result

    def sh(self, script, **options):
        return self.run("sh", "-euc", script, **options)


class Job:
    """A program that has been started in the guest."""

    def __init__(self, person, argv, terminal, environment):
        self.person, self.argv = person, argv
        answer = person.ask(do="start", argv=argv, terminal=terminal, environment=environment)
        self.number = answer["job"]

    def look(self, seconds=0):
        return Result(self.person.ask(do="look", job=self.number, seconds=seconds, patience=seconds + PATIENCE))

    def wait(self, seconds=PATIENCE):
        result = self.look(seconds)
        if result.status is None:
            raise self.person.guest.failure(f"{shlex.join(self.argv)} does not end: {result}")
        return result

    def wait_for(self, words, seconds=PATIENCE):
        """Waits until these words are on its terminal or in its output."""
        return self.wait_until(lambda result: words in result.out, f"does not say {words!r}", seconds)

    def wait_until(self, holds, otherwise, seconds=PATIENCE):
        end = time.monotonic() + seconds
        while not holds(result := self.look()):
            if result.status is not None or time.monotonic() > end:
                raise self.person.guest.failure(f"{shlex.join(self.argv)} {otherwise}: {result}")
            time.sleep(0.1)
        return result

    def type_password(self, text):
        """Once the terminal hides it: what is typed before that is thrown away."""
        self.wait_until(lambda result: result.hides, "would show the password")
        self.person.ask(do="type", job=self.number, text=text + "\n")

    def end(self):
        self.person.ask(do="end", job=self.number)
