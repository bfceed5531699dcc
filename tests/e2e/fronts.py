"""The two front ends by which a person sends an image, alike for the cases: kestravctl in a terminal, and the window."""

from case import GuestCase
from guest import PATIENCE
from world import World

HANDED_OVER = ["Writing to device memory space.", "", "Finished writing to device."]
NOT_READY = ["Writing to device memory space.", "Device not ready yet!", "Failed writing to device."]


def loaded(path, size):
    return f"Loaded icon file: {path} with {size} bytes."


class Told:
    """What the person is told of one update: `lines` are the front end's own, `answer` is the service's last one, `end`
    the line that says what it means and `status` the exit status, neither of which a window has; `panel` is what the window
    says instead."""

    def __init__(self, lines, answer, status=None, end="", panel=""):
        self.lines, self.answer, self.status, self.end, self.panel = lines, answer, status, end, panel

    def __str__(self):
        return "\n".join([*self.lines, f"answer: {self.answer}", self.end, f"exit status: {self.status}",
                          f"panel: {self.panel}"])


class CommandUpdate:
    def __init__(self, job):
        self.job = job

    def is_over(self):
        return self.job.look().status is not None

    def wait(self, seconds=PATIENCE):
        result = self.job.wait(seconds)
        lines = result.out.replace("\r", "").split("\n")[:-1]
        if HANDED_OVER[-1] in lines:
            lines = lines[:lines.index(HANDED_OVER[-1]) + 1]  # then comes the end, if it is a good one
        said = [line.removeprefix("kestravctl: ") for line in result.err.splitlines()]
        end = said.pop() if result.status != 0 and said else result.out.replace("\r", "").split("\n")[-2]
        answers = [line for line in said if not line.startswith("No answer has come.")]
        return Told(lines, "".join(answers[-1:]), result.status, end)


class WindowUpdate:
    def __init__(self, update):
        self.update = update

    def is_over(self):
        return self.update.look()["over"]

    def wait(self, seconds=PATIENCE):
        shown = self.update.wait(seconds)
        return Told(shown["log"], shown["status line"], panel=shown["panel"])


class FrontEndCase(GuestCase):
    def update(self, kind, path):
        return self.start(kind, path).wait()

    def assert_handed_over(self, told, path, size, kind="firmware"):
        """The front end has said that it handed the image over, which it says whatever became of it."""
        self.assert_lines(told, path, size, HANDED_OVER, kind)

    def assert_lines(self, told, path, size, lines, kind="firmware"):
        self.assertEqual(told.lines, self.lines_of(kind, [loaded(path, size), *lines]), str(told))

    def assert_answered(self, told, sentence):
        """The service's last answer, as the person is shown it and as it is written down."""
        self.assertIn(sentence, told.answer)
        self.wait_for_log(sentence, self.identifier)

    def assert_verified(self, told, sentence):
        self.assert_answered(told, sentence)
        self.assert_verification(told, True, "Verified: ")

    def assert_not_verified(self, told):
        self.assertNotIn("verified", told.answer)
        refused = told.answer.startswith("Refused: ")
        self.assert_verification(told, False, "Nothing was written: " if refused else "The update failed: ")


class KestravctlCase(FrontEndCase):
    """Updates are sent by root with kestravctl, which looks afterwards whether the disk holds the image."""

    identifier = "kestravctl"
    spare_mib = 40  # with so much of the computer's memory left it works

    def start(self, kind, path, verify=True):
        return CommandUpdate(self.root.start("kestravctl", kind, *(["--verify"] if verify else []), path))

    def lines_of(self, kind, lines):
        return lines

    def assert_status(self, told, status):
        self.assertEqual(told.status, status, str(told))

    def assert_panel(self, told, words):
        """The command line has no panel: its last line is compared with `assert_verification`."""

    def assert_verification(self, told, succeeds, sentence):
        self.assertIn(sentence, told.end)
        self.assert_status(told, 0 if succeeds else 4)


class WindowCase(FrontEndCase):
    """Updates are sent by anna, who clicks in the window. It stays open from case to case."""

    identifier = "kestrav"
    spare_mib = 120

    def setUp(self):
        super().setUp()
        self.window = World.window()

    def start(self, kind, path, verify=True):
        return WindowUpdate(self.window.start(kind, path))

    def lines_of(self, kind, lines):
        return [f"Preparing to process {kind}.", *lines, f"End {kind} processing."]

    def assert_status(self, told, status):
        """The window tells no exit status before it is closed, and closes without a failure whatever happened."""

    def assert_panel(self, told, words):
        self.assertIn(words, told.panel, str(told))

    def assert_verification(self, told, succeeds, sentence):
        """The window does not look itself: what the service's answer says is all that is known. By the panel's words
        alone a person has to know whether the image arrived."""
        if succeeds:
            self.assertIn(" is on the accessory, read back and equal.", told.panel, str(told))
        else:
            self.assertTrue(told.panel.startswith("Not written"), str(told))
