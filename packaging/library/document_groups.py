#!/usr/bin/env python3
"""What Doxygen reads of a header. A comment in this tree stands for all the declarations below it up to the next blank
line or comment; Doxygen gives it to the first one alone, so it is repeated here in front of the others.

    document_groups.py HEADER     writes the header as Doxygen is to see it
"""

import re
import sys
from pathlib import Path

DOC = re.compile(r"^\s*///(?!<)")
LITERAL = re.compile(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])\'')
NO_DECLARATION = re.compile(r"^\s*(#|(public|protected|private):|\}|friend class )")
OPENS_A_SCOPE = re.compile(r"^\s*(class|struct|namespace|enum)\b.*\{$")


def code_of(line):
    return LITERAL.sub('""', line).split("//")[0].rstrip()


def declarations(lines):
    """Each run of lines that belongs together: comment lines and blank ones alone, declarations whole."""
    run, depth = [], 0
    for line in lines:
        code = code_of(line)
        if not run and (not code or NO_DECLARATION.match(line) or OPENS_A_SCOPE.match(code)):
            yield [line]
            continue
        run.append(line)
        if depth == 0 and OPENS_A_SCOPE.match(code):  # of a template
            yield run
            run = []
            continue
        depth += sum(map(code.count, "({")) - sum(map(code.count, ")}"))
        if depth <= 0 and code.endswith((";", "}")):
            yield run
            run, depth = [], 0
    if run:
        yield run


def with_groups(lines):
    """The lines, with a group's comment in front of each of its declarations."""
    doc, used = [], False
    for run in declarations(lines):
        if DOC.match(run[0]):
            # A backslash in a comment is one, no command.
            run = [run[0].replace("\\", "\\\\")]
            doc = run if used else [*doc, *run]
            used = False
        elif not code_of(run[0]) or OPENS_A_SCOPE.match(code_of(run[-1])):
            # Remarks for the tools that check the sources stand between a comment and its declaration.
            doc = doc if run[0].strip().startswith("//") else []
        elif run[0].startswith("#define"):
            used = bool(doc)
        elif not NO_DECLARATION.match(run[0]):
            if used and not any("///<" in line for line in run):
                yield from doc
            used = bool(doc)
        yield from run


if __name__ == "__main__":
    sys.stdout.write("\n".join(with_groups(Path(sys.argv[1]).read_text(encoding="utf-8").splitlines())) + "\n")
