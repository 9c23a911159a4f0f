# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""One run: the command's description first, then the command, in batches on request.

A command that only reports needs one connection to each host: the host itself checks the
description before it runs the command. A second connection follows if the command changes something
or has a secret parameter, and always with --strict, --batch and --stop-on-failure.
"""

import sys
from dataclasses import dataclass
from typing import Dict, Iterator, List, Optional, Sequence

from ClusterShell.NodeSet import NodeSet

from .answers import Answer, Reader, Status
from .contract import common_description, report_contract
from .engine import Engine, Visit, Visits
from .printer import BadFormat, Printer
from .progress import Progress
from .remote import Job
from .secret_values import BadSecret, take_secrets
from .words import Option


class Stopped(Exception):
    """The run ended early: some hosts have described the command, but have not run it."""


@dataclass(frozen=True)
class Request:
    """The request of the user."""
    path: Sequence[str]
    options: Sequence[Option]
    strict: bool = False
    is_confirmed: bool = False
    batch: Optional[int] = None
    stop_on_failure: Optional[int] = None

    @property
    def words(self) -> List[str]:
        return [*self.path, *(token for option in self.options for token in option.tokens)]

    @property
    def is_described_first(self) -> bool:
        return self.strict or self.batch is not None or self.stop_on_failure is not None


class Run:
    """Visits the hosts and collects their answers."""

    def __init__(self, engine: Engine, request: Request, hosts: NodeSet,
                 printer: Printer) -> None:
        self._engine = engine
        self._request = request
        self._hosts = hosts
        self._printer = printer
        self._reader = Reader()
        self._answers: Dict[str, Answer] = {}

    def answers(self) -> List[Answer]:
        """Returns an answer for each host, in the order of the hosts."""
        request = self._request
        words = [] if request.is_described_first else request.words
        self._visit(Job(request.path, words), self._hosts)
        self._report_contract()
        held = self._held()
        if held and not self._engine.is_interrupted:
            self._try_held(held)
        return [self._finished(host) for host in self._hosts]

    def _held(self) -> List[Answer]:
        """Returns the answers of hosts that have only described the command."""
        wanted = Status.OK if self._request.is_described_first else Status.HELD
        return [answer for answer in self._answers.values()
                if answer.status == wanted and answer.rows is None]

    def _finished(self, host: str) -> Answer:
        answer = self._answers[host]
        if not answer.is_failure and answer.rows is None:
            answer.status = Status.NOT_STARTED
        return answer

    def _visit(self, job: Job, hosts: NodeSet, progress: Optional[Progress] = None) -> Visits:
        progress = progress or Progress(len(hosts))
        answers: Dict[str, Answer] = {}

        # Results are read while other hosts still work, so that equal ones are stored only once.
        def read(visit: Visit) -> None:
            answers[visit.host] = self._reader.read(visit, bool(job.words))

        visits = self._engine.run(job, hosts, progress.update, read)
        progress.clear()
        for host, visit in visits.items():
            if host not in answers:
                read(visit)
        self._answers.update(answers)
        return visits

    def _report_contract(self) -> None:
        lines = report_contract(list(self._answers.values()))
        for line in lines:
            print(line, file=sys.stderr)
        if lines and self._request.strict:
            raise Stopped("No host has run the command.")

    def _try_held(self, held: List[Answer]) -> None:
        """Runs the command on hosts that have only described it. If that is impossible, what the
        other hosts have answered is kept."""
        try:
            self._run_held(held)
        except (BadFormat, Stopped) as error:
            if not self._has_answers():
                raise
            print(error, file=sys.stderr)
        except KeyboardInterrupt:
            if not self._has_answers():
                raise
            self._engine.is_interrupted = True

    def _has_answers(self) -> bool:
        """Whether some host has run the command, or has failed."""
        return len(self._held()) < len(self._hosts)

    def _run_held(self, held: List[Answer]) -> None:
        request = self._request
        hosts = NodeSet.fromlist(answer.host for answer in held)
        # Checked first, so that no command changes anything if its result cannot be printed.
        self._printer.check(common_description(held))
        if not request.is_confirmed and any(
                answer.description.changes for answer in held if answer.description is not None):
            self._confirm(hosts)
        descriptions = list(dict.fromkeys(
            answer.description for answer in held if answer.description is not None))
        try:
            tokens, values = take_secrets(request.options, descriptions)
        except BadSecret as error:
            raise Stopped(str(error)) from error
        job = Job(request.path, [*request.path, *tokens], values, is_confirmed=True)
        self._run_batches(job, hosts)

    def _confirm(self, hosts: NodeSet) -> None:
        description = common_description(list(self._answers.values()))
        print(f"'{description.path}' changes something, on {len(hosts)} "
              f"{'host' if len(hosts) == 1 else 'hosts'}: {hosts}", file=sys.stderr)
        if not sys.stdin.isatty():
            raise Stopped("Nobody can be asked: repeat the call with --yes.")
        print("Run it? [y/N] ", end="", file=sys.stderr, flush=True)
        if sys.stdin.readline().strip().lower() not in ("y", "yes"):
            raise Stopped(f"The command has not run on {hosts}." if self._has_answers()
                          else "No host has run the command.")

    def _run_batches(self, job: Job, hosts: NodeSet) -> None:
        progress = Progress(len(hosts))
        failed = 0
        for batch in self._batches(hosts):
            visits = self._visit(job, batch, progress)
            progress.finish_batch(visits)
            failed += sum(1 for host in visits if self._answers[host].is_failure)
            limit = self._request.stop_on_failure
            if self._engine.is_interrupted or (limit is not None and failed >= limit):
                break

    def _batches(self, hosts: NodeSet) -> Iterator[NodeSet]:
        size = self._request.batch
        if size is None and self._request.stop_on_failure is not None:
            size = self._engine.fanout
        size = size or len(hosts)
        for start in range(0, len(hosts), size):
            yield hosts[start:start + size]
