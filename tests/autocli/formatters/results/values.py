# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0

"""Reads the values that kestrel_write_trees writes.

WriteTrees.cpp and EncodeValue.h describe the notation.

Booleans and integers have Python's types, a string is `bytes`, and a null value is None.
"""

import collections

KINDS = ["Int", "Bool", "String", "Struct", "List"]

# A value whose class does not match its kind. `kind` is the name of the kind, or None if it is
# unknown.
Lie = collections.namedtuple("Lie", "kind text")
Struct = collections.namedtuple("Struct", "type_name fields")  # `fields`: pairs in name order
List = collections.namedtuple("List", "kind items shape")  # `shape`: a Shape or None
Shape = collections.namedtuple("Shape", "type_name names")  # the declared structure of a list

Case = collections.namedtuple("Case", "name width params root printed")


def kind_name(number):
    return KINDS[number] if 0 <= number < len(KINDS) else None


def kind_of(value):
    """Returns the name of the value's kind, or None if the kind is unknown."""
    if isinstance(value, Lie):
        return value.kind
    kinds = {bool: "Bool", int: "Int", bytes: "String", Struct: "Struct", List: "List"}
    return kinds[type(value)]


class Reader:
    def __init__(self, data):
        self.data = data
        self.at = 0

    def at_end(self):
        return self.at == len(self.data)

    def _until(self, mark):
        end = self.data.index(mark, self.at)
        text = self.data[self.at:end]
        self.at = end + 1
        return text

    def number(self):
        return int(self._until(b","))

    def netstring(self):
        size = int(self._until(b":"))
        text = self.data[self.at:self.at + size]
        self.at += size
        if self.data[self.at:self.at + 1] != b",":
            raise ValueError("unterminated netstring")
        self.at += 1
        return text

    def value(self):
        kind = self.data[self.at:self.at + 1]
        self.at += 1
        return {b"n": lambda: None, b"b": self._boolean, b"i": self.number, b"s": self.netstring,
                b"x": lambda: Lie(kind_name(self.number()), self.netstring()),
                b"r": self._struct, b"l": self._scalars, b"t": self._structures}[kind]()

    def _boolean(self):
        self.at += 1
        return self.data[self.at - 1:self.at] == b"1"

    def _struct(self):
        type_name = self.netstring()
        fields = {}
        for _ in range(self.number()):
            name = self.netstring()
            fields[name] = self.value()
        return Struct(type_name, sorted(fields.items()))

    def _scalars(self):
        kind = kind_name(self.number())
        return List(kind, [self.value() for _ in range(self.number())], None)

    def _structures(self):
        has_shape = self.data[self.at:self.at + 1] == b"r"
        self.at += 1
        shape = None
        if has_shape:
            type_name = self.netstring()
            shape = Shape(type_name, sorted(self.netstring() for _ in range(self.number())))
        return List("Struct", [self.value() for _ in range(self.number())], shape)


def read_cases(data, formatters):
    """Yields the cases in the program's output.

    `formatters` contains the names of the formatters, in the order in which the program writes
    their results.
    """
    reader = Reader(data)
    while not reader.at_end():
        name = reader.netstring().decode()
        width = int(reader.netstring())
        params = {}
        for _ in range(int(reader.netstring())):
            key = reader.netstring()
            params[key] = reader.netstring()
        root = Reader(reader.netstring()).value()
        printed = {formatter: (reader.netstring(), reader.netstring()) for formatter in formatters}
        yield Case(name, width, params, root, printed)
