# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks whether all hosts describe the command in the same way."""

from collections import Counter
from typing import Dict, List, Sequence

from .answers import Answer
from .description import Description
from .differences import differences, show_difference
from .engine import fold


def report_contract(answers: Sequence[Answer]) -> List[str]:
    """Returns a heading and a line for each difference from the description that most hosts have;
    an empty list if all agree."""
    hosts: Dict[Description, List[str]] = {}
    for answer in answers:
        if answer.description is not None:
            hosts.setdefault(answer.description, []).append(answer.host)
    if len(hosts) < 2:
        return []
    reference, *others = sorted(hosts, key=lambda description: -len(hosts[description]))
    lines = [f"The command is not the same on all hosts. Compared with {fold(hosts[reference])}:"]
    for other in others:
        for difference in differences(reference.values, other.values):
            lines.append(f"{fold(hosts[other])}: {show_difference(difference)}")
    return lines


def common_description(answers: Sequence[Answer]) -> Description:
    """Returns the description that most of the answers have."""
    counts = Counter(answer.description for answer in answers if answer.description is not None)
    return counts.most_common(1)[0][0]
