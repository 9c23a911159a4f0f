# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The shell script that a host runs, and how its output is read.

The command line on the host is only REMOTE_COMMAND, whatever the user's login shell is; the shell
reads the script from its standard input. So no word of the user is on the command line of ssh or of
the remote shell, and the length of a word is not limited. Standard input stays open while the
command runs. If it is closed early, because the local side was interrupted or the connection broke,
the script ends the command.

The lines that the script itself prints begin with a mark that is random in each run:

    MARK begin              anything before it, such as a greeting of the login shell, is ignored
    the description
    MARK described STATUS
    MARK held               the command changes something or has secrets, and does not run yet
    the result              only if the command runs
    MARK ended STATUS

The script prints a line feed before each mark, so a mark begins a line even if the output before it
does not end with a line feed.
"""

import os
import secrets
from dataclasses import dataclass, field
from typing import List, Optional, Sequence

from .description import KEYS
from .stored import StoredLines
from .words import quote, quote_all

REMOTE_COMMAND = "exec /bin/sh"
RESULT_FORMAT = "ndjson"
# A command that ignores SIGTERM is killed after this time, in seconds.
_KILL_AFTER = 5

_BEGIN = """
vexil_begin() {{
  description=
  printf '\\n%s\\n' "{mark} begin"
}}
"""
_DESCRIBE = """
vexil_describe() {{
  description=$(vexil --formatter ndjson --format-param {keys} \\
    vexil command describe --path {path} </dev/null)
  status=$?
  printf '%s\\n\\n%s\\n' "$description" "{mark} described $status"
  [ "$status" -eq 0 ] || exit 0
}}
"""
# The case patterns match no text of a JSON string, in which a quote has a backslash before it.
_HOLD = """
vexil_hold() {{
  case $description in
    *'"Secret":true'* | *'],"Formatter":'*'"Meta Data":['*'{{"Name":"changes","Value":"true"}}'*) ;;
    *) return ;;
  esac
  printf '\\n%s\\n' "{mark} held"
  exit 0
}}
"""
_RUN = """
vexil_run() {{
  exec 4<&0
  {feed}timeout -k {kill_after} 0 vexil --formatter {formatter} \\
    {words} {source} 4<&- &
  command=$!
  (IFS= read -r _ <&4; kill "$command" 2>/dev/null) >/dev/null 2>&1 &
  watcher=$!
  wait "$command"
  status=$?
  kill "$watcher" 2>/dev/null
  printf '\\n%s\\n' "{mark} ended $status"
  exit 0
}}
"""
_FEED = """case $(command -v printf) in
    printf) ;;
    *) echo 'The shell would show the secrets' >&2; exit 1 ;;
  esac
  printf '%s\\n' {secrets} | """


@dataclass(frozen=True)
class Job:
    """The request to the hosts."""
    path: Sequence[str]
    # The line without values of secrets; empty if the command is only described.
    words: Sequence[str] = ()
    secret_values: Sequence[str] = ()
    is_confirmed: bool = False  # else a command that changes something, or has secrets, is held
    mark: str = field(default_factory=lambda: "vexil-fleet-" + secrets.token_hex(16))

    def script(self) -> bytes:
        parts = [_BEGIN.format(mark=self.mark),
                 _DESCRIBE.format(keys=quote("fields=" + ",".join(KEYS)), mark=self.mark,
                                  path=quote(" ".join(self.path)))]
        calls = ["vexil_begin", "vexil_describe"]
        if self.words and not self.is_confirmed:
            parts.append(_HOLD.format(mark=self.mark))
            calls.append("vexil_hold")
        if self.words:
            parts.append(self._run_function())
            calls.append("vexil_run")
        # The shell parses all of this before it runs anything, so a script that arrives incomplete
        # does not run at all.
        return os.fsencode("{ " + "".join(parts) + "}; " + "; ".join(calls) + "; exit 0\n")

    def _run_function(self) -> str:
        feed = _FEED.format(secrets=quote_all(self.secret_values)) if self.secret_values else ""
        return _RUN.format(feed=feed, kill_after=_KILL_AFTER, formatter=RESULT_FORMAT,
                           words=quote_all(self.words), mark=self.mark,
                           source="" if self.secret_values else "</dev/null")


@dataclass
class Reply:
    """What a host has sent, collected line by line."""
    mark: bytes
    has_begun: bool = False
    is_held: bool = False
    described: Optional[int] = None  # the status of the description
    ended: Optional[int] = None  # the status of the command
    description: bytes = b""
    body: StoredLines = field(default_factory=StoredLines)
    errors: List[bytes] = field(default_factory=list)
    size: int = 0

    def add_line(self, line: bytes) -> None:
        self.size += len(line) + 1
        if line.startswith(self.mark):
            self._add_mark(line[len(self.mark):].split())
        elif self.has_begun and self.ended is None:
            self.body.add(line + b"\n")

    def add_error(self, line: bytes) -> None:
        self.size += len(line) + 1
        self.errors.append(line)

    def _add_mark(self, words: List[bytes]) -> None:
        what = words[0]
        if what == b"begin":
            self.has_begun = True
        elif what == b"held":
            self.is_held = True
        elif what == b"described":
            self.described = int(words[1])
            self.description = self._take_body().text.rstrip(b"\n")
        elif what == b"ended":
            self.ended = int(words[1])
            self.body = self._take_body()

    def _take_body(self) -> StoredLines:
        """Returns the bytes before a mark, without the line feed that the script has added."""
        body, self.body = self.body, StoredLines()
        body.drop_last_byte()
        return body
