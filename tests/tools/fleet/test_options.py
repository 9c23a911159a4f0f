# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The command line of vexil-fleet itself."""

import contextlib
import io
import os
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path
from typing import Any, List

import modules  # noqa: F401  pylint: disable=unused-import

from vexil_fleet import main
from vexil_fleet.options import join_values, parse


class Options(unittest.TestCase):
    """What is accepted, and what is wrong use."""

    def run_main(self, *arguments: str) -> "tuple[int, str]":
        errors = io.StringIO()
        with contextlib.redirect_stderr(errors):
            try:
                status = main.main("/nonexistent/vexil", "rows.so", list(arguments))
            except SystemExit as error:
                status = int(str(error.code))
        return status, errors.getvalue()

    def test_options_end_at_the_path(self) -> None:
        options = parse(["-w", "a", "-o", "-v", "--sort", "Size", "storage", "list", "--sort",
                         "Name", "-w", "x", "-o", "y"])
        self.assertEqual((["a"], ["-v"], "Size"),
                         (options.nodes, options.ssh_options, options.sort))
        self.assertEqual(["storage", "list", "--sort", "Name", "-w", "x", "-o", "y"],
                         options.command)

    def test_ssh_options_may_begin_with_a_dash(self) -> None:
        for given, joined in (
                (["-o", "-v", "x", "-o", "y"], ["--ssh-options=-v", "x", "-o", "y"]),
                (["-w", "-o", "x"], ["--nodes=-o", "x"]),
                (["-w", "", "x"], ["--nodes=", "x"]),
                (["-wx", "--ssh-options", "-F a"], ["-wx", "--ssh-options=-F a"]),
                (["--yes", "-o", "-v"], ["--yes", "--ssh-options=-v"]),
                (["--sort=x", "-o"], ["--sort=x", "-o"])):
            self.assertEqual(joined, join_values(given))

    def test_wrong_use_has_status_2_and_a_message(self) -> None:
        cases: List["tuple[List[str], str]"] = [
            ([], "no hosts: name some with -w, -g or -a"),
            (["-w", "a"], "no command: write its path after the options"),
            (["-w", "a", "--descending", "x"], "--descending needs --sort"),
            (["-w", "a", "--nope", "x"], "unrecognized arguments: --nope"),
            (["-w", "a", "--batch", "0", "x"], "not a positive whole number: 0"),
            (["-w", "a", "-t", "-1", "x"], "not a number of seconds: -1"),
            (["-w", "a", "-u", "soon", "x"], "not a number of seconds: soon"),
            (["-w", "a", "--format-param", "=x", "x"], "Unable to read format parameter =x"),
            (["-w", "a[", "x"], "Unable to read the hosts: "),
            (["-w", "a", "-x", "a", "x"], "There are no hosts"),
            (["-w", "", "x"], "There are no hosts"),
            (["-w", "a", "x", "--help"], "For the help page: vexil x --help"),
            (["-w", "a", "--topology", "/nonexistent", "x"], "Unable to read the topology: "),
            (["-w", "a", "--report", "/nonexistent/x", "x"],
             "Unable to write /nonexistent/x: No such file or directory"),
        ]
        for arguments, message in cases:
            status, errors = self.run_main(*arguments)
            self.assertEqual(2, status, arguments)
            self.assertIn(message, errors, arguments)


class Program(unittest.TestCase):
    """The installed program: its version, and its end if it cannot print or lacks a module."""

    program = Path(os.environ.get("KESTREL_STAGE", "build/ci/stage")) / "bin/vexil-fleet"

    def run_program(self, *words: str, **settings: Any) -> "subprocess.CompletedProcess[bytes]":
        for name in ("stdout", "stderr"):
            settings.setdefault(name, subprocess.PIPE)
        done: "subprocess.CompletedProcess[bytes]" = subprocess.run(
            [self.program, *words], check=False, timeout=60, stdin=subprocess.DEVNULL, **settings)
        return done

    def test_the_version_follows_the_name(self) -> None:
        self.assertRegex(self.run_program("--version").stdout, rb"^vexil-fleet \d+\.\d+\.\d+\n$")

    def test_a_full_device_is_reported(self) -> None:
        for words in (["--help"], ["--version"], ["export-ansible", "--help"]):
            with open("/dev/full", "wb") as full:
                done = self.run_program(*words, stdout=full)
            self.assertEqual(b"Unable to write to standard output: No space left on device\n",
                             done.stderr)
            self.assertEqual(2, done.returncode)

    def test_a_closed_pipe_ends_the_program_by_a_signal(self) -> None:
        reader, writer = os.pipe()
        os.close(reader)
        done = self.run_program("--help", stdout=writer)
        os.close(writer)
        self.assertEqual((b"", -signal.SIGPIPE), (done.stderr, done.returncode))

    def test_a_missing_cluster_shell_is_reported(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "ClusterShell.py").write_text(
                "raise ModuleNotFoundError(name='ClusterShell')\n", encoding="ascii")
            done = self.run_program("--help", env={**os.environ, "PYTHONPATH": folder})
        self.assertEqual((b"vexil-fleet needs the package python3-clustershell\n", 2),
                         (done.stderr, done.returncode))


if __name__ == "__main__":
    unittest.main()
