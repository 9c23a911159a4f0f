# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""vexil-fleet through gateways: web1 and web2 reach web3 to web5; web6 is reached directly."""

import os
import signal
import socket
import subprocess
import time
import unittest
from pathlib import Path
from typing import Any, List, Optional, Union
from unittest import mock

from fleet_case import FleetCase, Result

_FAR = "web[3-5]"
_ROUTES = """[routes]
{here}: web[1-2]
web[1-2]: web[3-5]
"""


class Gateways(FleetCase):
    """Hosts that are reached through gateways. The gateways run ClusterShell."""

    count = 6

    def setUp(self) -> None:
        super().setUp()
        for host in self.fleet.hosts.values():
            (host.folder / "waits").unlink(missing_ok=True)
        here = socket.gethostname().partition(".")[0]
        self.topology = self.fleet.folder / "topology.conf"
        self.topology.write_text(_ROUTES.format(here=here), encoding="ascii")
        # Without this variable, the gateways write into /tmp.
        variables = mock.patch.dict(os.environ, CLUSTERSHELL_GW_LOG_DIR=str(self.fleet.folder))
        variables.start()
        self.addCleanup(variables.stop)

    def command(self, *words: Union[str, bytes], hosts: Optional[str] = None) -> List[Any]:
        return super().command("--topology", str(self.topology), *words, hosts=hosts)

    def assert_rows(self, result: Result, *hosts: str) -> None:
        self.assertEqual(list(hosts), [row["Host"] for row in result.rows], result.err)

    def gateways(self) -> "dict[str, List[int]]":
        """Returns the processes of gateways, by their host."""
        return {name: [pid for pid in host.processes() if b"ClusterShell.Gateway" in _words(pid)]
                for name, host in self.fleet.hosts.items()}

    def stop(self, name: str) -> None:
        host = self.fleet[name]
        self.addCleanup(host.start)
        host.stop()
        self.wait_until(lambda: not self._listens(host.address), f"{name} has stopped")

    def _listens(self, address: str) -> bool:
        with socket.socket() as probe:
            return probe.connect_ex((address, self.fleet.port)) == 0

    def test_all_hosts_answer(self) -> None:
        result = self.call("--formatter=ndjson", "volume", "list")
        self.assert_rows(result, *[f"web{number}" for number in range(1, 7) for _ in range(2)])
        self.assertEqual(("", 0), (result.err, result.status))
        self.assert_no_processes()

    def test_gateways_reach_the_hosts_of_their_routes(self) -> None:
        with subprocess.Popen(self.command("volume", "wait", hosts=_FAR),
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            waiting = [self.fleet[f"web{number}"].folder / "waits" for number in (3, 4, 5)]
            self.wait_until(lambda: all(map(Path.exists, waiting)), "the hosts run the command")
            self.assertEqual(["web1", "web2"],
                             sorted(name for name, pids in self.gateways().items() if pids))
            started = time.monotonic()
            process.send_signal(signal.SIGINT)
            _, err = process.communicate(timeout=30)
        self.assertLess(time.monotonic() - started, 20)
        self.assertEqual(b"Interrupted. Done: no host\nweb[3-5]: interrupted\n", err)
        self.assert_no_processes()

    def test_a_secret_is_on_no_command_line(self) -> None:
        result = self.call("--formatter=ndjson", "volume", "open", "--key", hosts=_FAR,
                           stdin=b"top-secret\n")
        self.assertEqual([b"top-secret".hex()] * 3, [row["Value"] for row in result.rows],
                         result.err)
        seen = "".join((self.fleet[name].folder / "ps").read_text(errors="replace")
                       for name in ("web3", "web4", "web5"))
        self.assertIn("ClusterShell.Gateway", seen)
        self.assertNotIn("top-secret", seen)

    def test_the_topology_of_cluster_shell_is_the_default(self) -> None:
        command = FleetCase.command(self, "volume", "open", "--key=x", hosts="web3")
        with mock.patch.dict(os.environ, CLUSTERSHELL_CFGDIR=str(self.fleet.folder)):
            subprocess.run(command, stdout=subprocess.DEVNULL, check=True, timeout=60)
        self.assertIn("ClusterShell.Gateway", (self.fleet["web3"].folder / "ps").read_text(
            encoding="utf-8", errors="replace"))

    def test_every_byte_of_a_value_arrives(self) -> None:
        every = bytes(range(1, 256))
        result = self.call("--formatter=ndjson", "volume", "echo", b"--value=" + every,
                           hosts=_FAR)
        self.assertEqual([every.hex()] * 3, [row["Value"] for row in result.rows], result.err)

    def test_a_change_runs_through_gateways(self) -> None:
        result = self.call("--yes", "--batch=2", "--formatter=ndjson", "volume", "clear",
                           hosts=_FAR)
        self.assert_rows(result, "web3", "web4", "web5")
        self.assertEqual(0, result.status)

    def test_another_gateway_takes_over(self) -> None:
        self.stop("web1")
        result = self.call("--formatter=ndjson", "volume", "show", hosts="web[3-6]")
        self.assert_rows(result, "web3", "web4", "web5", "web6")
        self.assertEqual(0, result.status)

    def test_without_a_gateway_hosts_are_unreachable(self) -> None:
        self.stop("web1")
        self.stop("web2")
        result = self.call("--formatter=ndjson", "volume", "show", hosts="web[3-6]")
        self.assert_rows(result, "web6")
        self.assertRegex(result.err,
                         r"^web\[3-5\]: unreachable: web[12]: ssh: connect to host .*refused")
        self.assertEqual(1, result.status)

    def test_hosts_are_lost_with_their_gateway(self) -> None:
        with subprocess.Popen(self.command("volume", "wait", hosts=_FAR),
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            waiting = [self.fleet[f"web{number}"].folder / "waits" for number in (3, 4, 5)]
            self.wait_until(lambda: all(map(Path.exists, waiting)), "the hosts run the command")
            for pids in self.gateways().values():
                for pid in pids:
                    os.kill(pid, signal.SIGKILL)
            _, err = process.communicate(timeout=60)
        # A few times a second, a gateway sends what it has collected, so a part may have arrived.
        self.assertRegex(err.decode(), r"^(web\S+: unreachable: the connection (broke before "
                                       r"the result was complete|to its gateway broke)\n)+$")
        self.assertEqual(2, process.returncode)
        self.assert_no_processes()


def _words(pid: int) -> List[bytes]:
    try:
        return Path(f"/proc/{pid}/cmdline").read_bytes().split(b"\0")
    except OSError:
        return []


if __name__ == "__main__":
    unittest.main()
