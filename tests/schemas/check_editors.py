#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs the settings for editors that docs/schemas.md shows, with the schemas of an installed tree.

    check_editors.py emacs|vim|settings --stage DIR

emacs     the lines for Emacs find the schema, which accepts a descriptor and marks a mistake
vim       the lines for Vim find the line and the column of a mistake
settings  the settings for VS Code and the attributes of a root element name installed files

The exit status is 77 if the editor, or jing for Vim, is not installed.
"""

import argparse
import fnmatch
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../.."))
INSTALLED = "/usr/share/xml/kestrel"
SKIPPED = 77
MISTAKE = ('type="range"', 'type="rang"')
PLACE = (34, 35)

VALIDATE = """
(dolist (file '("good.xml" "bad.xml"))
  (find-file file)
  (nxml-mode)
  (rng-validate-mode 1)
  (while (rng-do-some-validation))
  (princ (format "%s: %s, %d\\n" file rng-current-schema-file-name rng-error-count)))
"""


def run(folder, *command):
    done = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=120, check=False,
                          env=dict(os.environ, HOME=folder, TERM="dumb"))
    return done.stdout.decode("utf-8", "replace")


def save(folder, name, text):
    path = os.path.join(folder, name)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    return path


def need(program):
    if not shutil.which(program):
        print(f"skipped: {program} is not installed")
        sys.exit(SKIPPED)


class Page:
    """The blocks of the page, with the files of the installed tree."""

    def __init__(self, stage):
        self.schemas = os.path.join(os.path.abspath(stage), "share/xml/kestrel")
        with open(os.path.join(ROOT, "docs/schemas.md"), encoding="utf-8") as file:
            self.text = file.read().replace(INSTALLED, self.schemas)

    def block(self, kind):
        return re.search(rf"^```{kind}\n(.*?)^```$", self.text, re.MULTILINE | re.DOTALL).group(1)


def check_emacs(page, folder):
    need("emacs")
    printed = run(folder, "emacs", "--batch", "-Q", "-l", save(folder, "a.el", page.block("elisp")),
                  "-l", save(folder, "b.el", VALIDATE))
    schema = os.path.join(page.schemas, "descriptor.rnc")
    expected = [f"good.xml: {schema}, 0", f"bad.xml: {schema}, "]
    found = [line for line in printed.splitlines() if line.startswith(tuple(expected))]
    return len(found) == 2 and int(found[1].rsplit(" ", 1)[1]) > 0, printed


def check_vim(page, folder):
    need("vim")
    need("jing")
    run(folder, "vim", "-es", "-N", "-u", "NONE", "-c", "filetype plugin on",
        "-S", save(folder, "a.vim", page.block("vim")), "-c", "edit bad.xml", "-c", "make",
        "-c", "redir! > errors", "-c", "clist", "-c", "redir END", "-c", "qa!")
    with open(os.path.join(folder, "errors"), encoding="utf-8") as file:
        printed = file.read()
    line, column = PLACE
    return f"bad.xml:{line} col {column}:" in printed, printed


def check_settings(page, folder):
    settings = json.loads(page.block("json"))
    named = settings["xml.catalogs"] + [
        entry["systemId"] for entry in settings["xml.fileAssociations"]]
    named += re.findall(r'noNamespaceSchemaLocation="file://([^"]+)"', page.text)
    pattern = settings["xml.fileAssociations"][0]["pattern"]
    matches = fnmatch.fnmatch(os.path.join(folder, "plugins/disks.xml"), pattern)
    return matches and len(named) == 3 and all(map(os.path.isfile, named)), str(named)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("check", choices=("emacs", "vim", "settings"))
    parser.add_argument("--stage", required=True)
    arguments = parser.parse_args()
    with open(os.path.join(ROOT, "tests/data/lint/disks.xml"), encoding="utf-8") as file:
        descriptor = file.read()
    with tempfile.TemporaryDirectory() as folder:
        save(folder, "good.xml", descriptor)
        save(folder, "bad.xml", descriptor.replace(*MISTAKE))
        passed, printed = globals()["check_" + arguments.check](Page(arguments.stage), folder)
    print(("passed" if passed else "FAILED") + f": {printed}")
    return 0 if passed else 1


if __name__ == "__main__":
    sys.exit(main())
