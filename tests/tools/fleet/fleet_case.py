# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""What the tests with ssh servers have in common: hosts with volumes, and calls of vexil-fleet.

Environment variables determine what is tested. KESTREL_STAGE is the installed tree, and
KESTREL_PLUGIN_DIR is the folder where its tool looks for plug-ins. KESTREL_CAMPAIGN makes some
tests long.
"""

import json
import os
import subprocess
import time
import unittest
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Callable, Dict, List, Optional, Sequence, Union

from sshd_hosts import Fleet, Host, reason_to_skip

STAGE = Path(os.environ.get("KESTREL_STAGE", "build/ci/stage"))
PLUGIN_DIR = os.environ.get("KESTREL_PLUGIN_DIR", "build/ci/empty-plugin-dir")
CAMPAIGN = "KESTREL_CAMPAIGN" in os.environ
HOSTS = 64 if CAMPAIGN else 8
PROGRAM = STAGE / "bin" / "vexil-fleet"
_MAX_SECONDS = 120

# %s is replaced by further fields of the list. Most commands read or write files of their host.
_DESCRIPTOR = """<?xml version="1.0"?>
<descriptor>
  <version>1.0.0</version>
  <namespaces>
    <namespace path="volume"><description>Where data is kept.</description></namespace>
  </namespaces>
  <commands>
    <command path="volume.list">
      <description>List the volumes.</description>
      <input-spec/>
      <output-spec>
        <list type="structure">
          <structure typeName="Volume">
            <field name="Name"><string/></field>
            <field name="Size"><int/></field>%s
          </structure>
        </list>
      </output-spec>
      <format-parameters>
        <formatter>table</formatter>
        <format-parameter name="fields:Volume">Name,Size</format-parameter>
      </format-parameters>
      <execute>cat "$VEXIL_TEST_HOST/volumes"</execute>
    </command>
    <command path="volume.show">
      <description>Show the first volume.</description>
      <input-spec/>
      <output-spec>
        <structure typeName="Volume">
          <field name="Name"><string/></field>
          <field name="Size"><int/></field>
        </structure>
      </output-spec>
      <format-parameters/>
      <execute>cat "$VEXIL_TEST_HOST/volume"</execute>
    </command>
    <command path="volume.echo">
      <description>Show the bytes of a value in hexadecimal form.</description>
      <input-spec>
        <parameter name="value" shortname="v" type="string" required="true">
          <description>The value.</description>
        </parameter>
      </input-spec>
      <output-spec><string/></output-spec>
      <format-parameters/>
      <execute>printf '&lt;output&gt;&lt;string&gt;'; od -An -v -tx1 | tr -d ' \\n'; printf '&lt;/string&gt;&lt;/output&gt;'</execute>
      <stdin>$val{value}</stdin>
    </command>
    <command path="volume.open">
      <description>Show the bytes of a secret in hexadecimal form.</description>
      <input-spec>
        <parameter name="key" shortname="k" type="string" required="true" secret="true">
          <description>The secret.</description>
        </parameter>
      </input-spec>
      <output-spec><string/></output-spec>
      <format-parameters/>
      <execute>printf '&lt;output&gt;&lt;string&gt;'; od -An -v -tx1 | tr -d ' \\n'; ps -eo args > "$VEXIL_TEST_HOST/ps"; printf '&lt;/string&gt;&lt;/output&gt;'</execute>
      <stdin>$val{key}</stdin>
    </command>
    <command path="volume.wait">
      <description>Wait, unless the file hurry exists.</description>
      <input-spec/>
      <output-spec><bool/></output-spec>
      <format-parameters/>
      <execute>touch "$VEXIL_TEST_HOST/waits"; test -e "$VEXIL_TEST_HOST/hurry" || sleep 100; echo '&lt;output&gt;&lt;bool&gt;true&lt;/bool&gt;&lt;/output&gt;'</execute>
    </command>
    <command path="volume.clear">
      <description>Write a line into a file.</description>
      <meta-data><meta-data-entry name="changes">true</meta-data-entry></meta-data>
      <input-spec/>
      <output-spec><bool/></output-spec>
      <format-parameters/>
      <execute>date +%%s%%N &gt;&gt; "$VEXIL_TEST_HOST/cleared"; if test -e "$VEXIL_TEST_HOST/broken"; then echo 'ERROR:The disk is broken'; else echo '&lt;output&gt;&lt;bool&gt;true&lt;/bool&gt;&lt;/output&gt;'; fi</execute>
    </command>
  </commands>
