#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Compares the output of all formatters with a second implementation, and reads it back.

    check_trees.py --program WRITE_TREES [--samples] [--seed SEED] [--count COUNT]

The values are random or, with --samples, those of the golden files. A random tree is named after
its seed; `--seed N --count 1` checks only that tree. By default, the same 1,000 trees are checked
each time; with KESTREL_CAMPAIGN=1 in the environment, 10,000 new ones.
"""

import argparse
import os
import shutil
import subprocess
import sys

import reading
import rendering
import values

MAX_PROBLEMS = 10
MIN_READABLE_SHARE = 0.2  # Of 1,000 trees or more, each reader must be able to read this share.


def problems_of_rendering(cases):
    for case in cases:
        for formatter, render in rendering.RENDERERS.items():
            try:
                text, thrown = render(case.root, case.params, case.width)
            except rendering.OutsideContract:
                continue
            if (text, thrown.encode()) != case.printed[formatter]:
                yield (f"{case.name} as {formatter}, {case.params}, width {case.width}\n"
                       f"  expected {text!r} {thrown}\n  printed  {case.printed[formatter]!r}")


def problems_of_reading(cases, min_share):
    for name, reader in reading.READERS.items():
        if reader.program and not shutil.which(reader.program):
            print(f"{name} is not installed and reads nothing")
            continue
        readable = [case for case in cases if reader.can_read(case)]
        print(f"{name} reads {len(readable)} of {len(cases)}")
        if len(readable) < min_share * len(cases):
            yield f"{name}: can read too few values"
        for problem in reader.check(readable):
            yield f"{name}: {problem}"


def choose_trees(arguments):
    """Returns the program's arguments and a description of the trees."""
    if arguments.samples:
        return ["samples"], "the samples"
    is_campaign = os.environ.get("KESTREL_CAMPAIGN") == "1"
    fresh = int.from_bytes(os.urandom(4), "big") if is_campaign else 1
    seed = fresh if arguments.seed is None else arguments.seed
    count = arguments.count or (10000 if is_campaign else 1000)
    return [str(seed), str(count)], f"{count} trees from seed {seed}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--samples", action="store_true")
    parser.add_argument("--seed", type=int)
    parser.add_argument("--count", type=int)
    arguments = parser.parse_args()

    choice, description = choose_trees(arguments)
    print(description)
    done = subprocess.run([arguments.program, *choice], stdout=subprocess.PIPE, check=True)
    cases = list(values.read_cases(done.stdout, list(rendering.RENDERERS)))
    problems = list(problems_of_rendering(cases))
    problems += problems_of_reading(cases, MIN_READABLE_SHARE if len(cases) >= 1000 else 0)
    for problem in problems[:MAX_PROBLEMS]:
        print(problem)
    print(f"{len(cases)} values, {len(problems)} problems")
    return 1 if problems or not cases else 0


if __name__ == "__main__":
    sys.exit(main())
