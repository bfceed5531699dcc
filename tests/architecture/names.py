#!/usr/bin/env python3
"""Holds the names of files and constants against what is in them.

    names.py [ROOT]     prints how many complaints each rule has, then each complaint; exit 0: there are none

The rules, for production code:
  * a header with a type's name defines that type; one with a function's name declares that function
  * a class has one header, and its member functions stand in the one source beside it
  * no header includes <iostream>, whose start-up code every file behind it would carry
  * a constant is called kUpperCamel
"""

import re
import sys
from pathlib import Path

ROOMS = ("protocol", "base", "json", "socket", "command", "outcome", "device", "app", "cli", "services")

# Headers of several things that are only ever wanted together, with the reason.
GROUPS = {
    "protocol/accessory.h": "constants of the accessory",
    "protocol/board.h": "constants and words of the board",
    "protocol/names.h": "constants: the names on the bus and in polkit",
    "protocol/wire.h": "constants of the exchange with the command service",
    "base/SdBusPointers.h": "owning pointers, one for each type of sd-bus",
    "base/findTcpSocket.h": "the functions that find a TCP socket of this computer, which share their answer",
    "base/utf8.h": "the functions that check and repair UTF-8",
    "base/wholeFile.h": "the functions that read, write and replace whole files",
    "services/helper/bless/helperTexts.h.in": "constants: the texts that the installer writes",
    "services/helper/bless/runningSystem.h": "the functions that tell running services about changed files",
    "socket/tcp.h": "the family of tcp_ functions",
    "socket/udp.h": "the family of udp_ functions",
}

# Constants whose names are given: by the interface that people write programs against, or by a library's rules.
GIVEN_CONSTANTS = {
    "json/value/JSONError.h": ("ErrorDomain", "ErrorUnsupportedType", "ErrorIndexOutOfBounds", "ErrorWrongType",
                               "ErrorNotExist", "ErrorInvalidJSON", "ReadingErrorDomain", "ErrorUnreadable",
                               "LocalizedDescriptionKey"),
}

RULES = ("header", "source", "iostream", "constant")
COMMENT_OR_TEXT = re.compile(r'R"\(.*?\)"|"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', re.DOTALL)
TYPE = re.compile(r"\b(?:enum class|enum struct|enum|class|struct|union|concept)\s+(?:\[\[\w+\]\]\s+)?(\w+)"
                  r"(?=[^;(){}]*\{|\s*=)"
                  r"|\busing\s+(\w+)\s*=")
DEFINITION = re.compile(r"^(?:[^\s(#/}][^(\n]*?)?\b((?:\w+::)+)(?:~?\w+|operator\b[^\n(]*(?:\(\))?)\(", re.M)
CONSTEXPR = re.compile(r"(?<!if )\bconstexpr\b([^;=(){}]*?(?:<[^;={}]*>[^;=(){}]*?)?)\b(\w+)(?:\[\w*\])?\s*(=|\{|\()")
CONSTANT_NAME = re.compile(r"k[A-Z]\w*")


def without_comments_and_texts(text):
    """`text` with its comments gone and its literals empty, its line numbers kept."""
    def blank(match):
        part = match.group(0)
        return ("" if part.startswith("/") else '""') + "\n" * part.count("\n")
    return COMMENT_OR_TEXT.sub(blank, text)


def types_of(code):
    return {name for found in TYPE.findall(code) for name in found if name}


def declares(code, name):
    """Whether a line declares the function `name`: something stands before it, and it is not a call."""
    return re.search(rf"^(?!\s*return\b)[\w\[\]:<>,&*\s]*[\w>&*\]]\s+[&*]*{name}\(", code, re.M) is not None


def wrong_header(path, code):
    """Why the header doesn't hold what its name says, or None."""
    name = Path(path).name.split(".")[0]
    if path in GROUPS:
        return None
    if name in types_of(code) or declares(code, name):
        return None
    return f"{path}: defines no type {name}" if name[0].isupper() else f"{path}: declares no function {name}"


def defined_classes(code):
    """The outermost class of each member function that a source defines outside of its class."""
    return {qualifiers.split("::")[0] for qualifiers in DEFINITION.findall(code)} - {"std"}


def wrong_sources(files):
    """Member functions that stand elsewhere than in the source beside their class's header."""
    headers = {}
    for path, code in files.items():
        if path.endswith((".h", ".h.in")):
            for name in types_of(code):
                headers.setdefault(name, set()).add(path.removesuffix(".in").removesuffix(".h"))
    found = []
    for path, code in sorted(files.items()):
        if not path.endswith(".cpp"):
            continue
        for name in sorted(defined_classes(code)):
            stems = headers.get(name)
            if stems and path.removesuffix(".cpp") not in stems and name not in types_of(code):
                found.append(f"{path}: defines functions of {name}, whose header is {' or '.join(sorted(stems))}.h")
    return found


def closes_with_semicolon(code, at):
    """Whether the parenthesis opened before `at` ends a statement: a variable's initial value, and no function's."""
    depth = 1
    while depth and at < len(code):
        depth += {"(": 1, ")": -1}.get(code[at], 0)
        at += 1
    return code[at:at + 1] == ";"


def wrong_constants(path, code):
    found = []
    for match in CONSTEXPR.finditer(code):
        of_type, name, opening = (part.strip() for part in match.groups())
        if not of_type or name == "operator" or CONSTANT_NAME.fullmatch(name) or name in GIVEN_CONSTANTS.get(path, ()):
            continue
        if opening == "(" and not closes_with_semicolon(code, match.end()):
            continue
        line = code.count("\n", 0, match.start(2)) + 1
        found.append(f"{path}:{line}: the constant {name} is not called kUpperCamel")
    return found


def stale_exceptions(texts):
    """Exceptions for files that are gone: each would let the next file of that name by."""
    exceptions = (*GROUPS, *GIVEN_CONSTANTS)
    return [f"{path}: is an exception in names.py, but no file" for path in exceptions if path not in texts]


def complaints(texts):
    """`texts` maps a path relative to the root to its text. Returns the sentences of each rule."""
    files = {path: without_comments_and_texts(text) for path, text in texts.items()}
    headers = {path: code for path, code in sorted(files.items()) if path.endswith((".h", ".h.in"))}
    return {
        "header": [why for path, code in headers.items() if (why := wrong_header(path, code))],
        "source": wrong_sources(files),
        "iostream": [f"{path}: includes <iostream>" for path, code in headers.items() if "#include <iostream>" in code],
        "constant": [why for path, code in sorted(files.items()) for why in wrong_constants(path, code)],
    }


def read_tree(root):
    return {
        str(path.relative_to(root)): path.read_text(encoding="utf-8")
        for room in ROOMS
        for path in sorted((root / room).rglob("*"))
        if path.name.endswith((".h", ".h.in", ".cpp"))
    }


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2]
    texts = read_tree(root)
    if not texts:
        sys.exit(f"no sources below {root}")
    found = complaints(texts)
    found["header"] += stale_exceptions(texts)
    print(f"{len(texts)} files: " + ", ".join(f"{rule} {len(found[rule])}" for rule in RULES))
    wrong = [sentence for rule in RULES for sentence in found[rule]]
    for sentence in wrong:
        print(sentence)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
