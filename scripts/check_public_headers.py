#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks that no public header is forgotten.

    check_public_headers.py [ROOT]

Every header below include/kestrel must be listed in include/CMakeLists.txt, or it would not be
installed; and kestrel.h must bring every one, directly or not, but for those named below. Prints
what is missing, one a line. Exit status 1 when something was.
"""

import os
import re
import sys

from problem_report import report

# kestrel.h alone brings what a program needs; these are asked for by name.
BY_NAME_ONLY = {
    "kestrel/Version.h",
    "kestrel/autocli/PluginEntryPoint.h",
}

INCLUDE = re.compile(r'^#include "(kestrel/[^"]+)"', re.MULTILINE)


def read(root, path):
    with open(os.path.join(root, path), encoding="utf-8") as file:
        return file.read()


def headers_on_disk(root):
    include = os.path.join(root, "include")
    return {os.path.relpath(os.path.join(directory, name), include)
            for directory, _, names in os.walk(include) for name in names if name.endswith(".h")}


def headers_brought_by(root, header, known):
    """The header and all that it includes, directly or not."""
    brought, waiting = set(), [header]
    while waiting:
        current = waiting.pop()
        if current in known and current not in brought:
            brought.add(current)
            waiting += INCLUDE.findall(read(root, "include/" + current))
    return brought


def problems(root):
    on_disk = headers_on_disk(root)
    listed = set(read(root, "include/CMakeLists.txt").split())
    brought = headers_brought_by(root, "kestrel/kestrel.h", on_disk)
    for header in sorted(on_disk):
        if not listed & {header, header + ")"}:
            yield f"include/CMakeLists.txt does not list {header}"
        if header not in brought | BY_NAME_ONLY:
            yield f"kestrel.h does not bring {header}"


if __name__ == "__main__":
    sys.exit(report(problems, sys.argv))
