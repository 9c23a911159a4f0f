#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks the guide's table of the bytes that cannot be read back, by reading each byte.

    check_bytes.py --program WRITE_TREES GUIDE

The rows of the table are "| reader | bytes in strings | bytes in names |". The reader is one of
those in reading.py; the bytes are written like `00-08 0b 7f`, or "none". Each byte is tried between
two letters, so bytes above 7f are never valid UTF-8.
"""

import argparse
import re
import subprocess
import sys

import reading
import rendering
import values

ROW = re.compile(r"^\| `(\w+)` \| (none|`[0-9a-f -]+`) \| (none|`[0-9a-f -]+`) \|$", re.MULTILINE)


def bytes_of(cell):
    """Returns the numbers in a cell of the table."""
    found = set()
    for span in cell.strip("`").split() if cell != "none" else []:
        first, _, last = span.partition("-")
        found.update(range(int(first, 16), int(last or first, 16) + 1))
    return found


def cell_of(numbers):
    """Returns the cell for a set of numbers."""
    spans = []
    for number in sorted(numbers):
        if spans and spans[-1][1] == number - 1:
            spans[-1][1] = number
        else:
            spans.append([number, number])
    texts = [f"{first:02x}" if first == last else f"{first:02x}-{last:02x}"
             for first, last in spans]
    return f"`{' '.join(texts)}`" if texts else "none"


def reads_back(reader, case):
    try:
        return not list(reader.check([case]))
    except Exception:  # any exception of a foreign reader
        return False


def lost_bytes(reader, cases):
    """Returns the bytes in strings and the bytes in names that the reader refuses or changes."""
    lost = {"text": set(), "name": set()}
    for case in cases:
        place, number = case.name.split()
        if not reads_back(reader, case):
            lost[place].add(int(number))
    return lost["text"], lost["name"]


def problems(guide, cases):
    rows = {name: (bytes_of(texts), bytes_of(names)) for name, texts, names in ROW.findall(guide)}
    for name in ("json", "literal_eval", "ElementTree"):
        texts, names = lost_bytes(reading.READERS[name], cases)
        if rows.get(name) != (texts, names):
            yield f"the row should read: | `{name}` | {cell_of(texts)} | {cell_of(names)} |"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("guide")
    arguments = parser.parse_args()

    done = subprocess.run([arguments.program, "bytes"], stdout=subprocess.PIPE, check=True)
    cases = list(values.read_cases(done.stdout, list(rendering.RENDERERS)))
    with open(arguments.guide, encoding="utf-8") as file:
        found = list(problems(file.read(), cases))
    print("\n".join(found + [f"{len(cases)} values, {len(found)} problems"]))
    return 1 if found or len(cases) != 512 else 0


if __name__ == "__main__":
    sys.exit(main())
