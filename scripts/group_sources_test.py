#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of group_sources.py."""

import unittest

import group_sources


class GroupSourcesTest(unittest.TestCase):
    def group(self, *sources):
        return group_sources.group({str(number): text for number, text in enumerate(sources)})

    def separates(self, first, second):
        return len(self.group(first, second)) == 2

    def test_sources_without_common_names_share_a_group(self):
        self.assertEqual([["0", "1"]], self.group("int First() {\n", "int Second() {\n"))

    def test_sources_with_the_same_name_are_separated(self):
        for text in ("void Print(const Row& row) {", "std::string Text(int a,", "class Case {",
                     "struct Case {", "enum class Case {", "template <typename T> struct Case {",
                     "using Values = int;", "constexpr int kSize = 3;", "const Row kRows[] = {",
                     "const std::string kName = \"a\";", "std::vector<Row> rows;",
                     "MATCHER_P(IsRow, row, \"\") {", "#define CASE 1", "Row* Find() {"):
            with self.subTest(text):
                self.assertTrue(self.separates(text, text))

    def test_sources_in_which_a_name_has_different_meanings_are_separated(self):
        taken = "using testing::StartsWith;\n"
        for text in ("using StartsWith = int;", "  return StartsWith(text, start);"):
            with self.subTest(text):
                self.assertTrue(self.separates(taken, text))
                self.assertTrue(self.separates(text, taken))
        self.assertFalse(self.separates(taken, taken + "  return StartsWith(start);"))
        self.assertFalse(self.separates(taken, "  return testing::StartsWith(start);"))
        self.assertTrue(self.separates("int Read() {", "  return Read(file);"))

    def test_names_inside_functions_and_overloads_do_not_matter(self):
        for text in ("  int number = 0;", "TEST(RowTest, Prints) {", "// int Print() {",
                     "void PrintTo(const Row& row, std::ostream* out) {", "#include <string>",
                     "TEST_F(RowTest, Prints) {", "namespace Kestrel {", "using namespace std;",
                     "}  // namespace", "INSTANTIATE_TEST_SUITE_P(Rows, RowTest, Values(1));"):
            with self.subTest(text):
                self.assertFalse(self.separates(text, text))

    def test_a_source_joins_the_first_group_that_fits(self):
        self.assertEqual([["0", "2"], ["1"]], self.group("int A() {", "int A() {", "int B() {"))

    def test_groups_are_bounded(self):
        count = group_sources.MAX_SOURCES + 1
        self.assertEqual([count - 1, 1], [len(names) for names in self.group(*[""] * count)])
        half = " " * (group_sources.MAX_BYTES // 2 + 1)
        self.assertTrue(self.separates(half, half))


if __name__ == "__main__":
    unittest.main()
