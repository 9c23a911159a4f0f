#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of compare_benchmarks.py. valgrind and the workloads, which need a build, are replaced."""

import subprocess
import unittest
import unittest.mock

import compare_benchmarks

CHANGELOG = """# Changes

## Unreleased

- Slower: `start`: one more library is loaded.
- `json` writes less.

## 1.0.0

- Slower: `table`: an older reason.
"""


class CompareBenchmarksTest(unittest.TestCase):
    def test_finds_the_rows_that_the_changelog_explains(self):
        self.assertEqual(compare_benchmarks.slower_rows(CHANGELOG), {"start"})

    def test_finds_no_rows_without_a_section_for_the_next_release(self):
        self.assertEqual(compare_benchmarks.slower_rows("# Changes\n\n## 1.0.0\n"), set())

    def test_accepts_up_to_three_percent_more(self):
        self.assertEqual(compare_benchmarks.faults({"json": 1000}, {"json": 1030}, set()), [])

    def test_refuses_more_than_three_percent(self):
        self.assertEqual(compare_benchmarks.faults({"json": 1000}, {"json": 1031}, set()), ["json"])

    def test_accepts_a_slower_row_with_a_reason(self):
        self.assertEqual(compare_benchmarks.faults({"start": 10}, {"start": 20}, {"start"}), [])

    def test_accepts_a_row_that_is_new(self):
        self.assertEqual(compare_benchmarks.faults({}, {"json": 5}, set()), [])

    def test_names_a_workload_that_cannot_be_run(self):
        failed = subprocess.CompletedProcess([], 127, stderr="valgrind: no such file")
        with unittest.mock.patch("subprocess.run", return_value=failed):
            with self.assertRaisesRegex(compare_benchmarks.Failure, "no-such-program.*127"):
                compare_benchmarks.count_instructions(["/no-such-program"], ".")

    def test_reads_the_number_of_instructions(self):
        counted = subprocess.CompletedProcess([], 1, stderr="==1== Collected : 4217\n")
        with unittest.mock.patch("subprocess.run", return_value=counted):
            self.assertEqual(compare_benchmarks.count_instructions(["vexil"], ".", status=1), 4217)

    def test_refuses_a_row_that_does_not_exist(self):
        self.assertEqual(compare_benchmarks.main(["no-such-row"]), 2)


if __name__ == "__main__":
    unittest.main()
