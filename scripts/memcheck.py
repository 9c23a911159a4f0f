#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs the tests of the library under valgrind's memcheck.

Memcheck reports accesses outside a block or to a freed one, decisions and system calls that depend
on uninitialised memory, and blocks that are freed wrongly, in the library and in the tests alike.
The build allocates the memory of each value separately (KESTREL_PLAIN_BLOCKS), so that these blocks
are checked, too. Forked children are checked until they start another program.

Each program runs in parts, several at once. LEFT_OUT lists the tests that do not run, with the
reasons; memcheck.supp lists reports that are not mistakes. The exit status is 1 if memcheck reports
something or a test fails.
"""

import argparse
import collections
import concurrent.futures
import os
import re
import subprocess
import sys
import tempfile
import time

# Programs of the build tree.
PROGRAMS = ("tests/kestrel_unit_tests", "tests/kestrel_internal_tests")

# Patterns of tests that do not run, with the reasons.
LEFT_OUT = {
    "SlabAllocator*.*Reuse*": "this build has no slabs",
    "SlabAllocatorTest.AllocatesSmallArraysInASlab": "this build has no slabs",
    "TypedSecretsTest.*Cop*": "searches the memory of the process, which includes that of valgrind",
    "*NeedsLittleMemoryForManyRows*": "measures the memory of the process",
    "ChildProcessTest.*Descriptors*": "limits the descriptors, of which valgrind needs some",
    "CheckedFileTest.*Descriptor*": "limits the descriptors, of which valgrind needs some",
    "ChildProcessTest.ASystemThatRefusesToWait*": "limits the descriptors",
    "UtilShellTest.ACommandLineThatIsTooLong*": "valgrind ends a process whose execve fails",
    "ForkExecTest.*CausesAnErrorStatus": "valgrind ends a child that cannot start its program",
    "*EchoGuard*": "valgrind delays signals",
    "ChildProcessTest.ASignalThatIsHandled*": "valgrind is slower than the signals of this test",
    "*WhenMemoryRunsOut*": "limits the memory of the process, of which valgrind needs some",
    "*Every*String*": "tries all short strings; takes hours",
    "*AllShort*": "tries all short strings; takes hours",
    "UnicodeTest.AgreesWithATable*": "tries all short strings; takes hours",
    "*Random*": "tries many inputs of a kind; takes hours",
    "*AMillion*": "has a large input; takes hours",
    "*AMegabyte*": "has a large input; takes hours",
    "*InLinearTime*": "measures time",
}

SUPPRESSIONS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "memcheck.supp")
# "lax-ioctls": valgrind does not know the request that opens the other end of a pseudo-terminal.
VALGRIND = ("valgrind", "-q", "--error-exitcode=9", "--track-origins=no", "--num-callers=30",
            "--sim-hints=lax-ioctls", f"--suppressions={SUPPRESSIONS}")

Part = collections.namedtuple("Part", "program number count")
Result = collections.namedtuple("Result", "tests failed report output status")


def run(tree, part, tests):
    """Runs one part of a program, in an empty folder."""
    left_out = ":".join(LEFT_OUT)
    environment = {**os.environ, "GTEST_TOTAL_SHARDS": str(part.count),
                   "GTEST_SHARD_INDEX": str(part.number), "GTEST_COLOR": "no"}
    with tempfile.TemporaryDirectory(prefix="memcheck-") as folder:
        command = [*VALGRIND, f"--log-file={folder}/report.%p", os.path.join(tree, part.program),
                   f"--gtest_filter={tests}-{left_out}"]
        ended = subprocess.run(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        report = ""
        for name in sorted(os.listdir(folder)):
            if name.startswith("report."):
                with open(os.path.join(folder, name), encoding="utf-8", errors="replace") as file:
                    report += file.read()
    output = ended.stdout.decode(errors="replace")
    ran = re.search(r"^\[==========\] (\d+) tests? from .* ran", output, re.MULTILINE)
    failed = sorted(set(re.findall(r"^\[  FAILED  \] (\S+?),? .*ms\)$", output, re.MULTILINE)))
    return Result(int(ran[1]) if ran else 0, failed, report, output, ended.returncode)


def show(part, result):
    """Prints what is wrong with a part; returns whether all is well."""
    if result.status == 0 and not result.report:
        return True
    print(f"{part.program}, part {part.number + 1} of {part.count}: status {result.status}, failed: "
          f"{', '.join(result.failed) or 'no test'}")
    print(result.report, end="")
    if result.failed or result.status not in (0, 9):
        print(result.output[-5000:])
    sys.stdout.flush()
    return False


def run_program(tree, program, options):
    """Runs all parts of a program and prints the figures; returns whether all is well."""
    started = time.monotonic()
    parts = [Part(program, number, options.parts) for number in range(options.parts)]
    tests = failed = bad = 0
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        results = pool.map(lambda part: run(tree, part, options.tests), parts)
        for part, result in zip(parts, results):
            tests += result.tests
            failed += len(result.failed)
            bad += not show(part, result)
    print(f"{program}: {tests} tests in {options.parts} parts, {time.monotonic() - started:.0f} s: "
          f"{failed} failed, {bad} parts with a report or a failure", flush=True)
    return bad == 0 and tests > 0


def main():
    left_out = "\n".join(f"  {pattern}: {reason}" for pattern, reason in LEFT_OUT.items())
    parser = argparse.ArgumentParser(
        description=__doc__, epilog=f"Left out:\n{left_out}",
        formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tree", default="build/valgrind", help="the build tree (build/valgrind)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(),
                        help="how many parts run at once (one per processor)")
    parser.add_argument("--parts", type=int, default=16, help="parts of each program (16)")
    parser.add_argument("--tests", default="*", metavar="PATTERN",
                        help="only the tests that this pattern of the test framework selects")
    options = parser.parse_args()
    tree = os.path.abspath(options.tree)
    results = [run_program(tree, program, options) for program in PROGRAMS]
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
