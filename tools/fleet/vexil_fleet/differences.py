# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The differences between two values, field by field. Kinds and values are compared, not text."""

import json
from typing import Any, Dict, Iterator, List, Sequence, Tuple

# The members that identify an element in the lists of a description.
_KEYS = ("Name", "Path", "Value", "Line")

Difference = Tuple[str, Any, Any]
ABSENT = object()


def same(left: Any, right: Any) -> bool:
    """Whether the values are equal and of the same kind: 1 and true are different."""
    if type(left) is not type(right):
        return False
    if isinstance(left, dict):
        return left.keys() == right.keys() and all(same(left[key], right[key]) for key in left)
    if isinstance(left, list):
        return len(left) == len(right) and all(map(same, left, right))
    return bool(left == right)


def differences(left: Any, right: Any, path: str = "") -> Iterator[Difference]:
    """Yields the fields that differ, each with its path and both values, one of which may be
    ABSENT."""
    if _are_structures(left, right):
        left, right = _by_key(left), _by_key(right)
    if not (isinstance(left, dict) and isinstance(right, dict)):
        if not same(left, right):
            yield path, left, right
        return
    for key in sorted(left.keys() | right.keys()):
        yield from differences(left.get(key, ABSENT), right.get(key, ABSENT),
                               f"{path}.{key}" if path else key)


def _are_structures(left: Any, right: Any) -> bool:
    """Whether both are lists, and at least one contains a structure."""
    return (isinstance(left, list) and isinstance(right, list)
            and any(isinstance(element, dict) for element in [*left, *right]))


def _by_key(elements: List[Any]) -> Dict[str, Any]:
    """Returns the elements by the first of `_KEYS` that has a different value in each of them;
    by their positions if there is none."""
    for key in _KEYS:
        names = [element.get(key) for element in elements if isinstance(element, dict)]
        if len(set(map(str, names))) == len(elements) and None not in names:
            return dict(zip(map(str, names), elements))
    return {str(index): element for index, element in enumerate(elements)}


def show(value: Any) -> str:
    """Returns a value on one line. A string is in quotes if it is empty, has a space at its start
    or end, or cannot be printed."""
    if value is ABSENT:
        return "absent"
    if isinstance(value, str) and value.isprintable() and value.strip() == value != "":
        return value
    return json.dumps(value, ensure_ascii=False)


def show_difference(difference: Difference) -> str:
    path, left, right = difference
    if left is ABSENT:
        return f"{path} only here" + ("" if isinstance(right, dict) else f": {show(right)}")
    if right is ABSENT:
        return f"{path} missing"
    return f"{path} {show(left)} -> {show(right)}"


class RowDifferences:
    """How the rows of one result differ from those of another one.

    The caller leaves out rows that are equal on both sides. Each side of a single result has at
    most one row, and these are paired. The rows of lists are paired by the first field in which no
    two rows of one side have the same value; without such a field, none are paired.
    """

    def __init__(self, left: Sequence[Dict[str, Any]], right: Sequence[Dict[str, Any]],
                 columns: Sequence[str], is_single: bool) -> None:
        self.key = None if is_single else _find_key(left, right, columns)
        self.changed: List[Tuple[Any, List[Difference]]] = []
        self.missing: List[Dict[str, Any]] = []
        self.added: List[Dict[str, Any]] = []
        if is_single:
            self.changed = [(None, list(differences(*rows))) for rows in zip(left, right)]
        elif self.key is None:
            self.missing, self.added = list(left), list(right)
        else:
            self._pair(self.key, left, right)

    def _pair(self, key: str, left: Sequence[Dict[str, Any]],
              right: Sequence[Dict[str, Any]]) -> None:
        others = {_identity(row[key]): row for row in right}
        for row in left:
            other = others.pop(_identity(row[key]), None)
            if other is None:
                self.missing.append(row)
            else:
                self.changed.append((row[key], list(differences(row, other))))
        self.added = list(others.values())

    def show(self) -> Iterator[str]:
        """Yields a line for each changed field, and for each row without a counterpart."""
        for value, changes in self.changed:
            row = "" if self.key is None else f"{self.key} {show(value)}: "
            for change in changes:
                yield row + show_difference(change)
        for missing in self.missing:
            yield f"missing: {show_row(missing)}"
        for added in self.added:
            yield f"only here: {show_row(added)}"


def show_row(row: Dict[str, Any]) -> str:
    return ", ".join(f"{name} {show(value)}" for name, value in row.items())


def _identity(value: Any) -> Tuple[type, Any]:
    return type(value), value


def _find_key(left: Sequence[Dict[str, Any]], right: Sequence[Dict[str, Any]],
              columns: Sequence[str]) -> Any:
    rows = [*left, *right]
    if not left or not right:
        return None
    for name in [*columns, *left[0]]:
        if all(isinstance(row.get(name), (str, int)) for row in rows) and \
                _is_unique(left, name) and _is_unique(right, name):
            return name
    return None


def _is_unique(rows: Sequence[Dict[str, Any]], name: str) -> bool:
    return len({_identity(row[name]) for row in rows}) == len(rows)
