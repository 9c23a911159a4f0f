# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0

"""What other programs read from the output of the formatters.

Each reader names the formatter whose output it reads and the program that it needs, if any.
`can_read(case)` returns whether the reader can read the output at all: docs/output-formats.md lists
which outputs are not valid documents, and some readers limit the nesting. `check(cases)` yields the
differences between the values and what is read.
"""

import ast
import json
import os
import re
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree

from values import Lie, List, Struct


def parts_of(value, depth=1):
    """Yields a value and all values in it, each with its depth; the value itself comes first."""
    yield value, depth
    if isinstance(value, Struct):
        for _, field in value.fields:
            yield from parts_of(field, depth + 1)
    elif isinstance(value, List):
        for item in value.items:
            yield from parts_of(item, depth + 1)


def is_honest(root):
    return not any(value is None or isinstance(value, Lie) for value, _ in parts_of(root))


def texts_in(root):
    return [value for value, _ in parts_of(root) if isinstance(value, bytes)]


def names_in(root):
    return [name for value, _ in parts_of(root) if isinstance(value, Struct)
            for name, _ in value.fields]


def depth_of(root):
    return max(depth for _, depth in parts_of(root))


def is_utf8(text):
    try:
        text.decode()
        return True
    except UnicodeDecodeError:
        return False


def all_lack(pattern, texts):
    """Returns whether all strings are UTF-8 and contain no match of the pattern."""
    return all(is_utf8(text) and not re.search(pattern, text) for text in texts)


def plain(value, decode):
    """Returns the value in Python's types. `decode` converts strings; names must be UTF-8."""
    if isinstance(value, bytes):
        return decode(value)
    if isinstance(value, Struct):
        return {name.decode(): plain(field, decode) for name, field in value.fields}
    if isinstance(value, List):
        return [plain(item, decode) for item in value.items]
    return value


def is_same(left, right):
    """Compares values and, unlike ==, distinguishes 1, True and 1.0."""
    return repr(left) == repr(right)


class JsonReader:
    """Python's json module. It returns a character for each byte of a string, because the formatter
    escapes strings byte by byte.
    """

    formatter = "json"
    program = None

    @staticmethod
    def can_read(case):
        # The formatter does not escape names.
        return is_honest(case.root) and all_lack(rb'[\x00-\x1f"\\]', names_in(case.root))

    @staticmethod
    def read(text):
        return json.loads(text.decode())

    def check(self, cases):
        for case in cases:
            found = self.read(case.printed["json"][0])
            if not is_same(found, plain(case.root, lambda text: text.decode("latin-1"))):
                yield f"{case.name}: {found!r}"
            if not is_same(restored(found), plain(case.root, restored_text)):
                yield f"{case.name}: not restored: {restored(found)!r}"


def restored_text(text):
    return text.decode() if is_utf8(text) else text


def restored(found):
    """Restores the strings in a value that json has read, by the recipe of the guide."""
    if isinstance(found, str):
        try:
            return found.encode("latin-1").decode("utf-8")
        except UnicodeDecodeError:
            return found.encode("latin-1")
    if isinstance(found, dict):
        return {name: restored(value) for name, value in found.items()}
    return [restored(item) for item in found] if isinstance(found, list) else found


class JqReader(JsonReader):
    """jq, which reads numbers as doubles and accepts 256 levels of nesting."""

    program = "jq"

    def can_read(self, case):
        return super().can_read(case) and depth_of(case.root) <= 256

    def check(self, cases):
        text = b"".join(case.printed["json"][0] for case in cases)
        done = subprocess.run(["jq", "-c", "."], input=text, capture_output=True, check=False)
        lines = done.stdout.splitlines()
        if done.returncode != 0 or len(lines) != len(cases):
            yield f"jq: {len(lines)} of {len(cases)} values, {done.stderr.decode()}"
            return
        for case, line in zip(cases, lines):
            expected = plain(case.root, lambda text: text.decode("latin-1"))
            if not is_same(with_doubles(json.loads(line)), with_doubles(expected)):
                yield f"{case.name}: {line!r}"


