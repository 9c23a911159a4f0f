# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The line on a terminal that shows the progress of the run."""

import sys
import time
from typing import TextIO

from .engine import Visits

# Short runs show nothing.
_QUIET_SECONDS = 1.0
# Seconds between two counts of the hosts: counting thousands of hosts takes milliseconds.
_MIN_INTERVAL = 0.2


class Progress:
    """Hosts done, failed and waiting, on one line that each call replaces."""

    def __init__(self, total: int, stream: TextIO = sys.stderr) -> None:
        self._total = total
        self._stream = stream
        self._next = time.monotonic() + _QUIET_SECONDS
        self._is_shown = False
        self._is_enabled = stream.isatty()
        self._done = 0
        self._failed = 0

    def update(self, visits: Visits) -> None:
        if not self._is_enabled or time.monotonic() < self._next:
            return
        self._next = time.monotonic() + _MIN_INTERVAL
        over = [visit for visit in visits.values() if visit.is_over]
        failed = self._failed + sum(1 for visit in over if not visit.has_succeeded)
        done = self._done + len(over) - (failed - self._failed)
        self._stream.write(f"\r\033[K{done} done, {failed} failed, "
                           f"{self._total - done - failed} waiting")
        self._stream.flush()
        self._is_shown = True

    def finish_batch(self, visits: Visits) -> None:
        """Adds these visits to the totals; the next visits are to other hosts."""
        succeeded = sum(1 for visit in visits.values() if visit.has_succeeded)
        self._done += succeeded
        self._failed += len(visits) - succeeded

    def clear(self) -> None:
        if self._is_shown:
            self._stream.write("\r\033[K")
            self._stream.flush()
            self._is_shown = False
