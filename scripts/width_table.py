#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Writes vexil/formats/WidthTable.cpp, the table of the columns that characters take on a terminal.

    width_table.py > vexil/formats/WidthTable.cpp && scripts/check_format.sh --fix

The data is that of Python's module unicodedata, so a newer Python makes a newer table.
"""

import unicodedata

# The values of WidthClass.
ZERO, NARROW, WIDE, HIDDEN = range(4)

# Characters that are not wide in the database, but take two columns on terminals.
ALSO_WIDE = [(0x3248, 0x324F), (0x4DC0, 0x4DFF)]
# Vowels and final consonants of Korean syllables, which are drawn into the consonant before them.
ALSO_ZERO = [(0x1160, 0x11FF), (0xD7B0, 0xD7FF)]
# Joiners: invisible, but several scripts and emoji need them.
JOINERS = (0x200C, 0x200D)

HEAD = """// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/WidthTable.h"

// Written by scripts/width_table.py from version %s of the Unicode character database.

namespace Kestrel::Formats {

const std::uint32_t kWidthRuns[] = {
"""

TAIL = """};

const std::size_t kWidthRunCount = sizeof kWidthRuns / sizeof kWidthRuns[0];

}  // namespace Kestrel::Formats
"""


def contains(ranges, code):
    return any(first <= code <= last for first, last in ranges)


def width_class(code):
    character = chr(code)
    category = unicodedata.category(character)
    if code in JOINERS or category in ("Mn", "Me"):
        return ZERO
    # Controls, marks of direction and layout, line ends, surrogates, unassigned characters.
    if category in ("Cc", "Cf", "Cn", "Cs", "Zl", "Zp"):
        return HIDDEN
    if contains(ALSO_ZERO, code):
        return ZERO
    is_wide = unicodedata.east_asian_width(character) in "WF" or contains(ALSO_WIDE, code)
    return WIDE if is_wide else NARROW


def runs():
    """Yields the first character of each run of characters of one class, and that class."""
    last = None
    for code in range(0x110000):
        kind = width_class(code)
        if kind != last:
            yield code, kind
        last = kind


def main():
    print(HEAD % unicodedata.unidata_version, end="")
    print(",\n".join(f"{code << 2 | kind:#x}" for code, kind in runs()))
    print(TAIL, end="")


if __name__ == "__main__":
    main()
