#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs vexil-fleet for a long time with many ssh servers, and compares it with clush.

    campaign.py --tree BUILD [OPTION...] [PART...]

The parts, all of them if none is named:

    commands   one command line after another on all hosts, until N commands have run in total: the
               answers to equal command lines have the same bytes, and no process is left over
    rows       a list of N rows on each host, with different rows on each: all rows are printed, and
               the memory is below three times the bytes received, if these are at least 20 MB
    clush      a list on 16 hosts, in turns with clush, which runs the same command: the median of
               the ratios of the elapsed times is at most 1.3
    merge      64 results with 10,000 rows each are compared in less than three seconds of
               processor time
    connection prints what a connection with a real server costs on the user's side
    scale      simulated hosts, which need no key exchange: reached directly with two fan-outs, and
               through gateways; the memory is below three times the bytes received, if these are at
               least 20 MB

Prints figures. The exit status is 1 if one of these conditions is not met, and 77 if a part needs
ssh servers and none can be started.
"""

import argparse
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import Any, Callable, Dict, List, NamedTuple, Sequence

_MAX_RATIO, _MAX_MEMORY, _MAX_MERGE = 1.3, 3.0, 3.0
# With fewer bytes, most of the memory is that of Python and of the tool.
_MAX_START = 20_000_000
_MERGED, _MERGED_ROWS = 64, 10_000
_COMPARED = 16
_PARTS = ("merge", "clush", "connection", "commands", "rows", "scale")
SKIPPED = 77


class Done(NamedTuple):
    """What a call printed, and what it used. `memory` is that of its largest process, in bytes."""
    status: int
    out: bytes
    err: bytes
    wall: float
    processor: float
    memory: int


# The peak memory of a process includes the time when it is still a copy of its parent. So a small
# process starts the command.
_MEASURE = """
import json, os, subprocess, sys, time
start = time.monotonic()
process = subprocess.Popen(sys.argv[2:])
_, status, usage = os.wait4(process.pid, 0)
process.returncode = os.waitstatus_to_exitcode(status)
with open(int(sys.argv[1]), "w", encoding="ascii") as report:
    json.dump([process.returncode, time.monotonic() - start, usage.ru_utime + usage.ru_stime,
               usage.ru_maxrss * 1024], report)
