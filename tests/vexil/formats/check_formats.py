#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Prints random results in the tool's formats and reads them with other programs.

    check_formats.py --program WRITE_RESULTS [--seed SEED] [--count COUNT]

A result is named after its seed; `--seed N --count 1` checks only the result N. By default, the
same 2,000 results are checked each time; with KESTREL_CAMPAIGN=1 in the environment, 100,000 new
results are checked.
"""

import argparse
import os
import shutil
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)),
                                "../../autocli/formatters/results"))

import choosing  # noqa: E402
import readers  # noqa: E402
import values  # noqa: E402

BATCH = 5000  # results in memory at a time
MAX_PROBLEMS = 10
MIN_READABLE_SHARE = 0.1  # Each reader must be able to read at least this share.


class Case:
    """A result with the output of each format, and the values and columns that it should have."""

    def __init__(self, reader):
        self.seed = reader.netstring().decode()
        self.params = {}
        for _ in range(int(reader.netstring())):
            key = reader.netstring()
            self.params[key] = reader.netstring()
        self.root = values.Reader(reader.netstring()).value()
        self.shape = values.Reader(reader.netstring()).value()
        self.printed = {name: (reader.netstring(), reader.netstring())
                        for name in readers.FORMATS}
        self.read_back = values.Reader(reader.netstring()).value()
        self.chosen = choosing.Chosen(self.root, self.shape, self.params)


def read_cases(data):
    reader = values.Reader(data)
    while not reader.at_end():
        yield Case(reader)


def problems_of_messages(cases):
    """Checks that a result is either printed or refused with a message, whichever is right."""
    for case in cases:
        for name, reason in readers.FORMATS.items():
            text, messages = case.printed[name]
            expected = case.chosen.mistakes or reason(case.chosen)
            if bool(messages) != bool(expected) or (messages and text):
                yield f"{case.seed} {name}: {messages!r} with {text[:200]!r}, expected {expected!r}"


def problems_of_reading(cases, counts):
    for name, reader in readers.READERS.items():
        if name in readers.PROGRAMS and not shutil.which(name):
            continue
        readable = [case for case in cases
                    if not case.printed[reader.format][1] and reader.can_read(case)]
        counts[name] = counts.get(name, 0) + len(readable)
        for problem in reader.check(readable):
            yield f"{name}: {problem}"


def batches(arguments):
    is_campaign = os.environ.get("KESTREL_CAMPAIGN") == "1"
    fresh = int.from_bytes(os.urandom(4), "big") if is_campaign else 1
    seed = fresh if arguments.seed is None else arguments.seed
    count = arguments.count or (100000 if is_campaign else 2000)
    print(f"{count} results from seed {seed}")
    for start in range(0, count, BATCH):
        yield seed + start, min(BATCH, count - start)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--seed", type=int)
    parser.add_argument("--count", type=int)
    arguments = parser.parse_args()

    problems, counts, total = [], {}, 0
    for seed, count in batches(arguments):
        done = subprocess.run([arguments.program, str(seed), str(count)], stdout=subprocess.PIPE,
                              check=True)
        cases = list(read_cases(done.stdout))
        total += len(cases)
        problems += problems_of_messages(cases)
        problems += problems_of_reading(cases, counts)
    for name in sorted(set(readers.PROGRAMS) - set(counts)):
        print(f"{name} is not installed and reads nothing")
    for name, count in counts.items():
        print(f"{name} reads {count} of {total}")
        is_missing = readers.yaml is None and "yaml" in name.lower()
        if total >= 1000 and count < MIN_READABLE_SHARE * total and not is_missing:
            problems.append(f"{name} can read too few results")
    for problem in problems[:MAX_PROBLEMS]:
        print(problem)
    print(f"{total} results, {len(problems)} problems")
    return 1 if problems or not total else 0


if __name__ == "__main__":
    sys.exit(main())
