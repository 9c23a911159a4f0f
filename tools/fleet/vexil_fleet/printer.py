# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Prints rows of many hosts through the local vexil, in any of its formats.

The rows go to a plug-in of the tool, fleet-rows.so, which returns them as one list with the host in
the first field. So sorting, formats and their parameters work as for the other commands.
"""

import json
import re
import subprocess
import sys
from dataclasses import dataclass, field
from typing import IO, Dict, Iterable, Iterator, List, Optional, Sequence, Tuple

from .description import Description, Field, Shape
from .rows import Rows, row_shape
from .stored import Chunk

_HOST = "Host"
# The name of the first field if the command has a field "Host" itself.
_OTHER_HOST = "Node"
DEFAULT_FORMATTER = "table"
# Formats for people, which may be followed by other text.
FOR_PEOPLE = ("table", "simple", "pretty")
# Formats whose documents can be printed one after another.
JOINABLE = (*FOR_PEOPLE, "ndjson")
# The format that prints each row independently of the others.
_BY_LINES = "ndjson"
# How many rows are passed to the tool at a time if the list can be divided. The tool needs at least
# 300 bytes of memory for each row.
_MAX_ROWS = 100_000
_EXACT = ("csv", "json-utf8", "ndjson", "tsv", "value-xml", "yaml")
_KEY = re.compile(r"[A-Za-z0-9 .:-]+")
# Parameters that apply to every formatter for people; all others are for the command's formatter.
_FOR_FIELDS = ("printf:", "units:")


@dataclass(frozen=True)
class Format:
    """How the user wants the list to be printed."""
    formatter: str = DEFAULT_FORMATTER
    parameters: Dict[str, str] = field(default_factory=dict)
    screen_width: Optional[str] = None
    sort: Optional[str] = None
    descending: bool = False
    limit: Optional[str] = None

    @property
    def is_for_people(self) -> bool:
        return self.formatter in FOR_PEOPLE

    @property
    def is_joinable(self) -> bool:
        return self.formatter in JOINABLE

    @property
    def is_divisible(self) -> bool:
        """Whether a long list can be printed in parts, one after the other."""
        return self.formatter == _BY_LINES and self.sort is None and self.limit is None


# The short form of some hosts, and the rows that each of them has.
Part = Tuple[str, Rows]
# The same for some of the rows.
Piece = Tuple[str, Chunk]


class BadFormat(ValueError):
    """A way of printing that the tool refuses."""


class Printer:
    """Prints lists with the local tool."""

    def __init__(self, tool: str, plugin: str, wanted: Format) -> None:
        self._tool = tool
        self._plugin = plugin
        self.format = wanted

    def print(self, parts: Sequence[Part], description: Description) -> bool:
        """Prints rows of one shape. Returns whether that succeeded; messages are printed."""
        shape = parts[0][1].shape
        pieces = ((name, chunk) for name, rows in parts for chunk in rows.chunks())
        if self.format.is_divisible:
            return all(self._print_list(shape, some, description) for some in _divide(pieces))
        return self._print_list(shape, pieces, description)

    def check(self, description: Description) -> None:
        """Throws BadFormat with the messages of the tool if it cannot print the result of the
        described command."""
        shape = row_shape(description.shape)
        host = host_field(shape)
        done = subprocess.run(
            self._command(shape, description, host), input=_declaration(shape, host), check=False,
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        if done.returncode != 0:
            raise BadFormat(done.stderr.decode("utf-8", "backslashreplace").rstrip("\n"))

    def _print_list(self, shape: Shape, pieces: Iterable[Piece],
                    description: Description) -> bool:
        host = host_field(shape)
        sys.stdout.flush()
        with subprocess.Popen(self._command(shape, description, host), stdin=subprocess.PIPE,
                              stderr=subprocess.PIPE) as process:
            assert process.stdin is not None and process.stderr is not None
            try:
                _feed(process.stdin, shape, host, pieces)
                process.stdin.close()
            except BrokenPipeError:
                pass  # the messages of the tool say why
            sys.stderr.write(process.stderr.read().decode("utf-8", "backslashreplace"))
        return process.returncode == 0

    def _command(self, shape: Shape, description: Description, host: str) -> List[str]:
        wanted = self.format
        command = [self._tool, "--plugin", self._plugin, "--formatter", wanted.formatter]
        if wanted.screen_width is not None:
            command += ["--screen-width", wanted.screen_width]
        for key, value in self._parameters(shape, description, host).items():
            command += ["--format-param", f"{key}={value}"]
        command += ["fleet", "rows", "print"]
        if wanted.sort is not None:
            command.append(f"--sort={wanted.sort}")
        if wanted.descending:
            command.append("--descending")
        if wanted.limit is not None:
            command.append(f"--limit={wanted.limit}")
        return command

    def _parameters(self, shape: Shape, description: Description, host: str) -> Dict[str, str]:
        """Returns the format parameters: the command's, with the host as the first field, and the
        user's."""
        wanted = self.format
        parameters = {key: value for key, value in description.format_parameters.items()
                      if self._applies(key, description) and _KEY.fullmatch(key) and value}
        fields = ",".join([host, *self._columns(shape, description)])
        key = f"fields:{shape.type_name}" if wanted.formatter == "simple" else "fields"
        chooses = any(key == "fields" or key.startswith("fields:") for key in wanted.parameters)
        if not chooses and wanted.formatter in (*FOR_PEOPLE, *_EXACT):
            parameters[key] = fields
        parameters.update(wanted.parameters)
        return parameters

    def _applies(self, key: str, description: Description) -> bool:
        if not self.format.is_for_people or key.startswith("fields"):
            return False
        return self.format.formatter == description.formatter or key.startswith(_FOR_FIELDS)

    def _columns(self, shape: Shape, description: Description) -> List[str]:
        if self.format.is_for_people and description.columns and description.shape.has_fields:
            return description.columns
        return [field.name for field in shape.fields]


def host_field(shape: Shape) -> str:
    return _OTHER_HOST if _HOST in {field.name for field in shape.fields} else _HOST


def _divide(pieces: Iterable[Piece]) -> Iterator[List[Piece]]:
    """Yields the same rows in lists of at most _MAX_ROWS, unless a single piece has more."""
    some: List[Piece] = []
    count = 0
    for name, chunk in pieces:
        if some and count + chunk.count > _MAX_ROWS:
            yield some
            some, count = [], 0
        some.append((name, chunk))
        count += chunk.count
    yield some


def _declaration(shape: Shape, host: str) -> bytes:
    fields = [Field(host, "string", "none"), *shape.fields]
    declared = {"type": shape.type_name, "fields": [field.to_json() for field in fields]}
    return json.dumps(declared).encode() + b"\n"


def _feed(stream: IO[bytes], shape: Shape, host: str, pieces: Iterable[Piece]) -> None:
    stream.write(_declaration(shape, host))
    for name, chunk in pieces:
        stream.write(json.dumps({"host": name, "rows": chunk.count}).encode() + b"\n")
        stream.write(chunk.text())
