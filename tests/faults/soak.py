#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs the tool for a long time, and many times.

lines    One process reads command lines from its standard input: values, lists, messages, several
         formatters, commands that run a child. At the end, its memory and its open file
         descriptors are compared with those after a tenth of the lines: the process must have
         grown by less than 1 MB, and must have as many file descriptors as then and no zombie.
starts   The tool is started side by side, one process per job, and must print the same each time.

The full form has 1,000,000 lines and 100,000 starts, the quick form 20,000 and 400.
"""

import os
import subprocess
import sys
import time

import command_lines
import tool

MAX_GROWTH_KB = 1024

# Each line is one of these, except every thousandth one, which is CHILD_LINE and runs a child.
LINES = (
    'try say --text "two words"',
    "try rows -c 5",
    "--formatter json try rows -c 3",
    "--formatter xml try rows -c 3",
    "--formatter yaml try rows -c 3",
    "--formatter value-xml try rows -c 3",
    "--formatter csv --format-param sort=-Number try rows -c 3",
    "# a comment",
    "try say --text",
    "try say --unknown x",
    "try rows --help",
    "--formatter none try say --text x",
)
CHILD_LINE = "doc list"
CHILD_EVERY = 1000


def line_at(number):
    return CHILD_LINE if number % CHILD_EVERY == CHILD_EVERY - 1 else LINES[number % len(LINES)]


class Measurement:
    """The state of a process: memory in kB, and the numbers of its open file descriptors and of its
    child processes. A child process that exists between two lines is a zombie."""

    def __init__(self, process):
        with open(f"/proc/{process}/status", encoding="ascii") as status:
            fields = dict(line.split(":", 1) for line in status)
        self.memory = int(fields["VmRSS"].split()[0])
        self.descriptors = len(os.listdir(f"/proc/{process}/fd"))
        with open(f"/proc/{process}/task/{process}/children", encoding="ascii") as children:
            self.children = len(children.read().split())

    def __str__(self):
        return f"{self.memory} kB, {self.descriptors} descriptors, {self.children} children"


def feed(process, first, last):
    """Sends lines, and waits until the tool has handled them all."""
    marker = f"handled {last}"
    for begin in range(first, last, 1000):
        text = "\n".join(line_at(number) for number in range(begin, min(begin + 1000, last)))
        process.stdin.write((text + "\n").encode())
    process.stdin.write(f'try say --text "{marker}"\n'.encode())
    process.stdin.flush()
    with open("out", "rb") as out:
        while True:
            out.seek(max(0, os.path.getsize("out") - 100))
            if marker.encode() in out.read():
                os.truncate("out", 0)
                return
            if process.poll() is not None:
                sys.exit(f"The tool has ended with {process.returncode}")
            time.sleep(0.01)


def soak_lines(campaign, count):
    """Returns whether the tool needs little more memory at the end than after a tenth of the lines,
    and as many file descriptors, and leaves no zombie."""
    plugins = ["--plugin", os.path.join(campaign.modules, "TryPlugin.so"),
               "--plugin", campaign.path("doc.xml")]
    started = time.monotonic()
    with open("out", "ab") as out:  # appends, so that it can be emptied
        process = subprocess.Popen([campaign.tool, *plugins, "--input=STDIN"], stdout=out,
                                   stdin=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                   env=tool.environment())
    measurements = []
    tenth = count // 10
    for first in range(0, count, tenth):
        feed(process, first, first + tenth)
        measurements.append(Measurement(process.pid))
    process.stdin.close()
    status = process.wait(tool.MAX_SECONDS)
    begin, end = measurements[0], measurements[-1]
    print(f"lines: {count} in {time.monotonic() - started:.0f} s, status {status}: from {begin} "
          f"to {end}", flush=True)
    return (status == 0 and end.memory - begin.memory < MAX_GROWTH_KB
            and end.descriptors == begin.descriptors and end.children == 0)


def soak_starts(campaign, lines, count, jobs):
    """Returns whether every start prints the same."""
    tally = tool.Tally("starts")
    wholes = {line.name: tool.run([campaign.tool, *line.arguments], tool.environment(), line)
              for line in lines}

    def start(number):
        line = lines[number % len(lines)]
        result = tool.run([campaign.tool, *line.arguments], tool.environment(), line)
        outcome = "same" if result == wholes[line.name] else "changed"
        tally.add(outcome, line.name, tool.describe(result, wholes[line.name]))

    tool.run_all(jobs, start, range(count))
    return tally.finish(at_least=count) == 0


def main():
    campaign = tool.Campaign(__doc__)
    campaign.parser.add_argument("--lines", type=int, help="how many lines")
    campaign.parser.add_argument("--starts", type=int, help="how many starts")
    options = campaign.start()
    lines = command_lines.command_lines(campaign)
    lines_are_good = soak_lines(campaign, options.lines or (20000 if options.quick else 1000000))
    starts_are_good = soak_starts(campaign, lines[:7],
                                  options.starts or (400 if options.quick else 100000),
                                  options.jobs)
    return 0 if lines_are_good and starts_are_good else 1


if __name__ == "__main__":
    sys.exit(main())
