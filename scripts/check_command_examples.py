#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs every example of every command that changes nothing.

    check_command_examples.py --tool TOOL --plugin-dir DIR [--absent FILE]

The shell runs each example exactly as it is printed, without a terminal, in a folder with an
archive, once in its default format and once as JSON; a secret is read from standard input. The
example must succeed without a message. No string in a list may be empty, because a word stands for
a missing value. FILE lists examples that may fail because a host lacks something: each line
contains the beginning of an example and, after a tab, a regular expression. Such an example may
also end with status 1 if the expression matches all of its messages.
"""

import argparse
import json
import os
import re
import subprocess
import sys
import tarfile
import tempfile

from declared_commands import TIMEOUT_SECONDS, Tool, changes_something

# Fields in which the empty string is a value and does not mean that the value is missing.
MAY_BE_EMPTY = {"log.kernel.list": {"Text"}, "system.parameter.list": {"Value"}}

# What the tool prints before it reads a secret.
PROMPT = re.compile(r"\AEnter value for '[^']*': ?")

START_TOOL = 'vexil() { command "$TOOL" --plugin-dir "$PLUGINS" $FORMAT "$@"; }\n'


def read_absent(path):
    """Returns the pairs of beginning and expression in the file."""
    with open(path, encoding="utf-8") as file:
        lines = [line.rstrip("\n") for line in file if line.strip() and not line.startswith("#")]
    return [tuple(line.split("\t", 1)) for line in lines]


def accepted_messages(line, absent):
    return [expression for beginning, expression in absent if line.startswith(beginning)]


def run(line, form, options, folder):
    environment = {"TOOL": options.tool, "PLUGINS": options.plugin_dir, "FORMAT": form,
                   "HOME": folder, "LANG": "C.UTF-8", "TZ": "UTC",
                   "PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"}
    return subprocess.run(["sh", "-c", START_TOOL + "vexil " + line], env=environment, cwd=folder,
                          input="a secret\n", capture_output=True, text=True, check=False,
                          timeout=TIMEOUT_SECONDS, start_new_session=True)


def is_absent(done, expressions):
    """Whether the example failed only because the host lacks something that it needs."""
    messages = [text for text in done.stderr.splitlines() if text.strip() not in ("", "Errors:")]
    return (done.returncode == 1 and done.stdout == "" and bool(messages)
            and all(any(re.fullmatch(expression, text) for expression in expressions)
                    for text in messages))


def empty_fields(value, path=""):
    """Returns the paths of the fields that contain an empty string."""
    if value == "":
        return {path}
    if isinstance(value, list):
        return set().union(*(empty_fields(element, path) for element in value))
    if isinstance(value, dict):
        return set().union(*(empty_fields(field, f"{path}.{name}".lstrip("."))
                             for name, field in value.items()))
    return set()


def complaint(path, line, form, done, absent):
    """Returns what is wrong with a run, or None."""
    if is_absent(done, accepted_messages(line, absent)):
        return None
    if done.returncode != 0 or done.stderr:
        return f"status {done.returncode}: {done.stderr.strip()}"
    if not form:
        return None if done.stdout else "printed nothing"
    try:
        result = json.loads(PROMPT.sub("", done.stdout, count=1))
    except ValueError as error:
        return f"not JSON: {error}"
    empty = empty_fields(result) - MAY_BE_EMPTY.get(path, set()) if isinstance(result, list) else ()
    return f"empty strings in: {', '.join(sorted(empty))}" if empty else None


def complaints(options, folder):
    """Yields a line for each example that fails, and for each command without examples."""
    absent = read_absent(options.absent) if options.absent else []
    for path, command in Tool(options.tool, options.plugin_dir).commands():
        if changes_something(command):
            continue
        if not command["Examples"] and command["Plugin"] != "built-in":
            yield f"{path}: has no example"
        for example in command["Examples"]:
            for form in ("", "--formatter json"):
                done = run(example["Line"], form, options, folder)
                reason = complaint(path, example["Line"], form, done, absent)
                if reason:
                    yield f"vexil {form} {example['Line']}: {reason}"


def write_archive(folder):
    """Writes the archive that some examples list."""
    with tarfile.open(os.path.join(folder, "backup.tar.gz"), "w:gz") as archive:
        archive.add(__file__, "etc/sample.conf")


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--tool", required=True, type=os.path.abspath)
    parser.add_argument("--plugin-dir", required=True, type=os.path.abspath)
    parser.add_argument("--absent")
    with tempfile.TemporaryDirectory() as folder:
        write_archive(folder)
        found = list(complaints(parser.parse_args(), folder))
    print("\n".join(found) or "Every example runs.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