"""


def call(command: Sequence[Any], environment: Dict[str, str]) -> Done:
    """Runs a command, and measures what it and the processes that it starts use."""
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err, \
            tempfile.TemporaryFile() as report:
        number = report.fileno()
        subprocess.run([sys.executable, "-c", _MEASURE, str(number), *command], env=environment,
                       stdin=subprocess.DEVNULL, stdout=out, stderr=err, pass_fds=[number],
                       check=True)
        for file in (out, err, report):
            file.seek(0)
        status, wall, processor, memory = json.load(report)
        return Done(status, out.read(), err.read(), wall, processor, memory)


class Campaign:
    """The hosts, and the calls of the programs that reach them."""

    def __init__(self, options: argparse.Namespace, fleet: Any) -> None:
        self.options = options
        self.fleet = fleet
        self.problems: List[str] = []
        self.environment = {**os.environ, "LC_ALL": "C.UTF-8"}

    def check(self, holds: bool, problem: str) -> None:
        if not holds:
            self.problems.append(problem)
            print(f"PROBLEM: {problem}", flush=True)

    def nodes(self, count: int) -> str:
        return f"web[1-{count}]"

    def fleet_command(self, count: int, *words: str) -> List[Any]:
        stage = self.options.tree / "stage"
        return [stage / "bin/vexil-fleet", "-f", str(self.options.fanout), "-o",
                f"-F{self.fleet.ssh_config}", "-w", self.nodes(count), *words]

    def clush_command(self, count: int, command: str) -> List[str]:
        return ["clush", "-f", str(self.options.fanout), "-o", f"-F{self.fleet.ssh_config}", "-w",
                self.nodes(count), command]

    def commands(self) -> None:
        """All answers to one command with one formatter must have the same bytes."""
        hosts, wanted = self.options.hosts, self.options.commands
        kinds = [("ndjson", "volume", "list"), ("table", "volume", "list"),
                 ("csv", "volume", "show"), ("json-utf8", "volume", "show")]
        first: Dict[int, bytes] = {}
        calls, differing, start = 0, 0, time.monotonic()
        while calls * hosts < wanted and len(self.problems) < 10 and \
                time.monotonic() - start < self.options.minutes * 60:
            kind = calls % len(kinds)
            done = call(self.fleet_command(hosts, "--no-merge", "--formatter", *kinds[kind]),
                        self.environment)
            self.check(done.status == 0 and not done.err,
                       f"call {calls}: {done.status} {done.err!r}")
            is_same = done.out == first.setdefault(kind, done.out)
            self.check(is_same, f"call {calls}: other bytes")
            differing += not is_same
            calls += 1
            if calls % 20 == 0:
                print(f"{calls * hosts} commands", file=sys.stderr, flush=True)
        seconds = time.monotonic() - start
        self.check_no_processes()
        print(f"commands: {calls} calls for {hosts} hosts, {calls * hosts} commands in "
              f"{seconds:.0f} s, {seconds / calls:.2f} s a call; {differing} with other bytes",
              flush=True)

    def check_no_processes(self) -> None:
        end = time.monotonic() + 30
        while any(host.processes() for host in self.fleet.hosts.values()):
            if time.monotonic() > end:
                self.check(False, "processes are left over")
                return
            time.sleep(0.1)

    def rows(self) -> None:
        """No row may be lost, however many there are."""
        hosts, rows = self.options.hosts, self.options.rows
        for number, host in enumerate(self.fleet.hosts.values()):
            self.set_rows(host, [{"Name": f"volume-{number}-{row}", "Size": row * hosts + number}
                                 for row in range(rows)])
        report = self.fleet.folder / "report"
        done = call(self.fleet_command(hosts, "--no-merge", "--formatter=ndjson", "--report",
                                       str(report), "volume", "list"), self.environment)
        received = sum(json.loads(line)["bytes"]
                       for line in report.read_text(encoding="utf-8").splitlines())
        self.check(done.status == 0 and not done.err, f"rows: {done.status} {done.err[-500:]!r}")
        self.check(done.out.count(b"\n") == hosts * rows, f"rows: {done.out.count(10)} lines")
        sizes = sum(int(line.rpartition(b":")[2][:-1]) for line in done.out.splitlines())
        everything = hosts * rows
        self.check(sizes == everything * (everything - 1) // 2, "rows: other values")
        ratio = done.memory / received
        start = call(self.fleet_command(1, "--version"), self.environment).memory
        self.check(ratio < _MAX_MEMORY or received < _MAX_START,
                   f"rows: {ratio:.2f} times the bytes received")
        print(f"rows: {hosts} hosts with {rows} rows each in {done.wall:.0f} s, "
              f"{received / 1e6:.0f} MB received, memory {done.memory / 1e6:.0f} MB, which is "
              f"{ratio:.2f} times the bytes; {start / 1e6:.0f} MB are from the start", flush=True)

    @staticmethod
    def set_rows(host: Any, volumes: Sequence[Dict[str, Any]]) -> None:
        from fleet_case import FleetCase  # pylint: disable=import-outside-toplevel
        FleetCase.set_volumes(host, volumes)

    def clush(self) -> None:
        """Runs vexil-fleet and clush in turns, because the load of the machine varies."""
        count = min(_COMPARED, self.options.hosts)
        own = self.fleet_command(count, "--formatter=ndjson", "volume", "list")
        other = self.clush_command(count, "vexil --formatter ndjson volume list")
        pairs = []
        for _ in range(self.options.rounds):
            pairs.append((self.measured(own), self.measured(other)))
        for what, unit in (("wall", "s"), ("processor", "s")):
            times = [(getattr(ours, what), getattr(theirs, what)) for ours, theirs in pairs]
            ratio = statistics.median(ours / theirs for ours, theirs in times)
            print(f"clush: {count} hosts, {len(pairs)} rounds, {what} time "
                  f"{statistics.median(ours for ours, _ in times):.2f} {unit} against "
                  f"{statistics.median(theirs for _, theirs in times):.2f} {unit}, "
                  f"median of the ratios {ratio:.2f}", flush=True)
            if what == "wall":
                self.check(ratio <= _MAX_RATIO, f"clush: {ratio:.2f} times its time")

    def connection(self) -> None:
        """Prints the cost per host. It is the difference of two runs, so it excludes the start."""
        few, many = min(8, self.options.hosts // 2), self.options.hosts
        words = ("--formatter=ndjson", "volume", "list")
        costs = []
        for _ in range(self.options.rounds):
            done = [call(self.fleet_command(count, *words), self.environment)
                    for count in (few, many)]
            self.check(not any(each.status for each in done), "connection: a host failed")
            costs.append((done[1].processor - done[0].processor) / (many - few))
        print(f"connection: {statistics.median(costs) * 1000:.1f} ms of processor time of this "
              f"side for each, with ssh ({few} and {many} hosts, {len(costs)} rounds)", flush=True)

    def measured(self, command: Sequence[Any]) -> Done:
        """Runs a command. Its processor time includes that of the hosts."""
        before = self.host_seconds()
        done = call(command, self.environment)
        self.check(done.status == 0, f"{command[0]}: {done.status} {done.err[-500:]!r}")
        self.check_no_processes()
        return done._replace(processor=done.processor + self.host_seconds() - before)

    def host_seconds(self) -> float:
        """Returns the processor time that the servers and their ended children have used."""
        ticks = 0
        for host in self.fleet.hosts.values():
            pid = (host.folder / "sshd.pid").read_text(encoding="ascii").strip()
            fields = Path(f"/proc/{pid}/stat").read_text(encoding="ascii").rsplit(")", 1)[1].split()
            ticks += sum(map(int, fields[11:15]))
        return ticks / os.sysconf("SC_CLK_TCK")


def scale(check: Callable[[bool, str], None], program: Path, count: int) -> None:
    """Measures what the user's side needs for many hosts."""
    from simulated import SimulatedHosts  # pylint: disable=import-outside-toplevel
    for fanout, gateways in ((64, None), (512, None), (64, 100)):
        with SimulatedHosts(program) as hosts:
            taken = hosts.run(count, fanout, gateways)
        check(taken.status == 0, f"scale: status {taken.status}")
        ratio = taken.memory / taken.received
        check(ratio < _MAX_MEMORY or taken.received < _MAX_START,
              f"scale: {ratio:.2f} times the bytes received")
        print(f"scale: {count} hosts, fan-out {fanout}, {gateways or 'no'} gateways: "
              f"{taken.wall:.0f} s, {taken.received / 1e6:.1f} MB of answers, vexil-fleet alone "
              f"{taken.processor:.1f} s of processor time and {taken.memory / 1e6:.0f} MB, which is "
              f"{ratio:.2f} times the bytes, and at most {taken.files} open files seen",
              flush=True)


