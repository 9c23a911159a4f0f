#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks that every test named in docs/decisions exists.

    check_oddities.py [ROOT]

A page names a test as `SuiteTest.Name`; deliberate-oddities.md must name one in every row of its
tables. Prints each missing test on a line. The exit status is 1 if there was one.
"""

import glob
import os
import re
import sys

from problem_report import report

PAGES = "docs/decisions/*.md"
TABLES = "docs/decisions/deliberate-oddities.md"
DEFINITION = re.compile(r"\bTEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)")
MENTION = re.compile(r"`(\w+Test)\.(\w+)`")


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def tests_of(root):
    """Returns the tests of the project, as Suite.Name."""
    sources = glob.glob(os.path.join(root, "tests", "**", "*.cpp"), recursive=True)
    return {".".join(match) for path in sources for match in DEFINITION.findall(read(path))}


def rows_without_a_test(text):
    """Returns the rows that name no test, except the headers of the tables."""
    lines = text.splitlines()
    bodies = (line for above, line in zip(lines, lines[1:])
              if line.startswith("|") and above.startswith("|") and not line.startswith("|--"))
    return [line for line in bodies if not MENTION.search(line)]


def problems(root):
    known = tests_of(root)
    pages = sorted(glob.glob(os.path.join(root, PAGES)))
    for page in pages:
        for match in MENTION.findall(read(page)):
            if ".".join(match) not in known:
                yield f"{os.path.relpath(page, root)}: no test {'.'.join(match)}"
    for row in rows_without_a_test(read(os.path.join(root, TABLES))):
        yield f"{TABLES}: no test in the row {row}"


if __name__ == "__main__":
    sys.exit(report(problems, sys.argv))
