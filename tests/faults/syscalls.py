#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Makes system calls of the tool fail.

Each command line runs once under strace to list its calls. It then runs again and again, each time
with one fault that strace injects into the tool, but not into its child processes:

  once       one call fails with an error that the system may return
  path       each call for one file fails
  storm      every second or third call of one kind, from the start of main, is interrupted (EINTR)
  transfer   every read and write transfers only a few bytes (ShortTransfers.cpp)

The tool must print the same as before, or report the fault: by a message and a status that is not
0, or by a message in addition to the whole result. If the message cannot be written, the status is
enough. Short transfers must not change anything.

The full form tries every call of all command lines, the quick form some calls of five command
lines.
"""

import collections
import os
import random
import re
import shutil
import sys

import command_lines
import tool

# Each kind of call with errors that the system may return.
ERRORS = {
    "openat": ("EMFILE", "EACCES", "ENOMEM"),
    "read": ("EIO", "EINTR"),
    "write": ("EIO", "ENOSPC", "EINTR"),
    "getdents64": ("EIO", "ENOMEM"),
    "pipe2": ("EMFILE", "ENFILE"),
    "clone3": ("EAGAIN", "ENOMEM"),
    "clone": ("EAGAIN", "ENOMEM"),
    "wait4": ("EINTR", "ECHILD"),
    "poll": ("EINTR", "ENOMEM"),
    "socket": ("EMFILE", "EACCES"),
    "mmap": ("ENOMEM",),
    "ioctl": ("ENOTTY", "EIO"),
}
STORMS = ("openat", "read", "write", "wait4", "poll")
TRANSFERS = (1, 2, 3, 7, 64, 1000)

# The first call of main.
FIRST_CALL = "fcntl(0, F_GETFD)"

Fault = collections.namedtuple("Fault", "name injection path bytes")


def strace(*options):
    return ["/usr/bin/strace", "-qq", "-e", "signal=none", *options]


def list_calls(campaign, line):
    """Runs a command line; returns its result, its calls as (kind, arguments), and how many of each
    kind there are before main."""
    log = campaign.path("calls")
    kinds = ",".join([*ERRORS, "fcntl"])
    result = tool.run([*strace("-s", "4096", "-o", log, "-e", "trace=" + kinds), campaign.tool,
                       *line.arguments], tool.environment(), line)
    calls = []
    before = {}
    with open(log, encoding="utf-8", errors="replace") as lines:
        for text in lines:
            if text.startswith(FIRST_CALL) and not before:
                before = collections.Counter(kind for kind, _ in calls)
            match = re.match(r"(\w+)\((.*)", text)
            if match and match[1] in ERRORS:
                calls.append(match.groups())
    if not before:
        sys.exit(f"{line.name}: no call was recorded: {result}")
    return result, calls, before


def can_fail(kind, arguments, is_before_main):
    """Returns whether the call is made to fail. An mmap before main is not, because the dynamic
    loader does not check its first mmap. Nor is a call that reads or sets the terminal modes of
    standard input, because the tool ignores its failure: standard input need not be a terminal."""
    return not (kind == "mmap" and is_before_main) and \
        not (kind == "ioctl" and re.match(r"0, .*\b(TCGETS|TCSETS)\b", arguments))


def single_faults(calls, before):
    numbers = collections.Counter()
    for kind, arguments in calls:
        numbers[kind] += 1
        if not can_fail(kind, arguments, numbers[kind] <= before[kind]):
            continue
        for error in ERRORS[kind]:
            yield Fault(f"{kind} {numbers[kind]} {error}",
                        f"{kind}:error={error}:when={numbers[kind]}", None, 0)


def stderr_faults(calls, before):
    """Returns the names of the faults that make a write to standard error fail."""
    is_stderr = [text.startswith("2,") for kind, text in calls if kind == "write"]
    single = {f"write {number} {error}" for number, hit in enumerate(is_stderr, 1) if hit
              for error in ERRORS["write"]}
    return single | {fault.name for fault in storms(calls, before) if "storm write" in fault.name}


def path_faults(calls):
    paths = {match[1] for kind, text in calls if kind == "openat"
             for match in [re.search(r'"(/[^"]*)".* = \d', text)] if match}
    for path in sorted(paths):
        for error in ERRORS["openat"]:
            yield Fault(f"openat {path} {error}", f"openat:error={error}", path, 0)
        yield Fault(f"read {path} EIO", "read:error=EIO", path, 0)


def storms(calls, before):
    present = {kind for kind, _ in calls}
    for kind in STORMS:
        for start in (1, 2):
            for step in (2, 3):
                if kind in present:
                    when = f"{before[kind] + start}+{step}"
                    yield Fault(f"storm {kind} {when}", f"{kind}:error=EINTR:when={when}", None, 0)


def all_faults(calls, before):
    return [*single_faults(calls, before), *path_faults(calls), *storms(calls, before),
            *(Fault(f"transfer {count}", None, None, count) for count in TRANSFERS)]


def command(campaign, line, fault):
    program = [campaign.tool, *line.arguments]
    if fault.bytes:
        return [campaign.short_transfers, str(fault.bytes), *program]
    kind = fault.injection.split(":")[0]
    options = ["-o", "/dev/null", "-e", "trace=" + kind, "-e", "inject=" + fault.injection]
    return [*strace(*options, *(["-P", fault.path] if fault.path else [])), *program]


def without_strace(result):
    """Returns the result without what strace itself has printed."""
    lines = result.err.splitlines(keepends=True)
    return result._replace(err=b"".join(line for line in lines
                                        if not line.startswith(b"/usr/bin/strace:")))


def can_trace(campaign):
    line = tool.CommandLine("version", ["--version"])
    result = tool.run([*strace("-o", "/dev/null"), campaign.tool, "--version"],
                      tool.environment(), line)
    return result.status == 0


def outcome_of(fault, result, whole, stderr_writes):
    """Returns the outcome of a run. If a message cannot be written, the status alone reports the
    fault."""
    if fault.bytes and result != whole:
        return "changed"
    outcome = tool.classify(result, whole)
    if outcome == "silent" and result.status != 0 and fault.name in stderr_writes:
        return "reported"
    return outcome


def main():
    campaign = tool.Campaign(__doc__)
    campaign.parser.add_argument("--only", help="the name of one command line")
    campaign.parser.add_argument("--fault", help="only faults whose name contains this")
    campaign.parser.add_argument("--sample", type=int, default=60,
                                 help="how many faults of a command line the quick form tries (60)")
    campaign.parser.add_argument("--seed", type=int, default=1, help="selects them (1)")
    options = campaign.start()
    campaign.short_transfers = os.path.join(campaign.tree, "tests", "faults", "ShortTransfers")
    if shutil.which("strace") is None or not can_trace(campaign):
        print("Skipped: this system does not allow strace to trace a program")
        return 77
    lines = command_lines.command_lines(campaign)
    lines = [line for line in lines if line.name == options.only] if options.only else lines
    lines = lines[:5] if options.quick else lines
    chance = random.Random(options.seed)
    tally = tool.Tally("system calls")
    for line in lines:
        whole, calls, before = list_calls(campaign, line)
        stderr_writes = stderr_faults(calls, before)
        faults = [fault for fault in all_faults(calls, before)
                  if not options.fault or options.fault in fault.name]
        if options.quick:
            faults = chance.sample(faults, min(options.sample, len(faults)))

        def fail(fault, line=line, whole=whole, stderr_writes=stderr_writes):
            result = without_strace(
                tool.run(command(campaign, line, fault), tool.environment(), line))
            tally.add(outcome_of(fault, result, whole, stderr_writes),
                      f"{line.name}, {fault.name}", tool.describe(result, whole))

        earlier = tally.bad
        tool.run_all(options.jobs, fail, faults)
        print(f"{line.name}: {len(calls)} calls, {len(faults)} faults, {tally.bad - earlier} bad",
              flush=True)
    return tally.finish()


if __name__ == "__main__":
    sys.exit(main())
