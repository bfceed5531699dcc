"""The role that updates the accessories of many computers, run by Ansible against three of them.

Each computer is a network of its own with a simulated accessory and the real command service. Ansible's modules run in
it, since what each computer has for a Python leads them there.
"""

import hashlib
import json
import os
import random
import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "sandbox"))
from sandbox import SandboxTest  # noqa: E402: found by the line above

ROOT = Path(__file__).resolve().parents[2]
PROGRAMS = Path(os.environ["KESTRAV_PROGRAMS"])
SIMULATOR = ROOT / "simulator"
FIRMWARE = 1536 * 512

# Has the loopback interface of a new network up, then becomes the command.
BRING_UP = f"""
import os, sys
sys.path.insert(0, {str(ROOT / "tests/sandbox")!r})
import sandbox
sandbox.bring_loopback_up()
os.execvp(sys.argv[1], sys.argv[1:])
"""


class Host:
    """One computer with an accessory."""

    def __init__(self, test, name):
        self.folder = test.folder / name
        self.folder.mkdir()
        self.name = name
        self.serial = f"KA-{name}"
        self.disk = self.folder / "accessory.img"
        subprocess.run([SIMULATOR / "make-disk", self.disk], check=True)
        description = (SIMULATOR / "accessory.umockdev").read_text()
        self.description = self.folder / "accessory.umockdev"
        self.description.write_text(re.sub("^A: product=", f"A: serial={self.serial}\nA: product=", description, flags=re.M))
        log = open(self.folder / "service.log", "ab")
        test.addCleanup(log.close)
        self.service = subprocess.Popen(
            ["unshare", "--net", sys.executable, "-c", BRING_UP, *self.plugged_in(PROGRAMS / "kestrav-commandd")],
            stdout=log, stderr=log)
        test.addCleanup(self.stop)
        test.wait_until(lambda: b"ready" in (self.folder / "service.log").read_bytes(), "no service", self.service)
        self.python = self.folder / "python"
        self.python.write_text(f'#!/bin/sh\nexec nsenter --net=/proc/{self.service.pid}/ns/net -- '
                               f'{" ".join(map(str, self.plugged_in("env")))} PATH="{PROGRAMS}:$PATH" {sys.executable} "$@"\n')
        self.python.chmod(0o755)

    def plugged_in(self, *command):
        return [SIMULATOR / "with-accessory", "--disk", self.disk, "--device", self.description, "--", *command]

    def stop(self):
        if self.service.poll() is None:
            self.service.terminate()
            self.service.wait(timeout=30)

    def holds(self, image):
        with open(self.disk, "rb") as disk:
            disk.seek(FIRMWARE)
            return disk.read(len(image)) == image


