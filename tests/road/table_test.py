"""How kestravctl ends, as one table: the situation, the exit status, the last line, and the object of --json.

Each row is played twice, once for a person and once for a program. The problem that the program is told is the last line
that the person reads. What is in no row of its own is in every one: a good end has no problem, and any other one is not
verified.
"""

import contextlib
import hashlib
import json
import os
import socket
import subprocess
import time
from dataclasses import dataclass, field

from json_test import assert_in_form
from road import FIRMWARE, ICON, MIB, PROGRAMS, AnsweringService, RoadTest, content, on_disk

BOARD = "/run/kestrav"
SIZE = 1000
WROTE = f"Wrote {SIZE} bytes to sdzz at block 1536, verified, 1.0 MB/s."
LISTENER = "'ss -tlnpe sport = :9090' names the program."
STRANGER = f"What answers on port 9090 is not kestrav-commandd: Prometheus and Cockpit use that port, too. {LISTENER}"
SEE = "Don't unplug the accessory: 'journalctl -t kestrav-commandd' tells the end."
HALF = f"Only a part of the service's answer came, so nobody knows what the accessory holds. {SEE}"
ANOTHER = "The answer is about another write, so nobody knows what the accessory holds. Send the image again."
GONE = "The service has gone without an answer, so nobody knows what the accessory holds. Send the image again."
WHY = "'journalctl -t kestrav-commandd' tells why."
NOT_RUNNING = "The service is not running: systemctl start kestrav-commandd.socket"
DIFFERS = ("Verification failed: the disk differs from the image at byte {} of it. Unplug the accessory, plug it in again "
           "and send the image once more.")
REPEAT = "The accessory's memory may hold a mixture now: unplug it, plug it in again and repeat the update."


@dataclass
class Row:
    situation: str
    status: int
    last_line: str  # FOLDER stands for the case's own
    object: dict = field(default_factory=dict)  # of the members of the object those that matter here
    words: tuple = ("firmware", "FOLDER/image")
    answer: object = None  # to the write: bytes, or what does it; none where there is no service
    unmounting: bytes = b"sdzz1 was not mounted."
    real: bool = False  # the real service
    device: str = "accessory"  # empty for none
    before: str = ""  # the name of what the case does first


WRITTEN = {"disk": "sdzz", "firstBlock": FIRMWARE, "bytes": SIZE, "verified": True}
NOT_WRITTEN = {"disk": "sdzz", "firstBlock": FIRMWARE, "bytes": SIZE, "verified": False}
NOTHING = {"disk": None, "answer": None}


def answered(situation, answer, status, last_line, told=None, **more):
    expected = WRITTEN if status == 0 else NOT_WRITTEN
    text = answer if isinstance(answer, bytes) else answer.encode()
    return Row(situation, status, last_line, {**expected, **({"answer": answer} if told is None else told)}, answer=text,
               **more)


