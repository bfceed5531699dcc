#!/usr/bin/env python3
"""The check of names itself: it sees each kind of wrong name, and takes none for wrong that is right."""

import unittest

from names import GROUPS, complaints, stale_exceptions, without_comments_and_texts


class Names(unittest.TestCase):
    def assert_wrong(self, rule, words, texts):
        found = complaints(texts)
        self.assertEqual(len(found.pop(rule)), 1, texts)
        self.assertIn(words, complaints(texts)[rule][0])
        self.assertEqual(set(map(len, found.values())), {0}, found)

    def assert_right(self, texts):
        found = complaints(texts)
        self.assertEqual(set(map(len, found.values())), {0}, found)


class Headers(Names):
    def test_a_type_that_is_not_there(self):
        self.assert_wrong("header", "defines no type Writer", {"disk/Writer.h": "void writeImage(int fd);\n"})

    def test_a_type_that_is_only_announced_or_used_or_spoken_of(self):
        for text in ("class Writer;\n", "void write(Writer& to);\n", "// class Writer {\n", "class FileWriter {};\n"):
            self.assert_wrong("header", "defines no type Writer", {"disk/Writer.h": text})

    def test_each_kind_of_type(self):
        for text in ("class A {};", "struct A {\n};", "class A final : public B {};", "class [[nodiscard]] A {};",
                     "enum class A : int { one };", "enum A { one };", "using A = int;", "class A : public B<int> {};",
                     "template <class T>\nconcept A = true;", "template <typename T>\nclass A {};"):
            self.assert_right({"disk/A.h": text + "\n"})

    def test_a_function_that_is_not_there(self):
        for text in ("int text();\n", "class Address {};\n", "inline int f() {\n    return address();\n}\n",
                     "// int address();\n"):
            self.assert_wrong("header", "declares no function address", {"disk/address.h": text})

    def test_each_kind_of_function(self):
        for text in ("int address();", "std::vector<int> address(int of);", "template <class T>\nauto address(T of) {}",
                     "[[nodiscard]] const char* address(int of);",
                     "inline std::int32_t address(std::int64_t of) noexcept {}"):
            self.assert_right({"disk/address.h": text + "\n"})

    def test_a_group_may_hold_several(self):
        self.assert_right({path: "constexpr int kOne = 1;\n" for path in GROUPS})

    def test_an_exception_for_a_file_that_is_gone(self):
        self.assertIn(f"{next(iter(GROUPS))}: is an exception in names.py, but no file", stale_exceptions({}))

    def test_iostream(self):
        self.assert_wrong("iostream", "includes <iostream>", {"a/A.h": "#include <iostream>\nclass A {};\n"})
        self.assert_right({"a/A.h": "#include <iosfwd>\nclass A {};\n", "a/A.cpp": "#include <iostream>\n"})


class Sources(Names):
    HEADER = {"a/Disk.h": "class Disk {\n    void read();\n};\n"}

    def test_a_class_in_a_source_of_another_name(self):
        for text in ("void Disk::read() {}\n", "Disk::Disk(int number) {}\n", "Disk::~Disk() = default;\n",
                     "const std::vector<int>& Disk::read(\n    int at) {}\n", "bool Disk::operator==(int other) {}\n",
                     "void Disk::Reader::run() {}\n"):
            files = {**self.HEADER, "a/reading.cpp": text}
            self.assert_wrong("source", "functions of Disk, whose header is a/Disk.h", files)

    def test_a_class_in_its_own_source(self):
        self.assert_right({**self.HEADER, "a/Disk.cpp": "void Disk::read() {\n    other::read();\n}\n"})

    def test_a_use_of_a_class_is_no_definition(self):
        text = "int use() {\n    return Disk::count(1);\n}\nvoid f(Disk::Kind kind) {}\n"
        self.assert_right({**self.HEADER, "a/use.cpp": text})

    def test_a_class_of_the_sources_own(self):
        self.assert_right({**self.HEADER, "a/use.cpp": "class Disk {\n};\nvoid Disk::read() {}\n"})


class Constants(Names):
    def test_each_form_of_another_dialect(self):
        for text in ("constexpr int limit = 3;", "constexpr int LIMIT = 3;", "static constexpr std::size_t limit{3};",
                     "constexpr std::chrono::seconds limit(3);", "inline constexpr const char* limit = \"3\";",
                     "constexpr std::array<int, 2> limit{1, 2};", "constexpr char limit[] = \"abc\";",
                     "    constexpr auto limit = std::array{1, 2};"):
            self.assert_wrong("constant", "is not called kUpperCamel", {"a/b.cpp": text + "\n"})

    def test_the_line_is_told(self):
        text = "/* one\ntwo */\n\nconstexpr int limit = 3;\n"
        self.assert_wrong("constant", "a/b.cpp:4: the constant limit", {"a/b.cpp": text})

    def test_constants_in_the_trees_dialect_and_functions(self):
        self.assert_right({"a/b.cpp": "constexpr int kLimit = 3;\nconstexpr std::chrono::seconds kLimit2(3);\n"
                                      "constexpr int limit(int of) {\n    return of;\n}\n"
                                      "constexpr Disk operator+(int of) {\n    return of;\n}\n"
                                      "constexpr explicit Disk(int at) : at_(at) {}\n"
                                      "    if constexpr (isDisk<T>) return;\n// constexpr int limit = 3;\n"})


class Comments(unittest.TestCase):
    def test_are_taken_out_and_lines_stay(self):
        text = 'a = "// no comment"; // one\n/* two\nthree */ b;\n'
        self.assertEqual(without_comments_and_texts(text), 'a = ""; \n\n b;\n')


if __name__ == "__main__":
    unittest.main()
