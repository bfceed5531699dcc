#!/usr/bin/env python3
"""Makes the table of docs/bad-days.md from bad_days.toml.

    bad_days_page.py          writes it
    bad_days_page.py check    says where the page, the table and the cases differ; exit 0: nowhere
"""

import ast
import sys
import tomllib
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGE = ROOT / "docs/bad-days.md"
DAYS = ROOT / "tests/e2e/bad_days.toml"
BEGIN = "| what happened | when | what is said | exit status | what is on the accessory |\n|---|---|---|---|---|\n"
FIELDS = {"what", "when", "said", "terminal", "window", "status", "journal", "disk", "played"}
NEEDED = ("what", "when", "status", "disk", "played")


def days():
    return tomllib.loads(DAYS.read_text(encoding="utf-8"))["day"]


def said(day):
    if "said" in day:
        words = day["said"]
    else:
        words = f"`kestravctl`: {day['terminal']} – the window: {day['window']}"
    if "journal" in day:
        words += f" – the system log: {day['journal']}"
    return words.replace("REPEAT", "repeat")


def table(all_days):
    return BEGIN + "".join(f"| {day['what']} | {day['when']} | {said(day)} | {day['status']} | {day['disk']} |\n"
                           for day in all_days)


def page_with(page, text):
    """The page with its table exchanged."""
    begin = page.index("| what happened |")
    end = page.index("\n\n", begin) + 1
    return page[:begin] + text + page[end:]


def methods_of(file):
    tree = ast.parse(file.read_text(encoding="utf-8"))
    return {f"{kind.name}.{method.name}" for kind in tree.body if isinstance(kind, ast.ClassDef)
            for method in kind.body if isinstance(method, ast.FunctionDef) and method.name.startswith("test_")}


def complaints(all_days, tests=ROOT / "tests"):
    for day in all_days:
        name = f"{day.get('what')}, {day.get('when')}"
        for field in NEEDED:
            if not day.get(field):
                yield f"{name}: says nothing of {field}"
        for field in sorted(set(day) - FIELDS):
            yield f"{name}: nobody knows what {field} is"
        if ("said" in day) == ("terminal" in day and "window" in day):
            yield f"{name}: either both front ends say the same, or each its own"
        for case in day.get("played", ()):
            file, _, method = case.partition(" ")
            if not (tests / file).exists() or method not in methods_of(tests / file):
                yield f"{name}: there is no case {case}"


def main():
    all_days = days()
    page = PAGE.read_text(encoding="utf-8")
    made = page_with(page, table(all_days))
    if sys.argv[1:] != ["check"]:
        PAGE.write_text(made, encoding="utf-8")
        return 0
    found = list(complaints(all_days))
    if made != page:
        found.append("docs/bad-days.md is not what tests/e2e/bad_days_page.py makes: run it")
    print("\n".join(found) or f"{len(all_days)} days are told as they are played.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
