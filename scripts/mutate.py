#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests the tests: puts mistakes into the library, one at a time, and runs the tests.

    mutate.py prepare    builds the tests with all mutants, and finds out which of them each test
                         reaches (takes minutes)
    mutate.py run        runs, for each mutant that has no result yet, the tests that reach it, until
                         one fails (takes an hour)
    mutate.py report     prints the figures and the mutants that survived
    mutate.py all        does all three, in this order

All mutants are compiled into one copy of the sources, in build/mutants. scripts/mutations.py lists
the kinds; a mutation that does not compile is left out. A mutant is killed if a test fails, crashes,
or takes several times as long. tests/mutants/equivalent.txt lists the mutants that no test can kill,
with the reasons. `run` may be stopped at any time and continues where it stopped.

The programs run in a namespace of processes, because a mutant may send a signal to every process.
This needs the rights of root.
"""

import argparse
import collections
import contextlib
import hashlib
import json
import math
import mmap
import os
import random
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import mutations

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
FOLDER = os.path.join(ROOT, "build", "mutants")
# The paths are those of a build with the preset, so that a compiler cache already has the tests.
SOURCE = os.path.join(FOLDER, "source")
TREE = os.path.join(SOURCE, "build", "ci")
HARNESS = os.path.join(ROOT, "tests", "mutants")
EQUIVALENT = os.path.join(HARNESS, "equivalent.txt")
FOLDERS = ("metaobj", "callspec", "autocli")

# The programs whose tests run, in this order, with their folders.
PROGRAMS = {"kestrel_unit_tests": "tests", "kestrel_internal_tests": "tests",
            "kestrel_e2e_tests": "tests/e2e"}
# These tests repeat checks of faster ones, or measure memory and time, which mutants change.
LEFT_OUT = re.compile(r"Hostile|MemoryTest|SlowFit|^Random")
MAX_SECONDS_OF_A_TEST = 3
SECONDS_OF_BATCHES = (0.03, 0.1, 0.5)
MIN_PERCENT = 95
MIN_MUTANTS = 3000

Row = collections.namedtuple("Row", "program test seconds reached")


def load(name, default=None):
    path = os.path.join(FOLDER, name)
    if default is not None and not os.path.exists(path):
        return default
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def save(name, value):
    with open(os.path.join(FOLDER, name), "w", encoding="utf-8") as file:
        json.dump(value, file)


# --- The build

def list_files(*folders):
    names = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard",
                            *folders], cwd=ROOT, check=True, text=True,
                           capture_output=True).stdout.split("\0")
    return [name for name in names if name and os.path.exists(os.path.join(ROOT, name))]


def write_if_changed(path, text):
    if os.path.exists(path):
        with open(path, encoding="utf-8") as file:
            if file.read() == text:
                return
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


def key_of(source):
    """Returns a hash of the code of a source, without its comments, and of its mutations."""
    found = [(source.offset(mutation), mutation.kind, [edit[1:] for edit in mutation.edits])
             for mutation in mutations.Source(source.path, source.text, source.first).mutations]
    code = mutations.without_comments(source.text).split()
    return hashlib.sha256(repr((code, found)).encode()).hexdigest()


def read_sources():
    """Reads the sources. A source whose code has not changed keeps its numbers, so that its results
    stay valid; a changed source gets new numbers."""
    firsts = load("firsts.json", {})
    free = max((first + count for first, count, _ in firsts.values()), default=1)
    sources = []
    for path in list_files(*FOLDERS):
        if not path.endswith(".cpp"):
            continue
        with open(os.path.join(ROOT, path), encoding="utf-8") as file:
            source = mutations.Source(path, file.read(), 0)
        key = key_of(source)
        first, _, known = firsts.get(path, (None, None, None))
        if known != key:
            first = free
            free += source.next
        firsts[path] = (first, source.next, key)
        sources.append(mutations.Source(path, source.text, first))
    save("firsts.json", firsts)
    return sources


def copy_files(mutated):
    """Copies all files but those that will be mutated, with their times, so that only what has
    changed is compiled again."""
    for name in list_files():
        target = os.path.join(SOURCE, name)
        if name not in mutated and name != "CMakeLists.txt":
            os.makedirs(os.path.dirname(target), exist_ok=True)
            shutil.copy2(os.path.join(ROOT, name), target)


def write_build_file(sources):
    """Writes the build file. Mutants are compiled fast and without warnings, everything else as
    usual. The programs get the main function of the harness."""
    with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as file:
        text = file.read()
    names = "\n  ".join(os.path.join(SOURCE, source.path) for source in sources)
    text += (f"\nset_property(SOURCE\n  {names}\n"
             "  TARGET_DIRECTORY kestrel_objects kestrel kestrel_expression_objects kestrel_xml_objects\n"
             "  PROPERTY COMPILE_OPTIONS -O1 -w -fpermissive)\n")
    server = os.path.join(HARNESS, "MutantServer.cpp")
    text += "".join(f"target_sources({program} PRIVATE {server})\n" for program in PROGRAMS)
    write_if_changed(os.path.join(SOURCE, "CMakeLists.txt"), text)


def build(targets, *options):
    result = subprocess.run(["cmake", "--build", TREE, "--parallel", str(os.cpu_count()),
                             "--target", *targets, "--", *options],
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    with open(os.path.join(FOLDER, "build.log"), "a", encoding="utf-8") as file:
        file.write(result.stdout)
    return result.returncode, result.stdout


def remove_broken(sources, log):
    """Removes the mutations in the lines for which the compiler reports errors. A file loses all of
    its mutations if its errors are only in other lines. Returns whether any was removed."""
    by_path = {source.path: source for source in sources}
    lines = collections.defaultdict(set)
    for match in re.finditer(r"^(?:\S*/source/)?(\w[\w/]*\.cpp):(\d+):\d+: +"
                             r"(?:fatal error|error|note|required from)", log, re.M):
        lines[match[1]].add(int(match[2]))
    failed = {path for match in re.finditer(r"^FAILED: \S*?\.dir/(?:.*?/)?(\w+\.cpp)\.o", log, re.M)
              for path in by_path if path.endswith("/" + match[1])}
    removed = False
    for path in failed:
        if by_path[path].remove_lines(lines[path]):
            removed = True
        else:
            print(f"{path}: no mutant compiles")
            removed |= by_path[path].keep(lambda mutation: False)
    return removed


def remove_known(sources):
    """Removes the mutations that an earlier build has found not to compile."""
    kept = load("kept.json", {})
    for source in sources:
        offsets = kept.get(key_of(source))
        if offsets is not None:
            known = frozenset(offsets)
            source.keep(lambda mutation, source=source, known=known:
                        source.offset(mutation) in known)


def save_kept(sources):
    found = {key_of(source): [source.offset(mutation) for mutation in source.mutations]
             for source in sources}
    save("kept.json", {**load("kept.json", {}), **found})


def build_mutants(sources):
    header = os.path.join(HARNESS, "Mutation.h")
    while True:
        for source in sources:
            write_if_changed(os.path.join(SOURCE, source.path), source.mutated(header))
        status, log = build(["kestrel"], "-k", "0")
        if status == 0:
            return
        if not remove_broken(sources, log):
            sys.exit(log[-3000:])
        save_kept(sources)


def prepare(options):
    os.makedirs(FOLDER, exist_ok=True)
    save("only.json", options.only.pattern)
    everything = read_sources()
    sources = [source for source in everything if options.only.search(source.path)]
    copy_files({source.path for source in sources})
    write_build_file(sources)
    for source in sources:
        target = os.path.join(SOURCE, source.path)
        if not os.path.exists(target):
            write_if_changed(target, source.text)
    subprocess.run(["cmake", "--preset", "ci"], cwd=SOURCE, check=True, stdout=subprocess.DEVNULL)
    remove_known(everything)
    build_mutants(sources)
    status, log = build(PROGRAMS)
    if status != 0:
        sys.exit(log[-3000:])
    save("mutants.json", [mutant for source in everything for mutant in source.mutants()])
    record(options)


# --- The tests

class Shared:
    """The shared file that tests/mutants/Mutation.h describes."""

    def __init__(self):
        file, self.path = tempfile.mkstemp(prefix="kestrel-mutants-")
        os.fchmod(file, 0o666)  # some tests give up their rights
        size = 4 + (1 << 16)
        os.truncate(file, size)
        self._memory = mmap.mmap(file, size)
        os.close(file)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.unlink(self.path)

    def activate(self, number):
        """Activates a mutant, or none if the number is 0. Returns the number that was active."""
        active = int.from_bytes(self._memory[:4], sys.byteorder)
        self._memory[:4] = number.to_bytes(4, sys.byteorder)
        return active

    def take_reached(self):
        """Returns the mutants that were reached since the last call."""
        reached = [match.start() for match in re.finditer(b"\x01", self._memory[4:])]
        self._memory[4:] = bytes(1 << 16)
        return reached


class Server:
    """A test program that waits for requests (tests/mutants/MutantServer.cpp)."""

    def __init__(self, program, shared):
        folder = os.path.join(TREE, PROGRAMS[program])
        # Standard error only has messages about the start; the tests themselves write to /dev/null.
        self._process = subprocess.Popen(
            [os.path.join(folder, program), "--serve"], cwd=folder, text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            env={**os.environ, "KESTREL_MUTANTS": shared.path}, start_new_session=True)
        self.is_ready = self._process.stdout.readline() == "ready\n"

    def run(self, tests, seconds):
        """Runs tests that normally take `seconds` of processor time. Returns the outcome and the
        seconds that they took."""
        if not self.is_ready:
            return "failed", 0
        limit = math.ceil(1 + 3 * seconds)
        elapsed_limit = 60 + 5 * limit
        try:
            self._resume()
            self._process.stdin.write(f"{limit} {elapsed_limit} {':'.join(tests)}\n")
            self._process.stdin.flush()
            if not select.select([self._process.stdout], [], [], elapsed_limit + 30)[0]:
                self._resume()
            outcome, microseconds = self._process.stdout.readline().split()
        except (BrokenPipeError, ValueError):
            self.is_ready = False
            return "failed", 0
        return outcome, int(microseconds) / 1e6

    def _resume(self):
        """Lets the program go on if a mutant has stopped it: a mutant may signal every process."""
        self._process.send_signal(signal.SIGCONT)

    def close(self):
        self._process.kill()
        self._process.communicate()

    def process(self):
        """Returns the process ID."""
        return self._process.pid


def kill_others(kept):
    """Ends all other processes of this namespace. A mutant may leave some, which would slow down the
    tests of the next mutants."""
    for name in os.listdir("/proc"):
        if name.isdigit() and int(name) not in kept:
            with contextlib.suppress(OSError):
                os.kill(int(name), signal.SIGKILL)


def list_tests(program):
    path = os.path.join(TREE, PROGRAMS[program], program)
    suite = ""
    for line in subprocess.run([path, "--gtest_list_tests"], check=True, text=True,
                               capture_output=True).stdout.splitlines():
        name = line.split("#")[0]
        if not name.startswith(" "):
            suite = name.strip()
        elif "DISABLED_" not in suite + name and not LEFT_OUT.search(suite + name.strip()):
            yield suite + name.strip()


def record(_):
    """Writes which mutants each test reaches, and how long it takes. Each test runs twice; one that
    fails without a mutant or is slow is left out."""
    table = []
    with Shared() as shared:
        for program in PROGRAMS:
            server = Server(program, shared)
            at_start = shared.take_reached()
            for test in list_tests(program):
                first, _ = server.run([test], 20)
                reached = shared.take_reached()
                second, seconds = server.run([test], 20)
                if (first, second) != ("passed", "passed"):
                    print(f"left out: {test} {first} {second}")
                elif seconds > MAX_SECONDS_OF_A_TEST:
                    print(f"left out: {test} takes {seconds:.1f} s")
                else:
                    table.append(Row(program, test, seconds, reached))
            server.close()
            table.append(Row(program, None, 0, at_start))
    save("reached.json", table)
    print(f"{len(table)} tests, {sum(row.seconds for row in table):.0f} seconds")


# --- The mutants

def divide(rows):
    """Divides a list of tests into batches that take longer and longer."""
    batch = []
    limits = list(SECONDS_OF_BATCHES)
    seconds = 0
    for row in rows:
        if batch and limits and seconds + row.seconds > limits[0]:
            yield batch
            batch = []
            seconds = 0
            limits.pop(0)
        batch.append(row)
        seconds += row.seconds
    if batch:
        yield batch


class Worker:
    """Tries mutants. It keeps one server for each program."""

    def __init__(self, shared, table, seconds):
        self.shared = shared
        self.seconds = seconds
        self.rows = collections.defaultdict(list)
        self.at_start = collections.defaultdict(set)
        for row in sorted(table, key=lambda row: row.seconds):
            for number in row.reached:
                if row.test is None:
                    self.at_start[number].add(row.program)
                else:
                    self.rows[number].append(row)
        self.servers = {program: Server(program, shared) for program in PROGRAMS}

    def batches(self, mutant):
        """Yields batches of the tests that reach a mutant: first those of its class, then all
        others, the quick ones first. A batch has tests of one program; the first batches are
        small."""
        stem = os.path.splitext(os.path.basename(mutant.file))[0]
        for is_own in (True, False):
            for program in PROGRAMS:
                rows = [row for row in self.rows[mutant.number]
                        if row.program == program and (stem in row.test) == is_own]
                yield from ((program, batch) for batch in divide(rows))

    def try_batches(self, mutant, servers):
        left = self.seconds
        for program, rows in self.batches(mutant):
            expected = 0
            chosen = []
            for row in rows:
                expected += row.seconds
                if expected <= left:
                    chosen.append(row.test)
            if not chosen or program not in servers:
                continue
            outcome, seconds = servers[program].run(chosen, min(expected, left))
            left -= seconds
            if outcome != "passed" and self._passes_without(program, chosen, expected):
                return "killed" if outcome == "failed" else outcome
        return "survived"

    def _passes_without(self, program, tests, seconds):
        """Returns whether tests pass without a mutant: on a busy machine, they may fail for lack of
        time. If the mutant has ended the server, nothing can be tried, and the result is true."""
        server = self.servers[program]
        if not server.is_ready:
            return True
        active = self.shared.activate(0)
        outcome, _ = server.run(tests, seconds)
        self.shared.activate(active)
        return outcome == "passed"

    def try_mutant(self, mutant):
        """Returns "killed", "slow", "survived" or "unreached". A mutant in code that runs at the
        start of a program is tried in a program that starts with the mutant."""
        self.shared.activate(mutant.number)
        programs = self.at_start[mutant.number]
        outcome = self.try_batches(mutant, self.servers)
        if outcome == "survived" and programs:
            servers = {program: Server(program, self.shared) for program in programs}
            outcome = self.try_batches(mutant, servers)
            for server in servers.values():
                outcome = outcome if server.is_ready else "killed"
                server.close()
        self.shared.activate(0)
        self._clean_up()
        is_reached = self.rows[mutant.number] or programs
        return outcome if is_reached else "unreached"

    def _clean_up(self):
        """Ends the processes that the tests of a mutant have left, and replaces servers that the
        mutant ended, so that no later mutant counts as killed because of them."""
        kill_others({os.getpid(), *(server.process() for server in self.servers.values())})
        for program, server in self.servers.items():
            if not server.is_ready:
                server.close()
                self.servers[program] = Server(program, self.shared)


def load_mutants():
    return [mutations.Mutant(*fields) for fields in load("mutants.json")]


def load_results():
    """Returns the last outcome of each mutant that has been tried."""
    results = {}
    path = os.path.join(FOLDER, "results.txt")
    if os.path.exists(path):
        with open(path, encoding="ascii") as file:
            for line in file:
                number, outcome = line.split()
                results[int(number)] = outcome
    return results


def work(options):
    """Does the work of `run`, in a process namespace."""
    results = load_results()
    if options.again:
        results = {number: outcome for number, outcome in results.items()
                   if outcome == "killed"}
    mutants = load_mutants()
    random.Random(1).shuffle(mutants)
    patterns = [options.only, re.compile(load("only.json", ""))]
    mutants = [mutant for mutant in mutants[:options.sample] if mutant.number not in results
               and all(pattern.search(mutant.file) for pattern in patterns)]
    table = [Row(*fields) for fields in load("reached.json")]
    with Shared() as shared, open(os.path.join(FOLDER, "results.txt"), "a", encoding="ascii") as file:
        worker = Worker(shared, table, options.seconds)
        for mutant in mutants[options.share::options.jobs]:
            file.write(f"{mutant.number} {worker.try_mutant(mutant)}\n")
            file.flush()


def run(options):
    command = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc",
               sys.executable, "-B", os.path.abspath(__file__), "work",
               "--sample", str(options.sample), "--jobs", str(options.jobs),
               "--seconds", str(options.seconds), "--only", options.only.pattern]
    command += ["--again"] if options.again else []
    workers = [subprocess.Popen([*command, "--share", str(share)]) for share in range(options.jobs)]
    try:
        statuses = [worker.wait() for worker in workers]
    finally:
        for worker in workers:
            worker.kill()  # unshare ignores other signals; the workers end with it
    if any(statuses):
        sys.exit("A worker failed.")
    report(options)


# --- The report

def load_equivalent():
    """Returns the mutants that are listed as equivalent: the line that describe() returns for each,
    with its reason."""
    listed = {}
    reason = None
    with open(EQUIVALENT, encoding="utf-8") as file:
        for line in file.read().splitlines():
            if line.startswith("## "):
                reason = line[3:]
            elif line and not line.startswith("#"):
                listed[line] = reason
    return listed


def describe(mutants):
    """Returns, by the number of each mutant, the line that lists it. This line changes only if the
    mutant's own line changes, or the number of equal mutants before it in the file."""
    counts = collections.Counter()
    texts = {}
    for mutant in mutants:
        key = (mutant.file, mutant.kind, mutant.text)
        counts[key] += 1
        texts[mutant.number] = f"{mutant.file} | {mutant.kind} {counts[key]} | {mutant.text}"
    return texts


