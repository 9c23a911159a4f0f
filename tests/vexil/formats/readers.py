# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0

"""Other programs that read the tool's formats, and the values that they should return."""

import csv
import io
import json
import re
import subprocess
from xml.etree import ElementTree

from values import List, Struct

try:
    import yaml
except ImportError:
    yaml = None

csv.field_size_limit(1 << 30)


def texts_in(value):
    """Yields all strings and names in a value."""
    if isinstance(value, bytes):
        yield value
    elif isinstance(value, Struct):
        for name, field in value.fields:
            yield name
            yield from texts_in(field)
    elif isinstance(value, List):
        for item in value.items:
            yield from texts_in(item)


def is_utf8(text):
    try:
        text.decode()
        return True
    except UnicodeDecodeError:
        return False


def not_utf8(chosen):
    """Returns the first string that is not UTF-8 in the nested values to be printed."""
    return [text for value in chosen.values() for text in texts_in(value) if not is_utf8(text)][:1]


def not_utf8_in_cells(chosen):
    texts = [name for path in chosen.columns() for name in path]
    texts += [text for cells in chosen.cells() for cell in cells for text in texts_in(cell)]
    return [text for text in texts if not is_utf8(text)][:1]


def not_xml(chosen):
    """Returns why the values cannot be a value document: a string that is not UTF-8 or that XML does
    not allow, an empty name, or elements of different shapes."""
    texts = [text for value in chosen.values() for text in texts_in(value)]
    names = [name for value in chosen.values() for name in names_in(value)]
    return (not_utf8(chosen) or [text for text in texts if FORBIDDEN.search(text.decode())][:1] or
            ["no name" for name in names if not name][:1] or
            mixed(List("Struct", chosen.values(), None) if chosen.is_list else chosen.values()[0]))


def mixed(value):
    """Returns the elements that the reader rejects because the first one has another shape."""
    if isinstance(value, Struct):
        return [problem for _, field in value.fields for problem in mixed(field)]
    if isinstance(value, List):
        return ([problem for item in value.items for problem in mixed(item)] or
                [item for item in value.items if not has_shape(value.items[0], item)])
    return []


def has_shape(expected, value):
    if type(expected) is not type(value):
        return False
    if isinstance(expected, Struct):
        return (sorted(name for name, _ in expected.fields) ==
                sorted(name for name, _ in value.fields) and
                all(has_shape(field, dict(value.fields)[name]) for name, field in expected.fields))
    if isinstance(expected, List):
        return (expected.kind == value.kind and
                (expected.kind != "Struct" or not expected.items or not value.items or
                 has_shape(expected.items[0], value.items[0])))
    return True


FORBIDDEN = re.compile("[\0-\x08\x0b\x0c\x0e-\x1f\ufffe\uffff]")


def names_in(value):
    if isinstance(value, Struct):
        for name, field in value.fields:
            yield name
            yield from names_in(field)
    elif isinstance(value, List):
        for item in value.items:
            yield from names_in(item)


# What each format cannot print, in the order of the program's output.
FORMATS = {"csv": not_utf8_in_cells, "json-utf8": not_utf8, "ndjson": not_utf8,
           "tsv": not_utf8_in_cells, "value-xml": not_xml, "yaml": not_utf8}


def pairs(value):
    """Returns the value as read from JSON. A structure is a list of pairs, so the order matters."""
    if isinstance(value, bytes):
        return value.decode()
    if isinstance(value, Struct):
        return ("object", [(name.decode(), pairs(field)) for name, field in value.fields])
    if isinstance(value, List):
        return [pairs(item) for item in value.items]
    return value


def as_pairs(found):
    return ("object", found)


def load_json(text):
    return json.loads(text, object_pairs_hook=as_pairs)


def is_same(left, right):
    """Compares values and, unlike ==, distinguishes 1, True and 1.0."""
    return repr(left) == repr(right)


def with_doubles(value):
    if isinstance(value, list):
        return [with_doubles(item) for item in value]
    if isinstance(value, tuple):
        return ("object", [(name, with_doubles(field)) for name, field in value[1]])
    return float(value) if type(value) is int else value


def depth_of(value):
    if isinstance(value, Struct):
        return 1 + max([depth_of(field) for _, field in value.fields], default=0)
    if isinstance(value, List):
        return 1 + max(map(depth_of, value.items), default=0)
    return 0


