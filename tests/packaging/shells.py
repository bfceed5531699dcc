"""What each shell offers for a command line that is half typed; asked from the shells themselves."""

import os
import pty
import signal
import subprocess
import tempfile
import time
from pathlib import Path

COMPLETIONS = Path(__file__).resolve().parents[2] / "packaging/completions"
PATIENCE = 60

BASH = """
source "$1"
shift
COMP_WORDS=("$@")
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
compopt() { :; }  # there is no completion under way to set an option of
_kestravctl
printf '%s\\n' "${COMPREPLY[@]}"
"""

# The completion system works on an interactive command line only, so zsh gets one. What would be shown is written to a
# file: `compadd`, which every match passes, is asked which words it would take.
ZSH = """
fpath=({completions} $fpath)
autoload -Uz compinit && compinit -u -D
matches() {{
    local -a found
    compadd() {{
        local -a taken
        [[ ${{@[1,(i)(-|--)]}} == *-(O|A|D)\\ * ]] || {{ builtin compadd -A taken "$@"; found+=("${{taken[@]}}") }}
        builtin compadd "$@"
    }}
    _main_complete
    unfunction compadd
    print -rl -- "${{found[@]}}" >{answer}.new && mv {answer}.new {answer}
}}
zle -C matches complete-word matches
bindkey '^I' matches
: >{ready}
"""


def bash(*words):
    run = subprocess.run(["bash", "--norc", "-c", BASH, "bash", COMPLETIONS / "kestravctl.bash", *words],
                         check=True, capture_output=True, text=True)
    return set(run.stdout.split())


def fish(*words):
    with tempfile.TemporaryDirectory(prefix="kestrav-fish.") as home:
        run = subprocess.run(["fish", "--no-config", "-c", 'source $argv[1]; complete -C "$argv[2]"',
                              COMPLETIONS / "kestravctl.fish", " ".join(words)],
                             check=True, capture_output=True, text=True, env={**os.environ, "HOME": home})
    return {line.split("\t")[0] for line in run.stdout.splitlines()}


class Zsh:
    """One zsh on a terminal of its own, asked one line after the other: loading its completion system takes a second."""

    def __init__(self, folder):
        self.answer, ready, start = (Path(folder) / name for name in ("answer", "ready", "start"))
        start.write_text(ZSH.format(completions=COMPLETIONS, answer=self.answer, ready=ready))
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.execvpe("zsh", ["zsh", "-f", "-i"], {**os.environ, "TERM": "dumb", "HOME": str(folder)})
        os.write(self.terminal, f"source {start}\n".encode())
        self._wait_for(ready)

    def offers(self, *words):
        self.answer.unlink(missing_ok=True)
        # Control-U empties the line of the question before.
        os.write(self.terminal, b"\x15" + " ".join(words).encode() + b"\t")
        self._wait_for(self.answer)
        return set(self.answer.read_text().split())

    def end(self):
        os.kill(self.process, signal.SIGKILL)
        os.waitpid(self.process, 0)
        os.close(self.terminal)

    def _wait_for(self, file):
        """Takes what the shell shows meanwhile off the terminal, so that it never waits for its reader."""
        os.set_blocking(self.terminal, False)
        end = time.monotonic() + PATIENCE
        while not file.exists():
            try:
                os.read(self.terminal, 65536)
            except BlockingIOError:
                time.sleep(0.02)
            if time.monotonic() > end:
                raise TimeoutError(f"{file.name} did not come")
