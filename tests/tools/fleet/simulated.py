# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Many simulated hosts. A program replaces ssh: it runs the gateways on this machine, and answers
as the script on a host would. Everything on the user's side is real.
"""

import json
import os
import resource
import socket
import subprocess
import tempfile
import time
from pathlib import Path
from typing import Any, Dict, List, NamedTuple, Optional, Sequence

import modules  # noqa: F401  pylint: disable=unused-import

import samples
from vexil_fleet.remote import REMOTE_COMMAND

_SSH = """#!/bin/sh
for command; do :; done
[ "$command" != '{remote}' ] || exec sed -n -f '{folder}/answer'
exec /bin/sh -c "$command"
"""
# Reads the script up to its last line, because its standard input stays open. The first rule stores
# the mark of the run.
_ANSWER = r"""
/.*"\(vexil-fleet-[0-9a-f]*\) begin".*/ {{
  s//\1/
  h
}}
/; exit 0$/ {{
  g; s/.*/\n& begin/p
  i\
{description}
  g; s/.*/\n& described 0/p
  i\
{rows}
  g; s/.*/\n& ended 0/p
  q
}}
"""
_DOCUMENTATION = "What this field of a volume means, in one sentence as a plug-in has it."
_ROWS = 40
_TICKS = os.sysconf("SC_CLK_TCK")


class Taken(NamedTuple):
    """What a run took. `processor`, `memory` (in bytes) and `files`, which is the greatest number of
    open files that was seen, are those of vexil-fleet alone."""
    wall: float
    processor: float
    memory: int
    files: int
    received: int
    status: int


class SimulatedHosts:
    """A context manager with the programs that replace ssh and the hosts."""

    def __init__(self, program: Path) -> None:
        self._program = program
        self._temporary = tempfile.TemporaryDirectory(prefix="vexil-fleet-")
        self._folder = Path(self._temporary.name)
        fields = [{**field, "Documentation": _DOCUMENTATION} for field in samples.VOLUME]
        rows = "\n".join(f'{{"Name":"a volume with a name {row:04}","Size":{row}}}'
                         for row in range(_ROWS))
        self._write("ssh", _SSH.format(folder=self._folder, remote=REMOTE_COMMAND))
        self._write("answer", _ANSWER.format(
            description=_quote(json.dumps(samples.values(Fields=fields))), rows=_quote(rows)))

    def __enter__(self) -> "SimulatedHosts":
        return self

    def __exit__(self, *_: object) -> None:
        self._temporary.cleanup()

    def _write(self, name: str, text: str) -> Path:
        path = self._folder / name
        path.write_text(text, encoding="utf-8")
        path.chmod(0o755)
        return path

    def run(self, hosts: int, fanout: int, gateways: Optional[int] = None) -> Taken:
        """Runs a command on this many hosts, through gateways if their number is given."""
        report = self._folder / "report"
        command: List[Any] = [self._program, "-w", f"web[1-{hosts}]", "-f", str(fanout), "--merge",
                              "--report", report, "--formatter=ndjson"]
        if gateways is not None:
            here = socket.gethostname().partition(".")[0]
            command += ["--topology", self._write("topology.conf", (
                f"[routes]\n{here}: gateway[1-{gateways}]\n"
                f"gateway[1-{gateways}]: web[1-{hosts}]\n"))]
        start = time.monotonic()
        with subprocess.Popen([*command, "volume", "list"], stdout=subprocess.DEVNULL,
                              env=self._environment(), preexec_fn=_raise_limits) as process:
            try:
                processor, memory, files = _watch(process)
            except BaseException:
                process.terminate()  # before the program that replaces ssh is deleted
                raise
        received = sum(json.loads(line)["bytes"]
                       for line in report.read_text(encoding="utf-8").splitlines())
        return Taken(time.monotonic() - start, processor, memory, files, received,
                     process.returncode)

    def _environment(self) -> Dict[str, str]:
        return {"PATH": f"{self._folder}:/usr/bin:/bin", "LC_ALL": "C.UTF-8",
                "CLUSTERSHELL_GW_LOG_DIR": str(self._folder)}


def _quote(text: str) -> str:
    """Returns the lines as an argument of a command of sed."""
    return text.replace("\\", "\\\\").replace("\n", "\\\n")


def _raise_limits() -> None:
    _, most = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))


def _watch(process: "subprocess.Popen[bytes]") -> "tuple[float, int, int]":
    """Returns the processor time, the greatest memory and the greatest number of open files of a
    process without its children."""
    processor, memory, files = 0.0, 0, 0
    while process.poll() is None:
        try:
            stat = Path(f"/proc/{process.pid}/stat").read_text(encoding="ascii")
            status = Path(f"/proc/{process.pid}/status").read_text(encoding="ascii")
            files = max(files, len(os.listdir(f"/proc/{process.pid}/fd")))
        except OSError:
            continue
        words: Sequence[str] = stat.rsplit(")", 1)[1].split()
        processor = max(processor, (int(words[11]) + int(words[12])) / _TICKS)
        for line in status.splitlines():
            if line.startswith("VmHWM:"):
                memory = max(memory, int(line.split()[1]) * 1024)
        time.sleep(0.05)
    return processor, memory, files