class NdjsonReader:
    """Python's json module, line by line."""

    format = "ndjson"

    @staticmethod
    def can_read(_):
        return True

    def check(self, cases):
        for case in cases:
            text = case.printed["ndjson"][0].decode()
            found = [load_json(line) for line in text.split("\n")[:-1]]
            expected = [pairs(value) for value in case.chosen.values()]
            if not is_same(found, expected) or (text and not text.endswith("\n")):
                yield f"{case.seed}: {text[:300]!r}, expected {expected!r:.300}"


class JsonReader:
    """Python's json module, which must also write the same bytes."""

    format = "json-utf8"

    @staticmethod
    def can_read(_):
        return True

    def check(self, cases):
        for case in cases:
            text = case.printed["json-utf8"][0].decode()
            if not is_same(load_json(text), expected_document(case.chosen)):
                yield f"{case.seed}: {text[:300]!r}"
            if text != json.dumps(json.loads(text), indent=3, ensure_ascii=False) + "\n":
                yield f"{case.seed}: not as Python writes it: {text[:300]!r}"


def expected_document(chosen):
    found = [pairs(value) for value in chosen.values()]
    return found if chosen.is_list else found[0]


class JqReader:
    """jq, which stores numbers as doubles."""

    format = "ndjson"

    @staticmethod
    def can_read(case):
        return all(depth_of(value) <= 250 for value in case.chosen.values())

    def check(self, cases):
        text = b"".join(case.printed["ndjson"][0] for case in cases)
        expected = [pairs(value) for case in cases for value in case.chosen.values()]
        done = subprocess.run(["jq", "-c", "."], input=text, capture_output=True, check=False)
        lines = done.stdout.decode().split("\n")[:-1]
        if done.returncode != 0 or len(lines) != len(expected):
            yield f"{len(lines)} of {len(expected)} values, {done.stderr.decode()}"
            return
        for line, value in zip(lines, expected):
            if not is_same(with_doubles(load_json(line)), with_doubles(value)):
                yield f"{line[:300]!r}, expected {value!r:.300}"


def cell_text(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, List):
        return json_text(value)
    return value.decode() if isinstance(value, bytes) else str(value)


def json_text(value):
    """Returns the value as compact JSON."""
    if isinstance(value, List):
        return "[" + ",".join(map(json_text, value.items)) + "]"
    if isinstance(value, Struct):
        return "{" + ",".join(json_text(name) + ":" + json_text(field)
                              for name, field in value.fields) + "}"
    if isinstance(value, bytes):
        return json.dumps(value.decode(), ensure_ascii=False)
    return cell_text(value)


def expected_lines(chosen):
    columns = chosen.columns()
    if not columns:
        return []
    header = [b".".join(path).decode() if path else "value" for path in columns]
    return [header] + [list(map(cell_text, cells)) for cells in chosen.cells()]


class CsvReader:
    """Python's csv module, which must also write the same bytes."""

    format = "csv"

    @staticmethod
    def can_read(_):
        return True

    def check(self, cases):
        for case in cases:
            text = case.printed["csv"][0].decode()
            expected = expected_lines(case.chosen)
            if list(csv.reader(io.StringIO(text, newline=""))) != expected:
                yield f"{case.seed}: {text[:300]!r}, expected {expected!r:.300}"
            again = io.StringIO(newline="")
            csv.writer(again).writerows(expected)
            if again.getvalue() != text:
                yield f"{case.seed}: not as Python writes it: {text[:300]!r}"


class TsvReader:
    """Reads like a script: splits lines and cells, then replaces the escapes."""

    format = "tsv"
    ESCAPES = {"t": "\t", "n": "\n", "r": "\r", "\\": "\\"}

    @staticmethod
    def can_read(_):
        return True

    def unescaped(self, cell):
        return re.sub(r"\\(.)", lambda found: self.ESCAPES[found[1]], cell, flags=re.DOTALL)

    def check(self, cases):
        for case in cases:
            text = case.printed["tsv"][0].decode()
            lines = [list(map(self.unescaped, line.split("\t")))
                     for line in text.split("\n")[:-1]]
            if lines != expected_lines(case.chosen) or "\r" in text:
                yield f"{case.seed}: {text[:300]!r}"


