# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Hosts for tests: ssh servers on addresses of the loopback interface.

Each server has its own mount and UTS namespaces. In them, it has its own host name, and its own
plug-ins are mounted where the tool looks for plug-ins. All servers listen on the same free port,
each on an address of its own, and accept only keys. All files are in one temporary folder. To end
the servers, the tests read their process numbers from their pid files.
"""

import os
import secrets
import shutil
import signal
import socket
import subprocess
import tempfile
import time
from pathlib import Path
from typing import Dict, List, Optional

_INSTALLED = "/usr/sbin/sshd"
# Where scripts/ssh_server.sh puts a server that is not installed.
_EXTRACTED = os.environ.get("KESTREL_SSH_SERVER", "build/ssh-server")
SSHD = _INSTALLED if os.access(_INSTALLED, os.X_OK) else os.path.abspath(
    _EXTRACTED + _INSTALLED)
_MAX_WAIT = 20.0

_SSHD_CONFIG = """\
AuthorizedKeysFile {folder}/key.pub
HostKey {folder}/host_key
KbdInteractiveAuthentication no
ListenAddress {address}:{port}
LogLevel ERROR
MaxStartups 200
PasswordAuthentication no
PermitRootLogin prohibit-password
PidFile {own}/sshd.pid
PrintMotd no
SetEnv PATH={own}/bin:/usr/bin:/bin VEXIL_TEST_HOST={own}
StrictModes no
UseDNS no
UsePAM no
"""

_SSH_CONFIG = """\
ControlPath {folder}/control/%C
IdentitiesOnly yes
IdentityFile {folder}/key
StrictHostKeyChecking yes
UserKnownHostsFile {folder}/known_hosts
LogLevel ERROR
"""

# This script runs in the namespaces. The privilege separation folder of sshd must exist below /run.
# If sshd was only extracted and not installed, its user and its other programs are missing. The
# user's own start file of bash could do anything, so it is hidden.
_START = """\
set -e
hostname "$1"
mount --bind "$2/plugins" "$3"
mount -t tmpfs none /run
mkdir /run/sshd
if ! grep -q ^sshd: /etc/passwd; then
  (cat /etc/passwd; echo sshd:x:65533:65534::/run/sshd:/usr/sbin/nologin) >/run/passwd
  mount --bind /run/passwd /etc/passwd
