#!/usr/bin/env python3
"""How long `kestravctl list` takes in comparison with `kestravctl detect`, with 2,000 other USB devices beside.

list_accessories.py PROGRAMS [ROUNDS]

Both are run in turn within one simulation, so that what else the computer does hits both. Each figure is of processor
time, the median over all rounds, and the ratio is the median of the ratios within a round.
"""

import os
import statistics
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
OTHERS = 2000


def seconds(command):
    """Processor time of one run, of user and system."""
    child = os.posix_spawn(command[0], command, os.environ, file_actions=[
        (os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0)])
    _, status, usage = os.wait4(child, 0)
    if status != 0:
        sys.exit(f"{command} ended with {status}")
    return usage.ru_utime + usage.ru_stime


def inside(program, rounds):
    taken = [(seconds([program, "detect"]), seconds([program, "list"])) for _ in range(rounds)]
    detect, listing = (statistics.median(column) for column in zip(*taken))
    ratio = statistics.median(listed / detected for detected, listed in taken)
    print(f"detect {detect * 1000:.1f} ms, list {listing * 1000:.1f} ms, list / detect {ratio:.2f} "
          f"(median of {rounds} rounds, {OTHERS} other USB devices)")


def main():
    if sys.argv[1] == "--inside":
        return inside(sys.argv[2], int(sys.argv[3]))
    program = Path(sys.argv[1]).resolve() / "kestravctl"
    rounds = sys.argv[2] if len(sys.argv) > 2 else "40"
    subprocess.run([ROOT / "simulator/with-accessory", "--others", str(OTHERS), "--", sys.executable, __file__, "--inside",
                    program, rounds], check=True)
    return None


if __name__ == "__main__":
    main()
