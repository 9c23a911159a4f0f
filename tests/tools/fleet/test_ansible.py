# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The Ansible collection, with real ssh servers, and the modules that are written for a command."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Any, Dict, List

from fleet_case import STAGE, FleetCase
from modules import ROOT
from samples import parameter, values

from vexil_fleet.ansible_export import make_module  # pylint: disable=wrong-import-order

COLLECTIONS = ROOT / "tools" / "fleet" / "ansible"
COLLECTION = COLLECTIONS / "ansible_collections" / "kestrel" / "vexil"
_TESTS = ("compile", "shebang", "symlinks", "future-import-boilerplate", "metaclass-boilerplate",
          "no-assert", "no-basestring", "no-dict-iteritems", "no-get-exception", "no-main-display",
          "no-smart-quotes", "no-unicode-literals", "line-endings", "empty-init")


def described(name: str, kind: str, **changes: Any) -> Dict[str, Any]:
    return {**parameter(name), "Kind": kind, "Description": "What it's for.", "Required": False,
            "Multiple": False, "Values": [], **changes}


@unittest.skipUnless(shutil.which("ansible"), "Ansible is missing")
class Collection(FleetCase):
    """The module `command`, called by Ansible."""

    count = 2

    def run_module(self, options: Dict[str, Any], *words: str,
                   module: str = "command") -> List[Dict[str, Any]]:
        """Returns the result on each host. Ansible has its own folders and connections."""
        folder = self.fleet.folder
        inventory = folder / "inventory"
        inventory.write_text("".join(f"{name}\n" for name in self.fleet.hosts), encoding="ascii")
        tree = folder / "results"
        shutil.rmtree(tree, ignore_errors=True)
        done = subprocess.run(
            ["ansible", "-i", inventory, "all", "-t", tree, "-m", f"kestrel.vexil.{module}", "-a",
             json.dumps(options), *words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            check=False, timeout=300, env={
                 "ANSIBLE_COLLECTIONS_PATH": str(folder / "collections"),
                 "ANSIBLE_HOME": str(folder / "ansible"),
                 "ANSIBLE_LOCAL_TEMP": str(folder / "ansible-local"),
                 "ANSIBLE_PYTHON_INTERPRETER": "/usr/bin/python3",
                 "ANSIBLE_REMOTE_TEMP": str(folder / "ansible-remote"),
                 "ANSIBLE_SSH_ARGS": f"-F {self.fleet.ssh_config} -o ControlMaster=no",
                 "HOME": str(folder), "LC_ALL": "C.UTF-8", "PATH": "/usr/bin:/bin"})
        self.printed = done.stdout.decode()
        self.assertEqual(set(self.fleet.hosts), set(os.listdir(tree)), self.printed)
        return [json.loads((tree / name).read_text(encoding="utf-8")) for name in self.fleet.hosts]

    def setUp(self) -> None:
        super().setUp()
        self.modules = self.fleet.folder / "collections/ansible_collections/kestrel/vexil"
        if not self.modules.exists():
            shutil.copytree(COLLECTION, self.modules)

    def test_the_result_has_its_types(self) -> None:
        for result in self.run_module({"path": "volume list"}):
            self.assertEqual([{"Name": "archive", "Size": 512}, {"Name": "scratch", "Size": 64}],
                             result["result"], result)
            self.assertFalse(result["changed"])

    def test_a_change_is_reported_and_check_mode_changes_nothing(self) -> None:
        cleared = self.fleet["web1"].folder / "cleared"
        cleared.unlink(missing_ok=True)
        for result in self.run_module({"path": "volume.clear"}, "--check"):
            self.assertTrue(result["changed"], result)
        self.assertFalse(cleared.exists())
        for result in self.run_module({"path": "volume.clear"}):
            self.assertEqual((True, True), (result["changed"], result["result"]), result)
        self.assertTrue(cleared.exists())

    def test_values_are_checked_before_the_command_runs(self) -> None:
        for result in self.run_module({"path": "volume echo", "parameters": {"x": 1}}, "--check"):
            self.assertEqual("missing required parameter: value; unknown parameter: x",
                             "; ".join(sorted(result["msg"].split("; "))))

    def test_a_secret_is_never_shown(self) -> None:
        results = self.run_module({"path": "volume open", "parameters": {"key": "s3same"}}, "-vvv")
        for result in results:
            self.assertEqual(b"s3same".hex(), result["result"], result)
        self.assertNotIn("s3same", json.dumps(results))
        self.assertIn("VALUE_SPECIFIED_IN_NO_LOG_PARAMETER", self.printed)
        # Only the command line of Ansible itself, which the user typed, contains the secret.
        self.assertEqual([], [line for line in self.processes_seen().splitlines()
                              if "s3same" in line and "bin/ansible " not in line])

    def test_a_module_for_one_command_has_its_options(self) -> None:
        tool = self.fleet.folder / "bin" / "vexil"
        tool.parent.mkdir(exist_ok=True)
        tool.write_text(f"#!/bin/sh\nexec {self.fleet.tool} --plugin-dir "
                        f"{self.fleet['web1'].plugins} \"$@\"\n", encoding="utf-8")
        tool.chmod(0o755)
        subprocess.run(
            [sys.executable, "-B", "-c", "import sys; from vexil_fleet.main import main; "
             "sys.exit(main(sys.argv[1], '', sys.argv[2:]))", tool, "export-ansible", "--output",
             self.modules / "plugins" / "modules", "volume", "echo"], check=True,
            stdout=subprocess.PIPE, env={**os.environ, "PYTHONPATH": str(ROOT / "tools/fleet")})
        for result in self.run_module({"value": "é 'x'"}, module="volume_echo"):
            self.assertEqual("é 'x'".encode().hex(), result["result"], result)


class Export(unittest.TestCase):
    """The module for one command."""

    def test_the_module_declares_what_the_command_declares(self) -> None:
        text = make_module(values(Parameters=[
            described("minimum-percent", "int", Required=True), described("all", "flag"),
            described("key", "string", Secret=True),
            described("type", "string-list", Multiple=True,
                      Values=[{"Value": "a", "Description": "none"}]),
            described("tool", "string")]))
        names: Dict[str, Any] = {}
        lines = [line for line in text.splitlines(True) if "ansible" not in line]
        exec("".join(lines), names)  # pylint: disable=exec-used
        self.assertEqual({
            "tool": {"type": "str", "default": "vexil"},
            "minimum_percent": {"type": "int", "required": True, "no_log": False},
            "all": {"type": "bool", "no_log": False}, "key": {"type": "str", "no_log": True},
            "type": {"type": "list", "elements": "str", "choices": ["a"], "no_log": False},
            "tool_": {"type": "str", "no_log": False}}, names["OPTIONS"])
        self.assertEqual("minimum-percent", names["PARAMETERS"]["minimum_percent"])
        self.assertEqual("volume list", names["PATH"])

    @unittest.skipUnless(shutil.which("ansible-doc"), "Ansible is missing")
    def test_the_documentation_can_be_read(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            collection = Path(folder, "ansible_collections/kestrel/vexil")
            shutil.copytree(COLLECTION, collection)
            module = make_module(values(Parameters=[described("all", "flag")]))
            (collection / "plugins/modules/volume_list.py").write_text(module, encoding="utf-8")
            done = subprocess.run(
                ["ansible-doc", "--json", "-t", "module", "kestrel.vexil.volume_list",
                 "kestrel.vexil.command"], stdout=subprocess.PIPE, check=True, env={
                     **os.environ, "ANSIBLE_COLLECTIONS_PATH": folder, "HOME": folder})
        documented = json.loads(done.stdout)
        self.assertEqual({"kestrel.vexil.volume_list", "kestrel.vexil.command"}, set(documented))
        options = documented["kestrel.vexil.volume_list"]["doc"]["options"]
        self.assertEqual(["What it's for."], options["all"]["description"])


class Sanity(unittest.TestCase):
    """The checks of Ansible that need no network."""

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.home = folder.name
        self.collection = Path(folder.name, "ansible_collections/kestrel/vexil")
        shutil.copytree(COLLECTION, self.collection)

    def run_check(self, *command: str) -> None:
        done = subprocess.run(
            command, cwd=self.collection, check=False, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, timeout=300,
            env={"HOME": self.home, "LC_ALL": "C.UTF-8", "PATH": "/usr/bin:/bin"})
        self.assertEqual(0, done.returncode, done.stdout.decode(errors="replace"))

    @unittest.skipUnless(shutil.which("ansible-test"), "ansible-test is missing")
    def test_ansible_test_accepts_the_collection(self) -> None:
        tests = [word for test in _TESTS for word in ("--test", test)]
        self.run_check("ansible-test", "sanity", "--python", f"3.{sys.version_info[1]}", *tests)

    @unittest.skipUnless(shutil.which("ansible-lint"), "ansible-lint is missing")
    def test_ansible_lint_accepts_the_collection(self) -> None:
        self.run_check("ansible-lint", "--offline", "--profile", "production")


if __name__ == "__main__":
    unittest.main()
