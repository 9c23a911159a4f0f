# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""vexil-fleet: runs a command of vexil on many hosts."""

import argparse
import os
import shutil
import signal
import sys
from typing import Optional, Sequence, TextIO

from ClusterShell.NodeSet import NodeSet, NodeSetException
from ClusterShell.NodeUtils import GroupResolverError
from ClusterShell.Topology import TopologyError

from . import ansible_export
from . import options as command_line
from .answers import Answer
from .engine import Engine, Settings
from .output import Output, report_failures
from .printer import DEFAULT_FORMATTER, BadFormat, Format, Printer
from .run import Request, Run, Stopped
from .words import read_options, split_path

ALL_WELL, SOME_FAILED, NO_RESULT = 0, 1, 2


class WrongUse(ValueError):
    """A call that cannot be carried out."""


def find_hosts(options: argparse.Namespace) -> NodeSet:
    try:
        hosts = NodeSet()
        for nodes in options.nodes + command_line.groups(options.group):
            hosts.update(NodeSet(nodes))
        if options.all:
            hosts.update(NodeSet.fromall())
        for nodes in options.exclude + command_line.groups(options.exclude_group):
            hosts.difference_update(NodeSet(nodes))
    except (NodeSetException, GroupResolverError) as error:
        raise WrongUse(f"Unable to read the hosts: {error}") from error
    if not hosts:
        raise WrongUse("There are no hosts")
    return hosts


def make_request(options: argparse.Namespace) -> Request:
    path, tokens = split_path(options.command)
    parameters = list(read_options(tokens))
    if not path:
        raise WrongUse(f"There is no option {options.command[0]}; vexil-fleet --help lists them")
    if any(option.name in ("help", "h") for option in parameters):
        raise WrongUse(f"For the help page: vexil {' '.join(path)} --help")
    return Request(path, parameters, strict=options.strict, is_confirmed=options.yes,
                   batch=options.batch, stop_on_failure=options.stop_on_failure)


def make_engine(options: argparse.Namespace) -> Engine:
    try:
        return Engine(Settings(
            fanout=options.fanout, connect_timeout=options.connect_timeout,
            command_timeout=options.command_timeout, user=options.user,
            ssh_options=" ".join(options.ssh_options), topology=options.topology))
    except TopologyError as error:
        raise WrongUse(f"Unable to read the topology: {error}") from error


def make_printer(options: argparse.Namespace, tool: Optional[str], plugin: str) -> Printer:
    wanted = Format(options.formatter or DEFAULT_FORMATTER,
                    command_line.format_parameters(options.format_param), options.screen_width,
                    options.sort, options.descending, options.limit)
    found = tool or shutil.which("vexil")
    if found is None:
        raise WrongUse("vexil is not installed here")
    return Printer(found, plugin, wanted)


def open_report(path: Optional[str]) -> Optional[TextIO]:
    if path is None:
        return None
    try:
        return open(path, "w", encoding="utf-8", errors="surrogateescape")
    except OSError as error:
        raise WrongUse(f"Unable to write {path}: {error.strerror}") from error


def write_report(report: Optional[TextIO], answers: Sequence[Answer]) -> None:
    if report is None:
        return
    try:
        with report:
            report.writelines(answer.to_json() + "\n" for answer in answers)
    except OSError as error:
        raise WrongUse(f"Unable to write {report.name}: {error.strerror}") from error


def exit_status(answers: Sequence[Answer]) -> int:
    failed = sum(1 for answer in answers if answer.is_failure)
    if failed == len(answers):
        return NO_RESULT
    return SOME_FAILED if failed else ALL_WELL


def carry_out(options: argparse.Namespace, tool: Optional[str], plugin: str) -> int:
    hosts = find_hosts(options)
    request = make_request(options)
    printer = make_printer(options, tool, plugin)
    merges = sys.stdout.isatty() if options.merge is None else options.merge
    report = open_report(options.report)
    engine = make_engine(options)
    answers = Run(engine, request, hosts, printer).answers()
    if engine.is_interrupted:
        done = NodeSet.fromlist(answer.host for answer in answers if not answer.is_failure)
        print(f"Interrupted. Done: {done or 'no host'}", file=sys.stderr)
    is_printed = Output(printer, merges).print(answers)
    report_failures(answers)
    write_report(report, answers)
    return exit_status(answers) if is_printed else NO_RESULT


def run(tool: Optional[str], plugin: str, version: str, arguments: Sequence[str]) -> int:
    """Returns the exit status, after printing the messages for the user."""
    if arguments[:1] == ["export-ansible"]:
        return ansible_export.main(tool or "vexil", arguments[1:])
    options = command_line.parse(arguments, version)
    try:
        return carry_out(options, tool, plugin)
    except (BadFormat, WrongUse, Stopped) as error:
        print(error, file=sys.stderr)
    except KeyboardInterrupt:
        print("Interrupted.", file=sys.stderr)
    return NO_RESULT


def end_by_signal(number: int) -> None:
    """Ends this process by the signal, as if no handler were installed."""
    signal.signal(number, signal.SIG_DFL)
    os.kill(os.getpid(), number)


def main(tool: Optional[str], plugin: str, arguments: Optional[Sequence[str]] = None,
         version: str = "") -> int:
    """Runs the program. `tool` is the path of the local vexil; None means to search in PATH."""
    # SIGTERM has the effect of Ctrl-C, so it ends the commands on the hosts as well.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        try:
            return run(tool, plugin, version,
                       sys.argv[1:] if arguments is None else list(arguments))
        finally:
            sys.stdout.flush()
    except BrokenPipeError:
        end_by_signal(signal.SIGPIPE)
    except OSError as error:
        # Otherwise, Python would try to write again at its end, and print a traceback.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        print(f"Unable to write to standard output: {error.strerror}", file=sys.stderr)
    return NO_RESULT
