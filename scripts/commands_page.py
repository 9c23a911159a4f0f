#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Writes the page that lists all commands, or checks that it is current.

    commands_page.py [--check] --tool TOOL --plugin-dir DIR PAGE

The page is generated from the declarations of the commands. --check compares it with PAGE and
prints the differences; the exit status is 1 if there are any.
"""

import argparse
import difflib
import itertools
import sys

from declared_commands import Tool, changes_something

HEAD = """<!--
SPDX-FileCopyrightText: 2026 The Kestrel authors
SPDX-License-Identifier: Apache-2.0
-->

# Commands

All commands that this project installs, with their parameters and the fields of their results. The
page is generated from the declarations of the commands. `vexil command describe --path "..."` shows
the same for any command, including those of other plug-ins.

<!-- sources -->
Do not edit this page: `cmake --build build/dev --target update_commands` rewrites it.
<!-- /sources -->

- `list` commands succeed if nothing matches. `get` and `check` commands report an error that names
  what was not found.
- A parameter in **bold** is required. The parameter `help`, which every command has, is omitted.
- A field with dots is a field of the structures in the field before the dot.
"""


def cell(text):
    """Returns a string as the cell of a table: markup characters are escaped, and "none" becomes empty."""
    if text == "none":
        return ""
    for character in "\\|<>*_`[]":
        text = text.replace(character, "\\" + character)
    return text.replace("\n", " ")


def code(text):
    """Returns a string as code in the cell of a table."""
    return "`" + text.replace("|", "\\|") + "`"


def anchor(path):
    return path.replace(".", "-")


def parameter_row(parameter):
    name = code("--" + parameter["Name"])
    if parameter["Required"]:
        name = f"**{name}**"
    if parameter["Short Name"] != "none":
        name += ", " + code("-" + parameter["Short Name"])
    kind = parameter["Kind"] + (", secret" if parameter["Secret"] else "")
    return f"| {name} | {kind} | {cell(parameter['Description'])} |"


def field_row(field):
    return f"| {cell(field['Path'])} | {field['Kind']} | {cell(field['Documentation'])} |"


def table(head, rows):
    columns = head.count("|") - 1
    return ["", head, "|" + "---|" * columns, *rows]


def default_format(command):
    if not command["Columns"] or command["Columns"] == ["none"]:
        return f"Default format: {command['Formatter']}."
    return f"Default format: {command['Formatter']}, with {cell(', '.join(command['Columns']))}."


def result_line(command):
    description = cell(command["Result Description"])
    result = f"Result: {command['Result Kind']}" + (f", {description}" if description else ".")
    return f"{result} {default_format(command)} Plug-in: `{command['Plugin']}`."


def section(path, command):
    """Returns the lines about one command."""
    lines = ["", "### " + path.replace(".", " "), "", cell(command["Description"])]
    if changes_something(command):
        lines += ["", "**This command changes the machine.**"]
    lines += ["", result_line(command)]
    if command["Parameters"]:
        lines += table("| parameter | kind | meaning |",
                       [parameter_row(parameter) for parameter in command["Parameters"]])
    if command["Fields"]:
        lines += table("| field | kind | meaning |",
                       [field_row(field) for field in command["Fields"]])
    if command["Examples"]:
        lines += ["", "```sh"]
        for example in command["Examples"]:
            lines += [f"# {example['Description']}", "vexil " + example["Line"]]
        lines += ["```"]
    return lines


def overview(commands):
    rows = [f"| [{path.replace('.', ' ')}](#{anchor(path)}) | {cell(command['Description'])} |"
            for path, command in commands]
    return table("| command | what it does |", rows)


def page(commands):
    """Returns the text of the page."""
    lines = HEAD.splitlines() + overview(commands)
    for root, members in itertools.groupby(commands, lambda item: item[0].split(".")[0]):
        lines += ["", f"## {root}"]
        for path, command in members:
            lines += section(path, command)
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--tool", required=True)
    parser.add_argument("--plugin-dir", required=True)
    parser.add_argument("page")
    options = parser.parse_args()
    text = page(list(Tool(options.tool, options.plugin_dir).commands()))
    if not options.check:
        with open(options.page, "w", encoding="utf-8") as file:
            file.write(text)
        return 0
    with open(options.page, encoding="utf-8") as file:
        present = file.read()
    sys.stdout.writelines(difflib.unified_diff(
        present.splitlines(True), text.splitlines(True), options.page, "what the commands declare"))
    return int(present != text)


if __name__ == "__main__":
    sys.exit(main())