def merge(check: Callable[[bool, str], None]) -> None:
    """Measures the time of all work between the arrival of the results and their printing."""
    import samples  # pylint: disable=import-outside-toplevel
    from vexil_fleet.answers import Answer, Status  # pylint: disable=import-outside-toplevel
    from vexil_fleet.merge import Reference, group_by_value  # pylint: disable=C0415
    from vexil_fleet.rows import read_rows  # pylint: disable=import-outside-toplevel
    from vexil_fleet.stored import StoredLines  # pylint: disable=import-outside-toplevel
    description = samples.describe()

    def body(number: int, own: int) -> bytes:
        return b"".join(b'{"Name":"volume%d","Size":%d}\n' % (row, row + (row < own) * number)
                        for row in range(_MERGED_ROWS))
    for own in (0, 1, _MERGED_ROWS):
        bodies = [body(number, own) for number in range(_MERGED)]
        start = time.process_time()
        answers = [Answer(f"web{number}", Status.OK, description=description,
                          rows=read_rows(description.shape, StoredLines(each)))
                   for number, each in enumerate(bodies)]
        groups = group_by_value(answers)
        reference = Reference(groups[0])
        lines = sum(len(list(comparison.show())) for comparison in
                    map(reference.compare, groups[1:]) if comparison is not None)
        seconds = time.process_time() - start
        check(seconds < _MAX_MERGE, f"merge: {seconds:.2f} s")
        print(f"merge: {_MERGED} results with {_MERGED_ROWS} rows, {own} of them other ones in "
              f"each: {len(groups)} groups, {lines} lines of differences, {seconds:.2f} s of "
              "processor time", flush=True)


