#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Reports which lines and branches of the library the tests of a coverage build ran.

    coverage.py TREE

Reads what gcov reports about the objects of the library in the build tree TREE. Prints the totals,
writes the lines and branches that did not run to TREE/coverage.txt, and fails if a total is below
its limit.

A branch counts if a condition of the source causes it. Branches that only the compiler makes do not
count:
  - those that are taken when a call throws, one at nearly every call;
  - those that are reachable only after an exception: they decide which temporary objects of an
    expression must be destroyed. Such branches in a handler of the source do count;
  - those on lines without a condition, for example the check whether a static variable has its
    value.
"""

import collections
import concurrent.futures
import os
import re
import subprocess
import sys
import tempfile

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
FOLDERS = ("metaobj/", "callspec/", "autocli/")
MIN_LINES = 99.0
MIN_BRANCHES = 97.0

SOURCE = re.compile(r" *-: *0:Source:(.*)")
LINE = re.compile(r" *([^:\s]+): *(\d+):(.*)")
BLOCK = re.compile(r" *([^:\s]+): *(\d+)-block ")
BRANCH = re.compile(r"branch +\d+ (never executed|taken (\d+))(.*)")
CONDITION = re.compile(r"\b(if|while|for|switch|case|default)\b|[?]|&&|[|][|]")
NOT_CODE = re.compile(r"//.*|\"(\\.|[^\"\\])*\"|'(\\.|[^'\\])+'")
AFTER_EXCEPTION = "$$$$$"


class Line:
    """A line of the source: how often it ran, and how often each of its branches was taken."""

    def __init__(self, text):
        self.text = text.strip()
        self.count = 0
        self.branches = []

    def add(self, count, branches):
        """Adds what one object file has counted."""
        self.count += count
        self.branches += [0] * (len(branches) - len(self.branches))
        for number, taken in enumerate(branches):
            self.branches[number] += taken

    def missed(self):
        """Returns the numbers of the branches that were not taken."""
        return [number for number, taken in enumerate(self.branches) if taken == 0]


def count_of(field):
    """Returns the number in a field of gcov, which marks some with a star."""
    return int(field.rstrip("*")) if field[0].isdigit() else 0


def is_code(line):
    """Whether a line of gcov contains code of the source. The code at a lone brace, which only
    destroys objects, does not count."""
    return line[1] != "-" and line[3].strip(" };)") != ""


def lines_of_handlers(report):
    """Returns the numbers of the lines that are reachable only after an exception."""
    blocks = [match for match in map(BLOCK.match, report) if match]
    after = {match[2] for match in blocks if match[1] == AFTER_EXCEPTION}
    return after - {match[2] for match in blocks if match[1] != AFTER_EXCEPTION}


def parts(report):
    """Yields (number, count, text, branches) for each line with code. A line of a template comes
    once for each instance."""
    handlers = lines_of_handlers(report)
    part = None
    counts = False
    for line in report:
        block = BLOCK.match(line)
        branch = BRANCH.match(line)
        start = None if block else LINE.match(line)
        if block:
            counts = block[1] != AFTER_EXCEPTION or block[2] in handlers
        elif branch and part and counts and "throw" not in branch[3]:
            part[3].append(int(branch[2] or 0))
        elif start:
            if part:
                yield part
            part = (int(start[2]), count_of(start[1]), start[3], []) if is_code(start) else None
    if part:
        yield part


def read_report(path, lines):
    """Adds what the report of gcov in the file `path` contains about the library to `lines`."""
    with open(path, encoding="utf-8", errors="surrogateescape") as file:
        report = file.read().splitlines()
    name = SOURCE.match(report[0])[1]
    name = os.path.relpath(os.path.join(ROOT, re.sub(r"^(\.\./)+", "", name)), ROOT)
    if not name.startswith(FOLDERS):
        return
    for number, count, text, branches in parts(report):
        has_condition = CONDITION.search(NOT_CODE.sub("", text))
        lines.setdefault((name, number), Line(text)).add(count, branches if has_condition else [])


def run_gcov(notes):
    """Returns the lines that gcov reports about the object of a file of notes."""
    lines = {}
    with tempfile.TemporaryDirectory(prefix="coverage-") as folder:
        command = ["gcov", "--all-blocks", "--branch-probabilities", "--branch-counts",
                   "--preserve-paths", "--relative-only", "--source-prefix", ROOT, notes]
        ended = subprocess.run(command, cwd=folder, check=False, stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE, encoding="utf-8", errors="replace")
        if ended.returncode != 0:
            sys.exit(f"gcov cannot read {notes}:\n{ended.stderr}")
        for name in os.listdir(folder):
            read_report(os.path.join(folder, name), lines)
    return lines


def find_notes(tree):
    """Returns the files of notes of all objects of the library that still have a source."""
    found = []
    for part in ("CMakeFiles", *FOLDERS):
        for folder, _, names in os.walk(os.path.join(tree, part)):
            for name in names:
                path = os.path.join(folder, name)
                source = re.sub(r".*CMakeFiles/[^/]*\.dir/|\.gcno$", "", path)
                base = "" if part == "CMakeFiles" else os.path.relpath(folder.split("/CMakeFiles")[0], tree)
                if name.endswith(".gcno") and os.path.exists(os.path.join(ROOT, base, source)):
                    found.append(path)
    return sorted(found)


def read_all(tree):
    """Returns the lines of the library, by file and number."""
    lines = {}
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for some in pool.map(run_gcov, find_notes(tree)):
            for place, line in some.items():
                lines.setdefault(place, Line(line.text)).add(line.count, line.branches)
    return lines


def write_left(lines, path):
    """Writes the lines that did not run, and those with branches that were not taken."""
    left = collections.defaultdict(list)
    for (name, number), line in sorted(lines.items()):
        missed = ",".join(map(str, line.missed()))
        if line.count == 0 or missed:
            what = "did not run" if line.count == 0 else f"{missed} of {len(line.branches)}"
            left[name].append(f"{number:6} {what:12} {line.text}\n")
    with open(path, "w", encoding="utf-8", errors="surrogateescape") as file:
        for name, texts in left.items():
            file.write(f"{name}\n{''.join(texts)}")


def share(ran, total):
    """Returns a percentage."""
    return 100.0 * ran / total if total else 0.0


def main():
    """Runs the program."""
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    tree = os.path.abspath(sys.argv[1])
    lines = read_all(tree)
    write_left(lines, os.path.join(tree, "coverage.txt"))
    ran = sum(line.count > 0 for line in lines.values())
    branches = sum(len(line.branches) for line in lines.values())
    taken = branches - sum(len(line.missed()) for line in lines.values())
    print(f"lines: {share(ran, len(lines)):.1f} % ({ran} of {len(lines)})")
    print(f"branches: {share(taken, branches):.1f} % ({taken} of {branches})")
    print(f"What did not run is in {os.path.relpath(os.path.join(tree, 'coverage.txt'))}.")
    return 1 if share(ran, len(lines)) < MIN_LINES or share(taken, branches) < MIN_BRANCHES else 0


if __name__ == "__main__":
    sys.exit(main())
