# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""A host's description of a command: the result of `vexil command describe`."""

import json
from dataclasses import dataclass
from typing import Any, Dict, List, Optional, Tuple

from .words import Option

# The fields of a whole description. The script in remote.py relies on their order: Meta Data comes
# after Formatter.
KEYS = ("Path", "Description", "Plugin", "Result Description", "Result Kind", "Result Type",
        "Columns", "Parameters", "Examples", "Format Parameters", "Formatter", "Meta Data",
        "Fields")

NONE = "none"
_LIST = "-list"


class BadDescription(ValueError):
    """A description that lacks something, or that has an unexpected form."""


@dataclass(frozen=True)
class Field:
    """A field of a structure. `inner` are the fields of the structures in it."""
    name: str
    kind: str
    type_name: str
    inner: Tuple["Field", ...] = ()

    def to_json(self) -> List[Any]:
        return [self.name, self.kind, self.type_name, [field.to_json() for field in self.inner]]


@dataclass(frozen=True)
class Shape:
    """What a command returns: `kind` as vexil names it, and for structures their fields."""
    kind: str
    type_name: str
    fields: Tuple[Field, ...]

    @property
    def is_list(self) -> bool:
        return self.kind.endswith(_LIST)

    @property
    def has_fields(self) -> bool:
        return self.kind.startswith("structure")


class Description:
    """The description of a command by one host."""

    def __init__(self, line: bytes) -> None:
        try:
            self.values: Dict[str, Any] = json.loads(line.decode("utf-8"))
            missing = [key for key in KEYS if key not in self.values]
            if missing:
                raise BadDescription("the description of the command lacks " + ", ".join(missing))
            self._read()
        except (AttributeError, KeyError, RecursionError, TypeError, ValueError) as error:
            if isinstance(error, BadDescription):
                raise
            raise BadDescription("the description of the command has another form") from error

    def _read(self) -> None:
        values = self.values
        self.path = str(values["Path"])
        self.formatter = str(values["Formatter"])
        self.columns: List[str] = [str(column) for column in values["Columns"]]
        self.meta_data = _settings(values["Meta Data"])
        self.format_parameters = _settings(values["Format Parameters"])
        self._secrets = {str(parameter["Name"]): _short_name(parameter)
                         for parameter in values["Parameters"] if parameter["Secret"]}
        self.shape = Shape(str(values["Result Kind"]), str(values["Result Type"]),
                           read_fields(values["Fields"]))

    @property
    def changes(self) -> bool:
        return self.meta_data.get("changes") == "true"

    @property
    def has_secrets(self) -> bool:
        return bool(self._secrets)

    def secret_name(self, option: Option) -> Optional[str]:
        """Returns the long name of the secret parameter that the option sets, if it sets one."""
        for name, short_name in self._secrets.items():
            if option.name and option.name in (name, short_name):
                return name
        return None


def _settings(entries: List[Dict[str, str]]) -> Dict[str, str]:
    return {str(entry["Name"]): str(entry["Value"]) for entry in entries}


def _short_name(parameter: Dict[str, Any]) -> Optional[str]:
    name = parameter["Short Name"]
    return None if name == NONE else name


def read_fields(rows: List[Dict[str, str]]) -> Tuple[Field, ...]:
    """Returns the tree of fields. In `rows`, the inner fields follow their field. A name may
    contain full stops."""
    fields, rest = _read_level(rows, 0, "")
    if rest != len(rows):
        raise BadDescription("the fields of the result are in disorder")
    return fields


def _read_level(rows: List[Dict[str, str]], index: int,
                prefix: str) -> Tuple[Tuple[Field, ...], int]:
    fields = []
    while index < len(rows) and rows[index]["Path"].startswith(prefix):
        row = rows[index]
        inner: Tuple[Field, ...] = ()
        index += 1
        if row["Kind"].startswith("structure"):
            inner, index = _read_level(rows, index, row["Path"] + ".")
        fields.append(Field(row["Path"][len(prefix):], row["Kind"], row["Type"], inner))
    return tuple(fields), index