def read_options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--tree", type=Path, required=True, help="the build tree")
    parser.add_argument("--hosts", type=int, default=64, help="how many hosts; default: 64")
    parser.add_argument("--fanout", type=int, default=64,
                        help="how many hosts are reached at a time; default: 64")
    parser.add_argument("--rows", type=int, default=100_000,
                        help="how many rows each has; default: 100,000")
    parser.add_argument("--commands", type=int, default=10_000,
                        help="how many commands run, of all hosts; default: 10,000")
    parser.add_argument("--minutes", type=float, default=60,
                        help="how long commands run at most; default: 60")
    parser.add_argument("--rounds", type=int, default=11,
                        help="how many comparisons with clush; default: 11")
    parser.add_argument("--simulated", type=int, default=10_000,
                        help="how many hosts are simulated; default: 10,000")
    parser.add_argument("parts", nargs="*", metavar="PART",
                        help=f"{', '.join(_PARTS)}; default: all")
    options = parser.parse_args()
    unknown = set(options.parts) - set(_PARTS)
    if unknown:
        parser.error("unknown part: " + ", ".join(sorted(unknown)))
    options.parts = options.parts or _PARTS
    return options


def run_with_hosts(options: argparse.Namespace, parts: Sequence[str]) -> List[str]:
    from fleet_case import FleetCase  # pylint: disable=import-outside-toplevel
    from sshd_hosts import Fleet  # pylint: disable=import-outside-toplevel
    stage = options.tree / "stage"
    names = [f"web{number + 1}" for number in range(options.hosts)]
    with Fleet(names, str(stage / "bin/vexil"), str(options.tree / "empty-plugin-dir")) as fleet:
        for host in fleet.hosts.values():
            for plugin in (stage / "lib/norvane/vexil").glob("*.so"):
                host.add_plugin(plugin)
            FleetCase.set_fields(host, "")
            FleetCase.set_volumes(host, [{"Name": f"volume{row}", "Size": row}
                                         for row in range(20)])
            host.start()
        campaign = Campaign(options, fleet)
        for part in parts:
            getattr(campaign, part)()
        return campaign.problems


def main() -> int:
    options = read_options()
    options.tree = options.tree.resolve()
    os.environ["KESTREL_STAGE"] = str(options.tree / "stage")
    os.environ["KESTREL_PLUGIN_DIR"] = str(options.tree / "empty-plugin-dir")
    from sshd_hosts import reason_to_skip  # pylint: disable=import-outside-toplevel
    problems: List[str] = []

    def check(holds: bool, problem: str) -> None:
        if not holds:
            problems.append(problem)
    if "merge" in options.parts:
        merge(check)
    if "scale" in options.parts:
        scale(check, options.tree / "stage/bin/vexil-fleet", options.simulated)
    parts = [part for part in options.parts if part not in ("merge", "scale")]
    if parts:
        reason = reason_to_skip()
        if reason is not None:
            print(reason)
            return SKIPPED
        problems += run_with_hosts(options, parts)
    print("\n".join(problems) or "no problem")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
