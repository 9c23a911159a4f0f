#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of commands_page.py with a simulated tool."""

import os
import subprocess
import sys
import tempfile
import unittest

import commands_page
import stand_in_tool

SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "commands_page.py")


class CommandsPageTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = scratch.name
        self.page = os.path.join(self.folder, "page.md")

    def run_script(self, commands, *words):
        tool = stand_in_tool.install(self.folder, commands)
        return subprocess.run(
            [sys.executable, "-B", SCRIPT, *words, "--tool", tool, "--plugin-dir", "p", self.page],
            capture_output=True, text=True, check=False)

    def text(self, **own):
        self.run_script({"hat.list": own})
        with open(self.page, encoding="utf-8") as file:
            return file.read()

    def test_lists_each_command_below_its_root(self):
        text = self.text()
        self.assertIn("| [hat list](#hat-list) | List the hats. |", text)
        self.assertIn("\n## hat\n\n### hat list\n\nList the hats.\n", text)
        self.assertIn("Result: structure-list, The hats. Default format: table, with Size. "
                      "Plug-in: `hat.so`.", text)

    def test_shows_the_short_name_of_a_parameter_and_that_it_is_required_and_secret(self):
        parameter = {"Name": "key", "Short Name": "k", "Required": True, "Secret": True,
                     "Kind": "string", "Description": "A|B."}
        self.assertIn("| **`--key`**, `-k` | string, secret | A\\|B. |",
                      self.text(Parameters=[parameter]))

    def test_leaves_out_what_a_command_does_not_declare(self):
        field = {"Path": "Size", "Kind": "int", "Documentation": "none"}
        text = self.text(**{"Columns": ["none"], "Result Description": "none", "Fields": [field]})
        self.assertIn("Result: structure-list. Default format: table. Plug-in:", text)
        self.assertIn("| Size | int |  |", text)

    def test_marks_commands_that_change_something(self):
        self.assertNotIn("**This command changes", self.text())
        self.assertIn("**This command changes",
                      self.text(**{"Meta Data": [{"Name": "changes", "Value": "true"}]}))

    def test_prints_examples_as_a_block_of_shell_commands(self):
        text = self.text(Examples=[{"Description": "All", "Line": "hat list --all"}])
        self.assertIn("```sh\n# All\nvexil hat list --all\n```", text)

    def test_accepts_a_current_page_and_shows_the_differences_of_another(self):
        self.run_script({"hat.list": {}})
        self.assertEqual((0, ""), self.checked({"hat.list": {}}))
        status, output = self.checked({"hat.list": {"Description": "List caps."}})
        self.assertEqual(1, status)
        self.assertIn("+List caps.", output)

    def checked(self, commands):
        done = self.run_script(commands, "--check")
        return done.returncode, done.stdout

    def test_escapes_the_characters_that_mark_up_text(self):
        self.assertEqual(r"\[a\|b\]\* \<c\>", commands_page.cell("[a|b]* <c>"))


if __name__ == "__main__":
    unittest.main()
