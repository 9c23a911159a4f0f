#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Compares commands of the shipped plug-ins with witnesses: native tools for the same questions.

    witnesses.py --tool TOOL --plugin-dir DIR [--runs N] [--seconds S] [NAME]...

For each question it runs both programs in turn, at least three times, until it has done so N times
(default 21) or S seconds (default 5) have passed. It prints the median times and the median of the
ratios. Time is processor time of the process and its children, in user and system mode. NAME
selects the rows whose name contains it.

The measurements run as root in network, mount and process namespaces of their own, with a small and
a large amount of data, for example with 10 and with 20,000 routes. The host does not change.
Without root, or if a witness is not installed, the row is omitted. Rows that are omitted or fail
are named at the end.
"""

import argparse
import contextlib
import io
import os
import shutil
import statistics
import subprocess
import sys
import tarfile
import tempfile
import time

IN_NAMESPACE = "--in-namespace"


class Row:
    """A question: the words for the tool, the command line of the witness, a function that creates
    the data, the numbers of items, and a note on what is special. The function takes the folder
    to write to and the number of items."""

    def __init__(self, command, witness, data=None, sizes=(None,), note=""):
        self.command, self.witness, self.data, self.sizes = command, witness, data, sizes
        self.label = command + (f" ({note})" if note else "")


def make_lines(folder, count):
    with open(os.path.join(folder, "lines.log"), "w", encoding="utf-8") as file:
        for number in range(count):
            file.write(f"2026-11-01T10:00:00.{number % 10**6:06}+00:00 web worker[{number}]: "
                       f"served a page of {number * 37 % 5000} bytes to a visitor\n")


LINK = ("link add d0 type veth peer name d1", "link set d0 up", "link set d1 up")


def make_routes(_folder, count):
    lines = (f"route replace 10.{number >> 16 & 255}.{number >> 8 & 255}.{number & 255}/32 dev d0"
             for number in range(count))
    batch(*LINK, *lines)


def batch(*lines):
    subprocess.run(["ip", "-force", "-batch", "-"], input="\n".join(lines) + "\n", text=True,
                   stderr=subprocess.DEVNULL, check=False)


def make_addresses(_folder, count):
    batch(*LINK,
          *(f"address add 10.{number >> 8 & 255}.{number & 255}.1/32 dev d0"
            for number in range(count)))


def make_neighbors(_folder, count):
    batch(*LINK,
          *(f"neighbor replace 10.9.{number >> 8 & 255}.{number & 255} "
            f"lladdr 02:00:00:00:{number >> 8 & 255:02x}:{number & 255:02x} dev d0 nud permanent"
            for number in range(count)))


def make_links(_folder, count):
    batch(*(f"link add d{number} type veth peer name e{number}" for number in range(count // 2)))


def cover(path, text):
    """Replaces the content of the file `path` with `text` in this mount namespace."""
    with tempfile.NamedTemporaryFile("w", delete=False, encoding="utf-8") as file:
        file.write(text)
    os.chmod(file.name, 0o644)
    subprocess.run(["mount", "--bind", file.name, path], check=True)


def make_packages(_folder, count):
    cover("/var/lib/dpkg/status", "".join(
        f"Package: name{number:06}\nStatus: install ok installed\nPriority: optional\n"
        f"Section: misc\nInstalled-Size: {number}\nMaintainer: Nobody <nobody@example.org>\n"
        f"Architecture: amd64\nVersion: 1.{number}-1\nDepends: libc6 (>= 2.36)\n"
        f"Description: package {number}\n It does nothing.\n\n" for number in range(count)))


def make_accounts(_folder, count):
    """Creates users, each with a group of the same name and number, as `useradd` does."""
    numbers = range(1000, 1000 + count)
    cover("/etc/passwd", "root:x:0:0:root:/root:/bin/bash\n" + "".join(
        f"user{number}:x:{number}:{number}::/home/user{number}:/bin/sh\n" for number in numbers))
    cover("/etc/group", "root:x:0:\n" + "".join(
        f"user{number}:x:{number}:\n" for number in numbers))


def make_accounts_without_groups(folder, count):
    make_accounts(folder, count)
    cover("/etc/group", "root:x:0:\n")


def make_mounts(folder, count):
    for number in range(count):
        path = os.path.join(folder, f"m{number}")
        os.mkdir(path)
        subprocess.run(["mount", "-t", "tmpfs", "none", path], check=True)


def make_tree(folder, count):
    for number in range(count):
        inner = os.path.join(folder, "tree", str(number // 1000), str(number // 100 % 10))
        os.makedirs(inner, exist_ok=True)
        with open(os.path.join(inner, str(number)), "w", encoding="utf-8") as file:
            file.write("x")


def make_archive(folder, count):
    with tarfile.open(os.path.join(folder, "a.tar"), "w") as archive:
        for number in range(count):
            entry = tarfile.TarInfo(f"folder/name{number}")
            entry.size = 100
            archive.addfile(entry, io.BytesIO(b"x" * 100))


def make_big_file(folder, count):
    with open(os.path.join(folder, "big"), "wb") as file:
        for _ in range(count):
            file.write(b"0123456789abcdef" * 65536)


def make_processes(folder, count):
    """Starts sleeping processes in a process namespace that ends together with this process."""
    del folder
    for _ in range(count):
        subprocess.Popen(["sleep", "600"])


ROWS = [
    Row("log list --file lines.log --lines 5", "tail -n 5 lines.log", make_lines, (10, 200_000)),
    Row("log list --file lines.log --lines 100000", "tail -n 100000 lines.log", make_lines,
        (10, 200_000)),
    Row("package list", "dpkg-query -W", make_packages, (10, 100_000)),
    Row("package get --name name000001", "dpkg-query -s name000001", make_packages, (10, 100_000)),
    Row("network route list", "ip route", make_routes, (10, 20_000)),
    Row("network address list", "ip address", make_addresses, (10, 20_000)),
    Row("network neighbor list", "ip neighbor", make_neighbors, (10, 20_000)),
    Row("network interface list", "ip link", make_links, (10, 1_000)),
    Row("network counter list", "ip -s link", make_links, (10, 1_000)),
    Row("network connection list", "ss -tuan"),
    Row("storage mount list", "findmnt", make_mounts, (10, 1_000)),
    Row("storage filesystem list", "df", make_mounts, (10, 1_000)),
    Row("storage device list", "lsblk"),
    Row("storage usage list --directory tree", "du tree", make_tree, (10, 100_000)),
    Row("file checksum --file big", "sha256sum big", make_big_file, (1, 256)),
    Row("file members --archive a.tar", "tar -tvf a.tar", make_archive, (10, 100_000)),
    Row("system process list", "ps -ef", make_processes, (10, 1_000)),
    Row("system account list", "getent passwd", make_accounts, (10, 100_000)),
    Row("system account list", "getent passwd", make_accounts_without_groups, (10, 100_000),
        "groups missing"),
    Row("system module list", "lsmod"),
    Row("system parameter list", "sysctl -a"),
    Row("system cpu list", "lscpu -e"),
    Row("system session list", "who"),
    Row("service list", "systemctl list-units --all --type=service"),
]


def processor_seconds(words, folder):
    """Runs a program without showing its output; returns its processor time and exit status."""
    process = subprocess.Popen(words, cwd=folder, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return usage.ru_utime + usage.ru_stime, process.returncode


def compare(row, options, folder):
    """Returns the median times of both, in milliseconds, and the median ratio; or None if one of
    them fails."""
    ours = [options.tool, "--plugin-dir", options.plugin_dir, *row.command.split()]
    times = []
    end = time.monotonic() + options.seconds
    while len(times) < 3 or (len(times) < options.runs and time.monotonic() < end):
        (mine, own_status), (theirs, status) = (
            processor_seconds(words, folder) for words in (ours, row.witness.split()))
        if own_status != 0 or status != 0:
            return None
        times.append((mine, theirs))
    ratio = statistics.median(mine / max(theirs, 1e-4) for mine, theirs in times)
    return [1000 * statistics.median(column) for column in zip(*times)] + [ratio]


def measure(row, size, options):
    """Prints the row of one size; returns whether both programs succeeded."""
    with tempfile.TemporaryDirectory() as folder:
        if row.data:
            with contextlib.suppress(FileExistsError):
                row.data(folder, size)
        result = compare(row, options, folder)
        subprocess.run(f"umount {folder}/* 2>/dev/null", shell=True, check=False)
    if result is None:
        print(f"| {row.label} | {row.witness} | {size or ''} | failed | | |", flush=True)
        return False
    print("| {} | {} | {} | {:.1f} | {:.1f} | {:.2f} |".format(
        row.label, row.witness, size or "", *result), flush=True)
    return True


def in_namespace(row, size, arguments):
    """Measures one row in separate network, mount and process namespaces."""
    command = ["unshare", "--net", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc",
               sys.executable, "-B", os.path.abspath(__file__), *arguments,
               IN_NAMESPACE, str(ROWS.index(row)), str(size or 0)]
    return subprocess.run(command, check=False).returncode == 0


def parse(arguments):
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--tool", required=True, type=os.path.abspath)
    parser.add_argument("--plugin-dir", required=True, type=os.path.abspath)
    parser.add_argument("--runs", type=int, default=21)
    parser.add_argument("--seconds", type=float, default=5)
    parser.add_argument(IN_NAMESPACE, nargs=2, type=int, help=argparse.SUPPRESS)
    parser.add_argument("names", nargs="*")
    return parser.parse_args(arguments)


def main(arguments):
    options = parse(arguments)
    if options.in_namespace:
        index, size = options.in_namespace
        return 0 if measure(ROWS[index], size or None, options) else 1
    print("| command | witness | items | ms | witness ms | ratio |\n|---|---|--:|--:|--:|--:|",
          flush=True)
    left_out = []
    for row in ROWS:
        if options.names and not any(name in row.label for name in options.names):
            continue
        if os.geteuid() != 0 or shutil.which(row.witness.split()[0]) is None:
            left_out.append(row.label)
            continue
        for size in row.sizes:
            if not in_namespace(row, size, arguments):
                left_out.append(row.label)
    if left_out:
        print("Left out: " + "; ".join(dict.fromkeys(left_out)))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
