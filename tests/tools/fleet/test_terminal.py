# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""vexil-fleet on a terminal: questions, secrets, the merge, and the line about the progress."""

import os
import pty
import re
import select
import signal
import time
import unittest
from typing import Any, Sequence

from fleet_case import FleetCase

_MAX_WAIT = 60.0


class Terminal:
    """A call on a pseudo-terminal."""

    def __init__(self, command: Sequence[Any]) -> None:
        self.text = ""
        self._pid, self._terminal = pty.fork()
        if self._pid == 0:
            os.execv(command[0], [os.fspath(word) for word in command])

    def read_until(self, pattern: str) -> str:
        """Returns what was printed so far, once the pattern is in it."""
        end = time.monotonic() + _MAX_WAIT
        while re.search(pattern, self.text) is None:
            if time.monotonic() > end or not self._read(end):
                raise AssertionError(f"no {pattern!r} in {self.text!r}")
        return self.text

    def _read(self, end: float) -> bool:
        ready, _, _ = select.select([self._terminal], [], [], max(0.0, end - time.monotonic()))
        if not ready:
            return False
        try:
            data = os.read(self._terminal, 65536)
        except OSError:  # everything was read, and the program has ended
            return False
        self.text += data.decode().replace("\r\n", "\n")
        return bool(data)

    def type(self, text: str) -> None:
        os.write(self._terminal, text.encode())

    def finish(self) -> int:
        """Reads to the end. Returns the exit status."""
        end = time.monotonic() + _MAX_WAIT
        while self._read(end):
            pass
        _, status = os.waitpid(self._pid, 0)
        os.close(self._terminal)
        return os.waitstatus_to_exitcode(status)


class OnTerminal(FleetCase):
    """Calls on a terminal."""

    count = 3

    def start(self, *words: str) -> Terminal:
        return Terminal(self.command(*words))

    def test_results_are_merged(self) -> None:
        self.set_volumes(self.fleet["web2"], [{"Name": "archive", "Size": 1024}])
        terminal = self.start("volume", "show")
        self.assertEqual(0, terminal.finish())
        self.assertRegex(terminal.text, r"web\[1,3\]  archive   512 *\n\nweb2: Size 512 -> 1024\n$")

    def test_nothing_is_merged_on_request(self) -> None:
        terminal = self.start("--no-merge", "--formatter=ndjson", "volume", "show")
        self.assertEqual(0, terminal.finish())
        self.assertEqual(3, terminal.text.count('"Host":"web'))

    def test_a_change_is_confirmed(self) -> None:
        for answer, runs in (("y", True), ("", False), ("n", False)):
            terminal = self.start("--formatter=ndjson", "volume", "clear")
            terminal.read_until(r"on 3 hosts: web\[1-3\]\nRun it\? \[y/N\] ")
            terminal.type(answer + "\n")
            self.assertEqual(0 if runs else 2, terminal.finish(), terminal.text)
            self.assertEqual(runs, '"Host":"web[1-3]"' in terminal.text)
            self.assertEqual(not runs, "No host has run the command." in terminal.text)

    def test_results_are_printed_whatever_is_typed_at_the_question(self) -> None:
        for typed, message in (("n\n", "The command has not run on web[2-3].\n"),
                               ("\x03", "Interrupted. Done: web1\n")):
            self.declare_harmless(self.fleet["web1"])
            terminal = self.start("--formatter=ndjson", "volume", "clear")
            terminal.read_until(r"on 2 hosts: web\[2-3\]\nRun it\? \[y/N\] ")
            terminal.type(typed)
            self.assertEqual(1, terminal.finish(), terminal.text)
            self.assertTrue(terminal.text.endswith(
                message + '{"Host":"web1","Value":true}\nweb[2-3]: not started\n'), terminal.text)

    def test_an_interrupt_at_the_question_runs_nothing(self) -> None:
        cleared = self.fleet["web1"].folder / "cleared"
        cleared.unlink(missing_ok=True)
        terminal = self.start("volume", "clear")
        terminal.read_until(r"\[y/N\] ")
        terminal.type("\x03")
        self.assertEqual(2, terminal.finish())
        self.assertFalse(cleared.exists())

    def test_a_secret_is_asked_for_once_without_echo(self) -> None:
        terminal = self.start("--formatter=ndjson", "volume", "open", "--key")
        terminal.read_until("Enter value for 'key': ")
        terminal.type("s3same\n")
        self.assertEqual(0, terminal.finish(), terminal.text)
        self.assertNotIn("s3same", terminal.text)
        self.assertEqual(1, terminal.text.count("Enter value"))
        self.assertIn(f'"Host":"web[1-3]","Value":"{b"s3same".hex()}"', terminal.text)

    def test_the_end_of_input_at_the_prompt_for_a_secret_is_a_message(self) -> None:
        terminal = self.start("volume", "open", "--key")
        terminal.read_until("Enter value for 'key': ")
        terminal.type("\x04")
        self.assertEqual(2, terminal.finish(), terminal.text)
        self.assertTrue(terminal.text.endswith("\nThere is no value of --key\n"), terminal.text)

    def test_a_long_run_shows_its_progress(self) -> None:
        for host in self.fleet.hosts.values():
            (host.folder / "hurry").unlink(missing_ok=True)
        (self.fleet["web1"].folder / "hurry").touch()
        terminal = self.start("volume", "wait")
        terminal.read_until("\r\033\\[K1 done, 0 failed, 2 waiting")
        os.kill(terminal._pid, signal.SIGTERM)  # pylint: disable=protected-access
        self.assertEqual(1, terminal.finish())
        self.assertIn("Interrupted. Done: web1\n", terminal.text)
        self.assertIn("web[2-3]: interrupted\n", terminal.text)
        self.assert_no_processes()


if __name__ == "__main__":
    unittest.main()
