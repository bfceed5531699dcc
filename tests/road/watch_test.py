"""What kestravctl tells of a write while it goes on, and of one whose answer does not come. The service is one that does
and says what the case wants, with a board like the real one's; the real one's board is read by tests/services."""

import json
import os
import pty
import select
import signal
import subprocess
import time

from json_test import assert_in_form
from road import FIRMWARE, PROGRAMS, AnsweringService, RoadTest

BOARD = "/run/kestrav"
GOES_ON = "kestravctl: The service goes on writing. Don't unplug; journalctl -t kestrav-commandd tells the end.\n"


class Watch(RoadTest):
    def setUp(self):
        super().setUp()
        self.own_folders()
        os.mkdir(BOARD)
        self.path = self.image(1000)

    # -- the service ---------------------------------------------------------------------------------------------

    def post(self, phase, done, verdict=None, writer=None):
        """Says it on the board. The process that writes is this one, as long as no other is named."""
        entry = {"version": 1, "disk": "sdzz", "user": os.geteuid(), "asker": self.asker(), "writer": writer or os.getpid(),
                 "writerStart": int(self.start_of(writer or os.getpid())), "firstBlock": FIRMWARE, "bytes": 1000,
                 "phase": phase, "done": done, "of": 1000, "begun": int(time.time())}
        if verdict:
            entry["verdict"] = verdict
        fresh = f"{BOARD}/.fresh"
        with open(fresh, "w") as file:
            file.write(json.dumps(entry))
        os.rename(fresh, f"{BOARD}/sdzz.json")

    @staticmethod
    def start_of(process):
        try:
            return open(f"/proc/{process}/stat").read().rpartition(")")[2].split()[19]
        except FileNotFoundError:
            return 1

    def asker(self):
        return int((self.folder / "pid").read_text())

    def reach(self, word):
        (self.folder / word).touch()

    def wait_for(self, word):
        end = time.monotonic() + 60
        while not (self.folder / word).exists() and time.monotonic() < end:
            time.sleep(0.02)

    def service(self, write, unmount=b"sdzz1 was not mounted."):
        """Answers the first request so, and does with the second what `write` does."""
        turn = iter([lambda peer: peer.send(unmount), write])
        return AnsweringService(lambda peer: next(turn)(peer))

    # -- kestravctl ----------------------------------------------------------------------------------------------

    def start(self, *words, **options):
        """kestravctl firmware, whose process the file `pid` names."""
        command = ["sh", "-c", f'echo $$ >{self.folder}/pid.new; mv {self.folder}/pid.new {self.folder}/pid; exec "$@"',
                   "-", PROGRAMS / "kestravctl", "firmware", *words, self.path]
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        process = subprocess.Popen(self.plugged_in(command), stdin=subprocess.DEVNULL, **options)
        self.addCleanup(self.end, process)
        for stream in (process.stdout, process.stderr):
            if stream:
                self.addCleanup(stream.close)
        return process

    def ended(self, process, status):
        out, err = process.communicate(timeout=90)
        self.assertEqual(process.returncode, status, err)
        return out.decode(), err.decode()

    # -- progress ------------------------------------------------------------------------------------------------

    def writing(self, peer):
        """Writes until the case has seen it, and confirms it then."""
        self.post("writing", 400)
        self.wait_for("seen")
        self.post("done", 1000, "wrote")
        peer.send(b"Wrote 1000 bytes to sdzz at block 1536, verified, 1.0 MB/s.")

    def test_a_terminal_is_shown_how_far_it_is(self):
        terminal, other_end = pty.openpty()
        self.addCleanup(os.close, terminal)
        with self.service(self.writing):
            process = self.start(stderr=other_end)
            os.close(other_end)
            shown = self.read_until(terminal, b"Writing: 40 %. Don't unplug the accessory.")
            self.reach("seen")
            out, _ = process.communicate(timeout=90)
            shown += self.read_until(terminal, b"verified")
        self.assertEqual(process.returncode, 0, shown)
        self.assertTrue(out.decode().endswith("read back and equal.\n"), out)
        # What is said after it begins on a line that is empty again.
        self.assertIn(b"\r\x1b[Kkestravctl: Wrote", shown)

    @staticmethod
    def read_until(terminal, words):
        shown, end = b"", time.monotonic() + 60
        while words not in shown and time.monotonic() < end:
            if select.select([terminal], [], [], 0.1)[0]:
                shown += os.read(terminal, 65536)
        return shown

    def assert_no_progress(self, *words, **options):
        with self.service(self.writing):
            process = self.start(*words, **options)
            self.wait_until(lambda: os.path.exists(f"{BOARD}/sdzz.json"), "the write is not begun", process)
            time.sleep(0.3)  # three looks at the board
            self.reach("seen")
            return process, self.ended(process, 0)

    def test_nothing_is_shown_where_there_is_no_terminal(self):
        _, (_, err) = self.assert_no_progress()
        self.assertNotIn("Writing:", err)
        self.assertNotIn("\r", err)

    def test_quiet_shows_nothing_on_a_terminal_either(self):
        terminal, other_end = pty.openpty()
        self.addCleanup(os.close, terminal)
        with self.service(self.writing):
            process = self.start("--quiet", stderr=other_end)
            self.wait_until(lambda: os.path.exists(f"{BOARD}/sdzz.json"), "the write is not begun", process)
            time.sleep(0.3)  # three looks at the board
            self.reach("seen")
            process.communicate(timeout=90)
        self.assertFalse(select.select([terminal], [], [], 0)[0])
        os.close(other_end)

    def test_programs_get_an_object_a_line(self):
        def seen(peer):
            self.post("writing", 400)
            self.wait_for("seen")
            peer.send(b"Wrote 1000 bytes to sdzz at block 1536, verified, 1.0 MB/s.")

        with self.service(seen):
            process = self.start("--json", "--progress")
            lines = [json.loads(process.stdout.readline()) for _ in range(2)]
            self.reach("seen")
            out, _ = self.ended(process, 0)
        for line in lines:
            assert_in_form(line, "progress")
        self.assertEqual([(line["phase"], line["done"]) for line in lines], [("asking", 0), ("writing", 400)])
        result = json.loads(out.splitlines()[-1])
        assert_in_form(result)
        self.assertTrue(result["verified"])

    def test_all_at_once_share_one_line_on_a_terminal(self):
        terminal, other_end = pty.openpty()
        self.addCleanup(os.close, terminal)
        with self.service(self.writing):
            process = self.start("--all", stdout=other_end, stderr=other_end)
            os.close(other_end)
            shown = self.read_until(terminal, b"Ended: 0, writing: 1. Don't unplug them.")
            self.reach("seen")
            shown += self.read_until(terminal, b"holds the image.")
            process.wait(timeout=90)
        self.assertEqual(process.returncode, 0, shown)
        # The line is taken back before it is said that one is done.
        self.assertRegex(shown, rb"\r\x1b\[Ksdzz[^\r]*: done after")

    def test_all_at_once_are_told_to_programs_one_by_one(self):
        with self.service(self.writing):
            process = self.start("--all", "--json", "--progress")
            lines = [json.loads(process.stdout.readline()) for _ in range(2)]
            self.reach("seen")
            out, _ = self.ended(process, 0)
        for line in lines:
            assert_in_form(line, "progress")
        self.assertEqual([(line["disk"], line["phase"]) for line in lines], [("sdzz", "asking"), ("sdzz", "writing")])
        assert_in_form(json.loads(out.splitlines()[-1]), "all")

    # -- without an answer ---------------------------------------------------------------------------------------

    def silent(self, end):
        """The connection is gone, and the board tells the rest when the case has seen that the write is waited for."""
        def write(peer):
            self.post("writing", 400)
            peer.close()
            self.wait_for("seen")
            end()

        return self.service(write)

    def followed(self, end, status):
        with self.silent(end):
            process = self.start()
            line = process.stderr.readline()
            while line and b"is waited for" not in line:
                line = process.stderr.readline()
            self.assertTrue(line, "it does not wait")
            self.assertIsNone(process.poll())
            self.reach("seen")
            return self.ended(process, status)

    def test_a_write_without_an_answer_is_followed_to_its_good_end(self):
        out, _ = self.followed(lambda: self.post("done", 1000, "wrote"), 0)
        self.assertIn("The image is on sdzz: the service's board says that it was written and compared", out)

    def test_a_write_without_an_answer_is_followed_to_its_bad_end(self):
        _, err = self.followed(lambda: self.post("done", 1000, "failed"), 4)
        self.assertIn("The update failed: the service's board says so. 'journalctl -t kestrav-commandd' tells why.", err)

    def test_a_refusal_without_an_answer_is_one(self):
        _, err = self.followed(lambda: self.post("done", 0, "refused"), 4)
        self.assertIn("Nothing was written: the service's board says that it refused.", err)

    def test_a_service_that_died_is_told_from_one_that_goes_on(self):
        gone = subprocess.Popen(["true"])
        gone.wait()
        _, err = self.followed(lambda: self.post("writing", 500, writer=gone.pid), 6)
        self.assertIn("The service died while it wrote, so nobody knows what the accessory holds.", err)

    # -- Ctrl-C --------------------------------------------------------------------------------------------------

    def interrupted(self, phase, *words, **options):
        """A write in that phase, in which Ctrl-C is pressed."""
        def write(peer):
            self.post(phase, 400)
            self.reach("begun")
            self.wait_for("never")

        with self.service(write):
            process = self.start(*words, **options)
            self.wait_until((self.folder / "begun").exists, "the write is not begun", process)
            os.kill(self.asker(), signal.SIGINT)
            return self.ended(process, 130)

    def test_ctrl_c_says_that_the_service_goes_on(self):
        _, err = self.interrupted("writing")
        self.assertTrue(err.endswith(GOES_ON), err)

    def test_ctrl_c_tells_a_program_the_same(self):
        out, _ = self.interrupted("flushing", "--json")
        result = json.loads(out)
        assert_in_form(result)
        self.assertEqual((result["status"], result["disk"], result["problem"]),
                         (130, "sdzz", GOES_ON.removeprefix("kestravctl: ").rstrip("\n")))

    def test_ctrl_c_in_the_middle_of_all_tells_each_end(self):
        out, err = self.interrupted("writing", "--all")
        self.assertRegex(out, r"(?m)^sdzz .* 130  .*The service goes on writing\. Don't unplug;")
        self.assertIn("kestravctl: It was ended while accessories were being written. The service goes on with what it "
                      "has begun: don't unplug; journalctl -t kestrav-commandd tells the end.\n", err)

    def test_ctrl_c_in_the_middle_of_all_is_one_object(self):
        out, _ = self.interrupted("flushing", "--all", "--json")
        told = json.loads(out)
        assert_in_form(told, "all")
        self.assertEqual((told["status"], [end["status"] for end in told["accessories"]]), (130, [130]))

    def test_ctrl_c_before_anybody_has_agreed_gives_the_request_up(self):
        _, err = self.interrupted("asking")
        self.assertTrue(err.endswith("kestravctl: The request was given up. 'journalctl -t kestrav-commandd' tells "
                                     "whether it was begun all the same.\n"), err)

    def test_a_second_ctrl_c_ends_at_once(self):
        full, stderr = os.pipe()
        self.addCleanup(os.close, full)
        def write(peer):
            # Nobody reads, and there is no room for another line.
            os.set_blocking(stderr, False)
            try:
                while True:
                    os.write(stderr, b"x")
            except BlockingIOError:
                os.set_blocking(stderr, True)
            self.post("writing", 400)
            self.reach("begun")
            self.wait_for("never")

        with self.service(write):
            process = self.start(stderr=stderr)
            self.wait_until((self.folder / "begun").exists, "the write is not begun", process)
            asker = self.asker()
            os.kill(asker, signal.SIGINT)
            # The first is held up by its last words.
            self.wait_until(lambda: "pipe" in self.where_threads_wait(asker), "it has no last words", process)
            self.assertIsNone(process.poll())
            os.kill(asker, signal.SIGINT)
            process.wait(timeout=20)
        os.close(stderr)

    @staticmethod
    def where_threads_wait(process):
        """What the kernel says each thread of it waits in."""
        waits = []
        for thread in os.listdir(f"/proc/{process}/task"):
            waits.append(open(f"/proc/{process}/task/{thread}/wchan").read())
        return " ".join(waits)
