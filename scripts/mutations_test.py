#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of mutations.py: which mutations a source has, and how they are written."""

import unittest

import mutations


class MutationsTest(unittest.TestCase):
    def source(self, *lines):
        return mutations.Source("a/B.cpp", "".join(line + "\n" for line in lines), 7)

    def mutated(self, *lines):
        text = self.source(*lines).mutated("Mutation.h")
        head = '#include "Mutation.h"\n#line 1 "a/B.cpp"\n'
        self.assertTrue(text.startswith(head))
        return text[len(head):].splitlines()

    def kinds(self, *lines):
        return [mutant.kind for mutant in self.source(*lines).mutants()]

    def test_a_condition_is_negated(self):
        self.assertEqual(["  if (Mutation::IsActive(7) != static_cast<bool>(IsOpen(file))) {"],
                         self.mutated("  if (IsOpen(file)) {"))

    def test_a_condition_that_declares_a_variable_is_not_mutated(self):
        self.assertEqual([], self.kinds("  if (Node* const node = Find()) {"))

    def test_a_less_than_comparison_has_two_mutants(self):
        source = self.source("  return a < b;")
        self.assertEqual([7, 8], [mutant.number for mutant in source.mutants()])
        self.assertEqual(9, source.next)
        self.assertEqual(["  return a <Mutation::Less<7>()< b;"], self.mutated("  return a < b;"))

    def test_the_brackets_of_template_arguments_are_not_mutated(self):
        self.assertEqual([], self.kinds("std::vector<std::pair<A, B>> pairs_;"))

    def test_a_condition_gets_one_more_part(self):
        self.assertEqual(["  return a && !Mutation::IsActive(7) && b;"],
                         self.mutated("  return a && b;"))
        self.assertEqual(["  return a || Mutation::IsActive(7) ||", "         b;"],
                         self.mutated("  return a ||", "         b;"))

    def test_sums_of_strings_are_mutated(self):
        self.assertEqual(['  return "a + b" +Mutation::Plus<7>()+ name;'],
                         self.mutated('  return "a + b" + name;'))

    def test_numbers_and_booleans_change(self):
        self.assertEqual(["  return Get((Mutation::IsActive(7) ? 0 : 1), "
                          "(Mutation::IsActive(8) != true));"],
                         self.mutated("  return Get(1, true);"))
        self.assertEqual(["  return (Mutation::IsActive(7) ? 421 : 0644);"],
                         self.mutated("  return 0644;"))
        self.assertEqual([], self.kinds("  return 1.5;", "  return 10'000;", "  return 1u;"))

    def test_a_statement_is_left_out(self):
        self.assertEqual(["void F() {", "  if (!Mutation::IsActive(7)) Send();", "}"],
                         self.mutated("void F() {", "  Send();", "}"))

    def test_declarations_and_returns_are_not_mutated(self):
        self.assertEqual([], self.kinds("int F() {", "  const int a = G();", "  Guard guard(a);",
                                        "  return a;", "}"))

    def test_statements_that_only_save_time_are_not_mutated(self):
        self.assertEqual([], self.kinds("void F() {", "  names.reserve(count);", "}"))

    def test_comments_strings_and_constants_are_not_mutated(self):
        self.assertEqual([], self.kinds("// a < b + 1", 'const char* const kText = "a < b + 1";',
                                        "constexpr int kCount = 5;", "#if A == 5", "#endif",
                                        'const char* const kRaw = R"(5 < 6', '7 == 8)";'))

    def test_mutations_of_a_line_can_be_removed(self):
        source = self.source("  return a == b;", "  return c == d;")
        self.assertTrue(source.remove_lines({2}))
        self.assertFalse(source.remove_lines({2}))
        self.assertEqual([mutations.Mutant(7, "compare", "a/B.cpp", 1, "return a == b;")],
                         list(source.mutants()))


if __name__ == "__main__":
    unittest.main()
