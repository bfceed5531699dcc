#!/usr/bin/env python3
"""What must not compile: uses of the JSON value and of records that would silently do nothing or something else.

    misuse_test.py COMPILER ROOT

Each snippet has a twin that must compile: a slip of the pen in both is seen there.
"""

import subprocess
import sys
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

HEADERS = """
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <variant>
#include <vector>
#include "json/record/JSONRepresentation.h"
#include "json/value/JSONEditor.h"
using namespace kestrav;
using json::TextEncoding;
enum class Mode { off, on };
enum Plain { zero, one };
"""

# What it is, what must not compile, what must.
VALUES = [
    ("a member is assigned", 'value["a"] = 5;', 'value.assign({"a"}, 5);'),
    ("an element is assigned", "value[0] = 5;", "value.assign({0}, 5);"),
    ("the end of a path is assigned", 'value[{"l", 0}] = 5;', 'value.assign({"l", 0}, 5);'),
    ("a member is assigned a value", 'value["a"] = JSON(5);', 'other = JSON(5);'),
    ("a text is set in an element", 'value["l"][0].setString("x");', 'JSON x = value["l"][0]; x.setString("x");'),
    ("a number is set in a member", 'value["a"].setNumberAs<int>(1);', 'value.setNumberAs<int>(1);'),
    ("a boolean is set in a member", 'value["a"].setBool(true);', "value.setBool(true);"),
    ("an object is set in a member", 'value["a"].setObject(Tree(1));', "value.setObject(Tree(1));"),
    ("a list is set in a member", 'value["a"].setArrayObject(Tree::list());', "value.setArrayObject(Tree::list());"),
    ("a member is assigned through", 'value["a"].assign({"b"}, 1);', 'value.assign({"a", "b"}, 1);'),
    ("a member is appended to", 'bool done = value["l"].append(1);', 'bool done = value.at({"l"}).append(1);'),
    ("a member's member is removed", 'bool done = value["a"].remove("b");', 'bool done = value.at({"a"}).remove("b");'),
    ("a member is edited", 'bool done = value["a"].at({0}).set(1);', 'bool done = value.at({"a", 0}).set(1);'),
    ("walking by value assigns", "for (auto [k, m] : value) m = 5;", "for (auto [k, m] : value) other = m;"),
    ("walking by forward reference assigns", "for (auto&& [k, m] : value) m = 5;", "for (auto&& [k, m] : value) other = m;"),
    ("walking by reference", "for (auto& [k, m] : value) other = m;", "for (const auto& [k, m] : value) other = m;"),
    ("walking sets", 'for (auto [k, m] : value) m.setString("x");', "for (auto [k, m] : value) other.setString(m.rawString());"),
    ("what stands at a position is assigned", "value[value.startIndex()].second = 5;", "other = value[value.startIndex()].second;"),
    ("the object that was given is changed", 'value.object().setMember("a", Tree(1));', 'Tree t = value.object(); t.setMember("a", Tree(1));'),
    ("the object's member is changed", 'value.object().mutableMember("a")->append(Tree(1));',
     'Tree t = value.object(); t.mutableMember("a")->append(Tree(1));'),
    ("an element of the list of values is assigned", "value.arrayValue()[0] = 5;", "auto l = value.arrayValue(); l[0] = 5;"),
    ("the list of values is appended to", "value.arrayValue().push_back(5);",
     "std::vector<JSON> l = value.arrayValue(); l.push_back(5);"),
    ("an element of the optional list is assigned", "value.array()->at(0) = 5;", "auto l = value.array(); l->at(0) = 5;"),
    ("an element of the optional list is set", '(*value.array())[0].setString("x");', "other = (*value.array())[0];"),
    ("elements of the list of values are assigned", "for (auto& m : value.arrayValue()) m = 5;",
     "for (const auto& m : value.arrayValue()) other = m;"),
    ("a member of the map of values is assigned", 'value.dictionaryValue()["a"] = 5;',
     'auto m = value.dictionaryValue(); m["a"] = 5;'),
    ("a member of the optional map is assigned", '(*value.dictionary())["a"] = 5;',
     'auto m = value.dictionary(); (*m)["a"] = 5;'),
    ("the list's object is appended to", "value.arrayObject()->append(Tree(1));",
     "auto l = value.arrayObject(); l->append(Tree(1));"),
    ("the map's object is changed", 'value.dictionaryObject()->setMember("a", Tree(1));',
     'auto m = value.dictionaryObject(); m->setMember("a", Tree(1));'),
    ("an outcome is ignored", "value.append(1);", "if (!value.append(1)) other = 1;"),
    ("an editor's outcome is ignored", 'value.at({"a"}).set(1);', 'if (!value.at({"a"}).set(1)) other = 1;'),
    ("a character is a key", "other = value['a'];", 'other = value["a"];'),
    ("a character is a step", "other = value[{'a'}];", 'other = value[{"a"}];'),
    ("a null pointer is a key", "other = value[nullptr];", 'other = value[""];'),
    ("a boolean is a key", "other = value[true];", "other = value[1];"),
    ("a fraction is a key", "other = value[1.5];", "other = value[1];"),
    ("a character is a value", "other = JSON('a');", 'other = JSON("a");'),
    ("an enumerator is a value", "other = JSON(one);", "other = JSON(static_cast<int>(one));"),
    ("a scoped enumerator is a value", "other = JSON(Mode::on);", "other = JSON(static_cast<int>(Mode::on));"),
    ("a pointer is a value", "other = JSON(&value);", "other = JSON(value);"),
    ("an optional is a value", "other = JSON(std::optional<int>(1));", "other = JSON(*std::optional<int>(1));"),
    ("a null pointer is a text", "value.setString(nullptr);", "value.setString(std::nullopt);"),
    ("a value is a condition", 'if (value["a"]) other = 1;', 'if (value["a"].exists()) other = 1;'),
    ("a value is a text", 'std::string text = value["a"];', 'std::string text = value["a"].stringValue();'),
    ("a value is a number", 'int number = value["a"];', 'int number = value["a"].valueAs<int>();'),
    ("a value is read as a character", "char c = value.valueAs<char>();", "auto c = value.valueAs<std::int8_t>();"),
    ("the two rawString are confused", "std::string text = value.rawString(TextEncoding::utf8);", "std::string text = value.rawString();"),
    ("writing options without an encoding", "auto text = value.rawString(WritingOptions::prettyPrinted);",
     "auto text = value.rawString(TextEncoding::utf8, WritingOptions::prettyPrinted);"),
    ("a text outlives its value", 'auto text = value["a"].text();', 'JSON a = value["a"]; auto text = a.text();'),
]

