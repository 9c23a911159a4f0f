# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""A simulated tool, for the tests of scripts that query the tool about its commands."""

import json
import os

SCRIPT = """#!/bin/sh
while [ "${1#--}" != "$1" ]; do shift 2; done
case "$*" in
  "vexil command list") cat "$0.list" ;;
  "vexil command describe --path "*) cat "$0.$5" ;;
  *) . "$0.work" ;;
esac
"""

COMMAND = {
    "Description": "List the hats.", "Plugin": "hat.so", "Result Kind": "structure-list",
    "Result Description": "The hats.", "Formatter": "table", "Columns": ["Size"], "Meta Data": [],
    "Parameters": [], "Fields": [], "Examples": []}


def install(folder, commands, work=":"):
    """Writes a tool into `folder` that describes `commands`, by dotted path, and runs the shell
    command `work` for any other arguments. Returns the path of the tool."""
    tool = os.path.join(folder, "tool")
    rows = [dict(zip(("Namespace", "Command"), path.rsplit(".", 1))) for path in commands]
    files = {"": SCRIPT, ".list": json.dumps(rows), ".work": work + "\n"}
    files.update({"." + path: json.dumps({**COMMAND, **own}) for path, own in commands.items()})
    for suffix, text in files.items():
        with open(tool + suffix, "w", encoding="utf-8") as file:
            file.write(text)
    os.chmod(tool, 0o755)
    return tool
