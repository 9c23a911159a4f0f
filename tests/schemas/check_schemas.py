#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks the schemas: what they accept and refuse, their catalog, and that they are generated from
the current grammars.

    check_schemas.py valid|refused|places|catalog|made --stage DIR [--rewrite]

DIR is the installed tree, whose schemas are checked.

valid     accepted are the installed descriptors, those in the guides, a descriptor that tests
          load, documents that the formatters xml and value-xml and a script print, and good value
          documents; bad ones are refused
refused   descriptors with mistakes are refused, except those in tests/data/schemas/accepted.txt
places    jing refuses these descriptors at the places in tests/data/schemas/places.txt
catalog   the catalog names every schema, and a validator finds them by these names
made      make_schemas.py makes schemas that equal the installed ones

The exit status is 77 if a check needs a program that is not installed. --rewrite writes the files
in tests/data/schemas instead.
"""

import argparse
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../.."))
DATA = os.path.join(ROOT, "tests/data/schemas")
SKIPPED = 77
NAMES = ("descriptor", "value-document", "output")
BAD_FOLDERS = ("tests/data/descriptors/broken", "tests/data/lint/rules")
# In an XML schema the root has a fixed name; the tool accepts any name.
ANY_ROOT = re.compile(r"(</?)(descriptor|extension|try)(?=>)")


def run(*command, env=None):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=120, check=False, env=env)
    return done.returncode, done.stdout.decode("utf-8", "replace")


def read(path):
    with open(path, "rb") as file:
        return file.read()


def is_xml(path):
    return run("xmllint", "--noout", "--nonet", path)[0] == 0


def is_descriptor(path):
    return is_xml(path) and re.search(rb"<version>1\.0\.0</version>", read(path)) is not None


class Checker:
    def __init__(self, stage, folder, rewrite):
        self.stage = stage
        self.schemas = os.path.join(stage, "share/xml/kestrel")
        self.folder = folder
        self.rewrite = rewrite
        self.failures = 0
        self.checked = 0

    def fail(self, text):
        self.failures += 1
        print(f"FAILED: {text}", file=sys.stderr)

    def save(self, name, text):
        path = os.path.join(self.folder, name)
        with open(path, "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode())
        return path

    def accepted(self, schema, paths):
        """Returns the files that a schema accepts; `schema` is a name with its suffix."""
        option = "--schema" if schema.endswith(".xsd") else "--relaxng"
        path = os.path.join(self.schemas, schema)
        _, printed = run("xmllint", "--noout", "--nonet", option, path, *paths)
        if "failed to compile" in printed:
            self.fail(f"{schema} is not a schema: {printed}")
        return {path for path in paths if f"\n{path} validates\n" in "\n" + printed}

    def expect_valid(self, name, paths):
        """Checks that both forms of a schema accept all files; at least one file must exist."""
        self.checked += len(paths)
        if not paths:
            self.fail(f"there are no documents for {name}")
        for suffix in (".rng", ".xsd"):
            for path in sorted(set(paths) - self.accepted(name + suffix, paths)):
                self.fail(f"{name}{suffix} refuses {path}")

    def with_usual_root(self, path):
        text = ANY_ROOT.sub(r"\1vexil-plugin", read(path).decode("latin-1"))
        return self.save("-".join(path.split("/")[-2:]), text.encode("latin-1"))

    # valid

    def descriptors(self):
        """Returns the descriptors that are installed, those in guides, and one that tests load."""
        found = glob.glob(os.path.join(self.stage, "lib/norvane/vexil/*.xml"))
        for page in sorted(glob.glob(os.path.join(ROOT, "docs/*.md"))):
            text = read(page).decode()
            for name, block in re.findall(r"^```xml save=(\S+)\n(.*?)^```$", text,
                                          re.MULTILINE | re.DOTALL):
                if os.path.basename(page) not in ("linting.md", "schemas.md"):  # with mistakes
                    found.append(self.save(os.path.basename(page) + "-" + name, block))
        found.append(os.path.join(ROOT, "tests/data/lint/disks.xml"))
        return [self.with_usual_root(path) for path in found if is_descriptor(path)]

    def golden_outputs(self):
        """Returns the documents in the golden files of the formatter xml, by their names."""
        documents = {}
        for path in sorted(glob.glob(os.path.join(ROOT, "tests/golden/xml/*.txt"))):
            for part in re.split(rb"^=== ", read(path), flags=re.MULTILINE)[1:]:
                title, text = part.split(b"\n", 1)
                name = os.path.basename(path)[:-4] + "-" + re.sub(r"\W+", "-", title.decode())
                documents[name] = self.save(name + ".xml", text)
        return documents

    def check_golden_outputs(self):
        documents = self.golden_outputs()
        # Values that report a wrong kind are printed as error messages, and some strings and
        # stylesheets contain characters that no document can contain.
        lies = {name for name in documents if name.startswith("results-lies")}
        broken = {name for name, path in documents.items() if name not in lies and not is_xml(path)}
        self.compare("not-well-formed.txt", sorted(broken))
        self.expect_valid("output", [path for name, path in documents.items()
                                     if name not in lies | broken])
        for suffix in (".rng", ".xsd"):
            for path in self.accepted("output" + suffix, [documents[name] for name in lies]):
                self.fail(f"output{suffix} accepts {path}")

    def check_printed(self):
        """Checks documents that the tool and a script print during this test."""
        tool = [os.path.join(self.stage, "bin/vexil"),
                "--plugin-dir", os.path.join(self.stage, "lib/norvane/vexil")]
        commands = (["vexil", "command", "list"], ["vexil", "plugin", "list"],
                    ["storage", "mount", "list"], ["system", "load", "get"],
                    ["network", "interface", "list"])
        for formatter, name in (("xml", "output"), ("value-xml", "value-document")):
            self.expect_valid(name, [
                self.save("-".join([formatter] + command),
                          run(*tool, "--formatter", formatter, *command)[1])
                for command in commands])
        script = os.path.join(self.stage, "lib/norvane/vexil/scripts/value-document")
        done = subprocess.run([script, "list", "Item", "Name:string", "Count:int", "Ready:bool",
                               "Tags:strings"], input=b"a & b\t1\ttrue\tx,y\n<c>\t-2\tfalse\t\n",
                              stdout=subprocess.PIPE, check=True)
        self.expect_valid("value-document", [self.save("script", done.stdout)])

    def check_values(self):
        """Checks documents that a schema must accept, and documents that it must refuse."""
        good = ("<string> a <![CDATA[<b>]]></string>", "<int/>", "<int> 42 </int>",
                "<bool>f</bool>", "<structure typeName='A1'/>",
                "<list type='bool'><bool>1</bool></list>",
                "<list type='structure'/>",
                "<structure typeName='A'><field name='B'><list type='int'><int>1</int></list>"
                "</field></structure>")
        bad = ("", "<string>a</string><int>1</int>", "<integer>1</integer>", "<int>12abc</int>",
               "<int>9223372036854775808</int>", "<bool>False</bool>", "<bool/>", "<list/>",
               "<list type='list'/>", "<list type='integer'/>", "<structure/>",
               "<structure typeName='A b'/>",
               "<structure typeName='A'><field name='B'/></structure>",
               "<structure typeName='A'><field><int/></field></structure>", "text",
               "<list type='int'><string>1</string></list>", "<string><b/></string>",
               "<structure type='A'/>")
        paths = {body: self.save(f"value-{number}.xml", f"<output>{body}</output>")
                 for number, body in enumerate(good + bad)}
        self.expect_valid("value-document", [paths[body] for body in good])
        self.checked += len(bad)
        # XML Schema cannot compare the attribute 'type' with the elements.
        beyond = {paths["<list type='int'><string>1</string></list>"]}
        for suffix, allowed in ((".rng", set()), (".xsd", beyond)):
            for path in self.accepted("value-document" + suffix, [paths[body] for body in bad]):
                if path not in allowed:
                    self.fail(f"value-document{suffix} accepts {read(path).decode()}")

    def check_valid(self):
        self.expect_valid("descriptor", self.descriptors())
        self.check_golden_outputs()
        self.check_printed()
        self.check_values()

    # refused

    def bad_descriptors(self):
        """Returns the well-formed descriptors with mistakes, by the ends of their paths."""
        found = [path for folder in BAD_FOLDERS
                 for path in sorted(glob.glob(os.path.join(ROOT, folder, "*.xml")))]
        return {"/".join(path.split("/")[-2:]): path for path in found if is_xml(path)}

    def compare(self, name, lines):
        path = os.path.join(DATA, name)
        with open(path, encoding="utf-8") as file:
            head = [line for line in file if line.startswith("#")]
        text = "".join(head + [line + "\n" for line in lines])
        if self.rewrite:
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
        elif text != read(path).decode():
            _, difference = run("diff", path, self.save(name, text))
            self.fail(f"{name} has changed:\n{difference}")

    def check_refused(self):
        descriptors = self.bad_descriptors()
        self.checked = len(descriptors)
        usual = {name: self.with_usual_root(path) for name, path in descriptors.items()}
        by_rng = self.accepted("descriptor.rng", list(descriptors.values()))
        by_xsd = self.accepted("descriptor.xsd", list(usual.values()))
        lines = []
        for name, path in descriptors.items():
            schemas = (["rng"] if path in by_rng else []) + \
                (["xsd"] if usual[name] in by_xsd else [])
            if schemas:
                lines.append(f"{name} {' '.join(schemas)}")
        self.compare("accepted.txt", lines)

    def check_places(self):
        need("jing")
        descriptors = self.bad_descriptors()
        self.checked = len(descriptors)
        _, printed = run("jing", "-c", os.path.join(self.schemas, "descriptor.rnc"),
                         *descriptors.values())
        lines = []
        for name, path in descriptors.items():
            places = re.findall(rf"^{re.escape(path)}:(\d+:\d+): error: ", printed, re.MULTILINE)
            if places:
                lines.append(" ".join([name] + list(dict.fromkeys(places))))
        self.compare("places.txt", lines)
        self.check_other_validator()

    def check_other_validator(self):
        """Checks that a validator other than xmllint accepts the XML schemas and documents."""
        tool = os.path.join(self.stage, "bin/vexil")
        documents = {
            "descriptor": os.path.join(ROOT, "tests/data/lint/disks.xml"),
            "output": self.save(
                "xml", run(tool, "--formatter", "xml", "vexil", "command", "list")[1]),
            "value-document": self.save("value", "<output><list type='int'><int/></list></output>")}
        for name, document in documents.items():
            status, printed = run("jing", os.path.join(self.schemas, name + ".xsd"), document)
            if status:
                self.fail(f"jing with {name}.xsd: {printed}")

    # catalog, made

    def check_catalog(self):
        catalog = os.path.join(self.schemas, "catalog.xml")
        environment = dict(os.environ, XML_CATALOG_FILES=catalog)
        document = os.path.join(ROOT, "tests/data/lint/disks.xml")
        listed = re.findall(r'uri="([^"]+)"', read(catalog).decode())
        files = [name + suffix for name in NAMES for suffix in (".rnc", ".rng", ".xsd")]
        if sorted(listed) != sorted(files):
            self.fail(f"the catalog names {listed}")
        for file in files:
            self.checked += 1
            _, found = run("xmlcatalog", catalog, f"urn:norvane:vexil:schema:{file}")
            if not found.endswith(f"\n{os.path.join(self.schemas, file)}\n"):
                self.fail(f"the catalog finds {found} for {file}")
        for option, suffix in (("--relaxng", "rng"), ("--schema", "xsd")):
            status, printed = run("xmllint", "--noout", "--nonet", option,
                                  f"urn:norvane:vexil:schema:descriptor.{suffix}", document,
                                  env=environment)
            if status:
                self.fail(f"xmllint {option}: {printed}")

    def check_made(self):
        need("trang")
        folder = os.path.join(self.folder, "made")
        os.mkdir(folder)
        status, printed = run(sys.executable, "-B", os.path.join(ROOT, "scripts/make_schemas.py"),
                              folder)
        if status:
            self.fail(printed)
        for name in NAMES:
            for suffix in (".rng", ".xsd"):
                self.checked += 1
                status, printed = run("diff", os.path.join(self.schemas, name + suffix),
                                      os.path.join(folder, name + suffix))
                if status:
                    self.fail(f"run scripts/make_schemas.py: {name}{suffix} differs\n{printed}")


def need(program):
    if not shutil.which(program):
        print(f"skipped: {program} is not installed")
        sys.exit(SKIPPED)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("check", choices=("valid", "refused", "places", "catalog", "made"))
    parser.add_argument("--stage", required=True)
    parser.add_argument("--rewrite", action="store_true")
    arguments = parser.parse_args()
    need("xmllint")
    with tempfile.TemporaryDirectory() as folder:
        checker = Checker(os.path.abspath(arguments.stage), folder, arguments.rewrite)
        getattr(checker, "check_" + arguments.check)()
    print(f"{checker.checked} documents, {checker.failures} failures")
    return 1 if checker.failures or not checker.checked else 0


if __name__ == "__main__":
    sys.exit(main())
