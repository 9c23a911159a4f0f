# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The words of a command line of vexil, read by the rules of the tool itself.

An option is `-x`, `--name` or `--name=value`; everything else is a word. The words up to the first
option are the path. An option without `=` takes the next token as its value if that is a word.
"""

import re
import shlex
from dataclasses import dataclass
from typing import Iterator, List, Optional, Sequence, Tuple

_OPTION = re.compile(r"-(?P<short>[A-Za-z])|--(?P<long>[A-Za-z][A-Za-z0-9-]+)(?:=(?P<value>.+))?",
                     re.DOTALL)


@dataclass(frozen=True)
class Option:
    """One parameter of a line, as it was typed."""
    name: str
    value: Optional[str]
    tokens: Tuple[str, ...]


def is_option(token: str) -> bool:
    return _OPTION.fullmatch(token) is not None


def split_path(tokens: Sequence[str]) -> Tuple[List[str], List[str]]:
    """Returns the words of the path, and the tokens after it."""
    for index, token in enumerate(tokens):
        if is_option(token):
            return list(tokens[:index]), list(tokens[index:])
    return list(tokens), []


def read_options(tokens: Sequence[str]) -> Iterator[Option]:
    """Yields the parameters after the path. A word that belongs to none is an option without a
    name."""
    index = 0
    while index < len(tokens):
        option = _read_option(tokens, index)
        index += len(option.tokens)
        yield option


def _read_option(tokens: Sequence[str], index: int) -> Option:
    token = tokens[index]
    match = _OPTION.fullmatch(token)
    if match is None:
        return Option("", token, (token,))
    name = match["short"] or match["long"]
    if match["value"] is not None:
        return Option(name, match["value"], (token,))
    if index + 1 < len(tokens) and not is_option(tokens[index + 1]):
        return Option(name, tokens[index + 1], (token, tokens[index + 1]))
    return Option(name, None, (token,))


def quote(word: str) -> str:
    """Returns the word, quoted for /bin/sh."""
    return shlex.quote(word)


def quote_all(words: Sequence[str]) -> str:
    return " ".join(quote(word) for word in words)
