#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of check_oddities.py, each with its own small tree."""

import os
import tempfile
import unittest

import check_oddities

PAGE = "docs/decisions/deliberate-oddities.md"
SECURITY = "docs/security.md"
HEAD = "| behaviour | test |\n|---|---|\n"
PROMISES = "| promise | test |\n|---|---|\n"


class CheckOdditiesTest(unittest.TestCase):
    def problems_of(self, page, source="TEST(MetaListTest, IsOdd) {}\n", security=""):
        with tempfile.TemporaryDirectory() as root:
            for path, text in {PAGE: page, SECURITY: security,
                               "tests/metaobj/MetaListTest.cpp": source}.items():
                full = os.path.join(root, path)
                os.makedirs(os.path.dirname(full), exist_ok=True)
                with open(full, "w", encoding="utf-8") as file:
                    file.write(text)
            return list(check_oddities.problems(root))

    def test_accepts_rows_whose_tests_exist(self):
        self.assertEqual([], self.problems_of(HEAD + "| odd | `MetaListTest.IsOdd` |\n"))

    def test_knows_fixtures_and_parameterised_tests_over_two_lines(self):
        self.assertEqual([], self.problems_of(
            HEAD + "| odd | `MetaListTest.A`, `MetaListTest.B` |\n",
            "TEST_F(MetaListTest, A) {}\nTEST_P(MetaListTest,\n       B) {}\n"))

    def test_reports_a_test_that_does_not_exist(self):
        self.assertEqual([f"{PAGE}: no test MetaListTest.WasOdd"],
                         self.problems_of(HEAD + "| odd | `MetaListTest.WasOdd` |\n"))

    def test_reports_a_row_without_a_test(self):
        self.assertEqual([f"{PAGE}: no test in the row | odd | none |"],
                         self.problems_of(HEAD + "| odd | none |\n"))

    def test_reports_a_promise_without_a_test_that_exists(self):
        rows = "| kept | `MetaListTest.IsOdd` |\n| broken | none |\n| old | `MetaListTest.WasOdd` |\n"
        self.assertEqual([f"{SECURITY}: no test MetaListTest.WasOdd",
                          f"{SECURITY}: no test in the row | broken | none |"],
                         self.problems_of("", security=PROMISES + rows))

    def test_reads_only_the_table_of_promises_in_the_security_page(self):
        self.assertEqual([], self.problems_of("", security=HEAD + "| odd | none |\n"))


if __name__ == "__main__":
    unittest.main()
