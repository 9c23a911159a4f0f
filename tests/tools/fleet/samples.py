# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Descriptions of commands for tests."""

import json
from typing import Any, Dict, List, Sequence

import modules  # noqa: F401  pylint: disable=unused-import

from vexil_fleet.description import Description, Shape, read_fields

VOLUME: List[Dict[str, str]] = [
    {"Path": "Name", "Kind": "string", "Type": "none"},
    {"Path": "Size", "Kind": "int", "Type": "none"},
]


def volumes(kind: str = "structure-list", fields: Sequence[Dict[str, str]] = ()) -> Shape:
    """Returns the shape of a list of volumes, or of a single volume."""
    return Shape(kind, "Volume", read_fields([*VOLUME, *fields]))


def values(**changes: Any) -> Dict[str, Any]:
    """Returns what a host reports about the command that lists volumes."""
    own = {"Path": "volume list", "Description": "List the volumes.", "Plugin": "volume.xml",
           "Result Description": "none", "Result Kind": "structure-list", "Result Type": "Volume",
           "Columns": ["Name", "Size"], "Parameters": [], "Examples": [], "Format Parameters": [],
           "Formatter": "table", "Meta Data": [], "Fields": VOLUME}
    own.update({name.replace("_", " "): value for name, value in changes.items()})
    return own


def describe(**changes: Any) -> Description:
    return Description(json.dumps(values(**changes)).encode())


def parameter(name: str, short_name: str = "none", secret: bool = False) -> Dict[str, Any]:
    return {"Name": name, "Short Name": short_name, "Secret": secret}
