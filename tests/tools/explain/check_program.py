#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Compares what vexil-explain says with what the tool does.

    check_program.py PROGRAM TOOL PLUGIN

PLUGIN is the shared object EchoPlugin. strace records the shell that the tool starts. The exit
status is 77 if strace cannot trace here and nothing else fails.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile

PARAMETERS = {
    "word": "string", "quoted": "string", "number": "int", "flag": "flag", "names": "string-list",
    "items": "string-list", "ids": "int-list", "yes": "bool", "level": "string",
}

TEMPLATE = ("cat >'{input}'; : $if{{word,$val{{word}}}} '$if{{quoted,$val{{quoted}}}}'"
            "$if{{number, --number=$val{{number}}}}$if{{flag, --flag}}"
            "$if{{names, $list{{names,',',true}} $list{{names,'',false}}}}"
            "$if{{items,$multilist{{items,-i,true}}$multilist{{items,--item,false}}}}"
            "$if{{ids, $list{{ids,':',false}}}}; printf '&lt;o>&lt;int>1&lt;/int>&lt;/o>'")
STDIN = "w=$val{word}\nn=$list{names,';',true}$if{flag,\nflag}\n"

# The parameters of the calls that are compared, most of them with hostile values.
CALLS = [
    [],
    ["--word", "plain"],
    ["--word=a b;c'd\"e$f`g\\h"],
    ["--word", "# comment", "--quoted=it's \"so\" $HOME"],
    ["-w", "short", "--number", "-0"],
    ["--number", " 7", "--flag"],
    ["--names=a", "--names", "b c", "--names", "$(id)"],
    ["--items", "x y", "--items=-z", "--items", "\"q\"", "--ids", "1", "--ids=2"],
    ["--word", "\xe4\u20ac\U0001f600", "--quoted", "a\nb\tc"],
    ["--yes", "t", "--level", "low"],
    ["--word", "x" * 3000],
]


def descriptor(folder):
    parameters = "".join(
        f'<parameter name="{name}" type="{kind}" required="false"'
        f'{" shortname=" + chr(34) + "w" + chr(34) if name == "word" else ""}>'
        f"<description>A value.</description>"
        + ('<constraint type="stringenum"><enum><enum-value value="low"/><enum-value value="high"/>'
           "</enum></constraint>" if name == "level" else "") + "</parameter>"
        for name, kind in PARAMETERS.items())
    secret = ('<parameter name="password" shortname="p" type="string" required="true" secret="true">'
              '<description>Secret.</description><constraint type="regex"><regex>[ -~]{3,}</regex>'
              "</constraint></parameter>")
    template = TEMPLATE.format(input=os.path.join(folder, "input"))
    return f"""<vexil-plugin>
  <version>1.0.0</version>
  <namespaces><namespace path="try"><description>Trials.</description></namespace></namespaces>
  <commands>
    <command path="try.all">
      <description>All forms.</description>
      <input-spec>{parameters}</input-spec>
      <output-spec><int/></output-spec>
      <format-parameters><formatter>simple</formatter>
        <format-parameter name="wrap-last">true</format-parameter></format-parameters>
      <execute>{template}</execute>
      <stdin>{STDIN}</stdin>
    </command>
    <command path="try.secret">
      <description>Takes a secret.</description>
      <input-spec>{secret}</input-spec>
      <output-spec><int/></output-spec>
      <format-parameters><formatter>simple</formatter></format-parameters>
      <execute>cat >'{folder}/input'; : $val{{password}} '$val{{password}}'; printf '&lt;o>&lt;int>1&lt;/int>&lt;/o>'</execute>
      <stdin>$val{{password}}</stdin>
    </command>
  </commands>
</vexil-plugin>
"""


