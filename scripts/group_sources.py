#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Groups C++ sources that can be compiled as one source.

    group_sources.py SOURCE...

Prints a line for each source: the number of its group, a space, and the source. No source mentions
a name that another source of its group defines at the beginning of a line (as functions, types and
constants in unnamed namespaces are). Neither does it mention a name that another one takes from a
namespace by a using declaration, unless it takes the same name. The order of the sources determines
the groups.
"""

import os
import re
import sys

MAX_SOURCES = 8
MAX_BYTES = 120_000

DEFINITIONS = [
    re.compile(r"(?:template <.*> )?(?:class|struct|union|enum(?: class)?) (\w+)"),
    re.compile(r"using (\w+) ="),
    re.compile(r"#define (\w+)"),
    re.compile(r"MATCHER\w*\((\w+)"),
    # A constant or variable, then a function.
    re.compile(r"(?!(?:return|using|typedef|namespace) )[\w:][^()=;]*?[ *&](\w+)(\[.*\])? ?[={;]"),
    re.compile(r"(?!return\b|[A-Z_]+\()[\w:][^()=;]*?[ *&](\w+)\("),
]
TAKEN = re.compile(r"using (?:\w+::)+(\w+);")
MENTIONED = re.compile(r"(?<!::)\b[A-Za-z_]\w*")

# Overloaded for a type of the source.
OVERLOADED = {"PrintTo", "operator"}


class Names:
    """The names that a source defines, takes from other namespaces, and mentions unqualified."""

    def __init__(self, text):
        self.defined, self.taken = set(), set()
        self.mentioned = set(MENTIONED.findall(re.sub(r"//.*|\"[^\"\n]*\"", "", text)))
        for line in text.splitlines():
            for pattern in DEFINITIONS:
                match = pattern.match(line)
                if match:
                    self.defined.add(match.group(1))
            match = TAKEN.match(line)
            if match:
                self.taken.add(match.group(1))
        self.defined -= OVERLOADED

    def disturb(self, other):
        return self.defined & other.mentioned or (self.taken - other.taken) & other.mentioned


class Group:
    def __init__(self):
        self.sources = []
        self.size = 0
        self.names = []

    def has_room_for(self, size, names):
        return (len(self.sources) < MAX_SOURCES and self.size + size <= MAX_BYTES and
                not any(own.disturb(names) or names.disturb(own) for own in self.names))

    def add(self, source, size, names):
        self.sources.append(source)
        self.size += size
        self.names.append(names)


def group(contents):
    """Groups the keys of `contents`, which are sources; each value is what the source contains."""
    groups = []
    for source, text in contents.items():
        size, names = len(text), Names(text)
        place = next((g for g in groups if g.has_room_for(size, names)), None)
        if place is None:
            place = Group()
            groups.append(place)
        place.add(source, size, names)
    return [place.sources for place in groups]


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def main(sources):
    if not sources:
        sys.exit(__doc__)
    for number, members in enumerate(group({source: read(source) for source in sources})):
        for source in members:
            print(number, os.path.normpath(source))


if __name__ == "__main__":
    main(sys.argv[1:])