</descriptor>
"""

Volumes = Sequence[Dict[str, Union[str, int]]]


def volume_document(volumes: Volumes) -> str:
    rows = []
    for volume in volumes:
        fields = "".join(
            f'<field name="{name}"><{_kind(value)}>{value}</{_kind(value)}></field>'
            for name, value in volume.items())
        rows.append(f'<structure typeName="Volume">{fields}</structure>')
    return '<output><list type="structure">' + "\n".join(rows) + "</list></output>"


def _kind(value: Union[str, int]) -> str:
    return "int" if isinstance(value, int) else "string"


@dataclass
class Result:
    """What a call printed, and its status."""
    status: int
    out: str
    err: str

    @property
    def rows(self) -> List[Any]:
        return [json.loads(line) for line in self.out.splitlines()]


class FleetCase(unittest.TestCase):
    """Tests with the hosts web1, web2, ..., which are started once for all tests of a class."""

    fleet: Fleet
    count = HOSTS

    @classmethod
    def setUpClass(cls) -> None:
        reason = reason_to_skip()
        if reason is not None:
            raise unittest.SkipTest(reason)
        names = [f"web{number + 1}" for number in range(cls.count)]
        cls.fleet = Fleet(names, str(STAGE / "bin" / "vexil"), PLUGIN_DIR)
        cls.addClassCleanup(cls.fleet.__exit__)
        for host in cls.fleet.hosts.values():
            host.add_plugin(STAGE / "lib" / "norvane" / "vexil" / "vexil.so")
        cls.fleet.start()

    def setUp(self) -> None:
        for host in self.fleet.hosts.values():
            self.set_volumes(host, [{"Name": "archive", "Size": 512},
                                    {"Name": "scratch", "Size": 64}])
            self.set_fields(host, "")

    @property
    def all_hosts(self) -> str:
        return f"web[1-{self.count}]"

    @staticmethod
    def set_volumes(host: Host, volumes: Volumes) -> None:
        (host.folder / "volumes").write_text(volume_document(volumes), encoding="utf-8")
        first = volume_document(volumes[:1]).replace('<list type="structure">', "")
        (host.folder / "volume").write_text(first.replace("</list>", ""), encoding="utf-8")

    @staticmethod
    def set_fields(host: Host, fields: str) -> None:
        host.add_descriptor("volume", _DESCRIPTOR % fields)

    @staticmethod
    def declare_harmless(host: Host) -> None:
        """Makes a host declare that `volume clear` changes nothing, so that it needs no
        confirmation."""
        host.add_descriptor("volume", (_DESCRIPTOR % "").replace(
            '"changes">true<', '"changes">false<'))

    def command(self, *words: Union[str, bytes], hosts: Optional[str] = None) -> List[Any]:
        return [PROGRAM, "-o", f"-F{self.fleet.ssh_config}", "-w", hosts or self.all_hosts, *words]

    def call(self, *words: Union[str, bytes], hosts: Optional[str] = None,
             stdin: bytes = b"") -> Result:
        """Calls vexil-fleet for all hosts, unless some are named."""
        done = subprocess.run(self.command(*words, hosts=hosts), input=stdin, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=_MAX_SECONDS)
        return Result(done.returncode, done.stdout.decode(), done.stderr.decode())

    def processes_seen(self) -> str:
        """Returns the command lines of all processes while the hosts ran `volume open`."""
        return "".join((host.folder / "ps").read_text(errors="replace")
                       for host in self.fleet.hosts.values())

    def wait_until(self, condition: Callable[[], bool], what: str) -> None:
        end = time.monotonic() + 30
        while not condition():
            self.assertLess(time.monotonic(), end, f"in vain: {what}")
            time.sleep(0.02)

    def assert_no_processes(self) -> None:
        """No process that ssh has started may be left over. Each has a moment to end."""
        self.wait_until(lambda: not any(host.processes() for host in self.fleet.hosts.values()),
                        "no process is left over")
