import os
import subprocess
import tempfile
import unittest
from pathlib import Path

CHANGED_SOURCES = Path(__file__).resolve().parents[2] / ".ci/changed-sources"
FILES = {
    "base/first.cpp": '#include "base/first.h"\n',
    "base/first.h": "int first();\n",
    "base/alone.h": "int alone();\n",
    "cli/main.cpp": '#include "base/alone.h"\n',
    "cli/other.cpp": "int other;\n",
    ".clang-tidy": "Checks: ''\n",
}


class ChangedSources(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.tree = Path(scratch.name)
        for name, text in FILES.items():
            self.write(name, text)
        self.git("init", "-q", "-b", "main")
        self.commit("the beginning")
        self.git("switch", "-q", "-c", "work")
        self.write("page", "")
        self.commit("a page")

    def git(self, *words):
        person = {f"GIT_{who}_{what}": "nobody@localhost" for who in ("AUTHOR", "COMMITTER") for what in ("NAME", "EMAIL")}
        subprocess.run(["git", *words], cwd=self.tree, check=True, capture_output=True, env={**os.environ, **person})

    def commit(self, title):
        self.git("add", "-A")
        self.git("commit", "-q", "-m", title)

    def write(self, name, text):
        (self.tree / name).parent.mkdir(exist_ok=True)
        (self.tree / name).write_text(text, encoding="utf-8")

    def changed(self):
        sources = "".join(f"{name}\n" for name in sorted(FILES) if name.endswith(".cpp"))
        return subprocess.run([CHANGED_SOURCES], cwd=self.tree, input=sources, check=True, capture_output=True,
                              text=True).stdout.split()

    def test_are_none_where_nothing_has_changed(self):
        self.assertEqual(self.changed(), [])

    def test_are_those_of_every_commit_since_the_main_branch(self):
        self.write("cli/other.cpp", "int another;\n")
        self.commit("another")
        self.write("page", "more")
        self.commit("a longer page")
        self.assertEqual(self.changed(), ["cli/other.cpp"])

    def test_are_those_that_are_not_committed_too(self):
        self.write("cli/other.cpp", "int another;\n")
        self.assertEqual(self.changed(), ["cli/other.cpp"])

    def test_are_those_of_the_last_commit_on_the_main_branch(self):
        self.git("switch", "-q", "main")
        self.write("cli/other.cpp", "int another;\n")
        self.commit("another")
        self.assertEqual(self.changed(), ["cli/other.cpp"])

    def test_hold_a_changed_headers_own_source(self):
        self.write("base/first.h", "long first();\n")
        self.assertEqual(self.changed(), ["base/first.cpp"])

    def test_hold_one_that_includes_a_header_without_a_source(self):
        self.write("base/alone.h", "long alone();\n")
        self.assertEqual(self.changed(), ["cli/main.cpp"])

    def test_are_all_when_the_checks_have_changed(self):
        self.write(".clang-tidy", "Checks: '*'\n")
        self.assertEqual(self.changed(), ["base/first.cpp", "cli/main.cpp", "cli/other.cpp"])

    def test_are_all_without_a_branch_to_compare_with(self):
        self.git("branch", "-q", "-D", "main")
        self.assertEqual(self.changed(), ["base/first.cpp", "cli/main.cpp", "cli/other.cpp"])
