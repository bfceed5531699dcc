import re
import shutil
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CATALOGUE = "packaging/desktop/com.corvatel.Kestrav.metainfo.xml"
FILES = ("release", "CMakeLists.txt", "CHANGELOG.md", "debian/changelog", CATALOGUE, "packaging/rpm/kestrav.spec",
         "packaging/arch/PKGBUILD")


class Release(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.tree = Path(scratch.name)
        for name in FILES:
            (self.tree / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, self.tree / name)
        page = self.text("CHANGELOG.md")
        self.write("CHANGELOG.md", re.sub(r"^## Next\n.*?(?=^## )", "## Next\n\n- Images < 1 MiB are\n  quicker.\n\n", page,
                                          flags=re.M | re.S))

    def text(self, name):
        return (self.tree / name).read_text(encoding="utf-8")

    def write(self, name, text):
        (self.tree / name).write_text(text, encoding="utf-8")

    def release(self, word):
        return subprocess.run([self.tree / "release", word], check=False, capture_output=True, text=True)

    def test_is_the_same_everywhere_in_this_tree(self):
        run = subprocess.run([ROOT / "release", "--check"], check=False, capture_output=True, text=True)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertRegex(run.stdout, r"^\d+\.\d+\.\d+$")

    def test_writes_every_place(self):
        run = self.release("7.8.9")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(self.release("--check").stdout, "7.8.9\n")
        self.assertIn("(7.8.9) unstable", self.text("debian/changelog").splitlines()[0])
        self.assertIn("  * Images < 1 MiB are quicker.\n", self.text("debian/changelog"))
        self.assertIn("- 7.8.9-1\n- Images < 1 MiB are quicker.\n", self.text("packaging/rpm/kestrav.spec"))
        newest = ElementTree.parse(self.tree / CATALOGUE).getroot().find("releases/release")
        self.assertEqual(newest.get("version"), "7.8.9")
        self.assertEqual(newest.find("description/ul/li").text, "Images < 1 MiB are quicker.")
        self.assertRegex(self.text("CHANGELOG.md"), r"## Next\n\n## 7\.8\.9 \(\d{4}-\d\d-\d\d\)\n\n- Images < 1 MiB")

    def test_is_a_changelog_that_the_packages_tools_read(self):
        self.release("7.8.9")
        said = subprocess.run(["dpkg-parsechangelog", "-l", self.tree / "debian/changelog", "-S", "Version"], check=True,
                              capture_output=True, text=True)
        self.assertEqual((said.stdout, said.stderr), ("7.8.9\n", ""))

    def test_says_which_place_differs(self):
        self.write("packaging/arch/PKGBUILD", self.text("packaging/arch/PKGBUILD").replace("pkgver=", "pkgver=9"))
        run = self.release("--check")
        self.assertEqual(run.returncode, 1)
        self.assertIn("packaging/arch/PKGBUILD says 9", run.stderr)

    def test_writes_nothing_where_it_refuses(self):
        self.write("CHANGELOG.md", self.text("CHANGELOG.md").replace("- Images < 1 MiB are\n  quicker.\n", ""))
        before = {name: self.text(name) for name in FILES}
        for word, sentence in (("0.0.1", "is not higher"), ("1.2", "is not a version"), ("9.9.9", "no entries")):
            run = self.release(word)
            self.assertEqual(run.returncode, 1, word)
            self.assertIn(sentence, run.stderr)
            self.assertEqual({name: self.text(name) for name in FILES}, before)
