#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs the examples in the guides and compares their output.

    check_examples.py [--update] --tool TOOL [--plugin-dir DIR] [--program FILE]...
                      [--link NAME=PATH]... [--catalog FILE] [--prefix DIR | --no-builds] PAGE...

An example is a fenced block marked `console`. A line that begins with "$ " is a command, a line
that begins with "> " continues it, and the lines after these are its output on both streams. Spaces
at line ends are ignored. A line "..." matches any number of lines. If the command fails, the last
line is "[exit status N]".

In a block, `vexil` starts TOOL without plug-ins, `./run` starts it with the plug-ins in DIR, and
the name of a FILE starts that program. The commands of a page run in order, in one folder that is
empty except for a link to each PATH.

A block marked `sh` runs too, and must succeed, whatever it prints. CMake and pkg-config find the
library that is installed in the DIR of --prefix. With --no-builds, no such block runs. Programs for
XML use the catalog FILE.

Other marks of a block:

    console host                  the output differs between hosts: only the exit status and the
                                  first line are compared, ignoring spaces
    cpp file=PATH                 the block must be in that file of the project, line for line
    xml file=PATH                 likewise; all such blocks of a page together must be the whole
                                  file except for the lines of its licence
    xml save=NAME, sh save=NAME, cmake save=NAME
                                  the block is written to the folder as an executable file
    cmake file=PATH               the block must be in that file of the project
    sh long                       the block takes too long: only its syntax is checked, and that its
                                  scripts, presets and targets exist

