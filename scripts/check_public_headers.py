#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks that every public header is installed and included by kestrel.h.

    check_public_headers.py [ROOT]

Every header in include/kestrel must be listed in include/CMakeLists.txt, or it would not be
installed. kestrel.h must include every header, directly or indirectly, except for those listed
below. Prints each missing header on a line. The exit status is 1 if there was one.
"""

import os
import re
import sys

from problem_report import report

# Included by name by the few sources that need them.
BY_NAME_ONLY = {
    "kestrel/Version.h",
}
# Included by name by tests of plug-ins.
TESTING = "kestrel/testing/"

INCLUDE = re.compile(r'^#include "(kestrel/[^"]+)"', re.MULTILINE)


def read(root, path):
    with open(os.path.join(root, path), encoding="utf-8") as file:
        return file.read()


def headers_on_disk(root):
    include = os.path.join(root, "include")
    return {os.path.relpath(os.path.join(directory, name), include)
            for directory, _, names in os.walk(include) for name in names if name.endswith(".h")}


def headers_included_by(root, header, known):
    """Returns the header and all headers that it includes, directly or indirectly."""
    included, waiting = set(), [header]
    while waiting:
        current = waiting.pop()
        if current in known and current not in included:
            included.add(current)
            waiting += INCLUDE.findall(read(root, "include/" + current))
    return included


def problems(root):
    on_disk = headers_on_disk(root)
    listed = set(read(root, "include/CMakeLists.txt").split())
    included = headers_included_by(root, "kestrel/kestrel.h", on_disk)
    for header in sorted(on_disk):
        if not listed & {header, header + ")"}:
            yield f"include/CMakeLists.txt does not list {header}"
        if header not in included | BY_NAME_ONLY and not header.startswith(TESTING):
            yield f"kestrel.h does not include {header}"


if __name__ == "__main__":
    sys.exit(report(problems, sys.argv))
