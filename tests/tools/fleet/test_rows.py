# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""How the output of a host becomes rows, and what is refused."""

import unittest

import modules  # noqa: F401  pylint: disable=unused-import

from samples import describe, volumes
from vexil_fleet.description import BadDescription, Description, Shape
from vexil_fleet.rows import BadResult, Rows, decode, read_rows
from vexil_fleet.stored import StoredLines

_NESTED = [{"Path": "Tags", "Kind": "string-list", "Type": "none"},
           {"Path": "To", "Kind": "structure", "Type": "To"},
           {"Path": "To.Id", "Kind": "int", "Type": "none"},
           {"Path": "To.Of", "Kind": "structure-list", "Type": "Of"},
           {"Path": "To.Of.On", "Kind": "bool", "Type": "none"}]
_WHOLE = b'{"Name":"a","Size":1,"Tags":["x"],"To":{"Id":1,"Of":[{"On":true}]}}\n'


def read(shape: Shape, body: bytes) -> Rows:
    return read_rows(shape, StoredLines(body))


def text(rows: Rows) -> bytes:
    return b"".join(chunk.text() for chunk in rows.chunks())


class ReadRows(unittest.TestCase):
    """Comparison of results with their declared shape."""

    def assert_refused(self, shape: Shape, body: bytes, message: str) -> None:
        with self.assertRaises(BadResult) as caught:
            read(shape, body)
        self.assertEqual(message, str(caught.exception), body)

    def test_lines_become_rows(self) -> None:
        body = b'{"Name":"a","Size":1}\n{"Name":"\\u0000","Size":-9223372036854775808}\n'
        rows = read(volumes(), body)
        self.assertEqual(body, text(rows))
        self.assertEqual(2, rows.count)

    def test_an_empty_list_has_no_rows(self) -> None:
        self.assertEqual(0, read(volumes(), b"").count)

    def test_what_is_not_of_the_shape_is_refused(self) -> None:
        for body, message in (
                (b'{"Name":"a"}\n', "Size is missing"),
                (b'{"Name":"a","Size":1,"X":1}\n', "X is not declared"),
                (b'{"Name":"a","Size":"1"}\n', "Size is not of the kind int"),
                (b'{"Name":"a","Size":true}\n', "Size is not of the kind int"),
                (b'{"Name":"a","Size":1.0}\n', "1.0 is not a value of vexil"),
                (b'{"Name":"a","Size":NaN}\n', "NaN is not a value of vexil"),
                (b'{"Name":"a","Size":9223372036854775808}\n', "Size is not of the kind int"),
                (b'{"Name":"a","Size":1}\n{"Name":"a","Size":9223372036854775808}\n',
                 "Size has more than 64 bits"),
                (b'{"Name":"a","Size":1}\n{"Name":null,"Size":1}\n',
                 "Name is not of the kind string"),
                (b'{"Name":"\xff","Size":1}\n', "not JSON"),
                (b'{"Name":"\\ud800","Size":1}\n', "not JSON"),
                (b'{"Name":"a","Size":1}', "the last line has no end"),
                (b'{"Name":"a","Si\n', "not JSON"),
                (b"[1]\n", "a row is not an object"),
                (b"1,2\n", "not one value on each line"),
                (b"\n", "not one value on each line"),
                (b"[" * 100_000 + b"\n", "not JSON")):
            self.assert_refused(volumes(), body, message)

    def test_nested_values_are_checked(self) -> None:
        shape = volumes(fields=_NESTED)
        self.assertEqual(1, read(shape, _WHOLE).count)
        for old, new, message in (
                (b'["x"]', b'"x"', "Tags is not a list"),
                (b'["x"]', b'[1]', "Tags is not of the kind string"),
                (b'"Id":1,', b"", "To.Id is missing"),
                (b'{"On":true}', b'{"On":1}', "To.Of.On is not of the kind bool"),
                (b'{"On":true}', b"1", "To.Of. is not a structure")):
            self.assert_refused(shape, _WHOLE + _WHOLE.replace(old, new), message)

    def test_a_structure_is_one_row(self) -> None:
        line = b'{"Name":"a","Size":1}\n'
        self.assertEqual(line, text(read(volumes("structure"), line)))
        self.assert_refused(volumes("structure"), line * 2, "2 lines instead of one")
        self.assert_refused(volumes("structure"), b"", "0 lines instead of one")

    def test_values_without_fields_get_a_field(self) -> None:
        self.assertEqual(b'{"Value":7}\n', text(read(Shape("int", "none", ()), b"7\n")))
        self.assertEqual(b'{"Value":true}\n{"Value":false}\n',
                         text(read(Shape("bool-list", "none", ()), b"true\nfalse\n")))
        self.assert_refused(Shape("int", "none", ()), b'"7"\n', "Value is not of the kind int")
        self.assert_refused(Shape("none", "none", ()), b"1\n", "Value is not of the kind none")

    def test_prompts_for_secrets_are_no_part_of_the_result(self) -> None:
        body = b"Enter value for 'pin': \nEnter value for 'key': \n{\"Name\":\"a\",\"Size\":1}\n"
        self.assertEqual(b'{"Name":"a","Size":1}\n', text(read(volumes(), body)))

    def test_rows_in_several_chunks_are_all_read(self) -> None:
        line = b'{"Name":"a","Size":%d}\n'
        body = StoredLines(b"Enter value for 'pin': \n")
        for row in range(10_000):
            body.add(line % row)
        self.assertGreater(len(list(body.chunks())), 2)
        rows = read_rows(volumes(), body)
        self.assertEqual(10_000, rows.count)
        self.assertEqual(b"".join(line % row for row in range(10_000)), text(rows))
        self.assertEqual(read(volumes(), text(rows)).identity, rows.identity)
        body.add(b'{"Name":"a"}\n')
        with self.assertRaisesRegex(BadResult, "^Size is missing$"):
            read_rows(volumes(), body)

    def test_equal_values_have_the_same_identity(self) -> None:
        def identity(body: bytes) -> bytes:
            return read(volumes(), body).identity
        plain = identity(b'{"Name":"\xc3\xa9","Size":1}\n')
        self.assertEqual(plain, identity(b'{"Size":1, "Name":"\\u00e9"}\n'))
        self.assertNotEqual(plain, identity(b'{"Name":"e","Size":1}\n'))
        self.assertNotEqual(identity(b'{"Name":"1","Size":1}\n{"Name":"2","Size":1}\n'),
                            identity(b'{"Name":"2","Size":1}\n{"Name":"1","Size":1}\n'))


