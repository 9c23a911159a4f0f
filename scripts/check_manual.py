#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Compares the manual pages with the installed tree that they describe, and runs their examples.

    check_manual.py --stage DIR --version VERSION --statuses FILE [--sanitizers NAMES] [PAGE...]

DIR is the installed tree; NAMES are the sanitizers that it is built with. Every installed page is
checked, or only those that are named ("vexil.1"):

- mandoc and groff accept it; no line is wider than 80 columns; every page that it refers to exists;
- its options are those of the program of that name;
- its exit statuses are those of the commands in FILE, in which each line has the page, the status
  and the command, with tabs between them;
- its environment variables are those that the sources of the program read;
- its files exist; the formats and their parameters are those that the tool completes;
- in EXAMPLES, each line that begins with "$ " runs, and prints the lines after it if there are any.
  A block without commands is written to the file that the sentence before it names.
"""

import argparse
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True

from check_examples import ROOT, Workplace, commands_of, matches  # noqa: E402

MAX_WIDTH = 80
FAULTY_XR = re.compile(r".*referenced manual not found: Xr (\S+) (\d)")
VARIABLE = re.compile(r'(?:getenv|environ\.get)\("(\w+)"\)')
PASSED_ON = re.compile(r"kPassedOn\[\] = \{(.*?)\}", re.DOTALL)
FILE_NAME = re.compile(r"\b[\w-]+\.(?:xml|cpp|json|txt)\b")
# The folders and files of a program's own sources. Those of every program that is not listed here
# are in tools/NAME, where NAME is what follows "vexil-" in the name of the program.
SOURCES = {"vexil": ["autocli", "callspec", "metaobj", "platform", "vexil", "plugins"],
           "vexil-explain": ["tools/explain", "vexil/PrettyRequest.cpp"]}
# The type and the fields in the keys of format parameters that the tool completes. In their place,
# a page writes "type" and "field".
SAMPLE_TYPE, SAMPLE_FIELD = "VexilCommand", ("Command", "Description", "Namespace")


def output_of(*command, env=None, status=0):
    """Returns what the command prints on standard output; None if it ends with another status."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, env=env,
                          stderr=subprocess.PIPE, timeout=60, check=False)
    return done.stdout.decode() if done.returncode == status else None


def sources_in(place):
    """Returns the source files in a folder, or the file itself if `place` is a file."""
    if os.path.isfile(place):
        return [place]
    return glob.glob(os.path.join(place, "**", "*.cpp"), recursive=True) + \
        glob.glob(os.path.join(place, "*.py.in"))


def complaints_of(*command):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=60, check=False)
    return done.stdout.decode().splitlines()


class Page:
    """One page: its source, and its text as a reader sees it."""

    def __init__(self, path):
        self.path = path
        self.file = os.path.basename(path)
        self.name = self.file.rsplit(".", 1)[0]
        with open(path, encoding="utf-8") as file:
            self.source = file.read()
        self.text = subprocess.run(
            ["mandoc", "-T", "ascii", "-O", "width=78", path], stdout=subprocess.PIPE,
            check=False).stdout.decode()
        self.text = re.sub(r".\x08", "", self.text)

    def section(self, title):
        """Returns the source of a section, or an empty string."""
        found = re.search(rf"^\.Sh {title}\n(.*?)(?=^\.Sh |\Z)", self.source,
                          re.MULTILINE | re.DOTALL)
        return found.group(1) if found else ""

    def words(self, macro, source=None):
        """Returns the arguments of a macro in the source as single words, without commas."""
        lines = re.findall(rf"^\.(?:It )?{macro} (.*)$", source or self.source, re.MULTILINE)
        return [word for line in lines
                for word in re.split(r"[ ,.]+", line.replace(f"{macro} ", "")) if word]

    def options(self):
        lines = re.findall(r"^\.It (Fl .*)$", self.source, re.MULTILINE)
        long_names = {"--" + name for line in lines
                      for name in re.findall(r"Fl Fl ([\w-]+)", line)}
        return long_names | {"-" + name for line in lines
                             for name in re.findall(r"Fl (\w)\b", line)}

    def statuses(self):
        return set(map(int, re.findall(r"^\.It (\d+)$", self.section("EXIT STATUS"), re.MULTILINE)))

    def examples(self):
        """Returns the blocks of EXAMPLES, each with the sentence before it."""
        text = self.section("EXAMPLES")
        text = re.sub(r"^\.Dl (.*)$", r".Bd -literal\n\1\n.Ed", text, flags=re.MULTILINE)
        blocks = re.findall(r"(.*?)^\.Bd -literal.*?\n(.*?)^\.Ed$", text, re.MULTILINE | re.DOTALL)
        return [(intro, re.sub(r"\\&", "", block).replace("\\e", "\\")) for intro, block in blocks]


