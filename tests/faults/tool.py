# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs the tool of a build tree and classifies what it did under a fault.

A campaign runs each command line without a fault first. classify() compares a run under a fault
with that run and returns one of OUTCOMES. Only those in GOOD pass, unless a campaign has outcomes
of its own.
"""

import argparse
import collections
import concurrent.futures
import fcntl
import os
import select
import signal
import struct
import sys
import tempfile
import termios
import threading
import time

# same: as without the fault. reported: a message and a status that is not 0, or the whole result
# with an additional message. partial: the result is not complete or not the same, but the status is
# 0. silent: the status or the messages differ from those without the fault, but no message was
# added; or the terminal was left without an echo. crash: a signal ended the tool. hang: the tool
# did not end.
OUTCOMES = ("same", "reported", "partial", "silent", "crash", "hang")
GOOD = ("same", "reported")

Result = collections.namedtuple("Result", "out err status")
HANG = Result(b"", b"", None)

MAX_SECONDS = 60
# How long a terminal is silent before the tool may count as waiting without a prompt.
SECONDS_WITHOUT_PROMPT = 1


class CommandLine:
    """A command line of the tool. `answers` are what the user types, one at each prompt; with
    answers, standard input and standard output are a terminal."""

    def __init__(self, name, arguments, stdin=b"", answers=None, asks_names=False):
        self.name = name
        self.arguments = arguments
        self.stdin = stdin
        self.answers = answers
        self.asks_names = asks_names  # whether it looks up accounts


class Terminal:
    """A pseudo-terminal of 80 columns, on which the given answers are typed."""

    def __init__(self, answers):
        self.master, self.slave = os.openpty()
        fcntl.ioctl(self.slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 80, 0, 0))
        self.name = os.ttyname(self.slave)
        self.answers = list(answers)
        self.screen = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self.master)
        os.close(self.slave)

    def echoes(self):
        return bool(termios.tcgetattr(self.slave)[3] & termios.ECHO)

    def read(self):
        """Reads what was printed, and answers a prompt."""
        self.screen += os.read(self.master, 65536)
        if self.screen.endswith(b": "):
            self.answer()

    def answer(self):
        """Types the next answer, if it would not be shown."""
        if self.answers and not self.echoes():
            os.write(self.master, self.answers.pop(0))

    def answer_without_prompt(self, session):
        """Types the next answer if the tool waits for it without a prompt, because it was unable to
        print one. A tool that is merely slow does not wait: one of its processes runs."""
        if self.answers and set(processes_of(session).values()) == {"S"}:
            self.answer()

    def read_rest(self):
        while select.select([self.master], [], [], 0)[0]:
            self.screen += os.read(self.master, 65536)
        return self.screen


def processes_of(session):
    """Returns the processes of a session with their states, such as "R" for one that runs."""
    found = {}
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{name}/stat", "rb") as file:
                fields = file.read().rsplit(b")", 1)[1].split()
        except (OSError, IndexError):
            continue  # has ended
        if int(fields[3]) == session:
            found[int(name)] = fields[0].decode()
    return found


class MemoryFiles:
    """The standard streams of a run, as files without a name."""

    def __init__(self, stdin):
        self.files = [os.memfd_create(name) for name in ("in", "out", "err")]
        os.write(self.files[0], stdin)
        os.lseek(self.files[0], 0, os.SEEK_SET)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for file in self.files:
            os.close(file)

    def contents(self, number):
        file = self.files[number]
        return os.pread(file, os.fstat(file).st_size, 0)


def wait(process, terminal, seconds=MAX_SECONDS):
    """Waits for the end of a process and returns its status, or None if it had to be killed."""
    end = time.monotonic() + seconds
    ended = os.pidfd_open(process)
    try:
        poll = select.poll()
        poll.register(ended, select.POLLIN)
        if terminal is not None:
            poll.register(terminal.master, select.POLLIN)
        while True:
            ready = {fd for fd, _ in poll.poll(1000 * SECONDS_WITHOUT_PROMPT)}
            if terminal is not None and terminal.master in ready:
                terminal.read()
            elif ended in ready:
                return os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
            elif terminal is not None:
                terminal.answer_without_prompt(process)
            if time.monotonic() > end:
                os.kill(process, signal.SIGKILL)
                os.waitpid(process, 0)
                return None
    finally:
        os.close(ended)


def run(arguments, environment, line, seconds=MAX_SECONDS):
    """Runs a program with the standard streams that a command line asks for."""
    actions = []
    with MemoryFiles(line.stdin) as files:
        if line.answers is None:
            actions = [(os.POSIX_SPAWN_DUP2, file, number) for number, file in enumerate(files.files)]
            process = os.posix_spawn(arguments[0], arguments, environment, file_actions=actions,
                                     setpgroup=0, setsigdef=[signal.SIGPIPE])
            status = wait(process, None, seconds)
            out = files.contents(1)
        else:
            with Terminal(line.answers) as terminal:
                actions = [(os.POSIX_SPAWN_OPEN, 0, terminal.name, os.O_RDWR, 0),
                           (os.POSIX_SPAWN_DUP2, 0, 1),
                           (os.POSIX_SPAWN_DUP2, files.files[2], 2)]
                process = os.posix_spawn(arguments[0], arguments, environment, setsid=True,
                                         file_actions=actions, setsigdef=[signal.SIGPIPE])
                status = wait(process, terminal, seconds)
                out = terminal.read_rest()
                if not terminal.echoes():
                    out += b"The terminal does not echo"
        return Result(out, files.contents(2), status)


def classify(result, whole):
    """Compares the result of a run under a fault with `whole`, the one without it."""
    if result.status is None:
        return "hang"
    if result.status < 0:
        return "crash"
    if b"The terminal does not echo" in result.out:
        return "silent"
    if result == whole:
        return "same"
    says = result.err not in (b"", whole.err)
    if result.status == 0:
        if result.out != whole.out:
            return "partial"
        return "reported" if says else "silent"
    return "reported" if says or (whole.status != 0 and result.err) else "silent"


class Tally:
    """Counts outcomes and prints the runs that are not good."""

    def __init__(self, title, good=GOOD, max_shown=40):
        self.title = title
        self.good = good
        self.counts = collections.Counter()
        self.lock = threading.Lock()
        self.max_shown = max_shown
        self.bad = 0
        self.started = time.monotonic()

    def add(self, outcome, what, detail=""):
        with self.lock:
            self.counts[outcome] += 1
            if outcome in self.good:
                return
            self.bad += 1
            if self.bad <= self.max_shown:
                print(f"{outcome}: {what}\n{detail}", flush=True)

    def finish(self, at_least=1):
        """Prints the figures; returns the exit status of the campaign."""
        runs = sum(self.counts.values())
        figures = ", ".join(f"{self.counts[name]} {name}"
                            for name in (*OUTCOMES, *sorted(set(self.counts) - set(OUTCOMES)))
                            if self.counts[name])
        print(f"{self.title}: {runs} runs in {time.monotonic() - self.started:.0f} s: {figures}; "
              f"{self.bad} bad", flush=True)
        if runs < at_least:
            print(f"{self.title}: at least {at_least} runs were expected")
            return 1
        return 1 if self.bad else 0


def describe(result, whole, size=400):
    lines = [f"  status {result.status}, not {whole.status}" if result.status != whole.status
             else f"  status {result.status}"]
    if result.out != whole.out:
        at = len(os.path.commonprefix([result.out, whole.out]))
        lines.append(f"  out, {len(result.out)} bytes, not {len(whole.out)}, from byte {at}: "
                     f"{result.out[at:at + size]!r}, not {whole.out[at:at + size]!r}")
    lines.append(f"  err: {result.err[:size]!r}")
    return "\n".join(lines)


def environment(**more):
    """Returns the environment variables that the tool needs, without the caller's settings."""
    return {"PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/",
            "LC_ALL": "C.UTF-8", "TZ": "UTC0", **more}


def run_all(jobs, work, items):
    """Calls work(item) for all items, at most `jobs` at a time."""
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for future in [pool.submit(work, item) for item in items]:
            future.result()


class Campaign:
    """The arguments that all campaigns have, and a folder for temporary files."""

    def __init__(self, description):
        self.parser = argparse.ArgumentParser(
            description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
        self.parser.add_argument("--tree", default="build/dev", help="the build tree (build/dev)")
        self.parser.add_argument("--quick", action="store_true", help="a part of the runs")
        self.parser.add_argument("--jobs", type=int, default=os.cpu_count(),
                                 help="how many runs at once (one per processor)")

    def start(self):
        self.options = self.parser.parse_args()
        self.tree = os.path.abspath(self.options.tree)
        self.tool = os.path.join(self.tree, "vexil", "vexil")
        self.modules = os.path.join(self.tree, "tests", "modules")
        if not os.path.exists(self.tool):
            sys.exit(f"There is no tool in {self.tree}: build it first")
        self.folder = tempfile.TemporaryDirectory(prefix="faults-")
        os.chdir(self.folder.name)
        return self.options

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def write(self, name, text):
        path = self.path(name)
        with open(path, "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode())
        return path