class Decode(unittest.TestCase):
    """Descriptions of commands."""

    def test_each_line_is_a_value(self) -> None:
        self.assertEqual([{"a": 1}, {"b": "\U0001f600"}],
                         decode([b'{"a":1}', b'{"b":"\\ud83d\\ude00"}']))

    def test_a_description_has_its_fields_as_a_tree(self) -> None:
        shape = describe(Fields=[{"Path": "A.B", "Kind": "structure", "Type": "T"},
                                 {"Path": "A.B.C", "Kind": "int", "Type": "none"},
                                 {"Path": "D", "Kind": "string", "Type": "none"}]).shape
        self.assertEqual([["A.B", "structure", "T", [["C", "int", "none", []]]],
                          ["D", "string", "none", []]],
                         [field.to_json() for field in shape.fields])

    def test_another_description_is_refused(self) -> None:
        for line in (b"", b"[]", b"1", b"{}", b"{", b"\xff",
                     b'{"Path":"x"}', b"[" * 100_000):
            with self.assertRaises(BadDescription, msg=line):
                Description(line)
        for changes in ({"Fields": 1}, {"Fields": [1]}, {"Parameters": [{}]}, {"Columns": 1},
                        {"Meta_Data": [{"Name": "a"}]}):
            with self.assertRaises(BadDescription, msg=str(changes)):
                describe(**changes)


if __name__ == "__main__":
    unittest.main()
