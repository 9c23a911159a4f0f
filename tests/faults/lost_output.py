#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Loses output in several ways, with each formatter in FORMATTERS.

Standard output is a file on a full file system, a device that is always full, a pipe whose reader
closes it immediately or after some bytes, a closed file descriptor, one opened for reading only,
or a file with a size limit. The result is printed by each of these formatters, in sizes from
nothing to a megabyte, by one command line or by a stream of three.

The status must not be 0, or a signal must have ended the tool, whenever bytes were lost. Only
the bytes that a pipe contains when its reader closes it may be lost unnoticed. When nothing was
lost, the output and the status must be those of an undisturbed run.

The full form runs all combinations, the quick form every seventh.
"""

import fcntl
import itertools
import os
import resource
import signal
import subprocess
import sys
import threading

import tool

FORMATTERS = ("table", "simple", "json", "python", "xml", "json-utf8", "ndjson", "csv", "tsv", "yaml",
              "value-xml")
SIZES = (0, 1, 300, 20000)
FULL_DISK_BYTES = 64 * 1024
PIPE_BYTES = 4096


class Sink:
    """What standard output is; this class is an ordinary file. open() returns a file descriptor, or
    None if standard output is to be closed. close() returns what has arrived."""

    name = "file"
    limit = None
    unnoticed = 0  # the number of bytes that may be lost without being noticed

    def open(self, folder):
        self.path = os.path.join(folder, "sink")
        return os.open(self.path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC)

    def close(self):
        with open(self.path, "rb") as file:
            text = file.read()
        os.remove(self.path)
        return text


class FullDisk(Sink):
    """A file system with `free` free bytes."""

    name = "full-disk"

    def __init__(self, mount, free):
        self.mount = mount
        self.free = free
        self.name = f"full-disk-{free}"

    def open(self, folder):
        with open(os.path.join(self.mount, "filler"), "wb") as filler:
            filler.write(b"x" * (FULL_DISK_BYTES - self.free))
        return super().open(self.mount)

    def close(self):
        text = super().close()
        os.remove(os.path.join(self.mount, "filler"))
        return text


class FullDevice(Sink):
    name = "full-device"

    def open(self, folder):
        return os.open("/dev/full", os.O_WRONLY)

    def close(self):
        return b""


class SizeLimit(Sink):
    """A file with a limited size. The signal for exceeding the limit may be ignored."""

    def __init__(self, limit):
        self.limit = limit
        self.name = f"limit-{limit}"


class BrokenPipe(Sink):
    """A pipe whose reader takes at most `taken` bytes and then closes it. The loss of bytes that
    are in the pipe at that moment is not noticed."""

    def __init__(self, taken):
        self.taken = taken
        self.unnoticed = PIPE_BYTES + taken if taken else 0
        self.name = f"pipe-{taken}"

    def open(self, folder):
        self.reader, writer = os.pipe()
        fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, PIPE_BYTES)
        self.text = b""
        if self.taken == 0:
            os.close(self.reader)
        else:
            self.thread = threading.Thread(target=self.read)
            self.thread.start()
        return writer

    def read(self):
        self.text = os.read(self.reader, self.taken)
        os.close(self.reader)

    def close(self):
        if self.taken:
            self.thread.join()
        return self.text


class ClosedDescriptor(Sink):
    name = "closed"

    def open(self, folder):
        return None

    def close(self):
        return b""


class ReadOnly(Sink):
    name = "read-only"

    def open(self, folder):
        return os.open("/dev/null", os.O_RDONLY)

    def close(self):
        return b""


def run(arguments, stdin, sink, folder, ignores_signals):
    """Runs the tool with a sink as standard output; returns what arrived, and the status."""
    out = sink.open(folder)

    def prepare():
        if out is None:
            os.close(1)
        else:
            os.dup2(out, 1)
        for number in (signal.SIGPIPE, signal.SIGXFSZ):
            signal.signal(number, signal.SIG_IGN if ignores_signals else signal.SIG_DFL)
        if sink.limit is not None:
            resource.setrlimit(resource.RLIMIT_FSIZE, (sink.limit, sink.limit))

    process = subprocess.Popen(arguments, stdin=subprocess.PIPE, stderr=subprocess.DEVNULL,
                               env=tool.environment(), preexec_fn=prepare, restore_signals=False)
    if out is not None:
        os.close(out)
    process.communicate(stdin, timeout=tool.MAX_SECONDS)
    return sink.close(), process.returncode


def check(tally, name, unnoticed, result, whole):
    """Compares what arrived, and the status, with those of the undisturbed run."""
    out, status = result
    lost = len(out) < len(whole[0])
    if not whole[0].startswith(out):
        tally.add("changed", name, f"  {out[:200]!r}, not {whole[0][:200]!r}")
    elif len(whole[0]) - len(out) > unnoticed and status == 0:
        tally.add("partial", name, f"  {len(out)} of {len(whole[0])} bytes")
    elif not lost and status != whole[1]:
        tally.add("silent", name, f"  status {status}, but nothing was lost")
    else:
        tally.add("reported" if lost else "same", name)


def mount_full_disk(campaign):
    """Returns the folder of a small file system of this process alone, or None."""
    try:
        folder = campaign.path("disk")
        os.mkdir(folder)
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={FULL_DISK_BYTES}", "none", folder],
                       check=True, stderr=subprocess.DEVNULL)
        return folder
    except (OSError, subprocess.CalledProcessError):
        return None


def enter_namespaces():
    """Starts this program again where it may mount a file system that no other process sees."""
    if os.environ.get("FAULTS_IN_NAMESPACE"):
        return
    os.environ["FAULTS_IN_NAMESPACE"] = "1"
    options = ["--mount"] if os.geteuid() == 0 else ["--mount", "--user", "--map-root-user"]
    probe = subprocess.run(["unshare", *options, "true"], stderr=subprocess.DEVNULL, check=False)
    if probe.returncode == 0:
        os.execvp("unshare", ["unshare", *options, sys.executable, "-B", *sys.argv])


def calls(campaign):
    """Yields the command lines, as name, arguments and standard input."""
    trial = [campaign.tool, "--plugin", os.path.join(campaign.modules, "TryPlugin.so")]
    for formatter, size in itertools.product(FORMATTERS, SIZES):
        words = ["--formatter", formatter, "try", "rows", "-c", str(size)]
        yield f"{formatter}, {size} rows", [*trial, *words], b""
        line = " ".join(words).encode() + b"\n"
        yield f"{formatter}, three times {size} rows", [*trial, "--input=STDIN"], line * 3


def main():
    enter_namespaces()
    campaign = tool.Campaign(__doc__)
    options = campaign.start()
    disk = mount_full_disk(campaign)
    if disk is None:
        print("Without a full disk: this system does not allow a mount")
    makers = [FullDevice, ClosedDescriptor, ReadOnly, lambda: BrokenPipe(0), lambda: BrokenPipe(100),
              lambda: SizeLimit(4096)]
    if disk is not None:
        makers += [lambda: FullDisk(disk, 0), lambda: FullDisk(disk, 4096)]
    tally = tool.Tally("lost output")
    for number, ((name, arguments, stdin), make) in enumerate(
            itertools.product(calls(campaign), makers)):
        if options.quick and number % 7:
            continue
        whole = run(arguments, stdin, Sink(), campaign.folder.name, False)
        sink = make()
        result = run(arguments, stdin, sink, campaign.folder.name, number % 2 == 0)
        check(tally, f"{name}, {sink.name}", sink.unnoticed, result, whole)
    if disk is not None:
        subprocess.run(["umount", disk], check=True)
    return tally.finish(at_least=len(makers) * 11)


if __name__ == "__main__":
    sys.exit(main())
