# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The line that shows the progress of a run."""

import io
import unittest
from typing import List
from unittest import mock

import modules  # noqa: F401  pylint: disable=unused-import

from vexil_fleet import progress
from vexil_fleet.engine import SSH_FAILED, Visit, Visits
from vexil_fleet.progress import Progress
from vexil_fleet.remote import Reply


class _Terminal(io.StringIO):
    def isatty(self) -> bool:
        return True


def visits(done: int, failed: int, waiting: int) -> Visits:
    result = {}
    for number in range(done + failed + waiting):
        visit = Visit(f"web{number}", Reply(b"M", described=0, ended=0))
        if number < done + failed:
            visit.ssh_status = 0 if number < done else SSH_FAILED
        result[visit.host] = visit
    return result


class Lines(unittest.TestCase):
    """What a stream shows at which time."""

    def setUp(self) -> None:
        clock = mock.patch.object(progress.time, "monotonic", lambda: self.now)
        clock.start()
        self.addCleanup(clock.stop)
        self.now = 100.0

    def shown(self, stream: io.StringIO) -> List[str]:
        return stream.getvalue().split("\r\033[K")[1:]

    def test_the_first_second_is_quiet(self) -> None:
        stream = _Terminal()
        line = Progress(6, stream)
        for self.now in (100.0, 100.9, 101.1):
            line.update(visits(1, 2, 3))
        self.assertEqual(["1 done, 2 failed, 3 waiting"], self.shown(stream))
        line.clear()
        self.assertEqual("", self.shown(stream)[-1])

    def test_the_hosts_are_counted_a_few_times_a_second(self) -> None:
        stream = _Terminal()
        line = Progress(100, stream)
        for number in range(100):
            self.now = 101.0 + number / 100
            line.update(visits(number, 0, 100 - number))
        shown = self.shown(stream)
        self.assertIn(len(shown), (4, 5, 6))
        self.assertEqual("0 done, 0 failed, 100 waiting", shown[0])

    def test_batches_are_added_up(self) -> None:
        stream = _Terminal()
        line = Progress(9, stream)
        line.finish_batch(visits(2, 1, 0))
        self.now += 2
        line.update(visits(1, 1, 1))
        self.assertEqual(["3 done, 2 failed, 4 waiting"], self.shown(stream))

    def test_nothing_is_written_into_a_file(self) -> None:
        stream = io.StringIO()
        line = Progress(1, stream)
        self.now += 5
        line.update(visits(0, 0, 1))
        line.clear()
        self.assertEqual("", stream.getvalue())


if __name__ == "__main__":
    unittest.main()