def report(_):
    mutants = load_mutants()
    results = load_results()
    texts = describe(mutants)
    equivalent = load_equivalent()
    counts = collections.defaultdict(collections.Counter)
    open_mutants = []
    for mutant in mutants:
        outcome = results.get(mutant.number, "not tried")
        if outcome in ("survived", "unreached"):
            is_listed = texts[mutant.number] in equivalent
            counts[mutant.file.split("/")[0]]["equivalent" if is_listed else "survived"] += 1
            open_mutants += [] if is_listed else [f"{mutant.line}: {outcome} {texts[mutant.number]}"]
        else:
            counts[mutant.file.split("/")[0]][outcome] += 1
    print("\n".join(open_mutants))
    total = collections.Counter()
    for folder, count in counts.items():
        print_figures(folder, count)
        total.update(count)
    print_figures("all", total)
    for text in sorted(set(equivalent) - set(texts.values())):
        print("listed as equivalent, but no mutant:", text)
    for number, outcome in results.items():
        if outcome in ("killed", "slow") and texts.get(number) in equivalent:
            print("listed as equivalent, but killed:", texts[number])
    killed = total["killed"] + total["slow"]
    tried = sum(total.values()) - total["not tried"]
    if tried < MIN_MUTANTS or 100 * killed < MIN_PERCENT * tried:
        sys.exit(1)


def print_figures(name, count):
    tried = sum(count.values()) - count["not tried"]
    killed = count["killed"] + count["slow"]
    print(f"{name}: {tried} mutants, {killed} killed ({100 * killed / max(tried, 1):.1f} %), "
          f"{count['slow']} of them by time; {count['survived']} survived, "
          f"{count['equivalent']} equivalent; {count['not tried']} not tried")


def run_all(options):
    prepare(options)
    run(options)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    works = {"prepare": prepare, "record": record, "run": run, "work": work, "report": report,
             "all": run_all}
    parser.add_argument("command", choices=works, metavar="prepare|run|report|all")
    parser.add_argument("--sample", type=int, default=10 ** 6, help="how many mutants, at random")
    parser.add_argument("--only", type=re.compile, default=re.compile(""), metavar="PATTERN",
                        help="prepare, run: only the mutants of the files that match")
    parser.add_argument("--again", action="store_true", help="try those that survived or were slow again")
    parser.add_argument("--seconds", type=float, default=10,
                        help="processor time after which a mutant counts as a survivor (10)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="how many side by side")
    parser.add_argument("--share", type=int, default=0, help=argparse.SUPPRESS)
    options = parser.parse_args()
    works[options.command](options)


if __name__ == "__main__":
    main()
