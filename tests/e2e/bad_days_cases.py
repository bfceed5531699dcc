"""The cases that the days name, and what is said in them: Python's and C++'s alike.

A case is named as FILE SUITE.CASE, FILE below tests/. Where a case is played once for each row of a table, /ROW may follow.
"""

import ast
import functools
import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
# Shorter pieces of a sentence stand everywhere, apart from this one.
TELLING = 9
SHORT = "Wrote"
CPP_CASE = re.compile(r"^TEST(?:_F|_P)?\((\w+), (\w+)\) \{.*?^\}", re.MULTILINE | re.DOTALL)
# What differs from day to day in a quotation, and the word that all sentences of a kind begin with, which the service adds.
DIFFERS = re.compile(r"…|(?:/dev/)?r?sdb(?:s?1)?\b|REPEAT|^(?:Refused|Failed): ")


def quoted(words):
    return re.findall(r"`([^`]+)`", words)


def pieces(quote):
    """The parts of a quotation that are the same on every day."""
    return [piece for piece in (part.strip(" ,;:.()") for part in DIFFERS.split(quote)) if piece]


def joined(source):
    """A source with each text in one piece, however many lines it stands on."""
    return re.sub(r'"\s*(?:\n\s*)?f?r?"', "", source).replace('\\"', '"').replace("\\\\", "\\")


class Cases:
    def __init__(self, tests=ROOT / "tests"):
        self.tests = tests

    def has(self, case):
        file, name, entry = self.parts(case)
        if name not in self.bodies(file):
            return False
        return not entry or f'"{entry}"' in self.rest(file)

    @staticmethod
    def parts(case):
        file, _, name = case.partition(" ")
        name, _, entry = name.partition("/")
        return file, name, entry

    @functools.cache
    def bodies(self, file):
        """The source of each case in the file."""
        path = self.tests / file
        if not path.is_file():
            return {}
        source = path.read_text(encoding="utf-8")
        if path.suffix == ".cpp":
            return {f"{found[1]}.{found[2]}": found[0] for found in CPP_CASE.finditer(source)}
        return {f"{kind.name}.{method.name}": ast.get_source_segment(source, method)
                for kind in ast.parse(source).body if isinstance(kind, ast.ClassDef)
                for method in kind.body if isinstance(method, ast.FunctionDef) and method.name.startswith("test_")}

    @functools.cache
    def rest(self, file):
        """What all cases of the file share, and what they take from the modules beside it."""
        path = self.tests / file
        source = path.read_text(encoding="utf-8")
        for body in self.bodies(file).values():
            source = source.replace(body, "")
        beside = re.findall(r"^(?:from|import) (\w+)", source, re.MULTILINE) if path.suffix == ".py" else []
        return "\n".join([source, *(self.rest(f"{Path(file).parent}/{module}.py") for module in beside
                                    if (path.parent / f"{module}.py").is_file())])

    @functools.cache
    def text_of(self, case):
        """All that stands in the case itself, and in what it shares with the others of its file."""
        file, name, _ = self.parts(case)
        return joined(self.bodies(file)[name]) + "\n" + joined(self.rest(file))

    def have(self, cases, quote):
        """Whether the cases, or docs/troubleshooting.md, have each piece of the quotation."""
        texts = [self.explanations, *(self.text_of(case) for case in cases)]
        return all(any(piece in text for text in texts) for piece in pieces(quote))

    def expects(self, case, quote):
        return any((len(piece) >= TELLING or piece == SHORT) and piece in self.text_of(case) for piece in pieces(quote))

    @functools.cached_property
    def explanations(self):
        page = (ROOT / "docs/troubleshooting.md").read_text(encoding="utf-8")
        return re.sub(r"\*[A-Z ]+\*", "…", page.replace("`", ""))
