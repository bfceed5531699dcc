"""What docs/frozen.md says, what the sources are marked with, and where the two disagree."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FOLDERS = ("app", "base", "cli", "command", "device", "json", "protocol", "services", "socket")
MARK = re.compile(r"//+ ?frozen: (F\d+(?:, F\d+)*)[ \t]*$", re.M)
ANY_MARK = re.compile(r"\bfrozen: *\w*")
CASE = re.compile(r"^(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\)", re.M)
ROW = re.compile(r"^\| (F\d+) \|(.*)\|$", re.M)


def marks(sources):
    """`sources` maps a path to its text. The ids that each one is marked with, and complaints about odd marks."""
    found, complaints = {}, []
    for path, text in sources.items():
        ids = [name for mark in MARK.finditer(text) for name in mark.group(1).split(", ")]
        if len(ANY_MARK.findall(text)) != len(MARK.findall(text)):
            complaints.append(f"{path}: a mark is a comment of its own, like // frozen: F1")
        if ids:
            found[path] = set(ids)
    return found, complaints


def rows(page):
    """Each row of the page: its id, its places as a map from file to names, and its tests."""
    for row in ROW.finditer(page):
        cells = [cell.strip() for cell in row.group(2).split(" | ")]
        places = {}
        for place in cells[1].split("; ") if len(cells) == 4 else ():
            file, *names = re.findall(r"`([^`]+)`", place) or [place]
            places[file] = names
        yield row.group(1), cells, places, re.findall(r"`([^`]+)`", cells[-1])


def row_complaints(name, cells, places, cases, sources, marked, known_cases):
    if len(cells) != 4 or not all(cells):
        yield f"{name}: a row has an id, what, where, why and a test"
        return
    for file, functions in places.items():
        if name not in marked.get(file, ()):
            yield f"{name}: {file} has no mark // frozen: {name}"
        if not functions:
            yield f"{name}: which function of {file}?"
        for function in functions:
            if not re.search(re.escape(function), sources.get(file, "")):
                yield f"{name}: {file} has no {function}"
    if not cases:
        yield f"{name}: no test is named"
    for case in cases:
        if case not in known_cases:
            yield f"{name}: there is no test {case}"


def complaints(page, sources, tests):
    """Everything that is wrong, one sentence each. `tests` are the texts of the test sources."""
    marked, found = marks(sources)
    known_cases = {".".join(case) for text in tests for case in CASE.findall(text)}
    listed = {}
    for name, cells, places, cases in rows(page):
        if name in listed:
            found.append(f"{name}: has two rows")
        listed[name] = places
        found += row_complaints(name, cells, places, cases, sources, marked, known_cases)
    for file, names in marked.items():
        found += [f"{file}: {name} has no row that names this file" for name in sorted(names)
                  if file not in listed.get(name, ())]
    numbers = [int(name[1:]) for name in listed]
    if numbers != list(range(1, len(numbers) + 1)):
        found.append("the rows are numbered from F1 on, in their order")
    return found


def read(folders, *endings):
    return {str(file.relative_to(ROOT)): file.read_text()
            for folder in folders for file in sorted((ROOT / folder).rglob("*")) if file.suffix in endings}
