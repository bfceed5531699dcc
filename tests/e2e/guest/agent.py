"""agent.py PORT: does in the guest what the cases ask for through the virtio port of that name.

A request is one line of JSON with a number, and so is its answer, with that number in `to`. `start` starts a program,
in a terminal of its own if wanted, and answers with a number for it; `look` tells what it has said so far and its exit
status, null while it runs, and whether its terminal hides what is typed, and waits for its end for some seconds at most;
`type` types into its terminal; `end` ends it.
"""

import json
import os
import pty
import signal
import subprocess
import sys
import tempfile
import termios
import threading
import traceback


class Job:
    def __init__(self, argv, terminal, environment):
        self.out, self.err = tempfile.TemporaryFile(), tempfile.TemporaryFile()
        self.keyboard, self.screen = None, None
        environment = {**os.environ, **environment}
        if terminal:
            self.start_in_terminal(argv, environment)
        else:
            self.process = subprocess.Popen(argv, stdin=subprocess.DEVNULL, stdout=self.out, stderr=self.err,
                                            env=environment, start_new_session=True)

    def start_in_terminal(self, argv, environment):
        self.keyboard, its_end = pty.openpty()

        def take_terminal():
            os.setsid()
            os.close(os.open(os.ttyname(0), os.O_RDWR))  # a session's first terminal becomes its own

        self.process = subprocess.Popen(argv, stdin=its_end, stdout=its_end, stderr=its_end, env=environment,
                                        preexec_fn=take_terminal)
        os.close(its_end)
        self.screen = threading.Thread(target=self.copy_screen, daemon=True)
        self.screen.start()

    def copy_screen(self):
        while True:
            try:
                shown = os.read(self.keyboard, 65536)
            except OSError:  # nobody has the terminal open any longer
                return
            self.out.write(shown)
            self.out.flush()

    def look(self, seconds):
        try:
            self.process.wait(timeout=seconds)
            if self.screen:
                self.screen.join(timeout=5)
        except subprocess.TimeoutExpired:
            pass
        return {"status": self.process.returncode, "out": self.said(self.out), "err": self.said(self.err),
                "hides": self.hides()}

    def hides(self):
        return (self.keyboard is not None and self.process.returncode is None
                and not termios.tcgetattr(self.keyboard)[3] & termios.ECHO)

    @staticmethod
    def said(file):
        size = os.fstat(file.fileno()).st_size
        return os.pread(file.fileno(), size, 0).decode(errors="replace")


class Jobs:
    def __init__(self):
        self.jobs = {}

    def answer(self, request):
        if request["do"] == "start":
            number = len(self.jobs)
            self.jobs[number] = Job(request["argv"], request["terminal"], request["environment"])
            return {"job": number}
        job = self.jobs[request["job"]]
        if request["do"] == "type":
            os.write(job.keyboard, request["text"].encode())
        elif request["do"] == "end":
            os.killpg(job.process.pid, signal.SIGKILL)
        return job.look(request.get("seconds", 0))


def serve(name, answer):
    """Answers the requests that come through the port of this name, one after the other, until the guest goes."""
    with open(f"/dev/virtio-ports/{name}", "r+b", buffering=0) as port:
        say = lambda what: port.write(json.dumps(what).encode() + b"\n")
        say({"ready": name})
        waiting = b""
        while True:
            waiting += port.read(65536) or b""
            while b"\n" in waiting:
                line, waiting = waiting.split(b"\n", 1)
                request = json.loads(line)
                try:
                    say({"to": request["number"], **answer(request)})
                except Exception as error:  # pylint: disable=broad-except; the case has to hear of it, whatever it is
                    say({"to": request["number"], "error": "".join(traceback.format_exception(error))})


if __name__ == "__main__":
    serve(sys.argv[1], Jobs().answer)
