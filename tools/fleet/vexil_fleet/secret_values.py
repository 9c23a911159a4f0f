# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Reads each secret from the command line or at a prompt, and keeps it out of all other command
lines."""

import getpass
import os
import sys
from typing import List, Sequence, Tuple

from .description import Description
from .words import Option


class BadSecret(ValueError):
    """A secret that cannot be sent."""


def take_secrets(options: Sequence[Option],
                 descriptions: Sequence[Description]) -> Tuple[List[str], List[str]]:
    """Returns the tokens of the line without values of secrets, and these values in their order."""
    tokens: List[str] = []
    values: List[str] = []
    for option in options:
        name = next(filter(None, (each.secret_name(option) for each in descriptions)), None)
        if name is None:
            tokens += option.tokens
        else:
            tokens.append(f"--{name}")
            values.append(_checked(ask(name) if option.value is None else option.value, name))
    return tokens, values


def ask(name: str) -> str:
    """Asks for a secret as vexil does: without echo on a terminal; otherwise, a line of standard
    input is read. Throws BadSecret if the input on a terminal ends."""
    if sys.stdin.isatty():
        try:
            return getpass.getpass(f"Enter value for '{name}': ")
        except EOFError:
            print(file=sys.stderr)  # the prompt has no line end yet
            raise BadSecret(f"There is no value of --{name}") from None
    return os.fsdecode(sys.stdin.buffer.readline()).rstrip("\n")


def _checked(value: str, name: str) -> str:
    if "\n" in value or "\0" in value:
        raise BadSecret(f"The value of --{name} must be one line")
    return value
