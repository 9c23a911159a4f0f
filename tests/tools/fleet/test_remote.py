# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The script that hosts run, in local shells, and how its output is read."""

import os
import subprocess
import tempfile
import time
import unittest
from pathlib import Path
from typing import List

import modules  # noqa: F401  pylint: disable=unused-import

from samples import values
from vexil_fleet.remote import Job, Reply

_TOOL = """#!/bin/sh
case $* in
  *'command describe'*) cat "$DESCRIPTION" ;;
  *) printf '%s\\n' "$@" > "$ARGUMENTS"; cat > "$INPUT"; echo $$ > "$PIDS"; eval "$WORK" ;;
esac
"""


class Scripts(unittest.TestCase):
    """The script in each shell that may be /bin/sh here."""

    shells = ("dash", "bash")

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        tool = self.folder / "vexil"
        tool.write_text(_TOOL, encoding="ascii")
        tool.chmod(0o755)
        self.describe()

    def describe(self, **changes: object) -> None:
        import json  # pylint: disable=import-outside-toplevel
        text = json.dumps(values(**changes), separators=(",", ":"), ensure_ascii=False)
        (self.folder / "description").write_text(text + "\n", encoding="utf-8")

    def start(self, shell: str, work: str) -> "subprocess.Popen[bytes]":
        names = {name: str(self.folder / name.lower())
                 for name in ("DESCRIPTION", "ARGUMENTS", "INPUT", "PIDS")}
        return subprocess.Popen(
            [shell], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            env={**names, "PATH": f"{self.folder}:/usr/bin:/bin", "WORK": work})

    def run_job(self, shell: str, job: Job, work: str = "echo '{}'") -> Reply:
        """Runs the script. Standard input stays open, as it does with ssh."""
        with self.start(shell, work) as process:
            assert process.stdin and process.stdout and process.stderr
            process.stdin.write(job.script())
            process.stdin.flush()
            reply = Reply(job.mark.encode())
            for line in process.stdout:
                reply.add_line(line.rstrip(b"\n"))
            reply.errors = process.stderr.read().splitlines()
        return reply

    def arguments(self) -> List[str]:
        path = self.folder / "arguments"
        return os.fsdecode(path.read_bytes()).split("\n")[:-1] if path.exists() else []

    def test_a_command_that_only_reports_runs_immediately(self) -> None:
        for shell in self.shells:
            reply = self.run_job(shell, Job(["a", "b"], ["a", "b", "--c=d e"]))
            self.assertEqual((0, 0, False), (reply.described, reply.ended, reply.is_held), reply)
            self.assertEqual(b"{}\n", reply.body.text)
            self.assertEqual(["--formatter", "ndjson", "a", "b", "--c=d e"], self.arguments())

    def test_a_description_alone_runs_nothing(self) -> None:
        for shell in self.shells:
            reply = self.run_job(shell, Job(["a", "b"]))
            self.assertEqual((0, None), (reply.described, reply.ended))
            self.assertEqual([], self.arguments())

    def test_changes_and_secrets_are_held(self) -> None:
        changing = {"Meta_Data": [{"Name": "a", "Value": "b"}, {"Name": "changes", "Value": "true"}]}
        secret = {"Parameters": [{"Name": "p", "Short Name": "none", "Secret": True}]}
        for shell in self.shells:
            for changes in (changing, secret):
                self.describe(**changes)
                reply = self.run_job(shell, Job(["a"], ["a"]))
                self.assertEqual((True, None), (reply.is_held, reply.ended), changes)
                self.assertEqual([], self.arguments())

    def test_text_that_looks_like_a_description_does_not_hold_the_command(self) -> None:
        for shell in self.shells:
            self.describe(Description='"Secret":true ],"Formatter":"Meta Data":['
                                      '{"Name":"changes","Value":"true"} \\"Secret\\":true é',
                          Format_Parameters=[{"Name": "changes", "Value": "true"}])
            reply = self.run_job(shell, Job(["a"], ["a"]))
            self.assertEqual((False, 0), (reply.is_held, reply.ended))

    def test_a_confirmed_command_reads_its_secrets(self) -> None:
        self.describe(Parameters=[{"Name": "p", "Short Name": "none", "Secret": True}])
        for shell in self.shells:
            job = Job(["a"], ["a", "--p", "--q"], ["it's", "%s\\n"], is_confirmed=True)
            self.assertEqual(0, self.run_job(shell, job).ended)
            self.assertEqual("it's\n%s\\n\n", (self.folder / "input").read_text(encoding="ascii"))

    def test_a_failure_has_its_status(self) -> None:
        for shell in self.shells:
            reply = self.run_job(shell, Job(["a"], ["a"]), "echo no >&2; exit 3")
            self.assertEqual((3, [b"no"]), (reply.ended, reply.errors))
            self.assertEqual(137, self.run_job(shell, Job(["a"], ["a"]), "kill -9 $$").ended)

    def test_the_end_of_standard_input_ends_the_command(self) -> None:
        for shell in self.shells:
            (self.folder / "pids").unlink(missing_ok=True)
            with self.start(shell, "sleep 100 & echo $! >> $PIDS; wait") as process:
                job = Job(["a"], ["a"])
                started = time.monotonic()
                assert process.stdin
                process.stdin.write(job.script())
                process.stdin.flush()
                while len(self.pids()) < 2 and time.monotonic() - started < 30:
                    time.sleep(0.01)
                process.communicate(timeout=30)
            self.assertLess(time.monotonic() - started, 60)
            self.assertEqual(2, len(self.pids()))
            end = time.monotonic() + 10
            while any(map(_runs, self.pids())):
                self.assertLess(time.monotonic(), end, "a process is left over")
                time.sleep(0.01)

    def pids(self) -> List[int]:
        path = self.folder / "pids"
        return [int(pid) for pid in path.read_text(encoding="ascii").split()] \
            if path.exists() else []

    def test_a_part_of_a_script_never_runs(self) -> None:
        script = Job(["a"], ["a", "--b=x"]).script()
        for shell in self.shells:
            for length in range(0, len(script) - 1, 97):
                with self.start(shell, "true") as process:
                    process.communicate(script[:length], timeout=30)
                self.assertEqual([], self.arguments(), length)


