#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks that vexil-complete knows every path, parameter and enumerated value of the shipped tree.

    check_program.py STAGE

STAGE is an installed tree. The expected candidates come from `vexil command describe`. The exit
status is 1 if something is missing or wrong.
"""

import json
import os
import random
import subprocess
import sys

DIRECTIVES = (":", ":files", ":folders", ":nospace")


class Tree:
    def __init__(self, stage):
        self.tool = os.path.join(stage, "bin/vexil")
        self.program = os.path.join(stage, "libexec/vexil-complete")
        self.options = ["--plugin-dir", os.path.join(stage, "lib/norvane/vexil")]

    def call(self, *words):
        """Runs a command with the formatter json and returns its result."""
        arguments = [self.tool, *self.options, "--formatter=json", *words]
        output = subprocess.run(arguments, check=True, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL).stdout
        return json.loads(output)

    def complete(self, *words, after=()):
        """Returns the candidates for the last word as pairs, and the directive."""
        line = ["vexil", *self.options, *words]
        run = subprocess.run([self.program, str(len(line) - 1), *line, *after],
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, check=False)
        lines = run.stdout.decode(errors="surrogateescape").split("\n")
        if run.returncode != 0 or run.stderr or lines[-1] or lines[-2] not in DIRECTIVES:
            raise ValueError(f"{words}: {run}")
        pairs = [tuple((line + "\t").split("\t")[:2]) for line in lines[:-2]]
        return pairs, lines[-2]

    def words(self, *words, after=()):
        return [word for word, _ in self.complete(*words, after=after)[0]]


def read_paths(tree):
    """Returns the words of each command's path."""
    return [row["Namespace"].split(".") + [row["Command"]]
            for row in tree.call("vexil", "command", "list")]


def path_problems(tree, paths):
    nodes = {tuple(path[:length]) for path in paths for length in range(1, len(path) + 1)}
    for parent in sorted({node[:-1] for node in nodes}):
        expected = sorted(node[-1] for node in nodes if node[:-1] == parent)
        found, directive = tree.complete(*parent, "")
        if [word for word, _ in found] != expected or directive != ":":
            yield f"{parent}: expected {expected}, got {found}"
        if not all(description for _, description in found):
            yield f"{parent}: a description is missing: {found}"
    for node in sorted(nodes):
        for start in (node[-1][:1], node[-1]):
            if node[-1] not in tree.words(*node[:-1], start):
                yield f"{node}: not found by {start!r}"


def parameter_problems(tree, path, declared):
    names = {"--" + parameter["Name"] for parameter in declared} | {"--help"}
    shorts = {"-" + parameter["Short Name"] for parameter in declared
              if parameter["Short Name"] != "none"} | {"-h"}
    if set(tree.words(*path, "")) != names:
        yield f"{path}: parameters: expected {names}"
    if set(tree.words(*path, "-")) != names | shorts:
        yield f"{path}: names after a dash: expected {names | shorts}"
    for parameter in declared:
        option = "--" + parameter["Name"]
        value = [] if parameter["Kind"] == "flag" else ["x"]
        short = "-" + parameter["Short Name"] if parameter["Short Name"] != "none" else option
        expected = names if parameter["Multiple"] else names - {option}
        if set(tree.words(*path, option, *value, "--")) != expected:
            yield f"{path} {option}: after it expected {expected}"
        if set(tree.words(*path, "--", after=[short, *value])) != expected:
            yield f"{path} {short}: before it expected {expected}"


def accepted_values(parameter):
    if parameter["Kind"].startswith("bool"):
        return [("true", "Yes."), ("false", "No.")]
    return [(value["Value"], "" if value["Description"] == "none" else value["Description"])
            for value in parameter["Values"]]


def value_problems(tree, path, parameter):
    values = accepted_values(parameter)
    option = "--" + parameter["Name"]
    spellings = [[option, ""]]
    if parameter["Short Name"] != "none":
        spellings.append(["-" + parameter["Short Name"], ""])
    for spelling in spellings if values and not parameter["Secret"] else []:
        found = tree.complete(*path, *spelling)[0]
        if found != values:
            yield f"{path} {spelling}: expected {values}, got {found}"
    for value, _ in values if not parameter["Secret"] else []:
        if f"{option}={value}" not in tree.words(*path, f"{option}={value[:1]}"):
            yield f"{path} {option}: {value} is not found by its first letter"
    if parameter["Secret"] and tree.words(*path, option + "="):
        yield f"{path} {option}: a secret has values"


def column_problems(tree, path, fields):
    """Checks that columns are completed in an option that precedes the path: the first column, and
    one after a comma.
    """
    own = [field["Path"] for field in fields if "." not in field["Path"]]
    for key in ("fields=", "fields=" + ",".join(own[:1]) + "," if own else "fields="):
        missing = set(own[1:]) - {word[len(key):]
                                  for word in tree.words("--formatter=table", "--format-param", key,
                                                         after=path)}
        if missing:
            yield f"{path}: columns missing after {key}: {missing}"


def random_problems(tree, paths):
    """Checks that random lines have valid answers."""
    pieces = ["", "-", "--", "-a", "--x=", "--formatter", "=", "--format-param", "fields=", "a\nb",
              "\xff", "'", "--plugin", "/etc/passwd", ".", "x" * 5000, "--help", "\t", ","]
    chosen = random.Random(7)
    for _ in range(150):
        words = chosen.choice(paths)[:chosen.randrange(4)] + chosen.choices(pieces, k=4)
        chosen.shuffle(words)
        tree.complete(*words)  # raises if the answer is invalid
    yield from ()


def misuse_problems(tree):
    for arguments in ([], ["x"], ["-1", "vexil"], ["2", "vexil"], ["1x", "vexil"], ["", "vexil"]):
        run = subprocess.run([tree.program, *arguments], stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, check=False)
        if run.returncode != 2 or run.stdout or not run.stderr:
            yield f"{arguments}: expected status 2 and a message: {run}"
    for option, start in (("--help", b"vexil-complete INDEX"), ("--version", b"vexil-complete 1.")):
        run = subprocess.run([tree.program, option], stdout=subprocess.PIPE, check=False)
        if run.returncode != 0 or not run.stdout.startswith(start):
            yield f"{option}: {run}"


def problems(tree, paths, counts):
    yield from misuse_problems(tree)
    yield from random_problems(tree, paths)
    yield from path_problems(tree, paths)
    for path in paths:
        description = tree.call("vexil", "command", "describe", "--path", " ".join(path))
        yield from parameter_problems(tree, path, description["Parameters"])
        yield from column_problems(tree, path, description["Fields"])
        counts["parameters"] += len(description["Parameters"])
        for parameter in description["Parameters"]:
            counts["values"] += len(accepted_values(parameter))
            yield from value_problems(tree, path, parameter)


def main():
    tree = Tree(os.path.abspath(sys.argv[1]))
    paths = read_paths(tree)
    counts = {"parameters": 0, "values": 0}
    found = list(problems(tree, paths, counts))
    for line in found:
        print(line, file=sys.stderr)
    print(f"{len(paths)} commands, {counts['parameters']} parameters, {counts['values']} values: "
          f"{len(found)} problems")
    return 1 if found or len(paths) < 40 else 0


if __name__ == "__main__":
    sys.exit(main())
