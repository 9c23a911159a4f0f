# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Groups hosts with equal results, and compares the other groups with the largest one."""

from collections import Counter
from dataclasses import dataclass, field
from typing import Any, Dict, Hashable, Iterator, List, Optional, Sequence, Tuple

from .answers import Answer
from .description import Description
from .differences import RowDifferences
from .engine import fold
from .rows import Row, Rows, canonical, decode


@dataclass
class Group:
    """Hosts with equal results."""
    rows: Rows
    description: Description
    hosts: List[str] = field(default_factory=list)

    @property
    def name(self) -> str:
        return fold(self.hosts)


def group_by_value(answers: Sequence[Answer]) -> List[Group]:
    """Returns groups of hosts whose results are equal, the largest group first."""
    groups: Dict[Hashable, Group] = {}
    for answer in answers:
        assert answer.rows is not None and answer.description is not None
        key = (answer.rows.shape, answer.rows.identity)
        group = groups.setdefault(key, Group(answer.rows, answer.description))
        group.hosts.append(answer.host)
    return sorted(groups.values(), key=lambda group: -len(group.hosts))


class Lines:
    """The lines of a result, and how often each is in it."""

    def __init__(self, rows: Rows) -> None:
        self.rows = rows
        self.counts = Counter(rows.lines())

    def without(self, other: "Lines") -> List[bytes]:
        """Returns the lines that the other result does not have, or has less often."""
        if self.is_distinct and other.is_distinct:
            return [line for line in self.counts if line not in other.counts]
        return list((self.counts - other.counts).elements())

    @property
    def is_distinct(self) -> bool:
        return len(self.counts) == self.rows.count


# If more rows than this differ, plain results are compared only if at most half of the rows differ.
_MAX_FEW = 20


class Reference:
    """The group that the others are compared with."""

    def __init__(self, group: Group) -> None:
        self.description = group.description
        self.lines = Lines(group.rows)

    def compare(self, group: Group) -> Optional["Comparison"]:
        """Returns the differences, or None if the whole result is easier to read."""
        left, right = self.lines, Lines(group.rows)
        added = right.without(left)
        is_plain = left.rows.is_plain and right.rows.is_plain
        if is_plain and len(added) > max(_MAX_FEW, left.rows.count // 2):
            return None
        missing_rows, added_rows = _different_rows(left.without(right), added)
        comparison = Comparison(self.description, group, missing_rows, added_rows)
        return comparison if comparison.is_near else None


class Comparison:
    """How the result of a group differs from that of the reference."""

    def __init__(self, reference: Description, group: Group, missing: List[Row],
                 added: List[Row]) -> None:
        self.group = group
        self._is_order_only = not missing and not added
        self._common = group.rows.count - len(added)
        self._differences = RowDifferences(missing, added, reference.columns,
                                           not group.description.shape.is_list)

    @property
    def is_near(self) -> bool:
        """Whether the differences are easier to read than the whole result: at least half of the
        values are equal, or rows have only one field."""
        different = self._differences
        fields = max(1, len(self.group.rows.shape.fields))
        equal = self._common * fields + sum(max(0, fields - len(changes))
                                            for _, changes in different.changed)
        everything = fields * (self._common + len(different.changed) + len(different.missing)
                               + len(different.added))
        return fields == 1 or equal * 2 >= everything

    def show(self) -> Iterator[str]:
        """Yields a line for each difference."""
        if self._is_order_only:
            yield f"{self.group.name}: the same rows in another order"
        for line in self._differences.show():
            yield f"{self.group.name}: {line}"


def _different_rows(left: List[bytes], right: List[bytes]) -> Tuple[List[Row], List[Row]]:
    """Returns the rows of each side that the other one does not have, compared by value."""
    left_rows, right_rows = decode(left), decode(right)
    left_values = Counter(map(canonical, left_rows))
    right_values = Counter(map(canonical, right_rows))
    return (_keep(left_rows, left_values - right_values),
            _keep(right_rows, right_values - left_values))


def _keep(rows: List[Row], wanted: "Counter[str]") -> List[Row]:
    kept: List[Any] = []
    for row in rows:
        value = canonical(row)
        if wanted[value] > 0:
            wanted[value] -= 1
            kept.append(row)
    return kept
