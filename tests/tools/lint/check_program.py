#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks the program vexil-lint: its options, its status, and that our own plug-ins are clean.

    check_program.py PROGRAM GUIDES FOLDER...

There must be no finding at all in any FOLDER of plug-ins, nor in the descriptors that the pages in
GUIDES save. The pages of mistakes are excepted.
"""

import glob
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

BAD = "<x><version>1</version></x>"
PAGES_OF_MISTAKES = ("linting.md", "schemas.md")
BLOCK = re.compile(r"^```xml save=(\S+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


class Checker:
    def __init__(self, program):
        self.program = program
        self.failures = 0

    def run(self, *arguments, cwd=None):
        return subprocess.run([self.program, *arguments], capture_output=True, text=True, cwd=cwd,
                              timeout=60, check=False)

    def expect(self, condition, what):
        if not condition:
            self.failures += 1
            print(f"FAILED: {what}", file=sys.stderr)

    def check_answers(self):
        for option, start in (("--help", "vexil-lint [OPTION]"), ("--version", "vexil-lint "),
                              ("--rules", "attribute-missing (error)\n")):
            done = self.run(option)
            self.expect(done.returncode == 0 and done.stdout.startswith(start), option)
        rules = [line.split()[0] for line in self.run("--rules").stdout.splitlines()]
        for rule in rules:
            done = self.run("--explain", rule)
            self.expect(done.returncode == 0 and done.stdout.startswith(rule + " ("), rule)

    def check_mistakes(self):
        for arguments in ((), ("--format", "yaml", "x"), ("--format",), ("--explain", "none"),
                          ("--suppress=none", "x"), ("--bad", "x")):
            done = self.run(*arguments)
            self.expect(done.returncode == 2 and done.stderr.startswith("vexil-lint: ")
                        and done.stderr.endswith("; see vexil-lint --help\n"),
                        f"status of {arguments}: {done}")

    def check_statuses(self, folder):
        bad = os.path.join(folder, "bad.xml")
        with open(bad, "w", encoding="utf-8") as file:
            file.write(BAD)
        done = self.run(bad)
        self.expect(done.returncode == 1, f"status of findings: {done}")
        self.expect(done.stdout.startswith(f"{bad}:1:1: error: element-missing: "), done.stdout)
        missing = os.path.join(folder, "missing.xml")
        done = self.run(missing, bad)
        self.expect(done.returncode == 2 and bad in done.stdout and missing in done.stderr,
                    f"a file that is missing: {done}")
        pipe = os.path.join(folder, "pipe.xml")
        os.mkfifo(pipe)
        done = self.run(pipe, bad)
        self.expect(done.returncode == 2 and bad in done.stdout and
                    f"cannot read {pipe}: it is not a regular file" in done.stderr, f"a pipe: {done}")
        os.remove(pipe)
        if os.geteuid() == 0:
            os.chmod(folder, 0o700)
            done = subprocess.run([self.program, folder], capture_output=True, text=True, user=65534,
                                  check=False)
            self.expect(done.returncode == 2 and done.stderr ==
                        f"vexil-lint: cannot read {folder}: Permission denied\n",
                        f"a folder without rights: {done}")
        inner = os.path.join(folder, "ext", "lib64")
        os.makedirs(inner)
        shutil.copy(bad, inner)
        done = self.run(folder)
        self.expect(os.path.join(inner, "bad.xml") in done.stdout, f"ext/lib64: {done}")
        shutil.rmtree(os.path.join(folder, "ext"))
        done = self.run("--suppress", "version", "--suppress=element-missing", bad)
        self.expect(done.returncode == 0 and done.stdout == "", f"suppressed: {done}")
        for form, key in (("json", "findings"), ("sarif", "runs")):
            done = self.run(f"--format={form}", bad)
            self.expect(done.returncode == 1 and key in json.loads(done.stdout), form)
        with open("/dev/full", "w", encoding="utf-8") as full:
            done = subprocess.run([self.program, bad], stdout=full, stderr=subprocess.PIPE, text=True,
                                  check=False)
        self.expect(done.returncode == 2 and done.stderr ==
                    "vexil-lint: cannot write to standard output: No space left on device\n",
                    f"standard output that is full: {done}")

    def check_clean(self, folders):
        for folder in folders:
            files = [name for name in os.listdir(folder) if name.endswith((".so", ".xml"))]
            self.expect(files != [], f"{folder} has plug-ins")
            # The loader would search its own folders for names without a slash.
            done = self.run(*sorted(name for name in files if name.endswith(".so")), cwd=folder)
            self.expect(done.returncode == 0 and done.stdout == "", done)
        done = self.run(*folders)
        self.expect(done.returncode == 0 and done.stdout == "", done.stdout)

    def check_order(self, folders):
        files = [os.path.join(folder, name) for folder in folders
                 for name in sorted(os.listdir(folder)) if name.endswith((".so", ".xml"))]
        done = self.run(*files)
        self.expect(done.returncode == 0 and done.stdout == "", done.stdout)
        # host.so declares a namespace that a descriptor uses, so it must come first.
        done = self.run("--format=json", *reversed(files))
        rules = {finding["rule"] for finding in json.loads(done.stdout)["findings"]}
        self.expect(done.returncode == 1 and rules == {"path-undeclared"}, f"reversed: {done}")

    def check_guides(self, pages, plugins, folder):
        examined = 0
        for page in sorted(glob.glob(os.path.join(pages, "*.md"))):
            with open(page, encoding="utf-8") as file:
                blocks = BLOCK.findall(file.read())
            for name, block in blocks:
                if "<commands>" not in block or os.path.basename(page) in PAGES_OF_MISTAKES:
                    continue
                path = os.path.join(folder, name)
                with open(path, "w", encoding="utf-8") as file:
                    file.write(block)
                done = self.run(*plugins, path)
                self.expect(done.returncode == 0 and done.stdout == "", f"{page}: {done.stdout}")
                examined += 1
        self.expect(examined >= 3, f"only {examined} descriptors in the guides")


def main():
    checker = Checker(sys.argv[1])
    checker.check_answers()
    checker.check_mistakes()
    with tempfile.TemporaryDirectory() as folder:
        checker.check_statuses(folder)
        checker.check_guides(sys.argv[2], sys.argv[3:], folder)
    checker.check_clean(sys.argv[3:])
    checker.check_order(sys.argv[3:])
    return 1 if checker.failures else 0


if __name__ == "__main__":
    sys.exit(main())
