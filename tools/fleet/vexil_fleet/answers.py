# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Turns visits to hosts into answers: results, or failures with a reason."""

import json
import signal
from dataclasses import dataclass
from enum import Enum
from typing import List, Optional

from .description import BadDescription, Description
from .engine import SSH_FAILED, Visit
from .rows import BadResult, Rows, read_rows
from .stored import StoredLines

_NOT_FOUND = 127
_SIGNALLED = 128
# How many characters of a host's messages are shown.
_MAX_MESSAGE = 500


class Status(Enum):
    """The outcome of the command on a host."""
    OK = "ok"
    UNREACHABLE = "unreachable"
    TIMED_OUT = "timed out"
    REFUSED = "refused"
    INVALID = "invalid output"
    INTERRUPTED = "interrupted"
    NOT_STARTED = "not started"
    HELD = "held"


@dataclass
class Answer:
    """The answer of one host."""
    host: str
    status: Status
    message: str = ""
    seconds: float = 0.0
    size: int = 0
    description: Optional[Description] = None
    rows: Optional[Rows] = None

    @property
    def is_failure(self) -> bool:
        return self.status not in (Status.OK, Status.HELD)

    def to_json(self) -> str:
        return json.dumps({"host": self.host, "status": self.status.value,
                           "seconds": round(self.seconds, 3), "bytes": self.size,
                           "message": self.message}, ensure_ascii=False)


class Reader:
    """Turns visits into answers. Equal descriptions and equal results are read once."""

    def __init__(self) -> None:
        self._descriptions: dict[bytes, Description] = {}
        self._rows: dict[tuple[int, bytes], Rows] = {}

    def read(self, visit: Visit, runs: bool) -> Answer:
        """Returns the answer to a visit. `runs` is false if the host only had to describe the
        command."""
        answer = Answer(visit.host, Status.OK, seconds=visit.seconds, size=visit.reply.size)
        self._read_description(visit, answer)
        if answer.status == Status.OK and runs:
            self._read_result(visit, answer)
        visit.reply.description, visit.reply.body = b"", StoredLines()
        return answer

    def _read_description(self, visit: Visit, answer: Answer) -> None:
        reply = visit.reply
        if reply.described is None or reply.described != 0:
            answer.status, answer.message = _reason(visit, reply.described)
            return
        try:
            answer.description = self._description(reply.description)
        except BadDescription as error:
            answer.status, answer.message = Status.INVALID, str(error)

    def _description(self, line: bytes) -> Description:
        if line not in self._descriptions:
            self._descriptions[line] = Description(line)
        return self._descriptions[line]

    def _read_result(self, visit: Visit, answer: Answer) -> None:
        reply = visit.reply
        if reply.is_held:
            answer.status = Status.HELD
        elif reply.ended is None or reply.ended != 0:
            answer.status, answer.message = _reason(visit, reply.ended)
        else:
            self._read_rows(visit, answer)

    def _read_rows(self, visit: Visit, answer: Answer) -> None:
        assert answer.description is not None
        try:
            answer.rows = self._shared_rows(answer.description, visit.reply.body)
        except BadResult as error:
            answer.status, answer.message = Status.INVALID, str(error)

    def _shared_rows(self, description: Description, body: StoredLines) -> Rows:
        key = (id(description), body.digest)
        if key not in self._rows:
            self._rows[key] = read_rows(description.shape, body)
        return self._rows[key]


def _reason(visit: Visit, status: Optional[int]) -> tuple[Status, str]:
    """Returns why a host has no result. `status` is that of vexil, if it has ended."""
    message = _message(visit.reply.errors)
    if visit.is_interrupted:
        return Status.INTERRUPTED, ""
    if visit.is_timed_out:
        return Status.TIMED_OUT, f"no result after {visit.seconds:.0f} s"
    if visit.ssh_status is None:
        return Status.NOT_STARTED, ""
    if status is not None:
        return Status.REFUSED, _with_status(message, status)
    if visit.ssh_status == SSH_FAILED:
        return _connection_reason(visit, message)
    return Status.REFUSED, _with_status(message, visit.ssh_status)


def _connection_reason(visit: Visit, message: str) -> tuple[Status, str]:
    if visit.reply.has_begun:
        return Status.UNREACHABLE, "the connection broke before the result was complete"
    if "timed out" in message.lower():
        return Status.TIMED_OUT, message
    return Status.UNREACHABLE, message or "ssh failed without a message"


def _with_status(message: str, status: int) -> str:
    if status == _NOT_FOUND and not message:
        message = "vexil was not found"
    if status > _SIGNALLED and status - _SIGNALLED in set(signal.Signals):
        ending = f"ended by {signal.Signals(status - _SIGNALLED).name}"
    else:
        ending = f"status {status}"
    return f"{message} ({ending})" if message else ending


def _message(errors: List[bytes]) -> str:
    """Returns the messages of a host on one line, without the header that vexil prints before
    them."""
    lines = [line.decode("utf-8", "backslashreplace").strip() for line in errors]
    text = "; ".join(line for line in lines if line and line != "Errors:")
    text = "".join(char if char.isprintable() else ascii(char)[1:-1] for char in text)
    return text if len(text) <= _MAX_MESSAGE else text[:_MAX_MESSAGE] + " ..."
