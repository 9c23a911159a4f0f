#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks the program vexil-doctor with plug-ins that do not work.

    check_program.py PROGRAM MODULES [FOLDER]

MODULES is the folder of the shared objects for tests. All plug-ins in FOLDER must work.
"""

import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

DESCRIPTOR = """<vexil-plugin>
  <version>1.0.0</version>
  <namespaces>
    <namespace path="echo"><description>Answers of a plug-in.</description></namespace>
  </namespaces>
  <commands>
    <command path="echo.%s">
      <description>Say it.</description>
      <input-spec/>
      <output-spec><string/></output-spec>
      <format-parameters><formatter>simple</formatter></format-parameters>
      <execute>true</execute>
    </command>
  </commands>
</vexil-plugin>
"""

NOISE = "it writes to a file descriptor that is not its own"

# Lines, most of which resemble a message of the process that examines a plug-in. None of them is a
# message.
NOISES = [
    "nonsense", '"', "7", "null", "[]", "{}", '{"step":"a","own":true}', '{"noise":true}',
    '{"step":1}', '{"state":7}', '{"state":-1}', '{"state":1e300}', '{"state":"loaded"}',
    '{"state":4294967296}', '{"state":18446744073709551615}', '{"reasons":[]}',
    '{"commands":"a"}', '{"commands":[1]}', '{"milliseconds":"a"}', '{"milliseconds":1e300}',
]

# The shared objects in the order in which they are loaded: the file, the module, the state, and a
# part of the reason.
OBJECTS = [
    ("a-echo.so", "EchoPlugin", "loaded", ""),
    ("b-crash.so", "ConstructorPluginCrash", "crashed",
     "it is ended by the signal Segmentation fault while loading it"),
    ("c-exit.so", "ConstructorPluginExit", "ended",
     "it ends the process with status 3 while loading it"),
    ("d-hang.so", "ConstructorPluginHang", "hung", "it takes more than 2000 ms for loading it"),
    ("e-close.so", "ConstructorPluginCloseAndHang", "hung",
     "it takes more than 2000 ms for loading it"),
    ("f-foreign.so", "ThrowingPluginOwnObject", "threw",
     "it throws something that is not a std::exception"),
    ("g-standard.so", "ThrowingPluginStandardException", "threw",
     "it throws a std::exception: the plug-in has no oil"),
    ("h-kestrel.so", "ThrowingPluginKestrelException", "refused",
     "Error while trying to register the plugin {file} the plug-in has no fuel"),
    ("i-symbol.so", "BorrowerPlugin", "faulty",
     "a function that it calls is missing: {file}: undefined symbol: LentText"),
    ("j-entry.so", "NoEntryPoint", "refused",
     "Unable to get plugin registration point from {file} : {file}: undefined symbol: "
     "AutoCli_RegisterNamespaces"),
    ("k-abi.so", "OtherAbiPlugin", "refused",
     "{file}: compiled for plug-in ABI 4000000000, but this library has plug-in ABI 1"),
    ("l-duplicate.so", "EchoPlugin", "refused", "Error while trying to register the plugin {file}"),
    ("m-scribble.so", "ConstructorPluginScribble", "faulty",
     NOISE),
    ("n-number.so", "NoAbiPlugin", "loaded", ""),
]


class Checker:
    def __init__(self, program, modules):
        self.program = program
        self.modules = modules
        self.failures = 0

    def run(self, *arguments, env=None, cwd=None):
        # In a build with sanitizers, a crash must still be a signal, and memory that a child holds
        # when it ends must not be reported as a leak.
        sanitizer = os.environ.get("ASAN_OPTIONS", "") + ":handle_segv=0:detect_leaks=0"
        return subprocess.run([self.program, *arguments], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, timeout=100, check=False, cwd=cwd,
                              env={**(env or os.environ), "ASAN_OPTIONS": sanitizer})

    def list(self, *arguments, **options):
        """Returns the status, and the structures of the list by file."""
        done = self.run("--formatter=ndjson", *arguments, **options)
        rows = [json.loads(line) for line in done.stdout.splitlines()]
        return done.returncode, {row["File"]: row for row in rows}

    def expect(self, condition, what):
        if not condition:
            self.failures += 1
            print(f"FAILED: {what}", file=sys.stderr)

    def copy(self, module, path):
        shutil.copy(os.path.join(self.modules, module + ".so"), path)
        os.chmod(path, 0o755)

    def check_answers(self):
        for option, start in (("--help", "vexil-doctor [OPTION]"), ("--version", "vexil-doctor ")):
            done = self.run(option)
            self.expect(done.returncode == 0 and done.stdout.startswith(start), option)

    def check_mistakes(self, folder):
        other = os.path.join(folder, "notes.txt")
        with open(other, "w", encoding="utf-8") as file:
            file.write("none")
        for arguments in (("--formatter",), ("--formatter=",), ("--formatter=none",), ("--bad",),
                          ("--formatter", "json", "--formatter"), ("--formatter=json", "--formatter"),
                          ("--formatters",), (os.path.join(folder, "missing.so"),), (other,)):
            done = self.run(*arguments)
            self.expect(done.returncode == 2 and done.stderr.startswith("vexil-doctor: "),
                        f"status of {arguments}: {done}")

    def check_objects(self, folder):
        """Every plug-in must be listed, and each that does not work with its reason."""
        processes = os.path.join(folder, "processes")
        plugins = os.path.join(folder, "objects")
        os.mkdir(plugins)
        for name, module, _, _ in OBJECTS:
            self.copy(module, os.path.join(plugins, name))
        status, rows = self.list(plugins, env={**os.environ, "KESTREL_TEST_PROCESSES": processes})
        self.expect(status == 1, f"the status of findings: {status}")
        self.expect([os.path.basename(file) for file in rows] == [entry[0] for entry in OBJECTS],
                    f"the order of {list(rows)}")
        for name, _, state, reason in OBJECTS:
            file = os.path.join(plugins, name)
            row = rows.get(file, {})
            self.expect(row.get("State") == state, f"{name} is {state}: {row}")
            self.expect(reason.format(file=file) in row.get("Reason", ""), f"reason of {name}: {row}")
            self.expect(bool(reason) or row["Reason"] == "", f"{name} has no reason: {row}")
        self.check_fields(plugins, rows)
        self.expect_gone(processes)

    def check_fields(self, plugins, rows):
        echo = rows[os.path.join(plugins, "a-echo.so")]
        self.expect(echo["Kind"] == "shared object" and echo["Commands"] == 1 and echo["ABI"] == 1 and
                    echo["Mode"] == "0755" and echo["Duplicate Paths"] == [], f"fields of {echo}")
        self.expect([entry["Path"] for entry in echo["Folders"]][::len(echo["Folders"]) - 1] ==
                    ["/", os.path.realpath(plugins)], f"folders of {echo}")
        self.expect(echo["Folders"][0]["Owner"] == "root", f"owner of the root folder: {echo}")
        self.expect(rows[os.path.join(plugins, "d-hang.so")]["Milliseconds"] >= 2000, "time of hang")
        self.expect(rows[os.path.join(plugins, "k-abi.so")]["ABI"] == 4000000000, "another number")
        self.expect(rows[os.path.join(plugins, "n-number.so")]["ABI"] == 0, "no number")
        self.expect(rows[os.path.join(plugins, "l-duplicate.so")]["Duplicate Paths"] ==
                    [{"File": os.path.join(plugins, "a-echo.so"), "Path": "echo say"}],
                    "the duplicate path")

    def check_noise(self, folder):
        """A plug-in that writes lines to the pipe for the messages of its process must be listed with
        the reason, even if the lines resemble messages."""
        file = os.path.join(folder, "scribble.so")
        self.copy("ConstructorPluginScribble", file)
        for noise in NOISES:
            status, rows = self.list(file, env={**os.environ, "KESTREL_TEST_NOISE": noise})
            row = rows.get(file, {})
            self.expect(status == 1 and row.get("State") == "faulty" and NOISE in row["Reason"],
                        f"after {noise}: {status} {rows}")

    def expect_gone(self, processes):
        """The two processes whose numbers a plug-in has written to a file must have ended."""
        with open(processes, encoding="utf-8") as file:
            numbers = file.read().split()
        self.expect(len(numbers) == 2, f"two processes: {numbers}")
        for number in numbers:
            self.expect(not os.path.exists("/proc/" + number), f"process {number} is left behind")

    def check_interrupt(self, folder):
        """After Ctrl-C, no process may be left."""
        processes = os.path.join(folder, "interrupted")
        file = os.path.join(folder, "hang.so")
        self.copy("ConstructorPluginHang", file)
        with subprocess.Popen([self.program, file], stdout=subprocess.PIPE,
                              env={**os.environ, "KESTREL_TEST_PROCESSES": processes}) as running:
            deadline = time.monotonic() + 20
            while time.monotonic() < deadline and (not os.path.exists(processes) or
                                                   os.path.getsize(processes) == 0):
                time.sleep(0.02)
            running.send_signal(signal.SIGINT)
            running.communicate(timeout=20)
        self.expect(running.returncode == -signal.SIGINT, f"interrupted: {running.returncode}")
        self.expect_gone(processes)

    def check_descriptors(self, folder):
        plugins = os.path.join(folder, "descriptors")
        os.makedirs(os.path.join(plugins, "lib64"))
        self.copy("EchoPlugin", os.path.join(plugins, "lib64", "echo.so"))
        for name, command in (("after.xml", "again"), ("double.xml", "say")):
            with open(os.path.join(plugins, name), "w", encoding="utf-8") as file:
                file.write(DESCRIPTOR % command)
        status, rows = self.list(plugins)
        self.expect(status == 1 and len(rows) == 3, f"descriptors: {rows}")
        after, double = rows[plugins + "/after.xml"], rows[plugins + "/double.xml"]
        self.expect(after["State"] == "loaded" and after["Kind"] == "descriptor" and
                    after["Commands"] == 1, f"a descriptor that builds on an object: {after}")
        self.expect(double["State"] == "refused" and double["Duplicate Paths"] ==
                    [{"File": plugins + "/lib64/echo.so", "Path": "echo say"}], f"{double}")

    def check_access(self, folder):
        plugins = os.path.join(folder, "writable")
        os.mkdir(plugins)
        file = os.path.join(plugins, "echo.so")
        self.copy("EchoPlugin", file)
        for mode in (0o777, 0o1777):  # sticky: others can still add a link to another file
            os.chmod(plugins, mode)
            status, rows = self.list(plugins)
            self.expect(status == 1 and rows[file]["State"] == "faulty" and rows[file]["Reason"] ==
                        os.path.realpath(plugins) + " can be written by every user",
                        f"a folder that all can write: {rows}")
            self.expect(rows[file]["Folders"][-1]["Mode"] == f"{mode:04o}", "the mode of the folder")
        link = os.path.join(plugins, "link.so")
        other = os.path.join(folder, "other.so")
        self.copy("EchoPlugin", other)
        os.symlink(other, link)
        status, rows = self.list(link)
        self.expect(status == 1 and rows[link]["State"] == "faulty",
                    f"a link that all can replace: {rows}")
        os.remove(link)
        os.chmod(plugins, 0o755)
        os.chmod(file, 0o775)
        status, rows = self.list(file)
        self.expect(status == 1 and rows[file]["Reason"].endswith("can be written by its group"),
                    f"a file that its group can write: {rows}")

    def check_output(self, folder):
        file = os.path.join(folder, "echo.so")
        self.copy("EchoPlugin", file)
        done = self.run(file)
        self.expect(done.returncode == 0 and "loaded" in done.stdout and done.stderr == "",
                    f"a plug-in that works: {done}")
        done = subprocess.run(["sh", "-c", '"$0" "$1" <&- 2>&-', self.program, file],
                              stdout=subprocess.PIPE, check=False)
        self.expect(done.returncode == 0 and b"loaded" in done.stdout, f"closed streams: {done}")
        strange = os.path.join(folder, "a\x1b[31m\nb.xml")
        with open(strange, "w", encoding="utf-8") as plugin:
            plugin.write("<x/>")
        done = self.run(strange)
        self.expect("a\\x1B[31m b.xml" in done.stdout and "\x1b" not in done.stdout + done.stderr,
                    f"a name that controls a terminal: {done}")
        with open("/dev/full", "w", encoding="utf-8") as full:
            done = subprocess.run([self.program, file], stdout=full, stderr=subprocess.PIPE,
                                  check=False)
        self.expect(done.returncode == 2 and b"standard output" in done.stderr, f"no space: {done}")

    def check_plain_name(self, folder):
        """A name without a slash must mean the file in the current folder."""
        folder = os.path.join(folder, "plain")
        os.mkdir(folder)
        self.copy("EchoPlugin", os.path.join(folder, "echo.so"))
        status, rows = self.list("echo.so", "./echo.so", cwd=folder)
        self.expect(status == 0 and list(rows) == ["./echo.so"] and rows["./echo.so"]["Commands"] == 1,
                    f"a plain name: {status} {rows}")

    def check_shipped(self, folder):
        status, rows = self.list(folder)
        names = {os.path.basename(file) for file in rows}
        self.expect({"host.so", "network.xml"} <= names, f"plug-ins in {folder}: {names}")
        for file, row in rows.items():
            faults = [] if row["State"] in ("loaded", "faulty") else [row["State"]]
            # The folders of a build tree may be those of any user.
            faults += [reason for reason in row["Reason"].split("; ")
                       if reason and " can be written by " not in reason
                       and " belongs to the user " not in reason]
            self.expect(not faults, f"{file}: {faults}")
            self.expect(row["ABI"] == (1 if file.endswith(".so") else 0), f"number of {file}: {row}")
            self.expect(row["Commands"] > 0, f"{file} adds commands")
        self.expect(status in (0, 1), f"status {status}")


def main():
    checker = Checker(sys.argv[1], sys.argv[2])
    checker.check_answers()
    os.umask(0o022)
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o755)
        checker.check_mistakes(folder)
        checker.check_objects(folder)
        checker.check_noise(folder)
        checker.check_interrupt(folder)
        checker.check_descriptors(folder)
        checker.check_access(folder)
        checker.check_output(folder)
        checker.check_plain_name(folder)
    for folder in sys.argv[3:]:
        checker.check_shipped(folder)
    return 1 if checker.failures else 0


if __name__ == "__main__":
    sys.exit(main())
