# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""How vexil-fleet reads the words of a command line."""

import os
import subprocess
import unittest

import modules  # noqa: F401  pylint: disable=unused-import

from samples import describe, parameter
from vexil_fleet.secret_values import BadSecret, take_secrets
from vexil_fleet.words import is_option, quote_all, read_options, split_path


class Words(unittest.TestCase):
    """Words and options, by the rules of the tool."""

    def test_options_have_the_forms_that_the_tool_knows(self) -> None:
        for token in ("-x", "--name", "--name=value", "--n1", "--a-", "--name==", "--name=a\nb"):
            self.assertTrue(is_option(token), token)
        for token in ("-ab", "--x", "-1", "-", "--", "--name=", "", "name", "--1a", "-é"):
            self.assertFalse(is_option(token), token)

    def test_the_path_ends_at_the_first_option(self) -> None:
        self.assertEqual((["a", "--x", "b"], ["-c", "d"]),
                         split_path(["a", "--x", "b", "-c", "d"]))
        self.assertEqual((["a"], []), split_path(["a"]))

    def test_an_option_takes_the_next_word(self) -> None:
        tokens = ["--one", "1", "--flag", "--two=2", "-s", "--", "extra"]
        self.assertEqual([("one", "1"), ("flag", None), ("two", "2"), ("s", "--"), ("", "extra")],
                         [(option.name, option.value) for option in read_options(tokens)])
        self.assertEqual(tokens, [each for option in read_options(tokens)
                                  for each in option.tokens])

    def test_a_shell_reads_quoted_words_as_they_were(self) -> None:
        words = ["", " ", "it's", '"', "$(id)`id`", "a\nb", "\\", "*", "~", "#", "!",
                 os.fsdecode(bytes(range(1, 256)))]
        script = os.fsencode(f"for word in {quote_all(words)}; do printf '%s\\0' \"$word\"; done")
        done = subprocess.run(["/bin/sh"], input=script, stdout=subprocess.PIPE, check=True)
        self.assertEqual([os.fsencode(word) for word in words], done.stdout.split(b"\0")[:-1])

    def test_secrets_are_taken_off_the_line(self) -> None:
        description = describe(Parameters=[parameter("key", "k", True), parameter("name", "n")])
        options = list(read_options(["--name", "x", "--key=a b", "-n", "y", "-k", "c"]))
        self.assertEqual((["--name", "x", "--key", "-n", "y", "--key"], ["a b", "c"]),
                         take_secrets(options, [describe(), description]))

    def test_a_secret_is_one_line(self) -> None:
        description = describe(Parameters=[parameter("key", secret=True)])
        with self.assertRaisesRegex(BadSecret, "^The value of --key must be one line$"):
            take_secrets(list(read_options(["--key=a\nb"])), [description])

    def test_a_parameter_without_a_short_name_is_not_called_none(self) -> None:
        description = describe(Parameters=[parameter("key", secret=True)])
        tokens = ["--none", "x", "word"]
        self.assertEqual((tokens, []), take_secrets(list(read_options(tokens)), [description]))


if __name__ == "__main__":
    unittest.main()
