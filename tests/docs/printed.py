"""What the pages for people and the manual pages print to be typed: in blocks of their own, and within a sentence."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGES = ("*.md", "docs/*.md", "*/README.md", "tests/*/README.md", "packaging/*/README.md", "docs/man/*.[18]")


def pages():
    return sorted(path for pattern in PAGES for path in ROOT.glob(pattern))


def joined(text):
    """A command that stands on several lines, on one: a line that ends with a backslash or a bar goes on."""
    return re.sub(r"(?<=\|)\n *", " ", re.sub(r"\\\n *", "", text))


def commands(text, prompts):
    """Each command of a block, with the lines that are printed below it."""
    found = []
    for line in joined(text).splitlines():
        if line[:2] in prompts:
            found.append((line[2:], []))
        elif found:
            found[-1][1].append(line)
    return found


def blocks(page):
    """The blocks of a page, each a list of (command, the lines printed below it)."""
    text = page.read_text(encoding="utf-8")
    if page.suffix == ".md":
        return [commands(block, ("$ ",)) for block in re.findall(r"^```console\n(.*?)^```", text, re.M | re.S)]
    # The page's own writing of a backslash.
    text = text.replace("\\e\n", "\\\n")
    found = re.findall(r"^\.Bd -literal[^\n]*\n(.*?)^\.Ed$|^\.Dl (.*?\n)", text, re.M | re.S)
    return [block for block in (commands(many or one, ("$ ", "# ")) for many, one in found) if block]


def spans(page):
    """What stands between backquotes in the sentences of a page."""
    text = re.sub(r"^```.*?^```", "", page.read_text(encoding="utf-8"), flags=re.M | re.S)
    return [" ".join(span.split()) for span in re.findall(r"`([^`]+)`", text)]
