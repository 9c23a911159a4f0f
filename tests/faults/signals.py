#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Sends signals to the tool at random moments: at a prompt, while a child runs, while it prints.

The tool runs on a terminal. The signal must end it. If the signal comes too late, the tool must end
as usual with the whole output. Afterwards the terminal must echo, and no process may be left.
SIGINT and SIGTERM must end the child, which would otherwise run for a long time. For other signals
the child is a short one, which ends by itself. A shell that is about to start a program may miss
SIGINT, as it may miss the interrupt key of a terminal. Then a second SIGINT must end everything.

The full form sends each of the ten signals at 1,000 moments, the quick form at 12.
"""

import collections
import ctypes
import os
import random
import select
import signal
import sys
import time

import command_lines
import tool

SIGNALS = ("HUP", "INT", "QUIT", "TERM", "USR1", "USR2", "ALRM", "XCPU", "VTALRM", "PROF")
FORWARDED = ("INT", "TERM")
# The processes below the tool need less than this to end.
MAX_SECONDS_LEFT = 5
LONG_CHILD_SECONDS = 60
# After this time, a user would press the key again.
SECONDS_BEFORE_SECOND = 3

PR_SET_CHILD_SUBREAPER = 36


def adopt_orphans():
    """Makes this process the parent of processes whose parent has ended."""
    if ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0:
        sys.exit("Unable to adopt processes")


def reap(session):
    """Waits until the processes of a session have ended, and reaps those that have become children
    of this process. Returns the processes that have not ended in time."""
    end = time.monotonic() + MAX_SECONDS_LEFT
    while True:
        left = list(tool.processes_of(session))
        for process in left:
            try:
                os.waitpid(process, os.WNOHANG)
            except ChildProcessError:
                pass  # still has its own parent
        if not left or time.monotonic() > end:
            return left
        time.sleep(0.005)


Run = collections.namedtuple("Run", "result duration echoes left signals")


def run(arguments, line, number=None, moment=None):
    """Runs the tool on a terminal, and sends it a signal after `moment` seconds. Returns the result,
    the duration, whether the terminal echoes, the processes that are left, and how many signals were
    sent."""
    with tool.Terminal(line.answers) as terminal:
        actions = [(os.POSIX_SPAWN_OPEN, 0, terminal.name, os.O_RDWR, 0),
                   (os.POSIX_SPAWN_DUP2, 0, 1), (os.POSIX_SPAWN_DUP2, 0, 2)]
        start = time.monotonic()
        process = os.posix_spawn(arguments[0], arguments, tool.environment(), setsid=True,
                                 file_actions=actions)
        signals = 0
        if number is not None:
            read_until(terminal, process, start + moment)
            os.kill(process, number)
            signals = 1
            if number == signal.SIGINT and not read_until(
                    terminal, process, time.monotonic() + SECONDS_BEFORE_SECOND):
                os.kill(process, number)
                signals = 2
        status = tool.wait(process, terminal)
        duration = time.monotonic() - start
        left = reap(process)
        for other in left:
            os.kill(other, signal.SIGKILL)
        return Run(tool.Result(terminal.read_rest(), b"", status), duration, terminal.echoes(), left,
                   signals)


def read_until(terminal, process, end):
    """Answers prompts until the time `end` or until the process ends. Returns whether it has
    ended."""
    ended = os.pidfd_open(process)
    try:
        while (left := end - time.monotonic()) > 0:
            ready = select.select([terminal.master, ended], [], [], left)[0]
            if terminal.master in ready:
                terminal.read()
            elif ready:
                return True
        return False
    finally:
        os.close(ended)


def check(tally, name, number, outcome, whole):
    result, _, echoes, left, signals = outcome
    if result.status is None:
        tally.add("hang", name)
    elif not echoes:
        tally.add("no echo", name)
    elif left:
        tally.add("process left", name, f"  {left}")
    elif result.status == -number:
        tally.add("ended by it" if signals == 1 else "ended by the second", name)
    elif result == whole:
        tally.add("too late", name)
    else:
        tally.add("wrong status", name, tool.describe(result, whole))


def main():
    campaign = tool.Campaign(__doc__)
    campaign.parser.add_argument("--moments", type=int, help="how many moments for each signal")
    campaign.parser.add_argument("--seed", type=int, default=1, help="selects the moments (1)")
    options = campaign.start()
    adopt_orphans()
    chance = random.Random(options.seed)
    moments = options.moments or (12 if options.quick else 1000)
    lines = {line.name: line for line in command_lines.command_lines(campaign)}
    prompt = lines["typed-secrets"]
    printing = lines["rows-table"]
    printing = tool.CommandLine("printing", [*printing.arguments[:-1], "20000"], answers=[])
    child = tool.CommandLine("child", lines["document"].arguments[:-2] + ["-w", "0.05"], answers=[])
    child.arguments[-3] = "slow"
    long_child = tool.CommandLine("long child", [*child.arguments[:-1], str(LONG_CHILD_SECONDS)],
                                  answers=[])
    tally = tool.Tally("signals", good=("ended by it", "ended by the second", "too late"))
    wholes = {line.name: run([campaign.tool, *line.arguments], line)
              for line in (prompt, child, printing)}
    wholes[long_child.name] = wholes[child.name]._replace(result=None)

    def interrupt(case):
        name, line, share = case
        number = getattr(signal, "SIG" + name)
        whole = wholes[line.name]
        moment = share * whole.duration * 1.2
        outcome = run([campaign.tool, *line.arguments], line, number, moment)
        check(tally, f"{line.name}, SIG{name} after {moment:.4f} s", number, outcome, whole.result)

    cases = []
    for name in SIGNALS:
        own_child = long_child if name in FORWARDED else child
        for count in range(moments):
            cases.append((name, (prompt, own_child, printing)[count % 3], chance.random()))
    tool.run_all(options.jobs, interrupt, cases)
    return tally.finish(at_least=len(cases))


if __name__ == "__main__":
    sys.exit(main())
