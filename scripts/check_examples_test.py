#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of check_examples.py, each with its own page."""

import os
import tempfile
import unittest

import check_examples


class CheckExamplesTest(unittest.TestCase):
    def check(self, page):
        """Returns the problems of a page, and its text with the present output."""
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "page.md")
            with open(path, "w", encoding="utf-8") as file:
                file.write(page)
            work = os.path.join(folder, "work")
            os.mkdir(work)
            checked = check_examples.Page(
                path, check_examples.Workplace(work, "/bin/echo", "/plugins", [], []))
            text = checked.check()
            return checked.problems, text

    def assert_accepts(self, page):
        self.assertEqual(([], page), self.check(page))

    def assert_corrects(self, page, corrected):
        problems, text = self.check(page)
        self.assertEqual(1, len(problems))
        self.assertEqual(corrected, text)

    def test_accepts_the_output_of_a_command(self):
        self.assert_accepts("Text\n```console\n$ vexil a b\na b\n```\n")

    def test_reports_and_corrects_output_that_has_changed(self):
        self.assert_corrects("```console\n$ vexil a\nb\n```\n", "```console\n$ vexil a\na\n```\n")

    def test_reports_an_extra_line(self):
        self.assert_corrects("```console\n$ vexil a\na\na\n```\n",
                             "```console\n$ vexil a\na\n```\n")

    def test_run_starts_the_tool_with_its_plugins(self):
        self.assert_accepts("```console\n$ ./run a\n--plugin-dir /plugins a\n```\n")

    def test_expects_the_status_unless_it_is_0(self):
        self.assert_accepts("```console\n$ exit 3\n[exit status 3]\n```\n")
        self.assert_corrects("```console\n$ exit 3\n```\n",
                             "```console\n$ exit 3\n[exit status 3]\n```\n")

    def test_runs_commands_over_several_lines_in_one_folder(self):
        self.assert_accepts(
            "```console\n$ cat > file <<'END'\n> a\n>\n> END\n$ cat file\na\n\n```\n")

    def test_matches_dots_with_any_lines(self):
        self.assert_accepts("```console\n$ seq 5\n1\n...\n5\n```\n")
        self.assert_corrects("```console\n$ seq 2\n1\n...\n5\n```\n",
                             "```console\n$ seq 2\n1\n2\n```\n")

    def test_compares_only_the_first_line_and_the_status_of_output_that_differs_between_hosts(self):
        self.assert_accepts("```console host\n$ seq 3\n1\n7\n```\n")
        self.assert_corrects("```console host\n$ seq 3\n2\n```\n",
                             "```console host\n$ seq 3\n1\n2\n3\n```\n")
        self.assert_corrects("```console host\n$ echo 1; exit 4\n1\n```\n",
                             "```console host\n$ echo 1; exit 4\n1\n[exit status 4]\n```\n")

    def test_looks_for_a_block_of_a_program_in_its_file(self):
        self.assert_accepts('```cpp file=scripts/check_examples.py\nimport os\nimport re\n```\n')
        problems, _ = self.check("```cpp file=scripts/check_examples.py\nimport so\n```\n")
        self.assertEqual(1, len(problems))

    def test_runs_scripts_and_reports_those_that_fail(self):
        self.assert_accepts("```sh\necho a >file\ngrep a file\n```\n")
        problems, _ = self.check("```sh\nfalse\ntrue\n```\n")
        self.assertEqual(["[exit status 1]"], problems[0].splitlines()[1:])

    def test_looks_for_what_a_long_script_names(self):
        self.assert_accepts("```sh long\n./test    # all\ncmake --preset dev\n"
                            "cmake --build build/dev --target kestrel_unit_tests\n```\n")
        for line in ("./nosuch", "nosuch-program --help", "cmake --preset nosuch",
                     "cmake --build build --target nosuch", "if"):
            problems, _ = self.check(f"```sh long\n{line}\n```\n")
            self.assertNotEqual([], problems, line)

    def test_looks_for_a_block_of_cmake_in_its_file(self):
        self.assert_accepts("```cmake file=CMakeLists.txt\nadd_subdirectory(include)\n```\n")
        problems, _ = self.check("```cmake file=CMakeLists.txt\nadd_subdirectory(no)\n```\n")
        self.assertEqual(1, len(problems))


if __name__ == "__main__":
    unittest.main()
