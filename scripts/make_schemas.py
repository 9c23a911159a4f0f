#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Makes the RELAX NG schemas and the XML schemas from the grammars in schemas/*.rnc.

    make_schemas.py [FOLDER]

Writes them to FOLDER (default: schemas/). They are under version control, so that a build needs no
Java; a test compares them with their grammars.

trang does the work. For an XML schema it gets the grammar with the definitions in schemas/xsd,
which replace what XML Schema cannot express. What trang cannot write is inserted afterwards:
children in any order, each once, and values that must differ.
"""

import os
import re
import subprocess
import sys
import tempfile

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
GRAMMARS = ("descriptor", "value-document", "output")

# A definition: its name, and everything up to the next comment or definition.
DEFINITION = re.compile(r"^([a-z][\w.-]*) =.*?(?=^(?:#|[a-z][\w.-]* =)|\Z)",
                        re.MULTILINE | re.DOTALL)

# The children that a type has once, or at most once, in any order.
IN_ANY_ORDER = {
    "command.content": (("execute", "format-parameters", "input-spec", "output-spec"),
                        ("description", "meta-data", "stdin")),
}

# Elements in which the values of an attribute of a child must differ.
DIFFERENT = {
    "commands": [("command", "path")],
    "input-spec": [("parameter", "name"), ("parameter", "shortname")],
    "enum": [("enum-value", "value")],
}


def read(*path):
    with open(os.path.join(ROOT, *path), encoding="utf-8") as file:
        return file.read()


def trang(source, target, *options):
    done = subprocess.run(["trang", *options, source, target], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False)
    if done.returncode or done.stdout:
        raise SystemExit(f"trang: {done.stdout.decode()}")


def references(grammar):
    """Returns the names that a grammar uses."""
    code = re.sub(r"#.*|\"[^\"]*\"", " ", grammar)
    return set(re.findall(r"[a-z][\w.-]*", re.sub(r"^[a-z][\w.-]* =", " ", code, flags=re.M)))


def grammar_for_xsd(name):
    """Returns the grammar, reduced to what XML Schema can express, without the definitions that
    nothing uses."""
    grammar = read("schemas", name + ".rnc")
    for found in DEFINITION.finditer(read("schemas", "xsd", name + ".rnc")):
        own = re.search(rf"^{re.escape(found.group(1))} =.*?(?=^(?:#|[a-z][\w.-]* =)|\Z)", grammar,
                        re.MULTILINE | re.DOTALL)
        text = found.group(0).rstrip() + "\n\n"
        grammar = grammar.replace(own.group(0), text) if own else grammar + "\n" + text
    while True:
        used = references(grammar)
        unused = [found for found in DEFINITION.finditer(grammar)
                  if found.group(1) not in used | {"start", "datatypes", "namespace"}]
        if not unused:
            return grammar
        for found in unused:
            grammar = re.sub(r"(?:^##.*\n)*" + re.escape(found.group(0)), "", grammar, flags=re.M)


def take_group(schema, name):
    """Removes the group that trang has made of an element because other elements have the same
    name. Returns the schema and the element."""
    group = re.search(rf'  <xs:group name="command\.{name}">.*?<xs:sequence>\s*(<xs:element .*?'
                      rf'</xs:element>)\s*</xs:sequence>\s*</xs:group>\n', schema, re.DOTALL)
    return schema.replace(group.group(0), ""), group.group(1)


def in_any_order(schema, type_name, required, optional):
    """Replaces the choice that trang writes for children in any order."""
    lines = []
    for name in required + optional:
        minimum = ' minOccurs="0"' if name in optional else ""
        if f'\n  <xs:element name="{name}"' in schema:
            lines.append(f'      <xs:element ref="{name}"{minimum}/>')
        else:
            schema, element = take_group(schema, name)
            lines.append("      " + element.replace(f'name="{name}"', f'name="{name}"{minimum}', 1))
    whole = "    <xs:all>\n" + "\n".join(lines) + "\n    </xs:all>\n"
    start = f'<xs:complexType name="{type_name}">\n'
    begin = schema.index(start) + len(start)
    end = schema.index("  </xs:complexType>", begin)
    return schema[:begin] + whole + schema[end:]


def with_different_values(schema, element, children):
    """Adds the rule that the values of attributes must differ."""
    begin = schema.index(f'\n  <xs:element name="{element}">') + 1
    end = schema.index("\n  </xs:element>", begin)
    rules = "".join(f'\n    <xs:unique name="{child}.{attribute}">\n'
                    f'      <xs:selector xpath="{child}"/>\n'
                    f'      <xs:field xpath="@{attribute}"/>\n    </xs:unique>'
                    for child, attribute in children)
    return schema[:end] + rules + schema[end:]


def make_xsd(name, target):
    with tempfile.TemporaryDirectory() as folder:
        grammar = os.path.join(folder, name + ".rnc")
        with open(grammar, "w", encoding="utf-8") as file:
            file.write(grammar_for_xsd(name))
        # Programs other than libxml2 refuse the default, "skip", with an attribute beside a string.
        trang(grammar, target, "-o", "any-attribute-process-contents=lax")
    with open(target, encoding="utf-8") as file:
        schema = file.read()
    if name == "descriptor":
        for type_name, (required, optional) in IN_ANY_ORDER.items():
            schema = in_any_order(schema, type_name, required, optional)
        for element, children in DIFFERENT.items():
            schema = with_different_values(schema, element, children)
    with open(target, "w", encoding="utf-8") as file:
        file.write(schema)


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(ROOT, "schemas")
    for name in GRAMMARS:
        trang(os.path.join(ROOT, "schemas", name + ".rnc"), os.path.join(folder, name + ".rng"))
        make_xsd(name, os.path.join(folder, name + ".xsd"))


if __name__ == "__main__":
    main()