class Role(SandboxTest):
    def setUp(self):
        super().setUp()
        self.hosts = [Host(self, name) for name in ("one", "two", "three")]
        self.image = self.folder / "new.fds"
        self.content = random.Random(7).randbytes(70000)
        self.image.write_bytes(self.content)
        self.inventory = self.folder / "inventory"
        self.inventory.write_text("[kestrav]\n" + "".join(
            f"{host.name} ansible_connection=local ansible_become=false ansible_python_interpreter={host.python} "
            f"ansible_remote_tmp={host.folder}/tmp kestrav_folder={host.folder}/cache\n" for host in self.hosts))

    def play(self, *options, limit="all", **variables):
        """Runs the play; what it printed, and of each computer how many tasks were ok, changed, failed."""
        variables = {"kestrav_image": str(self.image), "kestrav_packages": [], **variables}
        environment = {**os.environ, "ANSIBLE_HOME": f"{self.folder}/ansible", "ANSIBLE_NOCOLOR": "1", "ANSIBLE_PIPELINING": "1",
                       "ANSIBLE_LOCAL_TEMP": f"{self.folder}/ansible/tmp", "ANSIBLE_RETRY_FILES_ENABLED": "0"}
        run = subprocess.run(
            ["ansible-playbook", "-i", self.inventory, ROOT / "packaging/ansible/update.yml",
             "--limit", limit, "-e", json.dumps(variables), *options],
            capture_output=True, text=True, env=environment, stdin=subprocess.DEVNULL, timeout=600, check=False)
        recap = {name: {word: int(count) for word, count in re.findall(r"(\w+)=(\d+)", counts)}
                 for name, counts in re.findall(r"^(\w+) +: (ok=.*)$", run.stdout, re.M)}
        return run, recap

    def test_brings_every_accessory_to_the_image_once(self):
        checksum = hashlib.sha256(self.content).hexdigest()
        run, recap = self.play(kestrav_sha256=checksum)
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        for host in self.hosts:
            self.assertTrue(host.holds(self.content), run.stdout)
            self.assertEqual(recap[host.name]["changed"], 1, run.stdout)
            self.assertIn(f"sdzz ({host.serial}, port 1-2): updated", run.stdout)
        again, recap = self.play(limit="one", kestrav_sha256=checksum, kestrav_serials=["KA-one"])
        self.assertEqual(again.returncode, 0, again.stdout + again.stderr)
        self.assertEqual(recap["one"]["changed"], 0, "what is there already is not written again")
        self.assertIn("sdzz (KA-one, port 1-2): was up to date", again.stdout)

    def test_checks_what_it_would_do_and_does_none_of_it(self):
        with open(self.hosts[1].disk, "r+b") as disk:
            disk.seek(FIRMWARE)
            disk.write(self.content)
        before = [host.disk.read_bytes() for host in self.hosts]
        run, recap = self.play("--check", limit="one,two")
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        self.assertIn("sdzz (KA-one, port 1-2): would be updated", run.stdout)
        self.assertIn("sdzz (KA-two, port 1-2): was up to date", run.stdout)
        self.assertEqual((recap["one"]["changed"], recap["two"]["changed"]), (1, 0), run.stdout)
        self.assertEqual([host.disk.read_bytes() for host in self.hosts], before)

    def package(self, name, depends="base-files"):
        """A package file of nothing but its name."""
        folder = self.folder / name
        (folder / "DEBIAN").mkdir(parents=True)
        (folder / "DEBIAN/control").write_text(
            f"Package: {name}\nVersion: 1\nArchitecture: all\nDepends: {depends}\nMaintainer: Nobody <nobody@example.org>\n"
            "Description: of a test\n")
        subprocess.run(["dpkg-deb", "--build", folder, f"{folder}.deb"], check=True, capture_output=True)
        return f"{folder}.deb"

    def tasks(self, run):
        """What became of each task that begins with "Install", for the one computer that was played."""
        return dict(re.findall(r"TASK \[kestrav_update : (Install [\w ]+)\].*\n(\w+)", run.stdout))

    def test_installs_the_packages_that_are_missing(self):
        # All computers are this one, on which nothing may be installed: --check has apt say what it would do.
        run, _ = self.play("--check", limit="one", kestrav_packages=["base-files", self.package("kestrav-nothing")])
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        self.assertEqual(self.tasks(run), {"Install the packages": "ok", "Install the package files": "changed"}, run.stdout)

    def test_sends_nothing_where_a_package_can_not_be_installed(self):
        run, _ = self.play("--check", limit="one", kestrav_packages=[self.package("kestrav-odd", "there-is-no-such-package")])
        self.assertNotEqual(run.returncode, 0, run.stdout)
        self.assertIn("there-is-no-such-package", run.stdout)
        self.assertNotIn("Send the image", run.stdout)

    def test_stops_at_the_first_batch_that_fails(self):
        self.hosts[1].stop()
        # Whoever enters the network of the computer finds it without a service, but must find the network.
        self.hosts[1].service = subprocess.Popen(
            ["unshare", "--net", sys.executable, "-c", BRING_UP, *self.hosts[1].plugged_in("sleep", "600")])
        self.addCleanup(self.hosts[1].stop)
        script = self.hosts[1].python.read_text()
        self.hosts[1].python.write_text(re.sub(r"/proc/\d+/", f"/proc/{self.hosts[1].service.pid}/", script))
        run, recap = self.play(kestrav_batch=1)
        self.assertNotEqual(run.returncode, 0, run.stdout)
        self.assertEqual([host.holds(self.content) for host in self.hosts], [True, False, False], run.stdout)
        self.assertIn("systemctl start kestrav-commandd.socket", run.stdout + run.stderr)
        self.assertNotIn("three", recap, "its turn never came")

    def test_sends_no_image_with_another_checksum(self):
        run, _ = self.play(kestrav_sha256="0" * 64)
        self.assertNotEqual(run.returncode, 0)
        self.assertIn("has another checksum than kestrav_sha256. Nothing was sent.", re.sub(r"\s+", " ", run.stdout))
        self.assertEqual([host.holds(self.content) for host in self.hosts], [False] * 3)

    def test_misses_an_accessory_that_is_named(self):
        run, _ = self.play(kestrav_serials=["KA-one"])
        self.assertNotEqual(run.returncode, 0)
        self.assertIn("Not attached: KA-one.", run.stdout)
        self.assertEqual([host.holds(self.content) for host in self.hosts], [False] * 3,
                         "one computer that misses its accessory stops its batch")