# The type of a field that must not compile, and a twin.
FIELDS = [
    ("an optional", "std::optional<int>", "int"),
    ("an enumeration", "Mode", "int"),
    ("an unscoped enumeration", "Plain", "unsigned"),
    ("a map with numbers for keys", "std::map<int, std::string>", "std::map<std::string, std::string>"),
    ("a character", "char", "signed char"),
    ("a pointer", "int*", "const char*"),
    ("an array of the language", "int[3]", "std::vector<int>"),
    ("a unique pointer", "std::unique_ptr<int>", "std::shared_ptr<const TreeObject>"),
    ("a variant", "std::variant<int, bool>", "Tree"),
    ("a pair", "std::pair<int, int>", "std::vector<int>"),
    ("a list of enumerations", "std::vector<Mode>", "std::vector<int>"),
    ("a list of optionals", "std::vector<std::optional<int>>", "std::vector<std::vector<int>>"),
    ("a map of optionals", "std::map<std::string, std::optional<int>>", "std::map<std::string, bool>"),
]

RECORD = """
struct Lamp {{ {declared}; static constexpr auto JSONFields() {{
    return std::tuple(JSONField{{"brightness", &Lamp::brightness}}); }} }};
Tree lamp(const Lamp& l) {{ return JSONRepresentation(l); }}
"""


def record_of(kind):
    base, bracket, size = kind.partition("[")
    return RECORD.format(declared=f"{base} brightness{bracket}{size}")


class Compiler:
    def __init__(self, compiler, root, folder):
        self.base = [compiler, "-std=c++20", f"-I{root}", "-Werror=unused-result", "-fsyntax-only"]
        self.folder = Path(folder)
        self.header = self.folder / "all.h"
        self.header.write_text(HEADERS, encoding="utf-8")
        # The headers are compiled once; without that each snippet would take a second.
        subprocess.run([compiler, "-std=c++20", f"-I{root}", "-x", "c++-header", "-o", f"{self.header}.gch", self.header],
                       check=True)

    def says(self, number, text):
        """What the compiler complains of; the empty text when it takes it."""
        source = self.folder / f"snippet{number}.cpp"
        source.write_text(text, encoding="utf-8")
        extra = ["-include-pch", f"{self.header}.gch"] if "clang" in self.base[0] else ["-include", str(self.header)]
        done = subprocess.run([*self.base, *extra, source], capture_output=True, text=True, check=False)
        return done.stderr if done.returncode != 0 else ""

    def all(self, texts):
        with ThreadPoolExecutor(2) as pool:
            return list(pool.map(lambda pair: self.says(*pair), enumerate(texts)))


class Misuse(unittest.TestCase):
    compiler = None

    def judge(self, names, wrong, right, naming):
        # All twins in one, each in a namespace of its own.
        twins = "".join(f"namespace twin{number} {{ {text} }}\n" for number, text in enumerate(right))
        self.assertEqual(self.compiler.says("twins", twins), "", "a right way does not compile")
        for name, complaint in zip(names, self.compiler.all(wrong)):
            with self.subTest(name):
                self.assertIn("error:", complaint, "it compiles")
                self.assertIn(naming, complaint)

    def test_of_values_does_not_compile(self):
        body = "void use(JSON value, JSON other) {{ {} }}\n"
        self.judge([name for name, _, _ in VALUES], [body.format(wrong) for _, wrong, _ in VALUES],
                   [body.format(right) for _, _, right in VALUES], "error:")

    def test_of_fields_does_not_compile_and_the_field_is_named(self):
        self.judge([name for name, _, _ in FIELDS], [record_of(wrong) for _, wrong, _ in FIELDS],
                   [record_of(right) for _, _, right in FIELDS], "brightness")


if __name__ == "__main__":
    program, root = sys.argv[1:3]
    with tempfile.TemporaryDirectory() as folder:
        Misuse.compiler = Compiler(program, root, folder)
        unittest.main(argv=sys.argv[:1])
