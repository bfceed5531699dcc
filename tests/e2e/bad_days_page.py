#!/usr/bin/env python3
"""Makes the tables of docs/bad-days.md from bad_days.toml.

    bad_days_page.py          writes them
    bad_days_page.py check    says where the page, the rows and the cases differ; exit 0: nowhere
"""

import re
import sys
import tomllib
from pathlib import Path

from bad_days_cases import ROOT, Cases, quoted

PAGE = ROOT / "docs/bad-days.md"
DAYS = ROOT / "tests/e2e/bad_days.toml"
REPORTS = ROOT / "app/reportOf.cpp"
BEGIN, END = "## The days\n\n", "## What holds for all of them\n"
SUBJECTS = {
    "plug": "The plug and the disk",
    "image": "The image",
    "mounts": "Mounts, and others who use the disk",
    "consent": "Consent, the bus and polkit",
    "service": "The service and its answers",
    "limits": "The computer and its limits",
    "front ends": "The front ends",
}
# So many were found worth playing. A day may be told better, but none gets lost.
FEWEST = 140
HEAD = ("| what happened | when | `kestravctl` says | the window's panel | exit status | system log | on the accessory |\n"
        "|---|---|---|---|---|---|---|\n")
FIELDS = {"subject", "what", "when", "terminal", "window", "status", "journal", "disk", "played"}
CASES = Cases()
NEEDED = ("subject", "what", "when", "terminal", "status", "disk", "played")
# What the service's answer is like, the exit status that follows from it, and what the window makes of it.
ANSWERS = {"Wrote .*not verified": ("6", "notReadBack"), "Wrote …": ("0", "firmwareArrived"), "Refused: ": ("4", "refused"),
           "Failed: ": ("4", "failed")}


def days():
    return tomllib.loads(DAYS.read_text(encoding="utf-8"))["day"]


def reports():
    """The panel's first line for each ending, as the window has it."""
    rows = re.findall(r'Row\{UpdateEnding::(\w+),\s*\{Kind::\w+,\s*translatable\("Report", "([^"]+)"\)',
                      REPORTS.read_text(encoding="utf-8"))
    return dict(rows)


def answer_in(day):
    """What follows from the service's last answer of the day, if one is shown: the exit status, and the window's ending."""
    found = [next((follows for like, follows in ANSWERS.items() if re.match(like, quote)), None)
             for quote in quoted(day.get("terminal", ""))]
    found = [follows for follows in found if follows]
    return found[-1] if found else None


def panel(day, headlines):
    """What the window shows: in words where it is unusual, and otherwise what it makes of the answer."""
    if "window" in day:
        return re.sub(r"<(\w+)>", lambda ending: f"`{headlines[ending[1]]}`", day["window"])
    follows = answer_in(day)
    return f"`{headlines[follows[1]]}`" if follows else "–"


def journal(day):
    return day.get("journal") or ("the answer" if answer_in(day) else "–")


def row(day, headlines):
    cells = (day["what"], day["when"], day["terminal"], panel(day, headlines), day["status"], journal(day), day["disk"])
    return "| " + " | ".join(cell.replace("REPEAT", "repeat").replace("|", r"\|") for cell in cells) + " |\n"


def tables(all_days):
    headlines = reports()
    parts = []
    for subject, title in SUBJECTS.items():
        rows = "".join(row(day, headlines) for day in all_days if day["subject"] == subject)
        parts.append(f"### {title}\n\n{HEAD}{rows}\n")
    return "".join(parts)


def page_with(page, text):
    """The page with its tables exchanged."""
    begin = page.index(BEGIN) + len(BEGIN)
    return page[:begin] + text + page[page.index(END):]


def shape_complaints(day):
    for field in NEEDED:
        if not day.get(field):
            yield f"says nothing of {field}"
    for field in sorted(set(day) - FIELDS):
        yield f"nobody knows what {field} is"
    if day.get("subject") not in SUBJECTS:
        yield f"there is no subject {day.get('subject')}"
    follows = answer_in(day)
    if follows and day.get("status") != follows[0]:
        yield f"its answer ends kestravctl with {follows[0]}"
    if not follows and "window" not in day:
        yield "there is no answer that tells what the window makes of it: say it"
    for ending in re.findall(r"<(\w+)>", day.get("window", "")):
        if ending not in reports():
            yield f"the window knows no ending {ending}"


def sentence_complaints(day, cases):
    """What a day quotes has to be said where it is played, or to be explained in the troubleshooting; at least one of its
    quotations is looked for by a case, so that a sentence can't change there and stay here."""
    played = [case for case in day.get("played", ()) if cases.has(case)]
    quotes = [quote for field in ("terminal", "window", "journal") for quote in quoted(day.get(field, ""))]
    for quote in quotes:
        if not cases.have(played, quote):
            yield f"neither its cases nor docs/troubleshooting.md have: {quote}"
    if quotes and played and not any(cases.expects(case, quote) for case in played for quote in quotes):
        yield "none of its cases looks for a sentence of it"


def complaints(all_days, cases=CASES):
    for day in all_days:
        name = f"{day.get('what')}, {day.get('when')}"
        for case in day.get("played", ()):
            if not cases.has(case):
                yield f"{name}: there is no case {case}"
        for complaint in (*shape_complaints(day), *sentence_complaints(day, cases)):
            yield f"{name}: {complaint}"
    told = [(day.get("what"), day.get("when")) for day in all_days]
    for twice in sorted({f"{what}, {when}" for what, when in told if told.count((what, when)) > 1}):
        yield f"{twice}: told twice"


def main():
    all_days = days()
    page = PAGE.read_text(encoding="utf-8")
    if sys.argv[1:] != ["check"]:
        PAGE.write_text(page_with(page, tables(all_days)), encoding="utf-8")
        return 0
    found = list(complaints(all_days))
    if len(all_days) < FEWEST:
        found.append(f"{len(all_days)} days are told; there were {FEWEST}")
    if not found and page_with(page, tables(all_days)) != page:
        found.append("docs/bad-days.md is not what tests/e2e/bad_days_page.py makes: run it")
    print("\n".join(found) or f"{len(all_days)} days are told as they are played.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