fi
[ "$4" = /usr/sbin/sshd ] || mount --bind "${4%/sbin/sshd}/lib/openssh" /usr/lib/openssh
[ ! -e ~/.bashrc ] || mount --bind /dev/null ~/.bashrc
exec "$4" -f "$2/sshd_config" -E "$2/sshd.log"
"""


def reason_to_skip() -> Optional[str]:
    """Returns why no host can be started here, or None."""
    for program in (SSHD, "/usr/bin/ssh", "/usr/bin/unshare"):
        if not os.access(program, os.X_OK):
            return f"{program} is missing"
    done = subprocess.run(["unshare", "--mount", "--uts", "sh", "-c",
                           "hostname try && mount -t tmpfs none /run"],
                          stderr=subprocess.PIPE, check=False)
    if done.returncode != 0:
        return "namespaces are denied: " + done.stderr.decode(errors="replace").strip()
    return None


class Host:
    """One host. All hosts see its `folder`; only the host itself uses its `plugins`."""

    def __init__(self, fleet: "Fleet", name: str, address: str) -> None:
        self.name = name
        self.address = address
        self.folder = fleet.folder / name
        self.plugins = self.folder / "plugins"
        self._fleet = fleet
        (self.folder / "bin").mkdir(parents=True)
        (self.plugins / "ext").mkdir(parents=True)
        (self.folder / "bin" / "vexil").symlink_to(fleet.tool)

    def add_plugin(self, source: Path) -> None:
        shutil.copy(source, self.plugins)

    def add_descriptor(self, name: str, text: str) -> None:
        (self.plugins / f"{name}.xml").write_text(text, encoding="utf-8")

    def start(self) -> None:
        config = _SSHD_CONFIG.format(folder=self._fleet.folder, own=self.folder,
                                     address=self.address, port=self._fleet.port)
        (self.folder / "sshd_config").write_text(config, encoding="ascii")
        subprocess.run(["unshare", "--mount", "--uts", "--propagation", "private", "sh", "-c",
                        _START, "sh", self.name, self.folder, self._fleet.plugin_dir, SSHD],
                       check=True, stdin=subprocess.DEVNULL)
        self._wait_for_pid()

    def _wait_for_pid(self) -> None:
        end = time.monotonic() + _MAX_WAIT
        while not self._pid_file.exists() or not self._pid_file.read_text(encoding="ascii"):
            if time.monotonic() > end:
                raise TimeoutError((self.folder / "sshd.log").read_text(errors="replace"))
            time.sleep(0.01)

    @property
    def _pid_file(self) -> Path:
        return self.folder / "sshd.pid"

    def stop(self) -> None:
        if self._pid_file.exists():
            os.kill(int(self._pid_file.read_text(encoding="ascii")), signal.SIGTERM)
            self._pid_file.unlink(missing_ok=True)

    def processes(self) -> List[int]:
        """Returns the processes that were started through ssh on this host. A variable in their
        environment identifies them."""
        mark = f"VEXIL_TEST_HOST={self.folder}".encode()
        return [pid for pid in _all_processes() if mark in _environment(pid)]


class Fleet:
    """Some hosts, and what a client needs to reach them. A context manager that ends them."""

    def __init__(self, names: List[str], tool: str, plugin_dir: str) -> None:
        self.tool = Path(tool).resolve()
        self.plugin_dir = Path(plugin_dir)
        self._temporary = tempfile.TemporaryDirectory(prefix="vexil-fleet-")
        self.folder = Path(self._temporary.name)
        self.port = _free_port()
        # Tests that run side by side use different networks.
        network = f"127.{secrets.randbelow(200) + 20}.{secrets.randbelow(250)}"
        self.hosts: Dict[str, Host] = {
            name: Host(self, name, f"{network}.{number + 1}")
            for number, name in enumerate(names)}
        self._make_keys()
        self._write_config()

    def __getitem__(self, name: str) -> Host:
        return self.hosts[name]

    def __enter__(self) -> "Fleet":
        return self

    def __exit__(self, *_: object) -> None:
        for host in self.hosts.values():
            host.stop()
        self._temporary.cleanup()

    def start(self) -> None:
        for host in self.hosts.values():
            host.start()

    @property
    def ssh_config(self) -> Path:
        return self.folder / "ssh_config"

    def _make_keys(self) -> None:
        (self.folder / "control").mkdir()
        for name in ("key", "host_key"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f",
                            self.folder / name], check=True, stdin=subprocess.DEVNULL)

    def _write_config(self) -> None:
        public = (self.folder / "host_key.pub").read_text(encoding="ascii")
        known = "".join(f"[{host.address}]:{self.port} {public}" for host in self.hosts.values())
        (self.folder / "known_hosts").write_text(known, encoding="ascii")
        text = "".join(f"Host {host.name}\n  HostName {host.address}\n  Port {self.port}\n"
                       for host in self.hosts.values())
        # Nothing listens on this port. Without an address, a name server would be asked.
        text += "Host nowhere\n  HostName 127.0.0.1\n  Port 1\n"
        text += "Host *\n" + _SSH_CONFIG.format(folder=self.folder)
        self.ssh_config.write_text(text, encoding="ascii")


def _free_port() -> int:
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return int(probe.getsockname()[1])


def _all_processes() -> List[int]:
    return [int(entry) for entry in os.listdir("/proc") if entry.isdigit()]


def _environment(pid: int) -> List[bytes]:
    try:
        return Path(f"/proc/{pid}/environ").read_bytes().split(b"\0")
    except OSError:
        return []
