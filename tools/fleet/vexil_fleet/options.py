# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The options of vexil-fleet, which are before the path of the command."""

import argparse
import re
from dataclasses import dataclass
from typing import Any, Callable, Dict, List, Optional, Sequence, Tuple

_PARAMETER = re.compile(r"([A-Za-z0-9 .:-]+)=(.+)", re.DOTALL)

DESCRIPTION = """Runs a command of vexil on many hosts and prints their results as one list, with
the host in the first field."""

EPILOG = """Exit status: 0 if all hosts answered, 1 if some host failed, 2 if none answered or the
call was wrong. The manual page vexil-fleet(1) describes everything."""


def _count(text: str) -> int:
    if not text.isascii() or not text.isdigit() or int(text) == 0:
        raise argparse.ArgumentTypeError(f"not a positive whole number: {text}")
    return int(text)


def _seconds(text: str) -> float:
    if re.fullmatch(r"[0-9]+(\.[0-9]+)?", text, re.ASCII) is None:
        raise argparse.ArgumentTypeError(f"not a number of seconds: {text}")
    return float(text)


def _format_parameter(text: str) -> str:
    if _PARAMETER.fullmatch(text) is None:
        raise argparse.ArgumentTypeError(f"Unable to read format parameter {text}")
    return text


@dataclass(frozen=True)
class Declared:
    """An option. `metavar` names its value; a flag has none."""
    names: Tuple[str, ...]
    help: str
    metavar: Optional[str] = None
    type: Callable[[str], Any] = str
    is_repeated: bool = False

    def add_to(self, group: Any) -> None:
        if self.names[0] == "--merge":
            group.add_argument("--merge", action=argparse.BooleanOptionalAction, help=self.help)
        elif self.metavar is None:
            group.add_argument(*self.names, action="store_true", help=self.help)
        elif self.is_repeated:
            group.add_argument(*self.names, metavar=self.metavar, type=self.type, action="append",
                               default=[], help=self.help)
        else:
            group.add_argument(*self.names, metavar=self.metavar, type=self.type, help=self.help)


DECLARED: Dict[str, Tuple[Declared, ...]] = {
    "hosts, as ClusterShell names them": (
        Declared(("-w", "--nodes"), "hosts, such as web[1-40] or @GROUP; may be repeated", "NODES",
                 is_repeated=True),
        Declared(("-x", "--exclude"), "hosts to leave out; may be repeated", "NODES",
                 is_repeated=True),
        Declared(("-g", "--group"), "the hosts of a group; may be repeated", "GROUP",
                 is_repeated=True),
        Declared(("--exclude-group",), "a group of hosts to leave out; may be repeated",
                 "GROUP", is_repeated=True),
        Declared(("-a", "--all"), "all hosts that are in a group")),
    "connections": (
        Declared(("-f", "--fanout"), "how many hosts to work on at a time", "N", _count),
        Declared(("-t", "--connect-timeout"), "how long a connection may take to open", "SECONDS",
                 _seconds),
        Declared(("-u", "--command-timeout"),
                 "how long the work in one connection may take; 0 for any time", "SECONDS",
                 _seconds),
        Declared(("-l", "--user"), "the user on the hosts", "USER"),
        Declared(("-o", "--ssh-options"), "further options of ssh, such as '-F FILE'", "OPTIONS",
                 is_repeated=True),
        Declared(("--topology",), "reach hosts through the gateways in this file (tree mode)",
                 "FILE")),
    "output": (
        Declared(("--formatter",), "the format of the list; default: table", "NAME"),
        Declared(("--format-param",), "a parameter of the format; may be repeated", "KEY=VALUE",
                 _format_parameter, is_repeated=True),
        Declared(("--screen-width",), "the width to format for", "WIDTH"),
        Declared(("--sort",), "sort the list by this field", "FIELD"),
        Declared(("--descending",), "the greatest value first"),
        Declared(("--limit",), "print only so many rows, the first ones", "N"),
        Declared(("--merge", "--no-merge"), "print equal results once; default on a terminal"),
        Declared(("--report",), "write a line of JSON for each host", "FILE")),
    "runs": (
        Declared(("--strict",), "run nothing if the command is not the same on all hosts"),
        Declared(("--yes",), "do not ask before a command that changes something"),
        Declared(("--batch",), "finish so many hosts before the next ones start", "N", _count),
        Declared(("--stop-on-failure",), "start no further batch after so many hosts have failed",
                 "N", _count)),
}
ABOUT = (Declared(("-h", "--help"), "show this help message and exit"),
         Declared(("--version",), "show the name and the version and exit"))


def all_declared() -> List[Declared]:
    return [declared for group in DECLARED.values() for declared in group] + [*ABOUT]


def find(name: str) -> Optional[Declared]:
    """Returns the option with that name, which includes its dashes; None if there is none."""
    return next((declared for declared in all_declared() if name in declared.names), None)


def make_parser(version: str) -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="vexil-fleet", allow_abbrev=False, description=DESCRIPTION, epilog=EPILOG,
        usage="vexil-fleet -w NODES | -g GROUP | -a [options] PATH... [PARAMETERS]")
    parser.add_argument("--version", action="version", version=f"vexil-fleet {version}",
                        help=ABOUT[1].help)
    for title, options in DECLARED.items():
        group = parser.add_argument_group(title)
        for declared in options:
            declared.add_to(group)
    parser.add_argument("command", nargs=argparse.REMAINDER, help=argparse.SUPPRESS)
    return parser


def split_options(arguments: Sequence[str]) -> List[Tuple[str, ...]]:
    """Returns the options before the path, each with its value if that is the next argument."""
    options: List[Tuple[str, ...]] = []
    index = 0
    while index < len(arguments) and arguments[index].startswith("-"):
        declared = find(arguments[index])
        length = 1 if declared is None or declared.metavar is None else 2
        options.append(tuple(arguments[index:index + length]))
        index += length
    return options


def join_values(arguments: Sequence[str]) -> List[str]:
    """Joins options with their values, because argparse would read a value like -v as an option."""
    joined: List[str] = []
    options = split_options(arguments)
    for option in options:
        declared = find(option[0])
        if declared is not None and len(option) == 2:
            joined.append(f"{declared.names[-1]}={option[1]}")
        else:
            joined.append(option[0])
    return joined + list(arguments[sum(map(len, options)):])


def parse(arguments: Sequence[str], version: str = "") -> argparse.Namespace:
    """Returns the options. If they are wrong, prints a message and exits with status 2."""
    parser = make_parser(version)
    options = parser.parse_args(join_values(arguments))
    if not (options.nodes or options.group or options.all):
        parser.error("no hosts: name some with -w, -g or -a")
    if not options.command:
        parser.error("no command: write its path after the options")
    if options.descending and options.sort is None:
        parser.error("--descending needs --sort")
    return options


def format_parameters(texts: Sequence[str]) -> Dict[str, str]:
    return dict(text.split("=", 1) for text in texts)


def groups(names: Sequence[str]) -> List[str]:
    """Returns the node sets of groups: -g web,db and -g web -g db are the same."""
    return [f"@{name}" for text in names for name in text.split(",")]