def with_doubles(value):
    if isinstance(value, dict):
        return {name: with_doubles(field) for name, field in value.items()}
    if isinstance(value, list):
        return [with_doubles(item) for item in value]
    return float(value) if type(value) is int else value


class PythonReader:
    """ast.literal_eval, which accepts 200 levels of nesting."""

    formatter = "python"
    program = None

    @staticmethod
    def can_read(case):
        return (is_honest(case.root) and depth_of(case.root) <= 200 and
                all_lack(rb"[\x00\r\\]", texts_in(case.root)) and
                all_lack(rb'[\x00\r\n\\"]', names_in(case.root)))

    @staticmethod
    def read(text):
        return ast.literal_eval(text.decode())

    def check(self, cases):
        for case in cases:
            found = self.read(case.printed["python"][0])
            if not is_same(found, plain(case.root, bytes.decode)):
                yield f"{case.name}: {found!r}"


class XmlReader:
    """ElementTree. The document contains the kind of every value."""

    formatter = "xml"
    program = None

    @staticmethod
    def can_read(case):
        texts = texts_in(case.root)
        names = names_in(case.root) + [text for pair in case.params.items() for text in pair]
        return (is_honest(case.root) and
                all_lack(rb"[\x00-\x08\x0b-\x1f]|\xef\xbf[\xbe\xbf]", texts) and
                all_lack(rb"[\x00-\x1f]|\xef\xbf[\xbe\xbf]", names) and
                b"?>" not in case.params.get(b"stylesheet", b""))

    @staticmethod
    def read(text):
        return element_value(ElementTree.fromstring(text).find("root")[0])

    def check(self, cases):
        for case in cases:
            text = case.printed["xml"][0]
            params = {field.get("name").encode(): field.get("value").encode()
                      for field in ElementTree.fromstring(text).iter("meta-data-field")}
            if params != case.params:
                yield f"{case.name}: {params!r}"
            if not is_same(self.read(text), without_shapes(case.root)):
                yield f"{case.name}: {self.read(text)!r}"


KINDS_BY_WORD = {"boolean": "Bool", "integer": "Int", "string": "String", "structure": "Struct"}


def element_value(element):
    if element.tag == "boolean":
        return {"true": True, "false": False}[element.text]
    if element.tag == "integer":
        return int(element.text)
    if element.tag == "string":
        return (element.text or "").encode()
    if element.tag == "structure":
        fields = [(field.get("name").encode(), element_value(field[0])) for field in element]
        return Struct(element.get("typeName").encode(), fields)
    return List(KINDS_BY_WORD[element.get("type")], [element_value(item) for item in element],
                  None)


def without_shapes(value):
    """Returns the value without the declared structures of lists, which no document contains."""
    if isinstance(value, Struct):
        return Struct(value.type_name,
                      [(name, without_shapes(field)) for name, field in value.fields])
    if isinstance(value, List):
        return List(value.kind, [without_shapes(item) for item in value.items], None)
    return value


class XmllintReader(XmlReader):
    """xmllint; checks only that it accepts the documents."""

    program = "xmllint"

    def check(self, cases):
        with tempfile.TemporaryDirectory() as folder:
            paths = []
            for number, case in enumerate(cases):
                paths.append(os.path.join(folder, f"{number}.xml"))
                with open(paths[-1], "wb") as file:
                    file.write(case.printed["xml"][0])
            for start in range(0, len(paths), 1000):
                done = subprocess.run(["xmllint", "--noout", "--huge", *paths[start:start + 1000]],
                                      capture_output=True, check=False)
                if done.returncode != 0 or done.stderr:
                    yield f"xmllint: {done.stderr.decode('utf-8', 'replace')[:2000]}"


READERS = {"json": JsonReader(), "jq": JqReader(), "literal_eval": PythonReader(),
           "ElementTree": XmlReader(), "xmllint": XmllintReader()}
