"""The sentences that the programs say to people, taken from the sources."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FOLDERS = ("app", "base", "cli", "command", "device", "outcome", "services", "socket")

# What says something to a person: refusals, failures, log lines, alerts, and the functions that put them together.
SAYS = re.compile(r"""\b(?:refused|failed|cannot|refuse|complain|wrongCall|log|log_\.write|log\.write|write|systemProblem
                      |breakOff|fail|errorHandler_|runModal|verificationFailed|withStatus|partly|StoreFailure
                      |endedWith|translatable|good|bad|note|stranger|description|describe|authorizationSentence|kind)\(""", re.X)
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
RETURNED = re.compile(r'\breturn (?:"|[^;]*?[+(] ?")[^;]*;|\b\w+ [+]?= "[^;]*;|\{"[^;]*;')

# Parts of sentences that stand in protocol/, by their names.
CONSTANT = re.compile(r'(?:#define |constexpr (?:const char\*|std::string_view) )(\w+)(?: =)? ("(?:[^"\\\n]|\\.)*")')


def constants():
    return dict(found.groups() for file in (ROOT / "protocol").glob("*.h") for found in CONSTANT.finditer(file.read_text()))


def unescaped(literal):
    return re.sub(r"\\u2019", "\u2019", re.sub(r'\\(["\\])', r"\1", literal))


def calls(text):
    """The arguments of every call that says something, to its closing parenthesis."""
    for call in SAYS.finditer(text):
        depth, at = 1, call.end()
        while depth and at < len(text):
            if text[at] == '"':
                at = LITERAL.match(text, at).end()
                continue
            depth += {"(": 1, ")": -1}.get(text[at], 0)
            at += 1
        yield text[call.end():at]
    for sentence in RETURNED.finditer(text):
        yield sentence.group()


def is_a_sentence(literal):
    """Words for a person, and no key, path or format."""
    return len(re.findall(r"[A-Za-z']{2,}", literal)) >= 2 and " " in literal.strip()


def sources():
    """Each source with its text: constants in the place of their names, neighbouring literals as one, no comments."""
    named = constants()
    name = re.compile(r"std::string\((%s)\)|\b(%s)\b" % ("|".join(named), "|".join(named)))
    for folder in FOLDERS:
        for file in sorted((ROOT / folder).rglob("*.cpp")):
            text = re.sub(r"^\s*//.*", "", file.read_text(), flags=re.M)
            text = name.sub(lambda use: named[use.group(1) or use.group(2)], text)
            yield str(file.relative_to(ROOT)), re.sub(r'(?<!\\)"\s+"', "", text)


def said():
    """Each fragment of a sentence with the file that says it."""
    found = {}
    for file, text in sources():
        for call in calls(text):
            for literal in LITERAL.findall(call):
                for part in re.split(r"%\d", literal):
                    if is_a_sentence(part):
                        found.setdefault(unescaped(part), file)
    return found


if __name__ == "__main__":
    for fragment, where in said().items():
        print(f"{where}: {fragment!r}")
