#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Compares the instructions that fixed workloads take with the recorded numbers.

    compare_benchmarks.py [--build DIR] [--record] [ROW]...

callgrind counts the instructions of two runs of a workload with different numbers of rounds; the
difference, divided by the number of additional rounds, is the cost of one round without the
start-up. A row that begins with "start" is a whole run of the tool. DIR is a build tree in which
the targets `kestrel_workloads` and `stage` are built (default build/bench). ROW selects rows by
name.

Numbers depend on the compiler and the libraries, so they are compared only if both are the recorded
ones. --record writes the numbers to benchmarks/results/instructions.json.

Exit status: 0 if no row is more than 3 % above the recorded number, or if, for each such row, the
section "Unreleased" of CHANGELOG.md has a line that begins with "- Slower: `ROW`" and says why. 1
if such a line is missing, or if the recorded numbers are those of another compiler or library. 2 if
something could not be run.
"""

import argparse
import json
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
RECORD = ROOT / "benchmarks" / "results" / "instructions.json"
LIMIT = 1.03

# The number of rounds of the longer run; the shorter one has one round.
WORKLOADS = {
    "descriptor-read": 11,
    "descriptor-register": 11,
    "value-document": 3,
    "build": 3,
    "look-up": 3,
    "call": 11,
    "table": 3,
    "simple": 3,
    "xml": 3,
    "json": 3,
    "python": 3,
    "ndjson": 3,
    "json-utf8": 3,
    "csv": 3,
    "tsv": 3,
    "yaml": 3,
    "value-xml": 3,
}


class Failure(Exception):
    """Something could not be run; the message says what."""


def count_instructions(words, folder, status=0):
    """Returns the instructions of one run, which must exit with `status`."""
    output = pathlib.Path(folder) / "callgrind.out"
    run = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={output}", *words],
                         stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
    found = re.search(r"Collected : (\d+)", run.stderr)
    if run.returncode != status or found is None:
        raise Failure(f"{' '.join(map(str, words))}: exit status {run.returncode}\n{run.stderr}")
    return int(found.group(1))


def start_rows(build):
    """Returns the command lines of the rows that run the whole tool. Each lists the root, and so
    exits with 1."""
    stage = build / "stage"
    return {
        "start": [stage / "bin" / "vexil"],
        "start-shipped": [stage / "bin" / "vexil", "--plugin-dir",
                          stage / "lib" / "norvane" / "vexil"],
    }


def measure(build, row, folder):
    starts = start_rows(build)
    if row in starts:
        return count_instructions(starts[row], folder, status=1)
    file = pathlib.Path(folder) / "store.xml"
    rounds = WORKLOADS[row]
    one, more = (count_instructions(
        [build / "benchmarks" / "kestrel_workloads", row, str(n), file], folder)
        for n in (1, rounds))
    return (more - one) // (rounds - 1)


def environment(build):
    """Returns what numbers depend on: the compiler and the versions of the libraries."""
    cache = (build / "CMakeCache.txt").read_text()
    compiler = re.search(r"CMAKE_CXX_COMPILER:\w+=(.*)", cache).group(1)
    version = subprocess.run([compiler, "--version"], capture_output=True, text=True, check=True)
    libraries = subprocess.run(["ldd", build / "vexil" / "vexil"], capture_output=True, text=True,
                               check=True).stdout
    paths = re.findall(r"=> (/\S+/lib(?:xml2|stdc\+\+|c)\.so\S*)", libraries)
    return [version.stdout.splitlines()[0], *sorted(pathlib.Path(path).resolve().name for path in paths)]


def slower_rows(changelog):
    """Returns the rows that the changelog says are slower in the next release."""
    unreleased = re.search(r"^## Unreleased$(.*?)(?=^## |\Z)", changelog, re.M | re.S)
    return set(re.findall(r"^- Slower: `([^`]+)`", unreleased.group(1) if unreleased else "", re.M))


def faults(recorded, measured, explained):
    """Returns the rows that exceed the limit and have no line in the changelog."""
    return [row for row, count in measured.items()
            if row in recorded and count > LIMIT * recorded[row] and row not in explained]


def print_table(recorded, measured):
    print(f"{'row':20} {'recorded':>12} {'now':>12}  ratio")
    for row, count in measured.items():
        before = recorded.get(row)
        ratio = "" if before is None else f"{count / before:6.3f}"
        print(f"{row:20} {'' if before is None else before:>12} {count:>12} {ratio}")


def compare(arguments):
    rows = arguments.rows or [*start_rows(arguments.build), *WORKLOADS]
    unknown = set(rows) - set(start_rows(arguments.build)) - set(WORKLOADS)
    if unknown:
        raise Failure(f"no such row: {', '.join(sorted(unknown))}")
    record = json.loads(RECORD.read_text()) if RECORD.exists() else {"rows": {}, "with": []}
    with tempfile.TemporaryDirectory() as folder:
        measured = {row: measure(arguments.build, row, folder) for row in rows}
    print_table(record["rows"], measured)
    used = environment(arguments.build)
    if arguments.record:
        RECORD.write_text(json.dumps({"with": used, "rows": {**record["rows"], **measured}},
                                     indent=2) + "\n")
        return 0
    if used != record["with"]:
        print(f"Recorded with {record['with']}, now {used}: record the numbers of the last release "
              "with these first (--record).")
        return 1
    worse = faults(record["rows"], measured, slower_rows((ROOT / "CHANGELOG.md").read_text()))
    for row in worse:
        print(f"{row}: more than {LIMIT - 1:.0%} above the recorded number, and CHANGELOG.md has "
              f"no line \"- Slower: `{row}` ...\"")
    return 1 if worse else 0


def main(words):
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build" / "bench",
                        metavar="DIR", help="the build tree")
    parser.add_argument("--record", action="store_true", help="record the numbers")
    parser.add_argument("rows", nargs="*", metavar="ROW")
    try:
        return compare(parser.parse_args(words))
    except (Failure, OSError, subprocess.CalledProcessError) as failure:
        print(failure, file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
