# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Completes a command line of vexil-fleet as vexil-complete does.

vexil-complete itself completes the path and the parameters of the command, and the formats and
their parameters, all from the tree of the local tool.
"""

import itertools
import subprocess
import sys
from typing import List, Sequence, Tuple

from .options import all_declared, find, split_options

_WRONG_USE = 2
_MAX_SECONDS = 5
_FILES = ("--report", "--topology")
_GROUPS = ("-g", "--group", "--exclude-group")
_FORMATS = ("--formatter", "--format-param")

Candidates = Tuple[List[str], str]
_NOTHING: Candidates = ([], ":")


def complete(program: str, index: int, words: Sequence[str]) -> Candidates:
    """Returns the lines of the candidates for the word at `index`, and the directive."""
    line = [*words[:index], words[index] if index < len(words) else "", *words[index + 1:]]
    options = split_options(line[1:])
    start = 1 + sum(map(len, options))
    if start <= index:
        return ask_tool(program, index - start + 1, ["vexil", *line[start:]])
    path = list(itertools.takewhile(lambda word: not word.startswith("-"), line[start:]))
    position = 1
    for option in options:
        if index < position + len(option):
            return complete_option(program, option, index - position, path)
        position += len(option)
    return _NOTHING


def complete_option(program: str, option: Sequence[str], part: int,
                    path: Sequence[str]) -> Candidates:
    """Completes a word of an option. `part` is 0 for the option itself and 1 for its value."""
    if part == 1:
        return complete_value(program, option[0], option[1], path)
    name, is_joined, value = option[0].partition("=")
    if is_joined:
        lines, directive = complete_value(program, name, value, path)
        return [f"{name}={line}" for line in lines], directive
    return complete_name(name)


def complete_name(current: str) -> Candidates:
    return [f"{name}\t{declared.help}" for declared in all_declared()
            for name in declared.names if name.startswith(current)
            and (len(name) > 2 or current == name)], ":"


def complete_value(program: str, name: str, value: str, path: Sequence[str]) -> Candidates:
    if find(name) is None:
        return _NOTHING
    if name in _FILES:
        return [], ":files"
    if name in _GROUPS:
        return [group for group in groups() if group.startswith(value)], ":"
    if name in _FORMATS:
        return ask_tool(program, 2, ["vexil", name, value, *path])
    return _NOTHING


def groups() -> List[str]:
    # Imported only when needed, because the import reads files, and may run programs.
    from ClusterShell.NodeSet import grouplist  # pylint: disable=import-outside-toplevel
    from ClusterShell.NodeUtils import GroupResolverError  # pylint: disable=C0415
    try:
        return [str(group) for group in grouplist()]
    except GroupResolverError:
        return []


def ask_tool(program: str, index: int, words: Sequence[str]) -> Candidates:
    try:
        done = subprocess.run([program, str(index), *words], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False,
                              timeout=_MAX_SECONDS)
    except (OSError, subprocess.TimeoutExpired):
        return _NOTHING
    lines = done.stdout.decode("utf-8", "surrogateescape").splitlines()
    return (lines[:-1], lines[-1]) if lines else _NOTHING


def main(program: str, arguments: Sequence[str]) -> int:
    """Prints the candidates. `program` is vexil-complete; the arguments are an index and the words
    of the line."""
    if len(arguments) < 2 or not arguments[0].isdigit() or int(arguments[0]) < 1:
        print("Usage: vexil-fleet-complete INDEX WORD...", file=sys.stderr)
        return _WRONG_USE
    lines, directive = complete(program, int(arguments[0]), arguments[1:])
    for line in [*lines, directive]:
        sys.stdout.buffer.write(line.encode("utf-8", "surrogateescape") + b"\n")
    return 0
