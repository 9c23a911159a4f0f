# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Groups of equal results, and the differences between them."""

import unittest
from typing import List, Optional

import modules  # noqa: F401  pylint: disable=unused-import

from samples import describe, values, volumes
from vexil_fleet.answers import Answer, Status
from vexil_fleet.contract import report_contract
from vexil_fleet.description import Description
from vexil_fleet.differences import differences, show_difference
from vexil_fleet.merge import Comparison, Group, Reference, group_by_value
from vexil_fleet.rows import read_rows
from vexil_fleet.stored import StoredLines


def answer(host: str, body: str, kind: str = "structure-list") -> Answer:
    description = describe(Result_Kind=kind)
    return Answer(host, Status.OK, description=description,
                  rows=read_rows(description.shape, StoredLines(body.encode())))


def rows(*pairs: "tuple[str, int]") -> str:
    return "".join(f'{{"Name":"{name}","Size":{size}}}\n' for name, size in pairs)


class FieldDifferences(unittest.TestCase):
    """Two values, field by field."""

    def shown(self, left: object, right: object) -> List[str]:
        return [show_difference(each) for each in differences(left, right)]

    def test_fields_are_compared_by_kind_and_value(self) -> None:
        self.assertEqual([], self.shown({"a": [1, {"b": "x"}]}, {"a": [1, {"b": "x"}]}))
        self.assertEqual(["a 1 -> true"], self.shown({"a": 1}, {"a": True}))
        self.assertEqual(['a 1 -> "1 "'], self.shown({"a": 1}, {"a": "1 "}))
        self.assertEqual(["a.b 1 -> 2", "a.c only here: x", "a.d missing"],
                         self.shown({"a": {"b": 1, "d": 0}}, {"a": {"b": 2, "c": "x"}}))
        self.assertEqual(['a ["x"] -> []'], self.shown({"a": ["x"]}, {"a": []}))
        self.assertEqual(['a x -> "\\u001b"'], self.shown({"a": "x"}, {"a": "\x1b"}))

    def test_elements_are_known_by_their_names(self) -> None:
        left = {"Fields": [{"Path": "A", "Kind": "int"}, {"Path": "B", "Kind": "int"}]}
        right = {"Fields": [{"Path": "B", "Kind": "string"}, {"Path": "C", "Kind": "int"}]}
        self.assertEqual(["Fields.A missing", "Fields.B.Kind int -> string",
                          "Fields.C only here"], self.shown(left, right))

    def test_contracts_are_compared_with_that_of_most_hosts(self) -> None:
        common, other = describe(), describe(Formatter="simple", Columns=["Name"])

        def described(host: str, description: Description) -> Answer:
            return Answer(host, Status.OK, description=description)
        self.assertEqual([], report_contract([described("a1", common), described("a2", common)]))
        self.assertEqual(
            ["The command is not the same on all hosts. Compared with a[1,3]:",
             'a2: Columns ["Name", "Size"] -> ["Name"]', "a2: Formatter table -> simple"],
            report_contract([described("a1", common), described("a2", other),
                             described("a3", common), Answer("a4", Status.UNREACHABLE)]))

    def test_each_part_of_a_contract_is_compared(self) -> None:
        for name, value in values().items():
            other = [] if value else [{"Name": "x", "Value": "y"}]
            changed = "other" if isinstance(value, str) else other
            if name == "Parameters":
                changed = [{"Name": "x", "Short Name": "x", "Secret": False}]
            lines = report_contract([
                Answer("a1", Status.OK, description=describe()),
                Answer("a2", Status.OK, description=describe(**{name: changed}))])
            self.assertGreater(len(lines), 1, name)