def _runs(pid: int) -> bool:
    try:
        state = Path(f"/proc/{pid}/stat").read_text(encoding="ascii").rsplit(")", 1)[1].split()[0]
    except OSError:
        return False
    return state != "Z"


class Replies(unittest.TestCase):
    """Lines that a host sends."""

    def reply(self, text: bytes) -> Reply:
        reply = Reply(b"MARK")
        for line in text.split(b"\n"):
            reply.add_line(line)
        return reply

    def test_text_before_the_first_mark_is_ignored(self) -> None:
        reply = self.reply(b"Welcome!\n\nMARK begin\n{}\n\nMARK described 0\n1\n2\n\nMARK ended 0\n")
        self.assertEqual(b"{}", reply.description)
        self.assertEqual(b"1\n2\n", reply.body.text)

    def test_a_last_line_without_an_end_gets_no_end(self) -> None:
        reply = self.reply(b"\nMARK begin\n{}\n\nMARK described 0\n1\n2\nMARK ended 0\n")
        self.assertEqual(b"1\n2", reply.body.text)

    def test_an_empty_result_is_empty(self) -> None:
        reply = self.reply(b"\nMARK begin\n{}\n\nMARK described 0\n\nMARK ended 0\n")
        self.assertEqual(b"", reply.body.text)

    def test_a_reply_without_its_end_has_no_status(self) -> None:
        reply = self.reply(b"\nMARK begin\n{}\n\nMARK described 0\n1\n2")
        self.assertIsNone(reply.ended)


if __name__ == "__main__":
    unittest.main()