class Checker:
    def __init__(self, stage, version, sanitizers):
        self.stage = stage
        self.version = version
        self.sanitizers = sanitizers
        self.problems = []
        self.examples = 0
        found = glob.glob(os.path.join(stage, "share/man/man*/*"))
        self.pages = {page.file: page for page in map(Page, sorted(found))}

    def fail(self, page, problem):
        self.problems.append(f"{page.file}: {problem}")

    def compare(self, page, what, documented, actual):
        for word in sorted(set(documented) - set(actual), key=str):
            self.fail(page, f"documents {what} {word}, which does not exist")
        for word in sorted(set(actual) - set(documented), key=str):
            self.fail(page, f"does not document {what} {word}")

    def program(self, name):
        for folder in ("bin", "libexec"):
            path = os.path.join(self.stage, folder, name)
            if os.path.exists(path):
                return path
        return None

    def check_form(self, page):
        for line in complaints_of("mandoc", "-T", "lint", page.path):
            reference = FAULTY_XR.match(line)
            # mandoc searches the pages of the system only.
            if not reference or ".".join(reference.groups()) not in self.pages:
                self.fail(page, line)
        for line in complaints_of("groff", "-mdoc", "-Tascii", "-ww", "-z", page.path):
            # The paths of the installed tree may be longer than a line.
            if "break line" not in line:
                self.fail(page, line)
        for line in page.text.splitlines():
            if len(line) > MAX_WIDTH and self.stage not in line:
                self.fail(page, f"a line is wider than {MAX_WIDTH} columns: {line}")
        if "@" in page.source:
            self.fail(page, "contains a placeholder")
        if f"version {self.version} of Kestrel" not in page.source:
            self.fail(page, f"does not name version {self.version}")

    def check_options(self, page, program):
        usage = " ".join(complaints_of(program, "--help"))
        options = set(re.findall(r"(?<![\w-])--?[a-z][a-z-]*", usage))
        if page.name == "vexil":
            completed = output_of(self.program("vexil-complete"), "1", "vexil", "-")
            options |= set(re.findall(r"^-\S+", completed, re.MULTILINE))
            options.add("--version")
        self.compare(page, "option", page.options(), options)

    def check_statuses(self, page, cases, workplace):
        for status, command in cases:
            printed = workplace.run(command)
            line = printed[-1] if printed else ""
            if line != f"[exit status {status}]" and (status or line.startswith("[exit status ")):
                self.fail(page, f"status {status} is expected of: {command}: {printed}")
        self.compare(page, "exit status", page.statuses(), {status for status, _ in cases})

    def check_variables(self, page):
        places = SOURCES.get(page.name, ["tools/" + page.name.split("-", 1)[-1]])
        variables = set()
        for place in places:
            for path in sources_in(os.path.join(ROOT, place)):
                with open(path, encoding="utf-8") as file:
                    source = file.read()
                variables |= set(VARIABLE.findall(source))
                for names in PASSED_ON.findall(source):
                    variables |= set(re.findall(r'"(\w+)"', names))
        self.compare(page, "variable", page.words("Ev", page.section("ENVIRONMENT")), variables)

    def check_files(self, page):
        for path in re.findall(r"^\.It Pa (.*)$", page.section("FILES"), re.MULTILINE):
            existing = os.path.dirname(path) if "*" in path else path
            if os.path.isabs(path) and not os.path.exists(existing):
                self.fail(page, f"{path} does not exist")

    def completed_keys(self, formatter):
        words = ["vexil", "--formatter", formatter, "--format-param", "", "vexil", "command", "list"]
        printed = output_of(self.program("vexil-complete"), "4", *words) or ""
        keys = set()
        for key in re.findall(r"^([^:\s][^\t\n]*)=(?:\t.*)?$", printed, re.MULTILINE):
            key = key.replace(SAMPLE_TYPE, "type")
            keys.add(re.sub(rf"\.(?:{'|'.join(SAMPLE_FIELD)})$", ".field", key))
        return keys

    def check_formats(self, page):
        printed = output_of(self.program("vexil-complete"), "2", "vexil", "--formatter", "")
        formatters = set(re.findall(r"^([a-z][\w-]*)(?:\t.*)?$", printed, re.MULTILINE))
        text = page.text
        documented = set(re.findall(r"^     ([a-z][a-z0-9-]*)(?:  .*)?$", text, re.MULTILINE))
        self.compare(page, "format", documented - {"type"}, formatters | {"commandhelp"})
        described = set(re.findall(r"^     ([a-z:.-]+)=", text, re.MULTILINE))
        completed = set()
        for formatter in formatters:
            completed |= self.completed_keys(formatter)
        self.compare(page, "format parameter", described, completed)

    def check_examples(self, page, workplace):
        if "\n.Sh EXAMPLES\n" not in page.source:
            self.fail(page, "has no examples")
        for intro, block in page.examples():
            self.examples += 1
            pairs = commands_of(block)
            name = FILE_NAME.search(intro)
            if not pairs and name:
                workplace.save(name.group(0), block)
            for written, expected in pairs:
                printed = workplace.run("\n".join(line[2:] for line in written))
                if printed and printed[-1].startswith("[exit status ") or \
                        expected and not matches(expected, printed):
                    self.fail(page, f"the example {written} prints {printed}")


