#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs the examples of the guide about many hosts, with real ssh servers.

    check_guide.py STAGE PLUGIN_DIR [--update]

STAGE is an installed tree, PLUGIN_DIR the folder where its tool looks for plug-ins. The exit status
is 77 if no ssh server can be started here.
"""

import os
import subprocess
import sys
from pathlib import Path

os.environ["KESTREL_STAGE"], os.environ["KESTREL_PLUGIN_DIR"] = sys.argv[1:3]

# pylint: disable=wrong-import-position
from fleet_case import FleetCase
from sshd_hosts import Fleet, reason_to_skip

ROOT = Path(__file__).resolve().parents[3]
SKIPPED = 77


def add_hosts(fleet: Fleet, stage: Path) -> None:
    for name, host in fleet.hosts.items():
        host.add_plugin(stage / "lib/norvane/vexil/vexil.so")
        FleetCase.set_fields(host, "")
        FleetCase.set_volumes(host, [{"Name": "archive", "Size": 1024 if name == "web4" else 512},
                                     {"Name": "scratch", "Size": 64}])
        if name != "web5":
            host.start()


def check(fleet: Fleet, stage: Path, update: bool) -> int:
    """Runs the examples with a `vexil-fleet` that uses the configuration of the test hosts. Returns
    the exit status."""
    program = fleet.folder / "vexil-fleet"
    program.write_text(f"#!/bin/sh\nexec '{stage}/bin/vexil-fleet' -o '-F{fleet.ssh_config}' \"$@\"\n",
                       encoding="utf-8")
    program.chmod(0o755)
    return subprocess.run(
        [sys.executable, "-B", ROOT / "scripts/check_examples.py", *["--update"] * update,
         "--tool", stage / "bin/vexil", "--program", program, "docs/fleet.md"],
        cwd=ROOT, check=False).returncode


def main() -> int:
    reason = reason_to_skip()
    if reason is not None:
        print(reason)
        return SKIPPED
    stage = Path(sys.argv[1]).resolve()
    names = [f"web{number}" for number in range(1, 6)]
    with Fleet(names, str(stage / "bin/vexil"), sys.argv[2]) as fleet:
        add_hosts(fleet, stage)
        return check(fleet, stage, "--update" in sys.argv)


if __name__ == "__main__":
    sys.exit(main())
