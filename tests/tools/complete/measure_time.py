#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Measures how long vexil-complete takes with a large tree.

    measure_time.py STAGE PLUGIN [--runs N] [--limit MILLISECONDS]

STAGE is an installed tree; PLUGIN has 1,000 commands, in addition to those of the shipped plug-ins.
For several lines, prints the median and the 99th percentile of the elapsed time and of the
processor time. With --limit, the exit status is 1 if the 99th percentile of the processor time
exceeds it; other programs on the machine hardly affect processor time.
"""

import argparse
import os
import resource
import subprocess
import sys
import time

LINES = {
    "a namespace": ["spa"],
    "a command": ["space7", "comm"],
    "a parameter": ["space7", "command3", "--"],
    "a parameter of a shipped command": ["storage", "mount", "list", "--"],
    "columns": ["--format-param", "fields="],
}
AFTER = {"columns": ["storage", "mount", "list"]}


def run_once(arguments):
    """Returns the elapsed time and the processor time, in milliseconds."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.perf_counter()
    lines = subprocess.run(arguments, check=True, stdout=subprocess.PIPE).stdout.split(b"\n")
    end = time.perf_counter()
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if len(lines) < 3:
        raise ValueError(f"no candidate: {arguments}")
    used = after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime
    return (end - start) * 1e3, used * 1e3


def percentile(times, percent):
    return sorted(times)[min(len(times) - 1, len(times) * percent // 100)]


def measure(stage, plugin, words, after, runs):
    line = ["vexil", "--plugin", plugin, "--plugin-dir",
            os.path.join(stage, "lib/norvane/vexil"), *words]
    program = os.path.join(stage, "libexec/vexil-complete")
    return [run_once([program, str(len(line) - 1), *line, *after]) for _ in range(runs)]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("stage")
    parser.add_argument("plugin")
    parser.add_argument("--runs", type=int, default=500)
    parser.add_argument("--limit", type=float)
    options = parser.parse_args()
    is_slow = False
    print("line: median and 99th percentile from start to end; the same of the processor, in ms")
    for name, words in LINES.items():
        times = measure(os.path.abspath(options.stage), os.path.abspath(options.plugin), words,
                        AFTER.get(name, []), options.runs)
        figures = [percentile([pair[kind] for pair in times], percent)
                   for kind in (0, 1) for percent in (50, 99)]
        print(f"{name}: " + " ".join(f"{figure:.1f}" for figure in figures))
        is_slow |= options.limit is not None and figures[3] > options.limit
    return 1 if is_slow else 0


if __name__ == "__main__":
    sys.exit(main())