class YamlReader:
    """PyYAML, which reads YAML 1.1, with the parser in C (libyaml) or its own."""

    format = "yaml"

    def __init__(self, loader, share):
        self.loader = loader
        self.share = share  # reads one in `share` results, because the parser in Python is slow

    def can_read(self, case):
        return yaml is not None and int(case.seed) % self.share == 0

    def check(self, cases):
        for case in cases:
            text = case.printed["yaml"][0].decode()
            found = as_pairs_of_dict(yaml.load(text, Loader=getattr(yaml, self.loader)))
            if not is_same(found, expected_document(case.chosen)):
                yield f"{case.seed}: {text[:300]!r}"


def as_pairs_of_dict(value):
    if isinstance(value, dict):
        return ("object", [(name, as_pairs_of_dict(field)) for name, field in value.items()])
    return [as_pairs_of_dict(item) for item in value] if isinstance(value, list) else value


def without_shapes(value):
    """Returns the value without the declared structures of lists, and with fields in byte order."""
    if isinstance(value, Struct):
        return Struct(value.type_name,
                      sorted((name, without_shapes(field)) for name, field in value.fields))
    if isinstance(value, List):
        return List(value.kind, [without_shapes(item) for item in value.items], None)
    return value


def expected_value(case):
    rows = case.chosen.values()
    return List(case.root.kind, rows, None) if case.chosen.is_list else rows[0]


class ToolReader:
    """The library's reader for the results of commands from descriptors."""

    format = "value-xml"

    @staticmethod
    def can_read(_):
        return True

    def check(self, cases):
        for case in cases:
            expected = without_shapes(expected_value(case))
            if not is_same(without_shapes(case.read_back), expected):
                yield f"{case.seed}: {case.printed['value-xml'][0][:300]!r}"


KINDS = {"bool": "Bool", "int": "Int", "string": "String", "structure": "Struct"}


def element_value(element):
    if element.tag == "structure":
        return Struct(element.get("typeName").encode(),
                      [(field.get("name").encode(), element_value(field[0])) for field in element])
    if element.tag == "list":
        return List(KINDS[element.get("type")], [element_value(item) for item in element], None)
    text = element.text or ""
    return {"bool": lambda: {"true": True, "false": False}[text], "int": lambda: int(text),
            "string": text.encode}[element.tag]()


class XmlReader:
    """ElementTree, which uses expat."""

    format = "value-xml"

    @staticmethod
    def can_read(_):
        return True

    def read(self, cases):
        return [ElementTree.fromstring(case.printed["value-xml"][0]) for case in cases]

    def check(self, cases):
        for case, document in zip(cases, self.read(cases)):
            found = element_value(document[0])
            if document.tag != "output" or not is_same(found, ordered_value(case)):
                yield f"{case.seed}: {found!r:.300}"


def ordered_value(case):
    """Returns the expected value with fields in the order in which they are printed."""
    def plain(value):
        if isinstance(value, Struct):
            return Struct(value.type_name, [(name, plain(field)) for name, field in value.fields])
        if isinstance(value, List):
            return List(value.kind, [plain(item) for item in value.items], None)
        return value
    return plain(expected_value(case))


class XmllintReader(XmlReader):
    """xmllint, which uses libxml2. A single call of xmllint prints the values of all documents."""

    def read(self, cases):
        documents = [case.printed["value-xml"][0].split(b"\n", 1)[1] for case in cases]
        done = subprocess.run(["xmllint", "--huge", "--encode", "UTF-8", "-"],
                              input=b"<all>" + b"".join(documents) + b"</all>",
                              capture_output=True, check=True)
        return list(ElementTree.fromstring(done.stdout))


# The readers that are programs, not modules.
PROGRAMS = ("jq", "xmllint")

READERS = {"json, ndjson": NdjsonReader(), "json, json-utf8": JsonReader(), "jq": JqReader(),
           "csv": CsvReader(), "tsv": TsvReader(), "libyaml": YamlReader("CSafeLoader", 1),
           "PyYAML": YamlReader("SafeLoader", 5), "the tool": ToolReader(),
           "expat": XmlReader(), "xmllint": XmllintReader()}
