# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Prints one list, or each distinct result once and then the differences."""

import sys
from typing import Dict, List, Sequence, Tuple

from .answers import Answer, Status
from .description import Shape
from .engine import fold
from .merge import Group, Reference, group_by_value
from .printer import Part, Printer


class Output:
    """Prints the results of a run."""

    def __init__(self, printer: Printer, merges: bool) -> None:
        self._printer = printer
        self._format = printer.format
        self._merges = merges

    def print(self, answers: Sequence[Answer]) -> bool:
        """Prints the results. Returns whether that succeeded."""
        answered = [answer for answer in answers if answer.status == Status.OK]
        if not self._format.is_joinable:
            answered = _with_common_shape(answered)
        if not answered:
            return True
        if self._merges:
            return self._print_merged(group_by_value(answered))
        return self._print_groups([_alone(answer) for answer in answered])

    def _print_merged(self, groups: Sequence[Group]) -> bool:
        if not self._format.is_for_people:
            return self._print_groups(groups)
        reference = Reference(groups[0])
        whole, near = [groups[0]], []
        for group in groups[1:]:
            comparison = reference.compare(group)
            if comparison is None:
                whole.append(group)
            else:
                near.append(comparison)
        is_printed = self._print_groups(whole)
        lines = [f"{group.name}: no rows" for group in whole if not group.rows.count]
        lines += [line for comparison in near for line in comparison.show()]
        _print_lines(lines)
        return is_printed

    def _print_groups(self, groups: Sequence[Group]) -> bool:
        """Prints a list for each shape, because all rows of a list have the same shape."""
        lists: Dict[Shape, List[Group]] = {}
        for group in groups:
            lists.setdefault(group.rows.shape, []).append(group)
        is_printed = True
        for of_one_shape in lists.values():
            parts: List[Part] = [(group.name, group.rows) for group in of_one_shape]
            is_printed &= self._printer.print(parts, of_one_shape[0].description)
        return is_printed


def _alone(answer: Answer) -> Group:
    assert answer.rows is not None and answer.description is not None
    return Group(answer.rows, answer.description, [answer.host])


def _with_common_shape(answers: List[Answer]) -> List[Answer]:
    """Returns the answers with the most common shape. A document has one shape, so the other hosts
    are marked as failed."""
    counts: Dict[Shape, int] = {}
    for answer in answers:
        assert answer.rows is not None
        counts[answer.rows.shape] = counts.get(answer.rows.shape, 0) + 1
    common = max(counts, key=lambda shape: counts[shape], default=None)
    kept = []
    for answer in answers:
        if answer.rows is not None and answer.rows.shape == common:
            kept.append(answer)
        else:
            answer.status = Status.INVALID
            answer.message = "its result has other fields than that of most hosts"
    return kept


def _print_lines(lines: Sequence[str]) -> None:
    if lines:
        print()
    for line in lines:
        print(line)


def report_failures(answers: Sequence[Answer]) -> None:
    """Prints a line on standard error for each reason, with its hosts."""
    reasons: Dict[Tuple[Status, str], List[str]] = {}
    for answer in answers:
        if answer.is_failure:
            reasons.setdefault((answer.status, answer.message), []).append(answer.host)
    for (status, message), hosts in reasons.items():
        print(f"{fold(hosts)}: {status.value}" + (f": {message}" if message else ""),
              file=sys.stderr)
