"""kestravctl doctor: what it finds, and that it ends with 0 only where an update can work."""

import json
import os
import shutil
import subprocess

from json_test import assert_in_form
from road import PROGRAMS, AnsweringService, RoadTest

INSTALLED = "/usr/libexec/kestrav"
HELPER = "/usr/local/libexec/com.corvatel.KestravHelper"
ALL = ["accessory", "disk", "service", "version", "consent", "helper", "kernel"]


class Doctor(RoadTest):
    def setUp(self):
        super().setUp()
        self.own_folders()
        os.makedirs(INSTALLED, exist_ok=True)
        os.makedirs(os.path.dirname(HELPER), exist_ok=True)
        for program in ("kestrav-commandd", "kestrav-helper"):
            shutil.copy(PROGRAMS / program, INSTALLED)
        shutil.copy(PROGRAMS / "kestrav-helper", HELPER)

    def findings(self, status, **options):
        """By their names; the same as sentences, whose last one says whether an update can work."""
        result = self.kestravctl("doctor", "--json", **options)
        self.assertEqual(result.returncode, status, result.stdout.decode() + result.stderr.decode())
        said = json.loads(result.stdout)
        assert_in_form(said, "doctor")
        self.assertEqual(said["status"], status)
        self.assertEqual([finding["name"] for finding in said["findings"]], ALL)
        lines = self.kestravctl("doctor", **options).stdout.decode().splitlines()
        self.assertEqual(len(lines), len(ALL) + 1)
        self.assertEqual(lines[-1], "An update can work." if status == 0 else
                         "An update can't work before that is put right.")
        for line, finding in zip(lines, said["findings"]):
            mark = "good: " if finding["good"] else "bad:  " if finding["needed"] else "note: "
            self.assertEqual(line, mark + finding["finding"] + (" " + finding["remedy"] if finding["remedy"] else ""))
        return {finding["name"]: finding for finding in said["findings"]}

    def assert_bad(self, name, words, status=1, needed=True, **options):
        """This one is bad, and nothing else."""
        found = self.findings(status, **options)
        self.assertEqual([other for other in ALL if not found[other]["good"]], [name])
        self.assertEqual(found[name]["needed"], needed)
        self.assertEqual(" ".join([found[name]["finding"], found[name]["remedy"]]), words)

    def test_finds_nothing_wrong_where_all_is_well(self):
        self.start_service()
        self.assertTrue(all(finding["good"] for finding in self.findings(0).values()))
        before = self.digest()
        self.findings(0)
        self.assertEqual(self.digest(), before)

    def test_sees_that_the_service_is_not_running(self):
        self.assert_bad("service", "The service is not running: systemctl start kestrav-commandd.socket")

    def test_names_who_has_taken_the_port(self):
        with AnsweringService(lambda peer: peer.send(b"HTTP/1.1 400 Bad Request\r\n")) as web:
            self.assert_bad("service", "What answers on port 9090 is not kestrav-commandd. That is "
                            f"{self.name_of(web.child)} (process {web.child}). End it, or give it another port; then "
                            "systemctl start kestrav-commandd.socket")

    @staticmethod
    def name_of(process):
        return open(f"/proc/{process}/comm").read().strip()

    def test_sees_a_service_that_closes(self):
        with AnsweringService(lambda peer: None):
            self.assert_bad("service", "The service does not answer: systemctl restart kestrav-commandd")

    def test_sees_that_there_is_no_accessory(self):
        self.start_service()
        found = self.findings(1, plugged=False)
        self.assertEqual(found["accessory"]["finding"], "No accessory (USB 10d6:fd01) is attached.")
        self.assertFalse(found["disk"]["good"])

    def test_sees_an_accessory_without_a_disk(self):
        self.start_service("accessory-without-disk")
        found = self.findings(1, device="accessory-without-disk")
        self.assertTrue(found["accessory"]["good"])
        self.assertIn("The accessory has no disk", found["disk"]["finding"])

    def test_sees_another_version(self):
        self.start_service()
        with open(f"{INSTALLED}/kestrav-commandd", "wb") as program:
            program.write(b"\x7fELF kestrav-commandd 0.0.1\0")
        found = self.findings(1)["version"]
        self.assertIn("is of another version than this one", found["finding"])

    def test_takes_no_installed_program_for_no_hindrance(self):
        self.start_service()
        os.remove(f"{INSTALLED}/kestrav-commandd")
        self.assert_bad("version", f"The service's program is not installed at {INSTALLED}/kestrav-commandd. "
                        "apt install kestrav-commandd", status=0, needed=False)

    def test_sees_another_helper_which_is_no_hindrance(self):
        self.start_service()
        with open(HELPER, "ab") as helper:
            helper.write(b"changed")
        self.assert_bad("helper", "The installed helper is another one than the package's: kestravctl helper install",
                        status=0, needed=False)
        os.remove(HELPER)
        found = self.findings(0)["helper"]
        self.assertIn("is not installed; kestravctl does without it", found["finding"])

    def test_sees_that_nobody_can_be_asked_for_a_password(self):
        """As somebody who is not root, where no polkit runs."""
        result = subprocess.run(["setpriv", "--reuid=1801", "--regid=1801", "--clear-groups", PROGRAMS / "kestravctl",
                                 "doctor", "--json"], capture_output=True, timeout=60)
        found = {finding["name"]: finding for finding in json.loads(result.stdout)["findings"]}
        self.assertEqual(found["consent"]["finding"], "polkit, by which an administrator is asked, is not there:")
        self.assertEqual(result.returncode, 1)

    def test_sees_that_there_is_no_registry(self):
        subprocess.run(["umount", "-R", "-l", "/sys"], check=True)
        result = subprocess.run([PROGRAMS / "kestravctl", "doctor"], capture_output=True, timeout=60)
        self.assertTrue(result.stdout.decode().startswith("bad:  The device registry can't be reached. Is /sys mounted?\n"))
        self.assertEqual(result.returncode, 1)
