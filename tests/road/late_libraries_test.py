"""The libraries that the front ends load when they first need them, and not at their start."""

import subprocess

from road import PROGRAMS, RoadTest

LATE = ("libsystemd.so.0", "libmount.so.1")
LATE_IN = {"kestravctl": LATE, "kestrav": LATE[1:]}


class LateLibraries(RoadTest):
    def test_are_not_loaded_at_the_start(self):
        for program, libraries in LATE_IN.items():
            listed = subprocess.run([PROGRAMS / program], env={"LD_TRACE_LOADED_OBJECTS": "1"},
                                    capture_output=True, text=True, check=True, timeout=60).stdout
            self.assertIn("libudev.so.1", listed)
            for library in libraries:
                self.assertNotIn(library, listed, program)

    def test_end_it_in_words_where_they_are_broken(self):
        for library, arguments in zip(LATE, (("helper", "status"), ("list",))):
            (self.folder / library).write_bytes(b"no library\n")
            command = ["env", f"LD_LIBRARY_PATH={self.folder}", PROGRAMS / "kestravctl", *arguments]
            result = subprocess.run(self.plugged_in(command), capture_output=True, timeout=60, check=False)
            said = result.stderr.decode()
            self.assertEqual(result.returncode, 127, said)
            self.assertTrue(said.startswith("kestravctl: error while loading shared libraries: "), said)
            self.assertTrue(said.endswith(". Install the package of that library.\n"), said)
            self.assertIn(library, said)
            (self.folder / library).unlink()