class Groups(unittest.TestCase):
    """Hosts with equal results."""

    def test_equal_values_are_a_group_whatever_their_text(self) -> None:
        groups = group_by_value([
            answer("a1", rows(("x", 2))), answer("a2", rows(("x", 1))),
            answer("a3", '{"Size":1,"Name":"\\u0078"}\n'), answer("a4", rows(("x", 1), ("x", 1)))])
        self.assertEqual(["a[2-3]", "a1", "a4"], [group.name for group in groups])

    def test_an_integer_is_not_a_boolean(self) -> None:
        fields = [{"Path": "On", "Kind": "bool", "Type": "none"}]
        one = read_rows(volumes(fields=fields),
                        StoredLines(b'{"Name":"a","Size":1,"On":true}\n'))
        other = read_rows(volumes(fields=[{**fields[0], "Kind": "int"}]),
                          StoredLines(b'{"Name":"a","Size":1,"On":1}\n'))
        self.assertNotEqual(one.identity, other.identity)


class Comparisons(unittest.TestCase):
    """What is printed about a group that differs."""

    def group(self, host: str, body: str, kind: str = "structure-list") -> Group:
        result = answer(host, body, kind)
        assert result.rows and result.description
        return Group(result.rows, result.description, [host])

    def compare(self, left: str, right: str,
                kind: str = "structure-list") -> Optional[Comparison]:
        return Reference(self.group("a1", left, kind)).compare(self.group("a2", right, kind))

    def shown(self, left: str, right: str, kind: str = "structure-list") -> List[str]:
        comparison = self.compare(left, right, kind)
        assert comparison is not None
        return list(comparison.show())

    def test_rows_are_paired_by_the_first_column_with_distinct_values(self) -> None:
        self.assertEqual(["a2: Name y: Size 2 -> 5", "a2: missing: Name x, Size 1",
                          "a2: only here: Name w, Size 4"],
                         self.shown(rows(("x", 1), ("y", 2), ("z", 3), ("v", 7)),
                                    rows(("w", 4), ("y", 5), ("z", 3), ("v", 7))))

    def test_rows_are_paired_by_another_column_if_names_are_repeated(self) -> None:
        self.assertEqual(["a2: Size 1: Name x -> y", "a2: Size 2: Name x -> y"],
                         self.shown(rows(("x", 1), ("x", 2)), rows(("y", 1), ("y", 2))))

    def test_equal_rows_are_counted(self) -> None:
        self.assertEqual(["a2: missing: Name x, Size 1"],
                         self.shown(rows(("x", 1), ("x", 1)), rows(("x", 1))))

    def test_the_order_is_a_difference(self) -> None:
        self.assertEqual(["a2: the same rows in another order"],
                         self.shown(rows(("x", 1), ("y", 2)), rows(("y", 2), ("x", 1))))

    def test_a_structure_is_compared_with_a_structure(self) -> None:
        self.assertEqual(["a2: Name x -> y"],
                         self.shown(rows(("x", 1)), rows(("y", 1)), "structure"))

    def test_equal_rows_are_equal_whatever_their_text(self) -> None:
        self.assertEqual(["a2: Name y: Size 1 -> 2"],
                         self.shown(rows(("x", 1), ("y", 1)),
                                    '{"Size":1, "Name":"\\u0078"}\n' + rows(("y", 2))))

    def test_half_of_the_values_must_be_equal(self) -> None:
        self.assertIsNotNone(self.compare(rows(("x", 1)), rows(("x", 2)), "structure"))
        self.assertIsNone(self.compare(rows(("x", 1)), rows(("y", 2)), "structure"))
        self.assertIsNone(self.compare(rows(("x", 1)), rows(("y", 2), ("z", 3))))
        self.assertIsNotNone(self.compare(rows(("x", 1), ("y", 2)), rows(("x", 1))))
        self.assertIsNone(self.compare("", rows(("x", 1))))

    def test_large_results_are_not_compared_if_more_than_half_of_the_rows_differ(self) -> None:
        def body(count: int) -> str:
            return rows(*((f"v{number}", int(number < count)) for number in range(100)))
        self.assertIsNotNone(self.compare(body(0), body(50)))
        self.assertIsNone(self.compare(body(0), body(51)))


if __name__ == "__main__":
    unittest.main()