--update writes the present output into the pages instead of comparing.
"""

import argparse
import glob
import os
import re
import shutil
import stat
import subprocess
import sys
import tempfile

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
LICENCE = re.compile(r"^<!-- SPDX-.*\n", re.MULTILINE)
FENCE = re.compile(r"^```(console|cmake|cpp|sh|xml)([^\n]*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


class Workplace:
    """An empty folder in which both commands that start the tool are available."""

    def __init__(self, folder, tool, plugin_dir, programs, links):
        self.folder = folder
        bin_dir = os.path.join(folder, ".bin")
        os.mkdir(bin_dir)
        plugins = f' --plugin-dir "{plugin_dir}"' if plugin_dir else ""
        self.add_program("vexil", f'exec -a vexil "{tool}" "$@"')
        self.save("run", f'#!/bin/bash\nexec -a vexil "{tool}"{plugins} "$@"\n')
        for program in programs:
            os.symlink(os.path.abspath(program), os.path.join(bin_dir, os.path.basename(program)))
        for link in links:
            name, target = link.split("=", 1)
            os.symlink(os.path.abspath(target), os.path.join(folder, name))
        self.environment = {
            "HOME": folder, "LANG": "C", "PATH": bin_dir + ":/usr/sbin:/usr/bin:/sbin:/bin"}

    def use_library(self, prefix):
        """Lets CMake and pkg-config find the library that is installed in `prefix`."""
        prefix = os.path.abspath(prefix)
        self.environment["CMAKE_PREFIX_PATH"] = prefix
        files = glob.glob(os.path.join(prefix, "lib*", "**", "kestrel.pc"), recursive=True)
        self.environment["PKG_CONFIG_PATH"] = os.path.dirname(files[0])
        self.environment["LD_LIBRARY_PATH"] = os.path.dirname(os.path.dirname(files[0]))

    def save(self, name, text):
        self._executable(os.path.join(self.folder, name), text)

    def add_program(self, name, script):
        """Adds a program of this name for the commands. It runs the script in bash."""
        self._executable(os.path.join(self.folder, ".bin", name), f"#!/bin/bash\n{script}\n")

    @staticmethod
    def _executable(path, text):
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, os.stat(path).st_mode | stat.S_IXUSR)

    def run(self, command):
        """Returns the output of the command, with its exit status as the last line unless it is 0."""
        done = subprocess.run(["bash", "-c", command], cwd=self.folder, env=self.environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=600, check=False)
        lines = done.stdout.decode("utf-8", "replace").splitlines()
        return lines + ([f"[exit status {done.returncode}]"] if done.returncode else [])


def missing_from(block):
    """Returns what the commands of a block name but the project does not have."""
    commands = re.sub(r"#.*|\\\n", " ", block)
    missing = []
    for word in re.findall(r"^([^\s=]+)(?:\s|$)", commands, re.MULTILINE):
        if "/" in word and not word.startswith("build/") and \
                not os.access(os.path.join(ROOT, word), os.X_OK):
            missing.append(word)
        elif "/" not in word and not shutil.which(word):
            missing.append(word)
    with open(os.path.join(ROOT, "CMakePresets.json"), encoding="utf-8") as file:
        presets = re.findall(r'"name": "([^"]+)"', file.read())
    missing += [name for name in re.findall(r"--preset (\S+)", commands) if name not in presets]
    lists = subprocess.run(["git", "-C", ROOT, "grep", "-hoE",
                            r"add_(executable|library|custom_target)\([a-zA-Z_-]+"],
                           stdout=subprocess.PIPE, check=False).stdout.decode()
    targets = re.findall(r"\((\S+)", lists)
    return missing + [name for name in re.findall(r"--target (\S+)", commands)
                      if name not in targets]


def commands_of(block):
    """Returns pairs of the lines of a command and the lines of its expected output."""
    pairs = []
    for line in block.splitlines():
        if line.startswith("$ "):
            pairs.append(([line], []))
        elif line.startswith(">") and pairs and not pairs[-1][1]:
            pairs[-1][0].append(line)
        elif pairs:
            pairs[-1][1].append(line)
    return pairs


def matches(expected, printed):
    """Whether the lines are the same; "..." matches any number of lines."""
    pattern = "".join(r"(?:.*\n)*?" if line == "..." else re.escape(line.rstrip()) + r"\n"
                      for line in expected)
    return re.fullmatch(pattern, "".join(line.rstrip() + "\n" for line in printed)) is not None


def matches_on_any_host(expected, printed):
    def outline(lines):
        status = lines[-1] if lines[-1].startswith("[exit status ") else "[exit status 0]"
        return lines[0].split(), status
    return bool(expected) and bool(printed) and outline(expected) == outline(printed)


class Page:
    def __init__(self, path, workplace, runs_builds=True):
        self.path = path
        self.workplace = workplace
        self.runs_builds = runs_builds
        self.problems = []
        self.examples = 0
        self.quoted = {}
        with open(path, encoding="utf-8") as file:
            self.text = file.read()

    def check(self):
        """Returns the text of the page with the present output of its commands."""
        text = FENCE.sub(self._check_block, self.text)
        for source, quoted in self.quoted.items():
            if quoted != self._source(source):
                self.problems.append(f"{self.path}: the blocks together are not {source}")
        return text

    def _check_block(self, fence):
        kind, info, block = fence.groups()
        self.examples += 1
        if kind == "console":
            return f"```{kind}{info}\n{self._run_block(block, info.strip() == 'host')}```"
        source = re.search(r"file=(\S+)", info)
        if source and block not in self._source(source.group(1)):
            self.problems.append(f"{self.path}: a block is not in {source.group(1)}")
        if source and kind == "xml":
            self.quoted[source.group(1)] = self.quoted.get(source.group(1), "") + block
        saved = re.search(r"save=(\S+)", info)
        if saved:
            self.workplace.save(saved.group(1), block)
        elif kind == "sh":
            self._check_script(block, "long" in info.split())
        return fence.group(0)

    def _check_script(self, block, is_long):
        if is_long:
            wrong = missing_from(block)
            wrong += self.workplace.run(f"bash -n <<'END_OF_BLOCK'\n{block}END_OF_BLOCK")
            self.problems += [f"{self.path}: a block names {word}" for word in wrong]
        elif self.runs_builds:
            printed = self.workplace.run("set -e\n" + block)
            if printed and printed[-1].startswith("[exit status "):
                self.problems.append("\n".join([f"{self.path}: {block.splitlines()[0]}"] + printed))

    @staticmethod
    def _source(path):
        with open(os.path.join(ROOT, path), encoding="utf-8") as file:
            return LICENCE.sub("", file.read())

    def _run_block(self, block, any_host):
        result = ""
        for written, expected in commands_of(block):
            printed = self.workplace.run("\n".join(line[2:] for line in written))
            agrees = matches_on_any_host if any_host else matches
            if not agrees(expected, printed):
                self.problems.append("\n".join(
                    [f"{self.path}: {written[0]}", "expected:"] + expected +
                    ["printed:"] + printed))
            kept = expected if agrees(expected, printed) else printed
            result += "".join(line.rstrip() + "\n" for line in written + kept)
        return result


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--tool", required=True)
    parser.add_argument("--plugin-dir")
    parser.add_argument("--program", action="append", default=[])
    parser.add_argument("--link", action="append", default=[])
    parser.add_argument("--catalog")
    parser.add_argument("--prefix")
    parser.add_argument("--no-builds", action="store_true")
    parser.add_argument("pages", nargs="+")
    arguments = parser.parse_args()

    failed = False
    for path in arguments.pages:
        with tempfile.TemporaryDirectory() as folder:
            workplace = Workplace(folder, os.path.abspath(arguments.tool), arguments.plugin_dir,
                                  arguments.program, arguments.link)
            if arguments.catalog:
                workplace.environment["XML_CATALOG_FILES"] = os.path.abspath(arguments.catalog)
            if arguments.prefix:
                workplace.use_library(arguments.prefix)
            page = Page(path, workplace, not arguments.no_builds)
            text = page.check()
        if arguments.update:
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
        else:
            failed = failed or bool(page.problems) or page.examples == 0
            print("\n".join(page.problems + [f"{path}: {page.examples} examples"]))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
