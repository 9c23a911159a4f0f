# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""How rows are passed to the local tool."""

import unittest
from typing import Iterable, List, Tuple
from unittest import mock

import modules  # noqa: F401  pylint: disable=unused-import

from samples import describe
from vexil_fleet import printer, stored
from vexil_fleet.printer import Format, Part, Piece, Printer
from vexil_fleet.rows import read_rows
from vexil_fleet.stored import StoredLines


def part(name: str, first: int, count: int) -> Part:
    """Returns rows, each in a chunk of its own."""
    body = StoredLines()
    with mock.patch.object(stored, "_MAX_OPEN", 1):
        for row in range(count):
            body.add(b'{"Name":"a","Size":%d}\n' % (first + row))
    return name, read_rows(describe().shape, body)


class Lists(unittest.TestCase):
    """Long lists, in parts where the format allows it."""

    def printed(self, wanted: Format, *parts: Part) -> List[Tuple[List[str], List[bytes]]]:
        """Returns the hosts and the lines of each printed list."""
        lists = []

        def print_list(_: Printer, __: object, some: Iterable[Piece], ___: object) -> bool:
            pieces = list(some)
            lists.append((list(dict.fromkeys(name for name, _ in pieces)),
                          [line for _, chunk in pieces for line in chunk.lines()]))
            return True
        with mock.patch.object(printer, "_MAX_ROWS", 3), \
                mock.patch.object(Printer, "_print_list", print_list):
            self.assertTrue(Printer("", "", wanted).print(parts, describe()))
        return lists

    def test_lines_are_printed_in_parts(self) -> None:
        parts = [part("a1", 0, 2), part("a2", 2, 1), part("a3", 3, 7), part("a4", 10, 0)]
        lists = self.printed(Format("ndjson"), *parts)
        self.assertEqual([["a1", "a2"], ["a3"], ["a3"], ["a3"]],
                         [hosts for hosts, _ in lists])
        self.assertEqual([line for _, rows in parts for line in rows.lines()],
                         [line for _, lines in lists for line in lines])
        self.assertLessEqual(max(len(lines) for _, lines in lists), 3)

    def test_other_lists_are_printed_as_a_whole(self) -> None:
        parts = [part("a1", 0, 4), part("a2", 4, 4)]
        for wanted in (Format(), Format("csv"), Format("ndjson", sort="Size"),
                       Format("ndjson", limit="5")):
            self.assertEqual([["a1", "a2"]], [hosts for hosts, _ in self.printed(wanted, *parts)])

    def test_nothing_follows_a_list_that_failed(self) -> None:
        calls: List[object] = []
        with mock.patch.object(printer, "_MAX_ROWS", 1), mock.patch.object(
                Printer, "_print_list", lambda *arguments: bool(calls.append(arguments))):
            self.assertFalse(Printer("", "", Format("ndjson")).print([part("a", 0, 5)], describe()))
        self.assertEqual(1, len(calls))


if __name__ == "__main__":
    unittest.main()
