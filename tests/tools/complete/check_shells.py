#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Types command lines in a real shell on a pseudo-terminal and checks how the tab key completes them.

    check_shells.py STAGE SHELL

STAGE is an installed tree, SHELL one of bash, zsh and fish. The exit status is 1 if a line is not
completed as expected, 77 if the shell is not installed.
"""

import os
import pty
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SECONDS = 20
ESCAPES = re.compile(rb"\x1b(\[[0-9;?>=]*[A-Za-z]|\][^\x07]*\x07|[()][A-Z0-9]|[=>78])|[\x0e\x0f]")
NOT_INSTALLED = 77

# In a line, "|" marks the cursor if it is not at the end. PLUGINS stands for the folder of the
# plug-ins. Each line is typed after "vexil --plugin-dir PLUGINS ".
COMPLETIONS = [
    # the words of a path
    ("stora", "storage "),
    ("storage mou", "storage mount "),
    ("storage mount li", "storage mount list "),
    ("nosuch li", "nosuch li"),
    ("storage mount list li", "storage mount list li"),
    # parameters
    ("storage mount list --des", "storage mount list --descending "),
    ("storage mount list --sort Type --so", "storage mount list --sort Type --so"),
    # values
    ("file checksum --algorithm=md", "file checksum --algorithm=md5 "),
    ("file checksum --algorithm md", "file checksum --algorithm md5 "),
    ("storage mount list --read-only t", "storage mount list --read-only true "),
    ("storage mount list -r f", "storage mount list -r false "),
    # options of the dispatcher
    ("--screen", "--screen-width "),
    ("--formatter js", "--formatter json "),
    ("--formatter=js", "--formatter=json "),
    # quotes
    ("'storage' mou", "'storage' mount "),
    ('"storage" "mou', '"storage" "mount" '),
    # files
    ("log list --file fil", "log list --file file-one "),
    ("log list --file=fil", "log list --file=file-one "),
    ("storage usage list --directory fol", "storage usage list --directory folder/"),
    ("--input ST", "--input STDIN "),
]

# Further lines, for shells that pass the text after the cursor to completions and in which a
# backslash preserves any letter. fish does neither.
MORE_COMPLETIONS = [
    ("storage mount list --de| --descending", "storage mount list --de| --descending"),
    ("--format-param fields=Ty| storage mount list", "--format-param fields=Type| storage mount list"),
    ("--format-param=fields=Name,Des| vexil command list",
     "--format-param=fields=Name,Description| vexil command list"),
    ("stor\\age mou", "stor\\age mount "),
]

# Lines that are typed after "vexil-explain ". The path in the last one comes from the plug-ins.
EXPLAIN_COMPLETIONS = [
    ("--shell-i", "--shell-input "),
    ("--vers", "--version "),
    ("--inp", "--inp"),
    ("--formatter js", "--formatter json "),
    ("--shell-text --formatter js", "--shell-text --formatter json "),
    ("--shell-text --plugin-dir PLUGINS storage mou",
     "--shell-text --plugin-dir PLUGINS storage mount "),
]

# Options that the list after "vexil-explain --" shows, each at the start of exactly one line.
EXPLAIN_OPTIONS = ["--formatter", "--plugin-dir", "--shell-input", "--shell-text", "--version"]

# Whole lines of programs that treat "--" as the end of the options.
OTHER_COMPLETIONS = [
    ("vexil-doctor --vers", "vexil-doctor --version "),
    ("vexil-doctor -- --vers", "vexil-doctor -- --vers"),
    ("vexil-doctor -- fil", "vexil-doctor -- file-one "),
    ("vexil-lint --vers", "vexil-lint --version "),
    ("vexil-lint -- --vers", "vexil-lint -- --vers"),
    ("vexil-lint -- fil", "vexil-lint -- file-one "),
]

# The programs whose completion is tested.
PROGRAMS = ["vexil", "vexil-doctor", "vexil-explain", "vexil-lint"]

# On a busy machine, values from data may take longer than a person waits, so there are a few
# attempts.
DATA_COMPLETION = ("package get --name=dpk", "package get --name=dpkg")
ATTEMPTS = 10

# Pressing the tab key twice shows these words.
LISTS = [
    ("storage ", ["device", "filesystem", "mount", "Disks, partitions and volumes."]),
    ("file checksum --algorithm ", ["md5", "sha1", "sha256", "sha512"]),
    ("--formatter ", ["json", "table", "xml"]),
]


class Shell:
    """A shell that shows the line in angle brackets when ^G is typed."""

    def __init__(self, stage, name, folder):
        self.stage = stage
        self.name = name
        environment = {
            "HOME": folder, "LANG": "C.UTF-8", "TERM": "xterm", "XDG_CONFIG_HOME": folder,
            "XDG_DATA_HOME": folder, "XDG_CACHE_HOME": folder, "INPUTRC": "/dev/null",
            "PATH": os.path.join(stage, "bin") + ":/usr/sbin:/usr/bin:/sbin:/bin"}
        arguments = {
            "bash": ["bash", "--norc", "--noprofile", "-i"],
            "zsh": ["zsh", "-f", "-i"],
            "fish": ["fish", "--no-config", "-i"]}[name]
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execvpe(arguments[0], arguments, environment)
        self.text = b""
        self.set_up()

    def set_up(self):
        share = os.path.join(self.stage, "share")
        commands = {
            "bash": [
                "PS1='$ '",
                "bind 'set bell-style none' 2>/dev/null",
                "bind 'set page-completions off'",
                "bind 'set enable-bracketed-paste off'",
                "bind -x '\"\\C-g\": printf \"\\n<%s>\\n\" "
                "\"${READLINE_LINE:0:READLINE_POINT}|${READLINE_LINE:READLINE_POINT}\"'",
                *(f"source {share}/bash-completion/completions/{each}" for each in PROGRAMS)],
            "zsh": [
                "PROMPT='$ '; unsetopt beep",
                f"fpath=({share}/zsh/site-functions $fpath)",
                "autoload -Uz compinit; compinit -D -u",
                "show() { print -r -- $'\\n'\"<$LBUFFER|$RBUFFER>\" }",
                "zle -N show; bindkey '^G' show"],
            "fish": [
                "function fish_prompt; echo '$ '; end; set -g fish_greeting",
                "set -g fish_autosuggestion_enabled 0",
                *(f"source {share}/fish/vendor_completions.d/{each}.fish" for each in PROGRAMS),
                "function show; set -l line (commandline); set -l at (commandline -C); "
                "echo; echo '<'(string sub -l $at -- \"$line\")'|'"
                "(string sub -s (math $at + 1) -- \"$line\")'>'; commandline -f repaint; end",
                "bind \\cg show"],
        }[self.name]
        self.type("\r".join(commands) + "\recho rea''dy\r")
        self.read_until(rb"ready\r?\n")
        time.sleep(0.3 if self.name == "fish" else 0)

    def type(self, text):
        os.write(self.terminal, text.encode())

    def read_until(self, pattern):
        """Reads until the pattern is shown. Returns its match and all that was shown since the last
        match, both without escape sequences."""
        end = time.monotonic() + SECONDS
        while True:
            shown = ESCAPES.sub(b"", self.text)
            found = re.search(pattern, shown)
            if found:
                self.text = b""
                return found, shown
            ready = select.select([self.terminal], [], [], max(0, end - time.monotonic()))[0]
            if not ready:
                raise TimeoutError(f"{self.name} shows only: {shown!r}")
            self.text += os.read(self.terminal, 65536)

    def complete(self, line, tabs=1):
        """Types a line, then the tab key `tabs` times; returns the line after that, with "|" at the
        cursor, and everything that was shown."""
        before, _, after = line.partition("|")
        # ^B moves the cursor back. Below, ^E and ^U erase the whole line.
        self.type(before + after + "\x02" * len(after))
        for _ in range(tabs):
            time.sleep(0.15 if self.name == "fish" else 0)
            self.type("\t")
        time.sleep(0.15 if self.name == "fish" else 0)
        self.type("\x07")
        found, shown = self.read_until(rb"\n<([^\r\n]*)>")
        self.type("\x05\x15" if self.name != "fish" else "\x05\x15\x15")
        return found.group(1).decode(errors="replace"), shown.decode(errors="replace")

    def close(self):
        os.kill(self.process, signal.SIGKILL)
        os.waitpid(self.process, 0)
        os.close(self.terminal)


def completions_of(shell):
    return COMPLETIONS + (MORE_COMPLETIONS if shell != "fish" else [])


def wrong_completions(shell, start, completions):
    """Yields a line for each completion that is not as expected. Each is typed after `start`."""
    for line, expected in completions:
        wanted = expected if "|" in expected else expected + "|"
        got = shell.complete(start + line)[0]
        if got != start + wanted and got != start + wanted.replace(" |", "|"):
            yield f"{start + line!r}: expected {wanted!r}, got {got[len(start):]!r}"


def explain_problems(shell, plugins):
    """Yields a line for each wrong completion of vexil-explain, which takes the lines of the tool
    and has options of its own."""
    lines = [[text.replace("PLUGINS", plugins) for text in pair] for pair in EXPLAIN_COMPLETIONS]
    yield from wrong_completions(shell, "vexil-explain ", lines)
    # In fish, the second tab would choose a word. fish also shows the list again after the line.
    shown = shell.complete("vexil-explain --", 1 if shell.name == "fish" else 2)[1].split("\n<")[0]
    for option in EXPLAIN_OPTIONS:
        count = len(re.findall(r"[\r\n]" + option + r"(?![-\w])", shown))
        if count != 1:
            yield f"'vexil-explain --': {option} is shown {count} times: {shown!r}"
    if "--input" in shown:
        yield f"'vexil-explain --': --input is shown: {shown!r}"


def problems(shell, plugins):
    """Yields a line for each completion that is not as expected."""
    start = f"vexil --plugin-dir {plugins} "
    yield from wrong_completions(shell, start, completions_of(shell.name))
    yield from explain_problems(shell, plugins)
    yield from wrong_completions(shell, "", OTHER_COMPLETIONS)
    line, expected = DATA_COMPLETION
    if not any(shell.complete(start + line)[0].startswith(start + expected)
               for _ in range(ATTEMPTS)):
        yield f"{line!r}: never completed"
    for line, words in LISTS:
        shown = shell.complete(start + line, 2)[1]
        missing = [word for word in words if word not in shown]
        if missing:
            yield f"{line!r}: the list lacks {missing}: {shown!r}"


def main():
    stage, name = sys.argv[1:]
    if shutil.which(name) is None:
        print(f"{name} is not installed")
        return NOT_INSTALLED
    with tempfile.TemporaryDirectory() as folder:
        for file in ("file-one", "other"):
            open(os.path.join(folder, file), "w", encoding="ascii").close()
        os.mkdir(os.path.join(folder, "folder"))
        shell = Shell(stage, name, folder)
        try:
            found = list(problems(shell, os.path.join(stage, "lib/norvane/vexil")))
        finally:
            shell.close()
    for line in found:
        print(f"{name}: {line}", file=sys.stderr)
    count = len(completions_of(name)) + len(EXPLAIN_COMPLETIONS) + len(OTHER_COMPLETIONS)
    print(f"{name}: {count} completions, {len(LISTS) + 1} lists, {len(found)} wrong")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
