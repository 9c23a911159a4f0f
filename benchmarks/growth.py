#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Reports how the time of each benchmark grows with its size.

    growth.py RESULT.json...

Reads files written by --benchmark_out. For every benchmark with at least two sizes it prints the
smallest and the largest amount of work, and the exponent of the power law through the median times,
by least squares: 1.00 means that doubling the work doubles the time. The work is the size, unless
the benchmark reports another number, such as that of the bytes written, as the counter "work".
"""

import json
import math
import re
import statistics
import sys

NAME = re.compile(r"^(?P<family>.*?)/(?P<size>\d+)(?P<rest>(?:/[^/]*)*)$")
TO_SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def times_by_family(results):
    """Returns {family: {work: [seconds, ...]}} for the runs that were not skipped."""
    families = {}
    for run in results["benchmarks"]:
        match = NAME.match(run["run_name"])
        if match is None or run.get("run_type") == "aggregate" or run.get("error_occurred"):
            continue
        family = match["family"] + re.sub(r"/(repeats|iterations|min_time|manual_time):?[^/]*", "",
                                          match["rest"])
        measured = "real_time" if "manual_time" in match["rest"] else "cpu_time"
        seconds = run[measured] * TO_SECONDS[run["time_unit"]]
        work = int(run.get("work", match["size"]))
        families.setdefault(family, {}).setdefault(work, []).append(seconds)
    return families


def exponent(times):
    """Returns the slope of the line through (log work, log median time)."""
    points = [(math.log(work), math.log(statistics.median(runs))) for work, runs in times.items()]
    return statistics.linear_regression(*zip(*points)).slope


def main(arguments):
    if len(arguments) < 2:
        sys.exit("Usage: growth.py RESULT.json...")
    print("| benchmark | from | to | exponent |\n|---|--:|--:|--:|")
    for path in arguments[1:]:
        with open(path, encoding="utf-8") as file:
            families = times_by_family(json.load(file))
        for family, times in families.items():
            if len(times) > 1:
                print(f"| {family} | {min(times)} | {max(times)} | {exponent(times):.2f} |")


if __name__ == "__main__":
    main(sys.argv)
