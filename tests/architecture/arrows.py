#!/usr/bin/env python3
"""Reads the #include lines of the tree and says which arrow between two folders must not exist, or is not used.

    arrows.py [ROOT]        exit 0: every arrow is allowed, and every allowed one is used; 1: complaints, one a line
    arrows.py --picture     the arrows as the block that README.md shows under "Layout"

A folder may include itself and what ALLOWED names for it. The picture leaves out an arrow that is a shorter way to where
others lead, too: app may include base, and the picture shows the way there through device and command.
"""

import re
import sys
from pathlib import Path

# Longest folder first wins: command/linux is a room of its own inside command.
ALLOWED = {
    "protocol": set(),
    "base": {"protocol"},
    "json/tree": {"base"},
    "json/record": {"json/tree"},
    "json/value": {"json/tree", "base"},
    "socket": {"base"},
    "command": {"json/record", "json/tree", "socket", "base", "protocol"},
    "command/linux": {"command", "base", "protocol"},
    "outcome": {"command", "base", "protocol"},
    "device": {"command", "base", "protocol"},
    "device/linux": {"device", "base"},
    "cli": {"outcome", "device", "command", "json/tree", "base", "protocol"},
    "app": {"outcome", "device", "command", "base", "protocol"},
    "app/qt": {"app", "outcome", "device", "command", "base", "protocol"},
    "services/asker": {"base", "protocol"},
    "services/disk": {"base", "protocol"},
    "services/image": {"base"},
    "services/gate": {"services/asker", "services/disk", "services/image", "base", "protocol"},
    "services/jobs": {"services/gate", "services/asker", "base"},
    "services/commandd": {
        "services/jobs", "services/gate", "services/asker", "services/disk", "json/tree", "base", "protocol",
    },
    "services/helper": {"services/jobs", "services/gate", "services/asker", "services/disk", "base", "protocol"},
}
# These may look at everything; nothing may look at them.
ONLOOKERS = ("tests", "benchmarks", "fuzz", "simulator")
BACKENDS = ("command/linux", "device/linux")
QT_MAY_BE_USED_IN = ("app/qt",) + ONLOOKERS
SOURCES = (".h", ".cpp", ".c")
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')
QT_HEADER = re.compile(r"^(Qt\w*/.*|Q[A-Z]\w*)$")


def folder_of(path):
    """The room that `path` (relative to the root) stands in, or None if it is in none that has rules."""
    parts = Path(path).parts
    if parts and parts[0] in ONLOOKERS:
        return parts[0]
    for depth in range(len(parts) - 1, 0, -1):
        name = "/".join(parts[:depth])
        if name in ALLOWED:
            return name
    return None


def forbidden(source, target):
    """Why `source` must not include `target` (both relative to the root), or None if it may."""
    here, there = folder_of(source), folder_of(target)
    if here is None or there is None or here == there or here in ONLOOKERS:
        return None
    if there in ONLOOKERS:
        return f"production code looks into {there}"
    if there in BACKENDS and Path(source).name == "main.cpp":
        return None  # the one place where backends are chosen and joined
    if there in BACKENDS and here in BACKENDS:
        return "a backend looks into another one"
    if there in BACKENDS and there.startswith(here + "/"):
        return "an interface looks into its own backend"
    if there not in ALLOWED[here]:
        return f"{here} must not know {there}"
    return None


def includes(text):
    for line in text.splitlines():
        match = INCLUDE.match(line)
        if match:
            yield match.group(1) == '"', match.group(2)


def cycles(graph):
    """Circles of files that include each other, each as the list of its files."""
    found, done, path = [], set(), []

    def walk(node):
        if node in path:
            found.append(path[path.index(node):] + [node])
            return
        if node in done:
            return
        path.append(node)
        for following in sorted(graph.get(node, ())):
            walk(following)
        path.pop()
        done.add(node)

    for node in sorted(graph):
        walk(node)
    return found


def check(files):
    """`files` maps a path relative to the root to its text. Returns the complaints, one sentence each."""
    complaints, graph = [], {}
    for source, text in sorted(files.items()):
        graph[source] = set()
        if folder_of(source) is None:
            complaints.append(f"{source}: no rule says what its folder may include")
        for quoted, target in includes(text):
            if not quoted and QT_HEADER.match(target) and not source.startswith(QT_MAY_BE_USED_IN):
                complaints.append(f"{source} -> <{target}>: only app/qt/ knows the toolkit")
            if not quoted:
                continue
            if target not in files and str(Path(source).parent / target) in files:
                complaints.append(f'{source} -> "{target}": include from the root of the tree')
                continue
            reason = forbidden(source, target)
            if reason:
                complaints.append(f"{source} -> {target}: {reason}")
            graph[source].add(target)
    complaints += ["a circle: " + " -> ".join(circle) for circle in cycles(graph)]
    return complaints


def unused(files):
    """The allowed arrows that no file needs, one sentence each. A rule that is wider than the house hides a change."""
    used = {(folder_of(source), folder_of(target)) for source, text in files.items()
            for quoted, target in includes(text) if quoted}
    return [f"{here} may know {there}, and no file of it does: take the arrow out of ALLOWED"
            for here in ALLOWED for there in sorted(ALLOWED[here]) if (here, there) not in used]


def reachable(folder, allowed):
    """The folders that arrows lead to from `folder`, over one or more others."""
    found, waiting = set(), list(allowed[folder])
    while waiting:
        here = waiting.pop()
        if here not in found:
            found.add(here)
            waiting += allowed[here]
    return found


def shown(allowed):
    """`allowed` without the arrows that are a shorter way to where others lead, too; each folder's in a fixed order."""
    return {
        here: sorted(there for there in targets
                     if not any(there in reachable(between, allowed) for between in targets if between != there))
        for here, targets in allowed.items()
    }


def picture(allowed):
    """The arrows as text: roads, each as long as it shows something new; the user's side first, then root's."""
    left = shown(allowed)
    lines = []
    for start in sorted(reversed(list(allowed)), key=lambda folder: folder.startswith("services")):
        while left[start]:
            road = [start]
            while left[road[-1]]:
                road.append(left[road[-1]].pop(0))
            lines.append(" ──► ".join(road))
    return "\n".join(lines + ["main.cpp of each program ──► the backends in linux/"])


def read_tree(root):
    rooms = sorted({name.split("/")[0] for name in ALLOWED} | set(ONLOOKERS))
    return {
        str(path.relative_to(root)): path.read_text(encoding="utf-8")
        for room in rooms
        for path in sorted((root / room).rglob("*"))
        if path.suffix in SOURCES and path.is_file()
    }


def main():
    if sys.argv[1:] == ["--picture"]:
        print(picture(ALLOWED))
        return 0
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2]
    files = read_tree(root)
    if not files:
        print(f"no sources below {root}")
        return 1
    complaints = check(files) + unused(files)
    print("\n".join(complaints) if complaints else f"{len(files)} files, no forbidden arrow and no unused one")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
