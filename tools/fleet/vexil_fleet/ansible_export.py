# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""vexil-fleet export-ansible: writes an Ansible module for a command of the local tool."""

import argparse
import json
import re
import subprocess
import sys
from pathlib import Path
from typing import Any, Dict, Iterator, List, Sequence

from .description import KEYS, NONE

_WRONG_USE = 2
_TYPES = {"string": "str", "int": "int", "bool": "bool", "flag": "bool"}
# The option that every module has.
_TOOL = {"description": ["The name or the path of the tool on the host."], "type": "str",
         "default": "vexil"}

_MODULE = """#!/usr/bin/python
# Written by vexil-fleet export-ansible from the description of the command.

from __future__ import absolute_import, division, print_function
__metaclass__ = type

DOCUMENTATION = r'''
---
{documentation}'''

EXAMPLES = r'''
{examples}'''

RETURN = r'''
{returned}'''

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.kestrel.vexil.plugins.module_utils.vexil import run_module

PATH = {path}
# The options, and the parameters that they set.
PARAMETERS = {parameters}
OPTIONS = {specification}


def main():
    module = AnsibleModule(argument_spec=OPTIONS, supports_check_mode=True)
    run_module(module, PATH, dict(
        (parameter, module.params[option]) for option, parameter in PARAMETERS.items()))


if __name__ == '__main__':
    main()
"""


class ExportError(ValueError):
    """A command that cannot be exported."""


def describe(tool: str, path: str) -> Dict[str, Any]:
    done = subprocess.run(
        [tool, "--formatter", "json-utf8", "--format-param", "fields=" + ",".join(KEYS), "vexil",
         "command", "describe", "--path", path], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
        stderr=subprocess.PIPE, check=False)
    if done.returncode != 0:
        raise ExportError(done.stderr.decode("utf-8", "replace").strip())
    values: Dict[str, Any] = json.loads(done.stdout.decode("utf-8"))
    return values


def option_name(parameter: str) -> str:
    """Returns the name of the option for a parameter: in lower case, with an underscore in place of
    whatever is neither a letter nor a digit. `tool` becomes `tool_`, because the module itself has
    an option `tool`."""
    name = re.sub(r"[^a-z0-9]", "_", parameter.lower())
    return f"{name}_" if name == "tool" else name


def module_name(path: str) -> str:
    return re.sub(r"[^a-z0-9]+", "_", path.lower())


def sentence(text: str, otherwise: str) -> str:
    return otherwise if text == NONE else text


def option_of(parameter: Dict[str, Any]) -> Dict[str, Any]:
    """Returns an option as Ansible declares it, in code and in documentation."""
    kind = parameter["Kind"]
    option: Dict[str, Any] = {"type": "list" if parameter["Multiple"] else _TYPES[kind]}
    if parameter["Multiple"]:
        option["elements"] = _TYPES[kind.split("-")[0]]
    if parameter["Required"]:
        option["required"] = True
    if parameter["Values"]:
        is_int = option.get("elements", option["type"]) == "int"
        option["choices"] = [int(each["Value"]) if is_int else each["Value"]
                             for each in parameter["Values"]]
    return option


def specification(values: Dict[str, Any]) -> Dict[str, Any]:
    options: Dict[str, Any] = {"tool": {"type": "str", "default": "vexil"}}
    for parameter in values["Parameters"]:
        # Every option has `no_log`, because Ansible would otherwise take one with a name such as
        # `key` for a secret.
        options[option_name(parameter["Name"])] = {**option_of(parameter),
                                                   "no_log": bool(parameter["Secret"])}
    return options


def documentation(values: Dict[str, Any]) -> Dict[str, Any]:
    description = sentence(values["Description"], "Runs the command.")
    options = {option_name(parameter["Name"]): {
        "description": [sentence(parameter["Description"], "A value of the command.")],
        **option_of(parameter)} for parameter in values["Parameters"]}
    return {"module": module_name(values["Path"]),
            "short_description": description.rstrip("."),
            "description": [description, f"Runs C(vexil {values['Path']})."],
            "author": ["The Kestrel authors (@kestrel)"],
            "options": {**options, "tool": _TOOL}}


def example(values: Dict[str, Any]) -> List[Dict[str, Any]]:
    required = {option_name(parameter["Name"]): f"{{{{ {option_name(parameter['Name'])} }}}}"
                for parameter in values["Parameters"] if parameter["Required"]}
    name = sentence(values["Description"], "Run the command.").rstrip(".")
    return [{"name": name, f"kestrel.vexil.{module_name(values['Path'])}": required}]


def returned(values: Dict[str, Any]) -> Dict[str, Any]:
    kind = values["Result Kind"]
    names = {"structure": "dict", **_TYPES}
    result: Dict[str, Any] = {
        "description": sentence(values["Result Description"], "The result of the command."),
        "returned": "success"}
    if kind.endswith("-list"):
        result.update(type="list", elements=names[kind[:-len("-list")]])
    else:
        result["type"] = names.get(kind, "raw")
    return {"result": result}


def to_yaml(value: Any, indent: int = 0) -> Iterator[str]:
    """Yields the lines of a value as YAML in block style. Scalars are written as JSON, which is
    valid YAML."""
    blank = " " * indent
    if isinstance(value, dict) and value:
        for key, inner in value.items():
            yield from _entry(f"{blank}{key}:", inner, indent + 2)
    elif isinstance(value, list) and value:
        for inner in value:
            lines = list(to_yaml(inner, indent + 2))
            yield f"{blank}- {lines[0].strip()}"
            yield from lines[1:]
    else:
        yield blank + json.dumps(value)


def _entry(head: str, value: Any, indent: int) -> Iterator[str]:
    if isinstance(value, (dict, list)) and value:
        yield head
        yield from to_yaml(value, indent)
    else:
        yield f"{head} {json.dumps(value)}"


def make_module(values: Dict[str, Any]) -> str:
    def block(value: Any) -> str:
        text = "".join(line + "\n" for line in to_yaml(value))
        if "'''" in text:
            raise ExportError("the description contains ''', which a module cannot quote")
        return text
    parameters = {option_name(each["Name"]): each["Name"] for each in values["Parameters"]}
    if len(parameters) != len(values["Parameters"]):
        raise ExportError("two parameters become the same option")
    return _MODULE.format(
        documentation=block(documentation(values)), examples=block(example(values)),
        returned=block(returned(values)), path=repr(values["Path"]),
        parameters=_literal(parameters), specification=_literal(specification(values)))


def _literal(value: Dict[str, Any]) -> str:
    """Returns a dictionary in Python, a line for each of its members."""
    if not value:
        return "{}"
    return "{\n" + "".join(f"    {name!r}: {each!r},\n" for name, each in value.items()) + "}"


def main(tool: str, arguments: Sequence[str]) -> int:
    parser = argparse.ArgumentParser(
        prog="vexil-fleet export-ansible", allow_abbrev=False,
        description="Writes an Ansible module for a command of vexil.")
    parser.add_argument("--output", metavar="FOLDER", type=Path,
                        help="write FOLDER/NAME.py; default: standard output")
    parser.add_argument("path", nargs="+", help="the path of the command")
    options = parser.parse_args(arguments)
    try:
        values = describe(tool, " ".join(options.path))
        text = make_module(values)
        if options.output is None:
            sys.stdout.write(text)
        else:
            file = options.output / f"{module_name(values['Path'])}.py"
            file.write_text(text, encoding="utf-8")
            print(file)
    except (ExportError, OSError) as error:
        print(error, file=sys.stderr)
        return _WRONG_USE
    return 0
