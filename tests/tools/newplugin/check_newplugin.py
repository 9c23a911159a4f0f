#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks vexil-newplugin: what it refuses, and that its projects build, test, install and package.

    check_newplugin.py refused|native|descriptor --stage DIR

DIR is the installed tree, the only part of this project that the new projects see. Packages are made
if dpkg-buildpackage is installed.
"""

import argparse
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile

NAME = "fruit"
SUFFIX = {"native": ".so", "descriptor": ".xml"}
PLUGINS = "lib/norvane/vexil"


class Checker:
    def __init__(self, stage, folder):
        self.stage = stage
        self.folder = folder
        self.failures = 0
        libraries = os.path.dirname(glob.glob(os.path.join(stage, "lib*/**/libkestrel.so.*"),
                                              recursive=True)[0])
        self.environment = {
            "PATH": os.path.join(stage, "bin") + ":/usr/sbin:/usr/bin:/sbin:/bin",
            "CMAKE_PREFIX_PATH": stage, "LD_LIBRARY_PATH": libraries, "HOME": folder,
            "LANG": "C.UTF-8", "DEBFULLNAME": "Ada", "DEBEMAIL": "ada@authors.example"}
        for name in ("CXX", "CMAKE_CXX_COMPILER_LAUNCHER", "CCACHE_DIR"):
            if os.environ.get(name):
                self.environment[name] = os.environ[name]

    def run(self, *command, cwd=None, stdout=subprocess.PIPE):
        return subprocess.run(command, cwd=cwd or self.folder, env=self.environment, timeout=1200,
                              stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.STDOUT,
                              check=False, text=True)

    def expect(self, condition, what):
        if not condition:
            self.failures += 1
            print(f"FAILED: {what}", file=sys.stderr)

    def succeed(self, *command, cwd=None):
        done = self.run(*command, cwd=cwd)
        self.expect(done.returncode == 0, f"{command} ends with {done.returncode}:\n{done.stdout}")
        return done.stdout

    def refuse(self, status, text, *arguments):
        done = self.run("vexil-newplugin", *arguments)
        self.expect(done.returncode == status and text in done.stdout and
                    done.stdout.startswith("vexil-newplugin: "), f"{arguments}: {done}")

    # refused

    def check_refused(self):
        for name in ("", "Fruit", "1fruit", "fruit-bowl", "früchte", "fruit/x", "..", "a\n"):
            self.refuse(2, " is not a name: ", name, "--native")
        self.refuse(2, "no name is given", "--native")
        self.refuse(2, "write --native or --descriptor", NAME)
        self.refuse(2, "not both", NAME, "--native", "--descriptor")
        self.refuse(2, "a second name", NAME, "nuts", "--native")
        self.refuse(2, "there is no option --all", NAME, "--all")
        self.refuse(2, "--in has no value", NAME, "--native", "--in")
        self.refuse(1, "the tool has the namespace 'vexil' already", "vexil", "--native")
        self.refuse(1, "the tool has the namespace 'vexil' already", "--native", "--", "vexil")
        self.refuse(2, "'--native' is not a name: ", "--native", "--", "--native")
        self.refuse(2, "a second name", "--native", "--", NAME, "nuts")
        self.refuse(2, "no name is given", "--native", "--")
        self.refuse(1, "No such file or directory", NAME, "--native", "--in", "nowhere")
        self.check_overwriting()
        self.check_output()
        self.check_author()
        self.expect(os.listdir(self.folder) == [], f"left: {os.listdir(self.folder)}")

    def check_overwriting(self):
        path = os.path.join(self.folder, NAME)
        for make, remove in ((os.mkdir, os.rmdir), (lambda path: open(path, "x").close(), os.remove),
                             (lambda path: os.symlink("nowhere", path), os.remove)):
            make(path)
            before = os.lstat(path)
            self.refuse(1, "File exists", NAME, "--descriptor")
            self.expect(os.lstat(path) == before, "what existed has changed")
            remove(path)

    def check_output(self):
        for option in ("--help", "--version"):
            printed = self.succeed("vexil-newplugin", option)
            self.expect(printed.startswith("vexil-newplugin "), printed)
        with open("/dev/full", "w", encoding="utf-8") as full:
            done = subprocess.run(["vexil-newplugin", "--help"], env=self.environment, stdout=full,
                                  stderr=subprocess.PIPE, check=False, text=True)
        self.expect(done.returncode == 1 and done.stderr == "vexil-newplugin: cannot write to "
                    "standard output: No space left on device\n", f"{done}")

        done = subprocess.run(["sh", "-c", "vexil-newplugin --version >&-"], env=self.environment,
                              capture_output=True, check=False)
        self.expect(done.returncode == 1, f"a closed output: {done}")

    def check_author(self):
        """The name of the author becomes a field of a control file, so it must be on one line."""
        names = {**self.environment, "DEBFULLNAME": "Ada\nSection: evil\udcff", "DEBEMAIL": "a@b.c"}
        done = subprocess.run(["vexil-newplugin", "authored", "--native"], cwd=self.folder, env=names,
                              capture_output=True, check=False)
        with open(os.path.join(self.folder, "authored", "debian", "control"),
                  encoding="utf-8") as file:
            self.expect("Maintainer: Ada Section: evil? <a@b.c>\n" in file.read(), f"{done}")
        shutil.rmtree(os.path.join(self.folder, "authored"))

    # native, descriptor

    def check_project(self, kind):
        printed = self.succeed("vexil-newplugin", NAME, "--" + kind, "--in", self.folder)
        project = os.path.join(self.folder, NAME)
        self.expect(project + "/ci.sh" in printed, printed)
        for path in glob.glob(project + "/**", recursive=True):
            if os.path.isfile(path):
                with open(path, encoding="utf-8") as file:
                    self.expect("@NAME@" not in file.read(), f"a placeholder is in {path}")
        self.refuse(1, "File exists", NAME, "--" + kind, "--in", self.folder)
        printed = self.succeed(os.path.join(project, "ci.sh"), cwd=self.folder)
        found = re.search(r"100% tests passed, 0 tests failed out of (\d+)", printed)
        self.expect(found and int(found.group(1)) >= 3, printed)
        self.check_golden_test(project)
        self.check_installed(project, kind)
        if shutil.which("dpkg-buildpackage"):
            self.check_package(project, kind)

    def check_golden_test(self, project):
        """A test of the new project must notice that the output has changed."""
        golden = os.path.join(project, "tests/golden/table")
        with open(golden, "a", encoding="utf-8") as file:
            file.write("more\n")
        done = self.run("ctest", "--test-dir", os.path.join(project, "build"), "-R", "golden.table")
        self.expect(done.returncode != 0, "a change of the output is not noticed")
        self.environment["REWRITE"] = "1"
        self.succeed("ctest", "--test-dir", os.path.join(project, "build"), "-R", "golden.table")
        del self.environment["REWRITE"]
        with open(golden, encoding="utf-8") as file:
            self.expect(not file.read().endswith("more\n"), "REWRITE writes nothing")

    def check_installed(self, project, kind):
        prefix = os.path.join(self.folder, "prefix")
        build = os.path.join(self.folder, "build of it")  # with spaces
        self.succeed("cmake", "-S", project, "-B", build, f"-DCMAKE_INSTALL_PREFIX={prefix}")
        self.succeed("cmake", "--build", build)
        self.succeed("cmake", "--install", build)
        printed = self.succeed("vexil", "--plugin", os.path.join(prefix, PLUGINS, NAME + SUFFIX[kind]),
                               "--formatter", "csv", NAME, "list", "--least=10", "--reverse")
        self.expect(printed.split() == ["Count,Name,Ready", "12,fig,true", "40,cherry,false"],
                    printed)

    def check_package(self, project, kind):
        with open(os.path.join(project, "debian/shlibs.local"), "w", encoding="utf-8") as file:
            file.write("libkestrel 1 libkestrel1\n")  # the library here is not from a package
        shutil.rmtree(os.path.join(project, "build"))
        self.succeed("dpkg-buildpackage", "--build=binary", "--no-sign", "--no-check-builddeps",
                     cwd=project)
        packages = glob.glob(os.path.join(self.folder, f"vexil-plugin-{NAME}_*.deb"))
        self.expect(len(packages) == 1, f"packages: {packages}")
        if packages:
            listed = self.succeed("dpkg-deb", "--contents", packages[0])
            self.expect(f" ./usr/{PLUGINS}/{NAME}{SUFFIX[kind]}\n" in listed, listed)
            depends = self.succeed("dpkg-deb", "--field", packages[0], "Depends")
            expected = ["libkestrel1", "vexil"] if kind == "native" else ["vexil"]
            self.expect(all(re.search(rf"(^|, ){name}", depends) for name in expected), depends)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("check", choices=("refused", "native", "descriptor"))
    parser.add_argument("--stage", required=True)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        checker = Checker(os.path.abspath(arguments.stage), folder)
        if arguments.check == "refused":
            checker.check_refused()
        else:
            checker.check_project(arguments.check)
    return 1 if checker.failures else 0


if __name__ == "__main__":
    sys.exit(main())
