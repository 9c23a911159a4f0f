#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks that every test named in docs/decisions and docs/security.md exists.

    check_oddities.py [ROOT]

A page names a test as `SuiteTest.Name`. Each row of a table in deliberate-oddities.md must name a
test; so must each row of the table of promises in security.md. Prints a line for each test that is
missing and for each row without a test. The exit status is 1 if there was one.
"""

import glob
import os
import re
import sys

from problem_report import report

PAGES = ["docs/decisions/*.md", "docs/security.md"]
# The pages with tables whose rows must name tests, and the beginning of the header of such a table.
TABLES = {"docs/decisions/deliberate-oddities.md": "|", "docs/security.md": "| promise |"}
DEFINITION = re.compile(r"\bTEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)")
MENTION = re.compile(r"`(\w+Test)\.(\w+)`")


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def tests_of(root):
    """Returns the tests of the project, as Suite.Name."""
    sources = glob.glob(os.path.join(root, "tests", "**", "*.cpp"), recursive=True)
    return {".".join(match) for path in sources for match in DEFINITION.findall(read(path))}


def rows_without_a_test(text, head):
    """Yields the rows without a test in the tables whose header begins with the given string."""
    in_table = False
    for above, line in zip([""] + text.splitlines(), text.splitlines()):
        if not line.startswith("|"):
            in_table = False
        elif not above.startswith("|"):
            in_table = line.startswith(head)
        elif in_table and not line.startswith("|--") and not MENTION.search(line):
            yield line


def problems(root):
    known = tests_of(root)
    pages = sorted(page for pattern in PAGES for page in glob.glob(os.path.join(root, pattern)))
    for page in pages:
        for match in MENTION.findall(read(page)):
            if ".".join(match) not in known:
                yield f"{os.path.relpath(page, root)}: no test {'.'.join(match)}"
    for page, head in TABLES.items():
        for row in rows_without_a_test(read(os.path.join(root, page)), head):
            yield f"{page}: no test in the row {row}"


if __name__ == "__main__":
    sys.exit(report(problems, sys.argv))
