#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks the output of the format "pretty" in a real terminal, tmux.

    check_terminal.py VEXIL

For widths of 40, 80 and 200 columns, the tool prints lists and structures with wide characters,
combining marks and emoji, directly to the terminal. The screen must then contain the lines that the
tool prints for that width into a pipe, each on a line of its own, and the header in bold. A
program in the terminal then asks for the position of the cursor before each cell of the last
column. This position must be the same in all rows.
"""

import os
import re
import shlex
import subprocess
import sys
import tempfile
import time
from xml.sax.saxutils import escape

WIDTHS = (40, 80, 200)
ROWS = 300
TIMEOUT = 60
SEQUENCE = re.compile("\x1b\\[[0-9]*m")

NAMES = [
    "plain", "Zo\u00eb", "Zoe\u0308", "\u6f22\u5b57\u4eee\u540d", "\ud55c\uad6d\uc5b4",
    "\u1112\u1161\u11ab", "\uff76\uff9e", "\U0001f600 smile", "\U0001f468\u200d\U0001f469\u200d\U0001f467",
    "\u2764", "\U0001f1e9\U0001f1ea", "\u0915\u094d\u0937\u093f", "tab\there", "\u202eevil", "\u0e33\u0e19\u0e49",
    "two words and a few more words, so that the cell is broken at all widths, even if the "
    "terminal has two hundred columns, because this goes on for much longer than that width.",
    "\u9577" * 130, "x" * 210]

DESCRIPTOR = """<descriptor><version>1.0.0</version>
<namespaces><namespace path="show"><description>Shows.</description></namespace></namespaces>
<commands>%s</commands></descriptor>"""

COMMAND = """<command path="show.%s"><description>Shows.</description><input-spec/>
<output-spec>%s</output-spec><format-parameters><formatter>table</formatter></format-parameters>
<execute>cat %s</execute></command>"""


def row(name, number):
    return (f'<structure typeName="Row"><field name="Mark"><string>&lt;{number}&gt;</string></field>'
            f'<field name="Name"><string>{escape(name)}</string></field>'
            f'<field name="Number"><int>{number * 37}</int></field></structure>')


def install(folder):
    """Writes a descriptor with the commands "rows" and "tree" into `folder`; returns its path."""
    rows = "".join(row(name, number) for number, name in enumerate(NAMES))
    results = {"rows": f'<list type="structure">{rows}</list>',
               "tree": f'<structure typeName="Tree"><field name="Rows"><list type="structure">'
                       f'{rows}</list></field></structure>'}
    shapes = {name: re.sub("(</structure>)(<structure.*?</structure>)+", r"\1", result)
              for name, result in results.items()}
    commands = []
    for name, result in results.items():
        path = os.path.join(folder, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(f"<output>{result}</output>")
        commands.append(COMMAND % (name, shapes[name], shlex.quote(path)))
    path = os.path.join(folder, "show.xml")
    with open(path, "w", encoding="utf-8") as file:
        file.write(DESCRIPTOR % "".join(commands))
    return path


class Terminal:
    """A terminal in which one command runs."""

    count = 0

    def __init__(self, folder, width):
        Terminal.count += 1
        self.socket = os.path.join(folder, f"tmux{Terminal.count}")  # a server may end slowly
        self.folder = folder
        self.width = width

    def tmux(self, *words):
        environment = dict(os.environ, LC_ALL="C.UTF-8", TERM="xterm-256color")
        environment.pop("TMUX", None)
        return subprocess.run(["tmux", "-u", "-S", self.socket, "-f", "/dev/null", *words],
                              env=environment, check=True, capture_output=True,
                              timeout=TIMEOUT).stdout.decode()

    def run(self, command):
        """Runs a command of the shell; returns the screen, without the empty lines at its end."""
        done = os.path.join(self.folder, "done")
        script = f"{command}; : > {shlex.quote(done)}; exec sleep {TIMEOUT}"
        self.tmux("new-session", "-d", "-x", str(self.width), "-y", str(ROWS), script)
        try:
            wait_for(done)
            time.sleep(0.2)  # until tmux has drawn what the command wrote
            return self.tmux("capture-pane", "-p", "-e").rstrip("\n").split("\n")
        finally:
            self.tmux("kill-server")
            os.unlink(done)


def wait_for(path):
    end = time.monotonic() + TIMEOUT
    while not os.path.exists(path):
        if time.monotonic() > end:
            sys.exit(f"Nothing wrote {path}")
        time.sleep(0.05)


def pipe(command):
    return subprocess.run(["sh", "-c", command], check=True, capture_output=True,
                          timeout=TIMEOUT).stdout.decode().rstrip("\n").split("\n")


# Writes the part of each line before the "<" and asks the terminal for the column.
ASK = r"""
import os, re, sys, termios, tty
modes = termios.tcgetattr(0)
tty.setraw(0)
columns = []
for line in open(sys.argv[1], encoding="utf-8"):
    os.write(1, b"\r\x1b[2K" + line.split("<")[0].encode() + b"\x1b[6n")
    answer = b""
    while not answer.endswith(b"R"):
        answer += os.read(0, 1)
    columns.append(re.search(rb";(\d+)R", answer).group(1).decode())
termios.tcsetattr(0, termios.TCSANOW, modes)
open(sys.argv[2], "w").write("\n".join(columns))
"""


def ask_columns(folder, width, lines):
    """Returns the column of the cursor before the "<" in each line."""
    paths = [os.path.join(folder, name) for name in ("ask.py", "lines", "columns")]
    for path, text in zip(paths, (ASK, "\n".join(lines))):
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    Terminal(folder, width).run(" ".join(map(shlex.quote, [sys.executable, *paths])))
    with open(paths[2], encoding="utf-8") as file:
        return file.read().split()


def check(condition, message):
    if not condition:
        sys.exit(message)


def check_screen(folder, tool, name, width):
    """Compares the screen with the pipe; returns the lines."""
    command = f"VEXIL_TERMINAL_FORMATTER=pretty NO_COLOR= {tool} show {name} 2> /dev/null"
    screen = Terminal(folder, width).run(command)
    piped = pipe(f"{tool} --formatter pretty --screen-width {width} show {name} 2> /dev/null")
    check([SEQUENCE.sub("", line).rstrip() for line in screen] == piped,
          f"{name}, {width} columns: the screen is not what is printed into a pipe:\n"
          + "\n".join(screen) + "\n---\n" + "\n".join(piped))
    header = "Mark" if name == "rows" else "Rows:"
    check(any(f"\x1b[1m{header}" in line for line in screen),
          f"{name}, {width} columns: the header is not bold")
    return piped


def check_alignment(folder, tool, width):
    command = (f"{tool} --formatter pretty --screen-width {width} "
               "--format-param fields=Name,Number,Mark show rows 2> /dev/null")
    lines = [line for line in pipe(command) if "<" in line]
    check(len(lines) == len(NAMES), f"{width} columns: there is no table of all rows")
    columns = ask_columns(folder, width, lines)
    check(len(set(columns)) == 1 and len(columns) == len(lines),
          f"{width} columns: the cells of a column begin at {columns}")


def main():
    with tempfile.TemporaryDirectory() as folder:
        tool = f"{shlex.quote(sys.argv[1])} --plugin {shlex.quote(install(folder))}"
        for width in WIDTHS:
            for name in ("rows", "tree"):
                check_screen(folder, tool, name, width)
            check_alignment(folder, tool, width)
    print(f"{len(NAMES)} rows, widths {WIDTHS}: the screen is as printed, all columns are aligned")


if __name__ == "__main__":
    main()
