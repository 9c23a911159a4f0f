#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of check_command_examples.py with a simulated tool."""

import os
import subprocess
import sys
import tempfile
import unittest

import stand_in_tool

SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "check_command_examples.py")
EXAMPLE = {"Examples": [{"Description": "All", "Line": "hat list --all"}]}
CHANGES = {"Meta Data": [{"Name": "changes", "Value": "true"}]}


class CheckCommandExamplesTest(unittest.TestCase):
    def check(self, work, own=None, absent=""):
        """Returns the status and the output when examples run the shell command `work`."""
        with tempfile.TemporaryDirectory() as folder:
            tool = stand_in_tool.install(folder, {"hat.list": EXAMPLE if own is None else own}, work)
            path = os.path.join(folder, "absent")
            with open(path, "w", encoding="utf-8") as file:
                file.write("# comment\n\n" + absent)
            done = subprocess.run([sys.executable, "-B", SCRIPT, "--tool", tool, "--plugin-dir",
                                   "p", "--absent", path],
                                  capture_output=True, text=True, check=False)
            return done.returncode, done.stdout.strip()

    def assert_complains(self, expected, *arguments):
        status, output = self.check(*arguments)
        self.assertEqual(1, status)
        self.assertIn(expected, output)

    def test_accepts_examples_that_print_a_result(self):
        self.assertEqual((0, "Every example runs."), self.check("echo '[]'"))

    def test_reports_a_status_and_its_message(self):
        self.assert_complains("vexil  hat list --all: status 1: no hats", "echo no hats >&2; exit 1")

    def test_reports_a_message_even_if_the_command_succeeds(self):
        self.assert_complains("status 0: moths", "echo '[]'; echo moths >&2")

    def test_reports_a_default_format_that_prints_nothing(self):
        self.assert_complains("vexil  hat list --all: printed nothing", ":")

    def test_reports_what_is_not_json(self):
        self.assert_complains("vexil --formatter json hat list --all: not JSON", "echo hats")

    def test_accepts_a_listed_message_about_what_the_host_lacks(self):
        self.assertEqual((0, "Every example runs."),
                         self.check("echo Errors: >&2; echo no hats here >&2; exit 1", None,
                                    "hat list\tno hats .*\n"))

    def test_reports_a_message_other_than_the_listed_one(self):
        self.assert_complains("status 1: no caps", "echo no caps >&2; exit 1", None,
                              "hat list\tno hats\n")

    def test_reports_a_failure_that_prints_a_result_as_well(self):
        self.assert_complains("status 1: no hats", "echo '[]'; echo no hats >&2; exit 1", None,
                              "hat list\tno hats\n")

    def test_reports_empty_strings_in_a_list(self):
        self.assert_complains("empty strings in: Brim.Name, Size",
                              """echo '[{"Size": "", "Brim": [{"Name": ""}], "Band": "none"}]'""")

    def test_accepts_an_empty_string_outside_lists(self):
        self.assertEqual((0, "Every example runs."), self.check("""echo '{"Size": ""}'"""))

    def test_reports_a_command_without_examples(self):
        self.assert_complains("hat.list: has no example", ":", {})

    def test_accepts_a_command_of_the_library_without_examples(self):
        self.assertEqual((0, "Every example runs."),
                         self.check("exit 1", {"Plugin": "built-in"}))

    def test_ignores_the_prompt_for_a_secret(self):
        self.assertEqual((0, "Every example runs."),
                         self.check("""echo "Enter value for 'pin': "; echo '"x"'"""))
        self.assert_complains("not JSON", "echo \"Enter value for 'pin': \"; echo hats")

    def test_does_not_run_what_changes_something(self):
        self.assertEqual((0, "Every example runs."),
                         self.check("exit 1", {**EXAMPLE, **CHANGES}))


if __name__ == "__main__":
    unittest.main()