def read_statuses(path):
    cases = {}
    with open(path, encoding="utf-8") as file:
        for line in file:
            if line.strip() and not line.startswith("#"):
                name, status, command = line.rstrip("\n").split("\t")
                cases.setdefault(name, []).append((int(status), command))
    return cases


def new_workplace(folder, checker):
    """Returns a folder for the commands of a page. In it, they find the installed tools and the
    library."""
    stage = checker.stage
    programs = [os.path.join(stage, folder, name) for folder in ("bin", "libexec")
                for name in os.listdir(os.path.join(stage, folder)) if name != "vexil"]
    workplace = Workplace(folder, os.path.join(stage, "bin/vexil"), None, programs, [])
    # In a page, "vexil" is the installed tool with all of its plug-ins.
    workplace.add_program("vexil", f'[ "$*" = --version ] || set -- --plugin-dir '
                                   f'"{stage}/lib/norvane/vexil" "$@"\n'
                                   f'exec -a vexil "{stage}/bin/vexil" "$@"')
    workplace.use_library(stage)
    if checker.sanitizers:
        workplace.add_program(
            "c++", f'exec {shutil.which("c++")} -fsanitize={checker.sanitizers} "$@"')
    return workplace


def check_page(checker, page, cases):
    checker.check_form(page)
    program = checker.program(page.name)
    with tempfile.TemporaryDirectory() as folder:
        workplace = new_workplace(folder, checker)
        if program:
            checker.check_options(page, program)
            checker.check_statuses(page, cases.get(page.file, []), workplace)
            checker.check_variables(page)
        if page.name == "vexil-formats":
            checker.check_formats(page)
        checker.check_files(page)
        checker.check_examples(page, workplace)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--stage", required=True)
    parser.add_argument("--version", required=True)
    parser.add_argument("--statuses", required=True)
    parser.add_argument("--sanitizers")
    parser.add_argument("pages", nargs="*")
    arguments = parser.parse_args()

    checker = Checker(os.path.abspath(arguments.stage), arguments.version, arguments.sanitizers)
    cases = read_statuses(arguments.statuses)
    for file in arguments.pages or checker.pages:
        check_page(checker, checker.pages[file], cases)
    for name in os.listdir(os.path.join(checker.stage, "bin")):
        if name + ".1" not in checker.pages:
            checker.problems.append(f"{name} has no manual page")
    print("\n".join(checker.problems + [f"{len(checker.pages)} pages, {checker.examples} examples"]))
    return 1 if checker.problems or not checker.examples else 0


if __name__ == "__main__":
    sys.exit(main())
