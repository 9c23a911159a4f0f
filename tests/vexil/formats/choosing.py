# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0

"""Implements the parameters `fields`, `sort` and `limit` a second time.

Works on the values of values.py. Written without reference to the tool's source, so that it does
not repeat a mistake there.
"""

from values import List, Struct

SCALARS = (bool, int, bytes)


def field_of(structure, name):
    return dict(structure.fields)[name]


def resolve(shape, name):
    """Returns the names that lead to the field that a parameter names; an empty list if there is none."""
    if any(name == known for known, _ in shape.fields):
        return [name]
    parts = name.split(b".")
    for count in range(1, len(parts)):
        first, rest = b".".join(parts[:count]), b".".join(parts[count:])
        for known, value in shape.fields:
            if known == first and isinstance(value, Struct):
                inside = resolve(value, rest)
                if inside:
                    return [first] + inside
    return []


class Chosen:
    """The rows after sorting and limiting, their columns, and the mistakes in the parameters."""

    def __init__(self, root, shape, params):
        self.is_list = isinstance(root, List)
        self.rows = list(root.items) if self.is_list else [root]
        self.shape = shape if self.is_list else root
        self.has_scalars = (root.kind != "Struct") if self.is_list else isinstance(root, SCALARS)
        self.mistakes = []
        self.paths = self._paths(params.get(b"fields"))
        if b"sort" in params:
            self._sort(params[b"sort"])
        if self.is_list and b"limit" in params:
            self.rows = self.rows[:int(params[b"limit"])]

    def _resolve(self, name):
        """Returns a path, [] for a scalar, or None after a mistake."""
        if self.has_scalars:
            if name.strip(b" \t") == b"value":
                return []
        elif self.shape is None:
            return [name.strip(b" \t")]
        else:
            path = resolve(self.shape, name) or resolve(self.shape, name.strip(b" \t"))
            if path:
                return path
        self.mistakes.append(name)
        return None

    def _paths(self, fields):
        """Returns the chosen paths, or None for all fields."""
        if fields is None:
            return None
        names = fields.split(b",")
        if names[-1] == b"" and len(names) > 1:
            names.pop()  # after the last comma
        paths = [self._resolve(name) for name in names]
        return [path for path in paths if path is not None]

    def _sort(self, text):
        is_descending = text.startswith(b"-")
        path = self._resolve(text[1:] if is_descending else text)
        if path is None or (not self.has_scalars and self.shape is None):
            return

        def value_at(value):
            for name in path:
                value = field_of(value, name)
            return value

        if not self.has_scalars and not isinstance(value_at(self.shape), SCALARS):
            self.mistakes.append(text)
            return
        self.rows.sort(key=value_at, reverse=is_descending)  # keeps the order of equal rows

    def values(self):
        """Returns the rows with only the chosen fields."""
        if self.paths is None or self.has_scalars:
            return self.rows
        tree = merge(self.paths)
        return [narrow(row, tree) for row in self.rows]

    def columns(self):
        """Returns the paths of all columns. A scalar has the column []."""
        if self.has_scalars:
            return [[]]
        if self.shape is None:
            return list(unique(self.paths or []))
        paths = [[name] for name, _ in self.shape.fields] if self.paths is None else self.paths
        return list(unique(leaf for path in paths for leaf in leaves(self.shape, path)))

    def cells(self):
        for row in self.rows:
            cells = []
            for path in self.columns():
                value = row
                for name in path:
                    value = field_of(value, name)
                cells.append(value)
            yield cells


def unique(paths):
    seen = set()
    for path in paths:
        if tuple(path) not in seen:
            seen.add(tuple(path))
            yield path


def leaves(shape, path):
    value = shape
    for name in path:
        value = field_of(value, name)
    if not isinstance(value, Struct):
        yield path
        return
    for name, _ in value.fields:
        yield from leaves(shape, path + [name])


ALL = None  # in a tree: all fields that are not named before, in byte order


def merge(paths):
    """Returns a dictionary of dictionaries in the order of the paths; ALL is a key that means the rest."""
    tree = {}
    for path in paths:
        inner = tree
        for name in path:
            if ALL in inner:
                break
            inner = inner.setdefault(name, {})
        else:
            complete(inner)
    return tree


def complete(tree):
    for name, inner in tree.items():
        if name is not ALL:
            complete(inner)
    tree[ALL] = {}


def narrow(value, tree):
    if not isinstance(value, Struct):
        return value
    fields = dict(value.fields)
    chosen = [(name, narrow(fields[name], inner)) for name, inner in tree.items()
              if name is not ALL]
    if ALL in tree:
        chosen += [pair for pair in value.fields if pair[0] not in tree]
    return Struct(value.type_name, chosen)
