#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of check_words.py, each with its own small file or tree."""

import os
import tempfile
import unittest

import check_words

# The same phrase in the prose of each kind of file.
PROSE = {
    "a.cpp": "int a;  // made anew\n",
    "b.h": "/// Made anew.\n",
    "c.cpp": "/* made\n   anew */\n",
    "d.py": "A = 1  # made anew\n",
    "e.py": 'def a():\n    """Made anew."""\n',
    "f.sh": "echo \"#\"  # made anew\n",
    "g.cmake": "# Made anew.\n",
    "h.md": "Text\n\n- made anew\n",
    "i.1": ".TH I 1\nMade anew.\n",
    "j.xml": "<a><!-- made anew --></a>\n",
    "run": "#!/bin/sh\n# Made anew.\n",
    "k.pl": "#!/usr/bin/perl\nmy $a;  # made anew\n",
}

# The same phrase where it is not part of our prose.
NOT_PROSE = {
    "a.cpp": 'const char* anew = "made anew";  // see `anew` and "made anew"\n',
    "b.cpp": 'const char* a = R"(// made anew)"; const char b = \'"\'; const char* c = "anew";\n',
    "c.py": 'A = "made # anew"\n',
    "d.sh": "anew='# anew' # says \"anew\"\n",
    "e.sh": "echo anew#anew\n",
    "f.md": "```console\n$ anew\n```\n`anew` \"anew\" [link](anew.md)\n\n    anew\n",
    "g.1": ".TH ANEW 1\n.EX\nanew\n.EE\n",
    "h.xml": "<anew>anew</anew>\n",
}

# A sentence for each entry of PHRASES, in their order.
SAMPLES = [
    "It stands before the name.",
    "The byte behind it.",
    "It gives the size.",
    "The memory is given back.",
    "The clash is told.",
    "It is made anew.",
    "The value is handed on.",
    "It lets go of the value.",
    "A number, be it negative.",
    "The text is used as it stands.",
    "Three blanks.",
    "Whoever calls it.",
    "Nobody reads it.",
    "It is locked for good.",
    "It would wait for ever.",
    "It counts what is there.",
    "Of all clashes the one that comes first.",
    "Mend the file.",
    "A list of records.",
    "What it brings along.",
    "It wants a name.",
    "All else is ignored.",
    "A value put in for a marker.",
    "It is passed over.",
    "That is no number.",
    "Three texts.",
    "It returns a text.",
    "The value is judged.",
    "The command at hand.",
    "It waits in vain.",
    "A word that leads nowhere.",
    "It is checked besides.",
    "A signal on the way out.",
    "It throws in words for the user.",
    "Prints all names, one a line.",
    "It stays as it is.",
]


class CheckWordsTest(unittest.TestCase):
    def found(self, files, paths=(".",)):
        with tempfile.TemporaryDirectory() as root:
            for path, text in files.items():
                full = os.path.join(root, path)
                os.makedirs(os.path.dirname(full), exist_ok=True)
                with open(full, "w", encoding="utf-8") as file:
                    file.write(text)
            return list(check_words.check(root, paths))

    def test_reads_the_prose_of_each_kind_of_file(self):
        self.assertEqual(sorted(PROSE), [name for name, *_ in self.found(PROSE)])

    def test_leaves_out_code_examples_and_quotations(self):
        self.assertEqual([], self.found(NOT_PROSE))

    def test_finds_a_phrase_over_two_lines(self):
        self.assertEqual([("a.h", 2), ("b.py", 1), ("c.md", 1), ("d.sh", 1)], [
            (name, line) for name, line, *_ in self.found({
                "a.h": "/// It\n/// lets go\n/// of the value.\n",
                "b.py": "# It stands\n# before the name.\n",
                "c.md": "It stands\nbefore the name.\n",
                "d.sh": "  # It stands\n  # before the name.\n",
            })])

    def test_keeps_comments_of_different_statements_apart(self):
        self.assertEqual([], self.found(
            {"a.cpp": "int a;  // that is\nint b;  // no number\n"}))

    def test_reports_the_line_the_phrase_and_a_replacement(self):
        self.assertEqual([("a.md", 3, "anew", "again; rewrite ..., recompile ...")],
                         self.found({"a.md": "One\n\nTwo, made anew.\n"}))

    def test_finds_each_phrase_in_its_sample(self):
        self.assertEqual(len(check_words.PHRASES), len(SAMPLES))
        for (phrase, replacement), sample in zip(check_words.PHRASES, SAMPLES):
            with self.subTest(phrase):
                self.assertIn(replacement, [finding[2] for finding in
                                            check_words.phrases_in("a.md", sample)])

    def test_allows_uses_that_are_right(self):
        self.assertEqual([], check_words.phrases_in("a.md", """
            A blank line. There is no number. They can be told apart. It stays, unless told
            otherwise. Message texts. A text file. For good measure. It lags behind. One of these
            audit records. It is no longer there. A stand-in for the host's library. It gives up.
            The width that a user wants.
            """))

    def test_skips_golden_files_and_files_below_no_given_path(self):
        files = {"docs/a.md": "anew\n", "tests/golden/a.txt": "# anew\n", "tests/b.md": "anew\n"}
        self.assertEqual(["docs/a.md", "tests/b.md"], [name for name, *_ in self.found(files)])
        self.assertEqual(["docs/a.md"], [name for name, *_ in self.found(files, ["docs"])])
        self.assertEqual(["tests/b.md"], [name for name, *_ in self.found(files, ["tests/b.md"])])


if __name__ == "__main__":
    unittest.main()
