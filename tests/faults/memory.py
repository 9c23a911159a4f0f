#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Makes memory run out at each allocation of a run of the tool.

Each command line runs once to count its allocations. Then it runs twice for each allocation,
which fails alone in one run and together with all later ones in the other. The tool must print the
same as before, or report the fault: by a message and a status that is not 0, or by a message in
addition to the whole result.

The full form tries every allocation of all command lines, the quick form every seventh allocation
of five command lines.
"""

import os
import sys

import command_lines
import tool


def faults(line, preload, **settings):
    """Returns the environment of a run. FailingAllocation.cpp explains FAIL_AFTER_NAME_SERVICE."""
    if line.asks_names:
        settings["FAIL_AFTER_NAME_SERVICE"] = "1"
    return tool.environment(LD_PRELOAD=preload, **settings)


def count_allocations(campaign, line, preload):
    file = campaign.path("count")
    result = tool.run([campaign.tool, *line.arguments],
                      faults(line, preload, FAIL_COUNT_FILE=file), line)
    with open(file, encoding="ascii") as counted:
        count = int(counted.read())
    os.remove(file)
    return count, result


def main():
    campaign = tool.Campaign(__doc__)
    campaign.parser.add_argument("--only", help="the name of one command line")
    campaign.parser.add_argument("--step", type=int, help="every how many allocations")
    campaign.parser.add_argument("--at", type=int, help="one number of an allocation")
    options = campaign.start()
    preload = os.path.join(campaign.modules, "FailingAllocation.so")
    step = options.step or (7 if options.quick else 1)
    lines = command_lines.command_lines(campaign)
    if options.only:
        lines = [line for line in lines if line.name == options.only]
    elif options.quick:
        lines = lines[:5]
    tally = tool.Tally("memory")
    for line in lines:
        count, whole = count_allocations(campaign, line, preload)
        undisturbed = tool.run([campaign.tool, *line.arguments], tool.environment(), line)
        if whole != undisturbed:
            tally.add("unstable", line.name, tool.describe(undisturbed, whole))
            continue

        def fail(fault, line=line, whole=whole):
            number, mode = fault
            settings = {"FAIL_AT": str(number), **({"FAIL_FROM_THEN_ON": "1"} if mode else {})}
            result = tool.run([campaign.tool, *line.arguments],
                              faults(line, preload, **settings), line)
            tally.add(tool.classify(result, whole),
                      f"{line.name}, allocation {number}{' and all later' if mode else ''}",
                      tool.describe(result, whole))

        numbers = [options.at] if options.at else range(1, count + 1, step)
        before = tally.bad
        tool.run_all(options.jobs, fail, [(number, mode) for number in numbers
                                          for mode in (False, True)])
        print(f"{line.name}: {count} allocations, {tally.bad - before} bad", flush=True)
    return tally.finish()


if __name__ == "__main__":
    sys.exit(main())
