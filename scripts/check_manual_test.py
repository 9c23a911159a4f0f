#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of check_manual.py with an installed tree that contains one program and its page."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "check_manual.py")

PROGRAM = """#!/bin/sh
case "$1" in
  --help) echo "vexil-hat [--all] [--help]" ;;
  "") exit 2 ;;
  *) echo a hat ;;
esac
"""

PAGE = r""".Dd November 22, 2026
.Dt VEXIL-HAT 1
.Os
.Sh NAME
.Nm vexil-hat
.Nd list hats
.Sh SYNOPSIS
.Nm
.Fl Fl all
.Sh DESCRIPTION
.Nm
lists hats.
.Bl -tag -width Ds
.It Fl Fl all
List all.
.It Fl Fl help
Show the usage.
.El
.Sh EXIT STATUS
.Bl -tag -width Ds
.It 0
Hats are listed.
.It 2
There is no option.
.El
.Sh EXAMPLES
List all:
.Bd -literal
$ vexil-hat --all
a hat
.Ed
.Sh HISTORY
This page describes version 1.0.0 of Kestrel.
"""

STATUSES = "# comment\n\nvexil-hat.1\t0\tvexil-hat --all\nvexil-hat.1\t2\tvexil-hat\n"


@unittest.skipUnless(shutil.which("mandoc"), "needs mandoc")
class CheckManualTest(unittest.TestCase):
    def check(self, page=PAGE, statuses=STATUSES):
        """Returns the status and the output for a page of the program."""
        with tempfile.TemporaryDirectory() as folder:
            for path, text in (("bin/vexil-hat", PROGRAM), ("bin/vexil", PROGRAM),
                               ("libexec/none", ""), ("lib/pkgconfig/kestrel.pc", ""),
                               ("share/man/man1/vexil-hat.1", page), ("statuses", statuses)):
                self.write(os.path.join(folder, path), text)
            done = subprocess.run(
                [sys.executable, "-B", SCRIPT, "--stage", folder, "--version", "1.0.0",
                 "--statuses", os.path.join(folder, "statuses"), "vexil-hat.1"],
                capture_output=True, text=True, check=False)
            return done.returncode, done.stdout.replace("vexil has no manual page\n", "")

    @staticmethod
    def write(path, text):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, 0o755)

    def assert_complains(self, expected, old, new, statuses=STATUSES):
        self.assertIn(old, PAGE + statuses)
        status, output = self.check(PAGE.replace(old, new), statuses.replace(old, new))
        self.assertEqual(1, status)
        self.assertIn(expected, output)

    def test_accepts_a_page_that_agrees_with_the_installed_tree(self):
        self.assertEqual("1 pages, 1 examples\n", self.check()[1])

    def test_reports_what_mandoc_does_not_accept(self):
        self.assert_complains("skipping unknown macro", "lists hats.", "lists hats.\n.Zz")

    def test_reports_a_reference_to_a_page_that_does_not_exist(self):
        self.assert_complains("Xr vexil-cap 1", "lists hats.", "lists hats, see\n.Xr vexil-cap 1 .")

    def test_reports_an_option_that_the_program_does_not_have(self):
        self.assert_complains("documents option --none", "It Fl Fl all", "It Fl Fl none")

    def test_reports_an_option_that_the_page_does_not_have(self):
        self.assert_complains("does not document option --all", "It Fl Fl all", "It Fl Fl help")

    def test_reports_a_status_that_no_command_has(self):
        self.assert_complains("documents exit status 3", ".It 2", ".It 3")

    def test_reports_a_command_with_another_status(self):
        self.assert_complains("status 2 is expected of: vexil-hat --all", "2\tvexil-hat\n",
                              "2\tvexil-hat --all\n")

    def test_reports_a_variable_that_nothing_reads(self):
        self.assert_complains("documents variable HAT", ".Sh EXIT STATUS",
                              ".Sh ENVIRONMENT\n.Bl -tag -width Ds\n.It Ev HAT\nA hat.\n.El\n"
                              ".Sh EXIT STATUS")

    def test_reports_a_file_that_does_not_exist(self):
        self.assert_complains("/hats does not exist", ".Sh EXIT STATUS",
                              ".Sh FILES\n.Bl -tag -width Ds\n.It Pa /hats\nHats.\n.El\n"
                              ".Sh EXIT STATUS")

    def test_reports_an_example_that_prints_something_else(self):
        self.assert_complains("prints ['a hat']", "a hat", "a cap")

    def test_reports_an_example_that_fails(self):
        self.assert_complains("[exit status 2]", "$ vexil-hat --all\na hat", "$ vexil-hat")

    def test_reports_a_page_without_examples(self):
        self.assert_complains("has no examples", ".Sh EXAMPLES", ".Sh STANDARDS")

    def test_reports_a_page_of_another_version(self):
        self.assert_complains("does not name version 1.0.0", "version 1.0.0", "version 1.1.0")


if __name__ == "__main__":
    unittest.main()
