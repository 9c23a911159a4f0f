# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Completion of command lines of vexil-fleet: its own options, and what vexil-complete completes."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path
from typing import List

from fleet_case import STAGE

_PROGRAM = STAGE / "share/kestrel/fleet/vexil-fleet-complete"


class Candidates(unittest.TestCase):
    """What is offered for the last word of a line."""

    def complete(self, *words: str, after: "tuple[str, ...]" = (),
                 environment: "dict[str, str] | None" = None) -> List[str]:
        line = ["vexil-fleet", *words, *after]
        done = subprocess.run([_PROGRAM, str(len(words)), *line],
                              stdout=subprocess.PIPE, check=True, timeout=60,
                              env={**os.environ, **(environment or {})})
        return [line.split("\t")[0] for line in done.stdout.decode().splitlines()]

    def test_options_are_offered_before_the_path(self) -> None:
        self.assertEqual(["--sort", ":"], self.complete("-w", "a", "--so"))
        self.assertEqual(["--report", ":"], self.complete("--r"))

    def test_the_path_and_its_parameters_are_those_of_the_tool(self) -> None:
        for options in ([], ["-w", "a", "-o", "-v"], ["-wa", "--sort=x", "--yes"],
                        ["--report", "list"]):
            self.assertEqual(["vexil", ":"], self.complete(*options, "ve"), options)
            self.assertEqual(["--namespace-filter", ":"],
                             self.complete(*options, "vexil", "command", "list", "--na"))

    def test_formats_and_columns_are_those_of_the_tool(self) -> None:
        self.assertEqual(["ndjson", ":"], self.complete("--formatter", "nd"))
        self.assertEqual(["--formatter=ndjson", ":"], self.complete("--formatter=nd"))
        self.assertEqual(["fields=Namespace", ":nospace"],
                         self.complete("--format-param", "fields=Name",
                                       after=("vexil", "command", "list")))

    def test_files_and_groups_are_values(self) -> None:
        self.assertEqual([":files"], self.complete("--report", ""))
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "groups.conf").write_text(
                "[Main]\ndefault: local\n[local]\nmap: echo a1\nlist: echo web db\n",
                encoding="ascii")
            self.assertEqual(["web", ":"], self.complete(
                "-g", "w", environment={"CLUSTERSHELL_CFGDIR": folder}))

    def test_nothing_is_offered_for_other_values(self) -> None:
        for words in (["-w", "ve"], ["--batch", ""], ["--nope=ve"]):
            self.assertEqual([":"], self.complete(*words), words)

    def test_wrong_arguments_have_status_2(self) -> None:
        for arguments in ([], ["1"], ["x", "vexil-fleet"], ["0", "vexil-fleet"]):
            done = subprocess.run([_PROGRAM, *arguments],
                                  stderr=subprocess.PIPE, check=False)
            self.assertEqual(2, done.returncode, arguments)
            self.assertEqual(b"Usage: vexil-fleet-complete INDEX WORD...\n", done.stderr)

    def test_bash_completes_with_it(self) -> None:
        script = STAGE.resolve() / "share/bash-completion/completions/vexil-fleet"
        done = subprocess.run(
            ["bash", "--norc", "-c", 'source "$1"; COMP_LINE="vexil-fleet --repo" COMP_POINT=18 '
             'COMP_WORDS=(vexil-fleet --repo) COMP_CWORD=1 COMP_TYPE=9; _vexil_fleet; '
             'printf "%s\\n" "${COMPREPLY[@]}"', "bash", script],
            stdout=subprocess.PIPE, check=True, timeout=60)
        self.assertEqual(b"--report\n", done.stdout)

    @unittest.skipUnless(shutil.which("fish"), "fish is missing")
    def test_fish_completes_with_it(self) -> None:
        script = STAGE.resolve() / "share/fish/vendor_completions.d/vexil-fleet.fish"
        with tempfile.TemporaryDirectory() as home:
            done = subprocess.run(
                ["fish", "--no-config", "-c",
                 f"source '{script}'; complete -C 'vexil-fleet --repo'"],
                stdout=subprocess.PIPE, check=True, timeout=60, env={**os.environ, "HOME": home})
        self.assertEqual(b"--report\twrite a line of JSON for each host\n", done.stdout)


if __name__ == "__main__":
    unittest.main()