ANSWERS = [
    answered("the service confirms it", WROTE, 0, on_disk(SIZE, FIRMWARE)),
    answered("it confirms it and adds a remark", WROTE + " It was mounted again and was unmounted from /media/x.", 0,
             on_disk(SIZE, FIRMWARE)),
    answered("it could not read it back", WROTE.replace("verified", "not verified"), 6,
             f"The {SIZE} bytes were written, but could not be read back from the disk itself, so nobody knows whether it "
             "has kept them. Unplug the accessory, plug it in again and send the image once more."),
    answered("the image changed meanwhile", WROTE.replace("1000", "999"), 4,
             "The image changed meanwhile: it had 1000 bytes, and 999 bytes were written. Send it again."),
    answered("it names another disk", WROTE.replace("sdzz", "sdb"), 6, ANOTHER),
    answered("it names another place", WROTE.replace("1536", "2048"), 6, ANOTHER),
    answered("the disk is write-protected", "Refused: the disk sdzz is write-protected.", 4,
             "Nothing was written: the disk sdzz is write-protected."),
    answered("nobody has agreed", "Refused: an administrator did not agree.", 4,
             "Nothing was written: an administrator did not agree."),
    answered("the service is busy", "Refused: the service is busy; try again in a moment.", 4,
             "Nothing was written: the service is busy; try again in a moment."),
    answered("it failed, and the advice is given once", f"Failed: writing sdzz from block 1540 on: Input/output error. {REPEAT}",
             4, f"The update failed: writing sdzz from block 1540 on: Input/output error. {REPEAT}"),
    answered("the partition could not be unmounted, and the image was written", WROTE, 0, on_disk(SIZE, FIRMWARE),
             unmounting=b"Refused: there is no /dev/sdzzs1."),
    answered("unmounting failed, and the image was written", WROTE, 0, on_disk(SIZE, FIRMWARE),
             unmounting=b"Failed: no."),
]
STRANGERS = [
    answered("a web server", "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n", 6, STRANGER),
    answered("something that is no text", b"\xff\xfe\x00", 6, STRANGER, {"answer": None}),
    answered("the answer to another question", "sdzz1 was not mounted.", 6, STRANGER),
    answered("twenty thousand letters", "a" * 20000, 6, STRANGER, {}),
    answered("half an answer", "Wrote 1000 bytes to sdzz at blo", 6, HALF),
    answered("the first letters of one", "Ref", 6, HALF),
    answered("a refusal without a reason", "Refused:", 6, HALF),
    answered("an answer with a second line", WROTE + "\n", 6, HALF),
    answered("another user, in the service's own words", WROTE, 6,
             f"This is not the service's answer: user 1801 listens in its place. Do not believe it. {LISTENER}",
             {"answer": None}, before="another_user"),
]
SILENCE = [
    Row("there is no service", 1, NOT_RUNNING, {**NOT_WRITTEN, "answer": None}),
    Row("it closes at once", 6, GONE, {**NOT_WRITTEN, "answer": None}, answer=lambda peer: peer.close()),
    Row("it resets the connection", 6, GONE, {**NOT_WRITTEN, "answer": None}, answer=lambda peer: reset(peer)),
    Row("no answer, and the board says that it was written", 0,
        "The image is on sdzz: the service's board says that it was written and compared, though no answer came.",
        {**NOT_WRITTEN, "answer": None}, answer=lambda peer: post("done", "wrote")),
    Row("no answer, and the board says that it failed", 4, f"The update failed: the service's board says so. {WHY}",
        {**NOT_WRITTEN, "answer": None}, answer=lambda peer: post("done", "failed")),
    Row("no answer, and the board says that it was refused", 4,
        f"Nothing was written: the service's board says that it refused. {WHY}", {**NOT_WRITTEN, "answer": None},
        answer=lambda peer: post("done", "refused")),
    Row("no answer, and who wrote is gone", 6,
        "The service died while it wrote, so nobody knows what the accessory holds. Send the image again.",
        {**NOT_WRITTEN, "answer": None}, answer=lambda peer: post("writing", None, writer=ended())),
    Row("no answer, and the board is about another place", 6, GONE, {**NOT_WRITTEN, "answer": None},
        answer=lambda peer: post("done", "wrote", first_block=77)),
]
SECOND_LOOK = [
    answered("--verify sees the image", WROTE, 0, "Verified: the 1000 bytes on the disk are those of the image.",
             words=("firmware", "--verify", "FOLDER/image"), before="on_the_disk"),
    answered("--verify sees something else", WROTE, 4, DIFFERS.format(0),
             words=("firmware", "--verify", "FOLDER/image")),
    answered("--verify sees something else in the middle", WROTE, 4, DIFFERS.format(600),
             words=("firmware", "--verify", "FOLDER/image"), before="half_on_the_disk"),
    answered("--verify after a refusal looks at nothing", "Refused: no.", 4, "Nothing was written: no.",
             words=("firmware", "--verify", "FOLDER/image"), before="on_the_disk"),
]
ACCESSORY = [
    Row("there is no accessory", 1, "No accessory (USB 10d6:fd01) is attached. Plug it in and try again.", NOTHING,
        answer=WROTE.encode(), device=""),
    Row("the accessory has no disk", 4, "The accessory has no disk yet, so nothing was done. Wait some seconds and try "
        "again; if that does not help, plug it in once more.", {"verified": False}, real=True,
        device="accessory-without-disk"),
    Row("there is no registry", 5, "The device registry can't be reached. Is /sys mounted?", NOTHING, device="none",
        before="no_registry"),
]
UPDATES = [
    Row("a firmware", 0, on_disk(SIZE, FIRMWARE), WRITTEN, real=True),
    Row("an icon", 0, on_disk(SIZE, ICON), {**WRITTEN, "firstBlock": ICON}, words=("icon", "FOLDER/image"), real=True),
    Row("any place", 0, on_disk(SIZE, 5000), {**WRITTEN, "firstBlock": 5000}, words=("push", "5000", "FOLDER/image"),
        real=True),
    Row("a firmware that reaches into the icon's area", 0, on_disk(262145, FIRMWARE) +
        " It reaches into the icon area: send the icon again, too.", {**WRITTEN, "bytes": 262145},
        words=("firmware", "FOLDER/long"), real=True),
    Row("an image that does not fit", 4, f"Nothing was written: the image has {16 * MIB} bytes, but sdzz has room for "
        "15990784 from block 1536 on. Nothing was written.", {**NOT_WRITTEN, "bytes": 16 * MIB},
        words=("firmware", "FOLDER/large"), real=True),
    Row("a block past the end", 4, "Nothing was written: block 99999 lies past the end of sdzz, which has 32768 blocks.",
        {**NOT_WRITTEN, "firstBlock": 99999}, words=("push", "99999", "FOLDER/image"), real=True),
    Row("a dry run", 0, f"Nothing was written, as was asked for: the {SIZE} bytes of FOLDER/image would go to sdzz from "
        "block 1536 on.", {**NOT_WRITTEN, "answer": None}, words=("firmware", "--dry-run", "FOLDER/image"), real=True),
    Row("a dry run without a service", 1, NOT_RUNNING, NOT_WRITTEN, words=("firmware", "--dry-run", "FOLDER/image")),
]
FILES = [
    Row("no such image", 2, "FOLDER/none can't be read: No such file or directory. Check the name and your rights to the "
        "file.", NOTHING, words=("firmware", "FOLDER/none")),
    Row("a folder", 2, "FOLDER is a folder. Give the name of an ordinary file that holds the image.", NOTHING,
        words=("firmware", "FOLDER")),
    Row("a pipe", 2, "FOLDER/pipe is a pipe. Give the name of an ordinary file that holds the image.", NOTHING,
        words=("icon", "FOLDER/pipe")),
    Row("a device", 2, "/dev/null is a device. Give the name of an ordinary file that holds the image.", NOTHING,
        words=("push", "0", "/dev/null")),
    Row("an empty image", 1, "The image is empty, so nothing was handed over. Choose another one.", NOTHING,
        words=("firmware", "FOLDER/empty")),
    Row("another checksum", 1, "The image is not the one that is expected: its SHA-256 is "
        f"{hashlib.sha256(content(SIZE)).hexdigest()}, not " + "0" * 64 + ". Nothing was handed over. Fetch the image "
        "again.", {"verified": False}, words=("firmware", "--sha256", "0" * 64, "FOLDER/image")),
    Row("no checksum beside it", 2, "FOLDER/image.sha256 can't be read: No such file or directory. Make it with "
        "sha256sum.", {"verified": False}, words=("firmware", "--check", "FOLDER/image")),
]
CALLS = [
    Row("a command that is none", 2, "'frimware' is not a command. Did you mean 'firmware'? See 'kestravctl --help'.",
        NOTHING, words=("frimware", "x")),
    Row("an option that is none", 2, "'--verfy' is not an option of kestravctl firmware. Did you mean '--verify'? See "
        "'kestravctl firmware --help'.", NOTHING, words=("firmware", "--verfy", "x")),
    Row("no image", 2, "FILE is required. See 'kestravctl icon --help'.", NOTHING, words=("icon",)),
    Row("one word too many", 2, "'b' is one word too many for kestravctl firmware. See 'kestravctl firmware --help'.",
        NOTHING, words=("firmware", "a", "b")),
    Row("a block that is no number", 2, "BLOCK: '0x10' is not a whole number from 0 to 9223372036854775807. See "
        "'kestravctl push --help'.", NOTHING, words=("push", "0x10", "x")),
    Row("a checksum that is none", 2, "--sha256: 'abc' is not a SHA-256: those have 64 digits from 0 to f. See "
        "'kestravctl firmware --help'.", NOTHING, words=("firmware", "--sha256", "abc", "x")),
]
GROUPS = {"answers": ANSWERS, "strangers": STRANGERS, "silence": SILENCE, "second_look": SECOND_LOOK,
          "accessory": ACCESSORY, "updates": UPDATES, "files": FILES, "calls": CALLS}


