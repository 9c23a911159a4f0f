# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0

"""What foreign programs read from the text of a value, and what can be read back at all.

Each reader names the formatter whose text it reads, and the program that must be installed for it.
A reader is asked `can_read(case)` first: not everything that a format prints is a document of its
language, and docs/output-formats.md lists what is not. `check(cases)` then gives the problems.
"""

import ast
import json
import os
import re
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree

from values import Lie, Record, Values


def parts_of(value, depth=1):
    """All values in a value with their depth: the value itself first."""
    yield value, depth
    if isinstance(value, Record):
        for _, field in value.fields:
            yield from parts_of(field, depth + 1)
    elif isinstance(value, Values):
        for item in value.items:
            yield from parts_of(item, depth + 1)


def is_honest(root):
    return not any(value is None or isinstance(value, Lie) for value, _ in parts_of(root))


def texts_in(root):
    return [value for value, _ in parts_of(root) if isinstance(value, bytes)]


def names_in(root):
    return [name for value, _ in parts_of(root) if isinstance(value, Record)
            for name, _ in value.fields]


def depth_of(root):
    return max(depth for _, depth in parts_of(root))


def is_utf8(text):
    try:
        text.decode()
        return True
    except UnicodeDecodeError:
        return False


def all_match(pattern, texts):
    """Whether all texts are UTF-8 and free of the bytes in a class like rb'[a-z]'."""
    return all(is_utf8(text) and not re.search(pattern, text) for text in texts)


def plain(value, decode):
    """The value as Python's own, texts by `decode`, names as UTF-8."""
    if isinstance(value, bytes):
        return decode(value)
    if isinstance(value, Record):
        return {name.decode(): plain(field, decode) for name, field in value.fields}
    if isinstance(value, Values):
        return [plain(item, decode) for item in value.items]
    return value


def is_same(left, right):
    """Equality that tells 1, True and 1.0 apart."""
    return repr(left) == repr(right)


class JsonReader:
    """Python's json: each byte of a text is a code point of its own."""

    formatter = "json"
    program = None

    @staticmethod
    def can_read(case):
        # Names are not escaped.
        return is_honest(case.root) and all_match(rb'[\x00-\x1f"\\]', names_in(case.root))

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
    """What json gave, with the recipe of the guide applied to each text."""
    if isinstance(found, str):
        try:
            return found.encode("latin-1").decode("utf-8")
        except UnicodeDecodeError:
            return found.encode("latin-1")
    if isinstance(found, dict):
        return {name: restored(value) for name, value in found.items()}
    return [restored(item) for item in found] if isinstance(found, list) else found


class JqReader(JsonReader):
    """jq, which keeps numbers as doubles and reads 256 levels of nesting."""

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
    """ast.literal_eval, which reads 200 levels of nesting."""

    formatter = "python"
    program = None

    @staticmethod
    def can_read(case):
        return (is_honest(case.root) and depth_of(case.root) <= 200 and
                all_match(rb"[\x00\r\\]", texts_in(case.root)) and
                all_match(rb'[\x00\r\n\\"]', names_in(case.root)))

    @staticmethod
    def read(text):
        return ast.literal_eval(text.decode())

    def check(self, cases):
        for case in cases:
            found = self.read(case.printed["python"][0])
            if not is_same(found, plain(case.root, bytes.decode)):
                yield f"{case.name}: {found!r}"


class XmlReader:
    """ElementTree: the document tells the kind of everything."""

    formatter = "xml"
    program = None

    @staticmethod
    def can_read(case):
        texts = texts_in(case.root)
        names = names_in(case.root) + [text for pair in case.params.items() for text in pair]
        return (is_honest(case.root) and
                all_match(rb"[\x00-\x08\x0b-\x1f]|\xef\xbf[\xbe\xbf]", texts) and
                all_match(rb"[\x00-\x1f]|\xef\xbf[\xbe\xbf]", names) and
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
        return Record(element.get("typeName").encode(), fields)
    return Values(KINDS_BY_WORD[element.get("type")], [element_value(item) for item in element],
                  None)


def without_shapes(value):
    """The value without the declared structures of lists, which no document holds."""
    if isinstance(value, Record):
        return Record(value.type_name,
                      [(name, without_shapes(field)) for name, field in value.fields])
    if isinstance(value, Values):
        return Values(value.kind, [without_shapes(item) for item in value.items], None)
    return value


class XmllintReader(XmlReader):
    """xmllint; only whether it takes the document."""

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
