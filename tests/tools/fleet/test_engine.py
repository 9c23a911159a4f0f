# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs with a program in place of ssh."""

import os
import signal
import tempfile
import time
import unittest
from pathlib import Path

import modules  # noqa: F401  pylint: disable=unused-import

from ClusterShell.NodeSet import NodeSet

from vexil_fleet.engine import Engine, Interrupts, Settings, Visits
from vexil_fleet.remote import Job


class Runs(unittest.TestCase):
    """How a run ends."""

    def setUp(self) -> None:
        # If a shell has started these tests in the background, they ignore SIGINT.
        self.addCleanup(signal.signal, signal.SIGINT, signal.getsignal(signal.SIGINT))
        signal.signal(signal.SIGINT, signal.default_int_handler)

    def engine(self, script: str) -> Engine:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        ssh = Path(folder.name, "ssh")
        ssh.write_text(f"#!/bin/sh\n{script}\n", encoding="ascii")
        ssh.chmod(0o755)
        return Engine(Settings(ssh_path=str(ssh)))

    def test_each_host_has_its_lines(self) -> None:
        engine = self.engine(r"""
            for command; do host=$last; last=$command; done
            read -r _; printf '\nM begin\n{}\n\nM described 0\n"%s"\n\nM ended 0\n' "$host"
            echo problem >&2""")
        visits = engine.run(Job(["a"], ["a"], mark="M"), NodeSet("web[1-3]"), lambda _: None,
                            lambda _: None)
        for host, visit in visits.items():
            self.assertEqual(f'"{host}"\n'.encode(), visit.reply.body.text)
            self.assertEqual(([b"problem"], 0), (visit.reply.errors, visit.ssh_status))
        self.assertEqual(["web1", "web2", "web3"], sorted(visits))

    def test_a_lost_interrupt_ends_the_run(self) -> None:
        engine = self.engine("exec sleep 600")

        def interrupt(_: Visits) -> None:
            try:
                os.kill(os.getpid(), signal.SIGINT)
            except KeyboardInterrupt:
                pass  # as Python itself ignores exceptions in some callbacks
        started = time.monotonic()
        visits = engine.run(Job(["a"], ["a"]), NodeSet("web1"), interrupt, lambda _: None)
        self.assertLess(time.monotonic() - started, 300)
        self.assertTrue(engine.is_interrupted)
        self.assertTrue(visits["web1"].is_interrupted)

    def test_signals_are_as_before_after_a_run(self) -> None:
        self.addCleanup(signal.signal, signal.SIGTERM, signal.getsignal(signal.SIGTERM))
        signal.signal(signal.SIGTERM, signal.SIG_IGN)
        with Interrupts() as interrupts:
            interrupts.check()
            self.assertIs(signal.SIG_IGN, signal.getsignal(signal.SIGTERM))
            self.assertIsNot(signal.default_int_handler, signal.getsignal(signal.SIGINT))
        self.assertIs(signal.default_int_handler, signal.getsignal(signal.SIGINT))


if __name__ == "__main__":
    unittest.main()