def reset(peer):
    """An end that is not orderly: linger for no time."""
    peer.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\x01\0\0\0\0\0\0\0")


def post(phase, verdict, writer=None, first_block=FIRMWARE):
    """On the board, as the service's process does it that is this one."""
    writer = writer or os.getpid()
    entry = {"version": 1, "disk": "sdzz", "user": os.geteuid(), "asker": 0, "writer": writer, "writerStart": 1,
             "firstBlock": first_block, "bytes": SIZE, "phase": phase, "done": SIZE, "of": SIZE,
             "begun": time.time_ns() // 1000}  # another one than the row's before, however quickly it follows
    if verdict:
        entry["verdict"] = verdict
    with open(f"{BOARD}/.fresh", "w") as file:
        json.dump(entry, file)
    os.rename(f"{BOARD}/.fresh", f"{BOARD}/sdzz.json")


def ended():
    """The number of a process that has ended."""
    process = subprocess.Popen(["true"])
    process.wait()
    return process.pid


class RowsService(AnsweringService):
    """Answers the unmounting and the write of a row."""

    def __init__(self, row, user=0):
        os.seteuid(user)
        try:
            super().__init__(row.answer)
        finally:
            os.seteuid(0)
        self.row = row

    def serve(self):
        while True:
            peer, _ = self.listener.accept()
            with peer:
                request = peer.recv(65536)
                if b'"umount"' in request:
                    peer.sendall(self.row.unmounting)
                elif isinstance(self.answer, bytes):
                    peer.sendall(self.answer)
                else:
                    self.answer(peer)


class Table(RoadTest):
    def setUp(self):
        super().setUp()
        self.own_folders()
        os.mkdir(BOARD)
        for name, size in (("image", SIZE), ("long", 262145), ("large", 16 * MIB), ("empty", 0)):
            self.image(size, name)
        os.mkfifo(self.folder / "pipe")

    # -- what a row does first --------------------------------------------------------------------------------------

    def on_the_disk(self):
        self.put_on_disk(content(SIZE))

    def half_on_the_disk(self):
        self.put_on_disk(content(SIZE)[:600] + bytes(400))

    def put_on_disk(self, image):
        with open(self.disk, "r+b") as disk:
            disk.seek(FIRMWARE * 512)
            disk.write(image)

    def no_registry(self):
        subprocess.run(["umount", "-R", "-l", "/sys"], check=True)

    def another_user(self):
        """See service_of()."""

    # -- playing it -------------------------------------------------------------------------------------------------

    @contextlib.contextmanager
    def service_of(self, row):
        if row.real:
            service = self.start_service(row.device)
            yield
            self.stop_service(service)
        elif row.answer is None:
            yield
        else:
            with RowsService(row, 1801 if row.before == "another_user" else 0):
                yield

    def called(self, row, *more):
        words = [word.replace("FOLDER", str(self.folder)) for word in (*row.words, *more)]
        if row.device == "none":
            return subprocess.run([PROGRAMS / "kestravctl", *words], capture_output=True, timeout=60)
        return self.kestravctl(*words, plugged=bool(row.device), device=row.device)

    def play(self, row):
        self.put_on_disk(bytes(SIZE))
        if row.before:
            getattr(self, row.before)()
        last_line = row.last_line.replace("FOLDER", str(self.folder))
        with self.service_of(row):
            person = self.called(row)
            said = (person.stdout if row.status == 0 else person.stderr).decode()
            self.assertEqual(person.returncode, row.status, said)
            self.assertEqual(said.splitlines()[-1], last_line if row.status == 0 else f"kestravctl: {last_line}")
            program = self.called(row, "--json")
        self.assertEqual(program.returncode, row.status, program.stderr.decode())
        result = json.loads(program.stdout.decode().splitlines()[-1])
        assert_in_form(result)
        expected = {"status": row.status, "problem": None if row.status == 0 else last_line, **row.object}
        self.assertEqual({name: result[name] for name in expected}, expected)

    def play_all(self, rows):
        for row in rows:
            with self.subTest(row.situation):
                self.play(row)

    def test_is_of_forty_rows_at_least(self):
        rows = [row for group in GROUPS.values() for row in group]
        self.assertGreaterEqual(len(rows), 40)
        self.assertEqual(len({row.situation for row in rows}), len(rows))
        self.assertEqual({row.status for row in rows}, {0, 1, 2, 4, 5, 6})
        played = [name.removeprefix("test_holds_of_") for name in dir(self) if name.startswith("test_holds_of_")]
        self.assertCountEqual(played, GROUPS)

    def test_holds_of_answers(self):
        self.play_all(ANSWERS)

    def test_holds_of_strangers(self):
        self.play_all(STRANGERS)

    def test_holds_of_silence(self):
        self.play_all(SILENCE)

    def test_holds_of_second_look(self):
        self.play_all(SECOND_LOOK)

    def test_holds_of_accessory(self):
        self.play_all(ACCESSORY)

    def test_holds_of_updates(self):
        self.play_all(UPDATES)

    def test_holds_of_files(self):
        self.play_all(FILES)

    def test_holds_of_calls(self):
        self.play_all(CALLS)
