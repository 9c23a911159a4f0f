# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The rows of a host's result, checked against the declared shape.

The rows are stored as the lines of JSON that the host printed, compressed, and are decoded only to
be checked and compared. Large results would otherwise take ten times the memory.
"""

import hashlib
import itertools
import json
import re
from dataclasses import dataclass, field
from typing import Any, Callable, Dict, Iterable, Iterator, List, Set, Tuple

from .description import Field, Shape
from .stored import Chunk, StoredLines

# How many lines are decoded at a time.
_CHUNK = 2000
_INT_MIN, _INT_MAX = -2**63, 2**63 - 1
# A prompt of vexil for a secret. The prompts for all secrets precede the result.
_PROMPT = re.compile(rb"Enter value for '[^'\n]*': \n")

# An escape of one half of a surrogate pair. Without the other half, it cannot be printed.
_SURROGATE = re.compile(rb"\\u[dD][89a-fA-F]")

# The name of the only field in the rows of a result that has no fields itself.
VALUE = "Value"


Row = Dict[str, Any]


class BadResult(ValueError):
    """Output that is not a result of the declared shape."""


@dataclass(frozen=True)
class Rows:
    """The rows of one result: lines of JSON, each with one object."""
    shape: Shape
    count: int
    _body: StoredLines = field(repr=False)
    identity: bytes  # is the same for equal rows in the same order, whatever their text is
    is_plain: bool = True  # fields are in order and not nested, so equal rows are equal lines

    def chunks(self) -> Iterator[Chunk]:
        return self._body.chunks()

    def lines(self) -> Iterator[bytes]:
        for chunk in self.chunks():
            yield from chunk.lines()


def skip_prompts(text: bytes) -> bytes:
    """Returns the result without the prompts for secrets, which vexil prints before it."""
    position = 0
    while (match := _PROMPT.match(text, position)) is not None:
        position = match.end()
    return text[position:]


def _without_prompts(body: StoredLines) -> StoredLines:
    chunks = list(body.chunks())
    first = chunks[0].text() if chunks else b""
    rest = skip_prompts(first)
    if len(rest) == len(first):
        return body
    return _store(itertools.chain([rest], (chunk.text() for chunk in chunks[1:])))


def _store(texts: Iterable[bytes]) -> StoredLines:
    stored = StoredLines()
    for text in texts:
        stored.add(text)
    return stored


def read_rows(shape: Shape, body: StoredLines) -> Rows:
    """Returns the rows of a result. Throws BadResult if anything about it is wrong."""
    body = _without_prompts(body)
    if not body.is_ended:
        raise BadResult("the last line has no end")
    count = sum(chunk.count for chunk in body.chunks())
    if not shape.is_list and count != 1:
        raise BadResult(f"{count} lines instead of one")
    if not shape.has_fields:
        body = _store(b"".join(b'{"%s":%s}\n' % (VALUE.encode(), line) for line in chunk.lines())
                      for chunk in body.chunks())
    return _checked_rows(row_shape(shape), body, count)


def _checked_rows(shape: Shape, body: StoredLines, count: int) -> Rows:
    check = RowCheck(shape)
    digest = hashlib.blake2b(digest_size=16)
    is_plain = True
    for rows in _decode_all(body):
        check.check(rows)
        for row in rows:
            if check.is_canonical(row):
                digest.update(repr(row).encode())
            else:
                digest.update(canonical(row).encode())
                is_plain = False
    return Rows(shape, count, body, digest.digest(), is_plain)


def _decode_all(body: StoredLines) -> Iterator[List[Row]]:
    """Yields all rows, some at a time."""
    for chunk in body.chunks():
        lines = chunk.lines()
        for start in range(0, len(lines), _CHUNK):
            yield decode(lines[start:start + _CHUNK])


def canonical(row: Row) -> str:
    """Returns a string that is the same for two rows if, and only if, they are equal."""
    return repr(_in_order(row))


def _in_order(value: Any) -> Any:
    if isinstance(value, dict):
        return {name: _in_order(value[name]) for name in sorted(value)}
    return [_in_order(each) for each in value] if isinstance(value, list) else value


def row_shape(shape: Shape) -> Shape:
    """Returns the shape of the rows of a result: a list of structures."""
    if shape.has_fields:
        return Shape("structure-list", shape.type_name, shape.fields)
    element = shape.kind[:-len("-list")] if shape.is_list else shape.kind
    return Shape("structure-list", "FleetValue", (Field(VALUE, element, "none"),))


def decode(lines: List[bytes]) -> List[Row]:
    """Returns the value on each line."""
    text = b"[" + b",".join(lines) + b"]"
    try:
        values = json.loads(text.decode("utf-8"), parse_constant=_refuse, parse_float=_refuse)
        if _SURROGATE.search(text) is not None:
            json.dumps(values, ensure_ascii=False).encode("utf-8")
    except BadResult:
        raise
    except (ValueError, RecursionError) as error:
        raise BadResult("not JSON") from error
    if len(values) != len(lines):
        raise BadResult("not one value on each line")
    return list(values)


def _refuse(text: str) -> Any:
    raise BadResult(f"{text} is not a value of vexil")


class RowCheck:
    """Checks that rows are of the declared shape. If several rows have the same names and types,
    only the first one is checked for these. Integers, structures and lists are checked in every
    row."""

    def __init__(self, shape: Shape) -> None:
        self._fields = shape.fields
        self._names = sorted(field.name for field in shape.fields)
        self._known: Set[Tuple[Any, ...]] = set()
        self._nested = [field for field in shape.fields
                        if field.kind not in ("string", "int", "bool")]
        self._integers = [field.name for field in shape.fields if field.kind == "int"]

    def is_canonical(self, row: Row) -> bool:
        """Whether the names of the fields are in order, and no field is nested."""
        return not self._nested and list(row) == self._names

    def check(self, rows: List[Row]) -> None:
        for row in rows:
            if type(row) is not dict:  # pylint: disable=unidiomatic-typecheck
                raise BadResult("a row is not an object")
            kinds = (*row, *map(type, row.values()))
            if kinds not in self._known:
                check_fields(self._fields, row, "")
                self._known.add(kinds)
            for name in self._integers:
                if not _INT_MIN <= row[name] <= _INT_MAX:
                    raise BadResult(f"{name} has more than 64 bits")
            for nested in self._nested:
                check_value(nested, row[nested.name], nested.name)


def check_fields(fields: Tuple[Field, ...], row: Any, path: str) -> None:
    if not isinstance(row, dict):
        raise BadResult(f"{path or 'a row'} is not a structure")
    names = {field.name for field in fields}
    for missing in sorted(names - row.keys()):
        raise BadResult(f"{path}{missing} is missing")
    for unknown in sorted(row.keys() - names):
        raise BadResult(f"{path}{unknown} is not declared")
    for declared in fields:
        check_value(declared, row[declared.name], path + declared.name)


def check_value(declared: Field, value: Any, path: str) -> None:
    kind = declared.kind
    if kind.endswith("-list"):
        if not isinstance(value, list):
            raise BadResult(f"{path} is not a list")
        element = Field(declared.name, kind[:-len("-list")], declared.type_name, declared.inner)
        for each in value:
            check_value(element, each, path)
    elif kind == "structure":
        check_fields(declared.inner, value, path + ".")
    elif kind not in _SCALARS or not _SCALARS[kind](value):
        raise BadResult(f"{path} is not of the kind {kind}")


_SCALARS: Dict[str, Callable[[Any], bool]] = {
    "string": lambda value: isinstance(value, str),
    "bool": lambda value: isinstance(value, bool),
    "int": lambda value: (isinstance(value, int) and not isinstance(value, bool)
                          and _INT_MIN <= value <= _INT_MAX),
}