class Checker:
    def __init__(self, program, tool, plugin, folder):
        self.program, self.tool, self.plugin, self.folder = program, tool, plugin, folder
        self.file = os.path.join(folder, "try.xml")
        self.failures = 0
        with open(self.file, "w", encoding="utf-8") as file:
            file.write(descriptor(folder))

    def expect(self, condition, what):
        if not condition:
            self.failures += 1
            print(f"FAILED: {what}", file=sys.stderr)

    def explain(self, *arguments, **options):
        return subprocess.run([self.program, *arguments], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60,
                              check=False, **options)

    def trace(self, arguments, env):
        """Returns what the shell received: its text and its standard input."""
        log = os.path.join(self.folder, "trace")
        received = os.path.join(self.folder, "input")
        done = subprocess.run(
            [shutil.which("strace"), "-f", "-qq", "-xx", "-s", "100000", "-e", "trace=execve",
             "-o", log, self.tool, *arguments], stdin=subprocess.DEVNULL, env=env,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60, check=False)
        self.expect(done.returncode in (0, 1), f"the tool with {arguments}: {done}")
        with open(log, encoding="ascii") as file:
            for line in file:
                words = [bytes.fromhex(word.replace("\\x", ""))
                         for word in re.findall(r'"((?:\\x[0-9a-f]{2})*)"', line)]
                if words[1:3] == [b"/bin/sh", b"-c"] and words[0] == b"/bin/sh":
                    with open(received, "rb") as stdin:
                        return words[3], stdin.read()
        raise SystemExit(f"no shell was started for {arguments}")

    def check_equal_to_real_runs(self):
        for env in ({**os.environ, "LANG": "C"},
                    {key: value for key, value in os.environ.items() if key != "LANG"}):
            for call in CALLS:
                arguments = ["--plugin", self.file, "try", "all", *call]
                text = self.explain("--shell-text", *arguments, env=env)
                stdin = self.explain("--shell-input", *arguments, env=env)
                self.expect((text.stdout, stdin.stdout) == self.trace(arguments, env),
                            f"the shell of {call}: {text} {stdin}")
                whole = self.explain(*arguments, env=env)
                self.expect(whole.returncode == 0 and whole.stdout.endswith(
                    b"Shell text, %d bytes:\n%s\nStandard input, %d bytes:\n%s\n" %
                    (len(text.stdout), text.stdout, len(stdin.stdout), stdin.stdout)), f"{whole}")

    def check_secrets(self):
        """A secret must be shown as *** wherever it is, and everything else as in the real run."""
        for option in ("--password=hidden word", "-p"):
            words = [option] if option != "-p" else [option, "hidden word"]
            arguments = ["--plugin", self.file, "try", "secret", *words]
            shown = self.explain("--shell-text", *arguments).stdout
            text, stdin = self.trace(arguments, os.environ)
            self.expect(shown == text.replace(b"hidden word", b"***"), f"{shown} and {text}")
            self.expect(stdin == b"hidden word" and
                        self.explain("--shell-input", *arguments).stdout == b"***", "input")
            whole = self.explain(*arguments)
            self.expect(b"hidden" not in whole.stdout + whole.stderr and
                        b"--password = *** (string, from -" in whole.stdout, f"{whole}")
        asked = self.explain("--plugin", self.file, "try", "secret", "--password")
        self.expect(asked.returncode == 0 and b"asked for when the command runs" in asked.stdout and
                    b" : *** '***'; " in asked.stdout, f"a secret to be typed: {asked}")
        for value in ("x", "\x01\x02\x03"):
            refused = self.explain("--plugin", self.file, "try", "secret", "--password", value)
            self.expect(refused.returncode == 1 and b"constraint not met" in refused.stdout and
                        b"\x01" not in refused.stdout, f"a secret that is not valid: {refused}")
        # If every occurrence of the secret in the message were masked, the masks would show a
        # secret that is a letter or a word of the message.
        texts = {self.explain("--plugin", self.file, "try", "secret", "--password", value).stdout
                 for value in ("x", "e", "In")}
        self.expect(len(texts) == 1 and b"Invalid data constraint" in texts.pop(), f"{texts}")

    def check_report(self):
        done = self.explain("--plugin", self.file, "--formatter=json", "--format-param", "a=b", "try",
                            "all", "--number", " 7", "--yes=t", "--ids", "1", "--ids", "+2",
                            "--level", "low", "-w", "a\x1bb", "--flag")
        lines = done.stdout.decode().splitlines()
        for line in ("Command: try all", "Plug-in: " + self.file, "  --flag = true (flag, from --flag)",
                     "  --ids = 1 2 (int-list, from --ids)", "  --items is not given (string-list)",
                     "  --level = 'low' (string, from --level)", "  --number = 7 (int, from --number)",
                     "  --word = 'a\\x1bb' (string, from -w)", "  --yes = true (bool, from --yes)",
                     "Formatter: json (command line)", "  a = 'b' (command line)",
                     "  wrap-last = 'true' (default of the command)",
                     "Valid: the tool would start a shell"):
            self.expect(line in lines, f"'{line}' is in {lines}")
        self.expect(any(line.startswith("    constraint met: ") for line in lines), f"{lines}")
        self.expect(done.returncode == 0 and done.stderr == b"", f"{done}")

    def check_native(self):
        done = self.explain("--plugin", self.plugin, "echo", "say", "--text", "x")
        self.expect(done.returncode == 0 and b"Plug-in: " + self.plugin.encode() in done.stdout and
                    b"Valid: the tool would call the code" in done.stdout, f"{done}")
        self.expect(self.explain("--shell-text", "--plugin", self.plugin, "echo", "say", "--text",
                                 "x").returncode == 2, "a native command has no shell text")
        done = self.explain("--plugin", self.plugin, "echo", "say", "--help")
        self.expect(done.returncode == 0 and b"would print the help page" in done.stdout and
                    b"Formatter: commandhelp" in done.stdout, f"{done}")

    def check_mistakes(self):
        """For a line that is not valid, the messages must be those of the tool."""
        plugin = ["--plugin", self.file]
        for arguments in ([*plugin, "try", "all", "--number=x"], [*plugin, "try", "all", "--nosuch=1"],
                          [*plugin, "try", "all", "--level", "middle"],
                          [*plugin, "try", "all", "--word", "a", "--word", "b"],
                          [*plugin, "try", "all", "--number"], [*plugin, "try", "all", "--flag=x"],
                          [*plugin, "try", "secret"], ["--bad=1", *plugin, "try", "all"],
                          [*plugin, "--format-param", "x", "try", "all"],
                          [*plugin, "try", "all", "--word=#\nx"],
                          [*plugin, "try", "all", "--flag", "--word", "a", "extra"]):
            run = subprocess.run([self.tool, *arguments], stdin=subprocess.DEVNULL,
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
            done = self.explain(*arguments)
            shown = b"".join(re.findall(rb"^  (.*)\n", done.stdout.partition(b"Not valid:\n")[2],
                                        re.MULTILINE))
            expected = b"".join(run.stderr.splitlines()[1:])
            self.expect(run.returncode == 1 and done.returncode == 1 and shown == expected,
                        f"{arguments}: {run.stderr} and {done.stdout}")
        for arguments in (["no", "such"], ["vexil"], [*plugin, "--formatter=none", "try", "all"]):
            done = self.explain(*arguments)
            self.expect(done.returncode == 1 and b"Not valid:" in done.stdout, f"{done}")
        for arguments in ([], ["--input", "STDIN"], ["--shell-text"]):
            done = self.explain(*arguments)
            self.expect(done.returncode in (1, 2) and done.stderr.startswith(b"vexil-explain: "),
                        f"{arguments}: {done}")

    def check_answers(self):
        for option, start in (("--help", b"vexil-explain ["), ("--version", b"vexil-explain ")):
            done = self.explain(option)
            self.expect(done.returncode == 0 and done.stdout.startswith(start), option)
        with open("/dev/full", "w", encoding="utf-8") as full:
            status = subprocess.run([self.program, "vexil", "command", "list"], stdout=full,
                                    stderr=subprocess.DEVNULL, check=False).returncode
        self.expect(status == 2, "standard output that is full")

    def can_trace(self):
        return shutil.which("strace") is not None and subprocess.run(
            ["strace", "-qq", "-o", "/dev/null", "true"], check=False,
            stderr=subprocess.DEVNULL).returncode == 0

    def check_nothing_runs(self):
        received = os.path.join(self.folder, "input")
        if os.path.exists(received):
            os.remove(received)
        self.explain("--plugin", self.file, "try", "all", "--word", "x")
        self.expect(not os.path.exists(received), "nothing runs")


def main():
    with tempfile.TemporaryDirectory() as folder:
        checker = Checker(*sys.argv[1:4], folder)
        checker.check_answers()
        checker.check_report()
        checker.check_native()
        checker.check_mistakes()
        checker.check_nothing_runs()
        can_trace = checker.can_trace()
        if can_trace:
            checker.check_equal_to_real_runs()
            checker.check_secrets()
    if checker.failures:
        return 1
    return 0 if can_trace else 77


if __name__ == "__main__":
    sys.exit(main())
