# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0

"""Other programs that read the tool's formats, and the values that they should find."""

import csv
import io
import json
import re
import shutil
import subprocess

from values import List, Struct

csv.field_size_limit(1 << 30)


def texts_in(value):
    """All strings and names in a value."""
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
    """The first string that is not UTF-8 in what is printed as nested values."""
    return [text for value in chosen.values() for text in texts_in(value) if not is_utf8(text)][:1]


def not_utf8_in_cells(chosen):
    texts = [name for path in chosen.columns() for name in path]
    texts += [text for cells in chosen.cells() for cell in cells for text in texts_in(cell)]
    return [text for text in texts if not is_utf8(text)][:1]


# For each format, in the order of the program's output: what it cannot print.
FORMATS = {"csv": not_utf8_in_cells, "json-utf8": not_utf8, "ndjson": not_utf8,
           "tsv": not_utf8_in_cells}


def pairs(value):
    """The value as JSON has it. A structure is a list of pairs, so that the order counts."""
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
        if not shutil.which("jq"):
            return
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
    """The value as compact JSON."""
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
    """What a script does: splits lines and cells, then replaces the escapes."""

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


READERS = {"json, ndjson": NdjsonReader(), "json, json-utf8": JsonReader(), "jq": JqReader(),
           "csv": CsvReader(), "tsv": TsvReader()}
