# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""The command lines that the campaigns run. Their output is the same each time."""

import os
import subprocess

from tool import CommandLine

DESCRIPTOR = """<vexil-plugin><version>1.0.0</version>
<namespaces><namespace path="doc"><description>Documents.</description></namespace></namespaces>
<commands>{commands}</commands></vexil-plugin>
"""

COMMAND = """<command path="doc.{name}"><description>Print a document.</description>
<input-spec><parameter name="word" shortname="w" type="string" required="false">
<description>A word.</description></parameter></input-spec>
<output-spec>{shape}</output-spec>
<format-parameters><formatter>{formatter}</formatter></format-parameters>
<execute>{execute}</execute></command>
"""

PRINT = "cat '{file}'$if{{word, ; echo $val{{word}} >&amp;2}}"
PRINT_LATER = "sleep $val{{word}}; cat '{file}'"

ROW = '<structure typeName="Row"><field name="Name"><string>{}</string></field>' \
      '<field name="Size"><int>{}</int></field></structure>'

SHAPE = '<list type="structure"><structure typeName="Row"><field name="Name"><string/></field>' \
        '<field name="Size"><int/></field></structure></list>'

# The document type makes the reader build a tree first.
TREE_PROLOG = '<?xml version="1.0"?>\n<!DOCTYPE output [<!ENTITY who "world">]>\n'


def make_descriptor(campaign, count=40):
    """Writes a descriptor whose commands print documents: one that is read without a tree, the same
    one after a delay, one that is read through a tree because it has a document type, a broken one,
    and a single string."""
    def listing(text):
        rows = "".join(ROW.format(f"{text} &amp; {number}", number) for number in range(count))
        return f'<output><list type="structure">{rows}</list>'

    files = {
        "list": listing("row") + "</output>",
        "tree": TREE_PROLOG + listing("row") + "</output>",
        "broken": listing("row"),
        "string": "<output><string>done</string></output>",
    }
    files["slow"] = files["list"]
    shapes = {name: "<string/>" if name == "string" else SHAPE for name in files}
    commands = ""
    for name, text in files.items():
        execute = PRINT_LATER if name == "slow" else PRINT
        commands += COMMAND.format(name=name, shape=shapes[name],
                                   execute=execute.format(file=campaign.write(f"{name}.doc", text)),
                                   formatter="simple" if name == "string" else "table")
    return campaign.write("doc.xml", DESCRIPTOR.format(commands=commands))


def make_files(campaign):
    """Writes the files that commands read: an archive, a log and a folder."""
    os.makedirs(campaign.path("folder/below"), exist_ok=True)
    campaign.write("folder/one", "1" * 5000)
    campaign.write("folder/below/two", "2" * 9000)
    campaign.write("log", "".join(f"Nov  1 10:00:{n % 60:02} host app[{n}]: line {n}\n"
                                  for n in range(200)))
    subprocess.run(["tar", "--sort=name", "--owner=0", "--group=0", "--mtime=@0", "-czf",
                    campaign.path("archive.tgz"), "folder"], check=True)


def command_lines(campaign):
    """Returns the command lines in a fixed order. The campaigns memory and syscalls run all of
    them, or the first five in their quick forms. Other campaigns run some of them."""
    make_files(campaign)
    documents = make_descriptor(campaign)
    host = ["--plugin", os.path.join(campaign.tree, "plugins/host/host.so")]
    network = [*host, "--plugin", os.path.join(campaign.tree, "stage/lib/norvane/vexil/network.xml")]
    password = ["--plugin", os.path.join(campaign.tree, "stage/lib/norvane/vexil/password.xml")]
    trial = ["--plugin", os.path.join(campaign.modules, "TryPlugin.so")]
    all_plugins = ["--plugin-dir", os.path.join(campaign.tree, "stage/lib/norvane/vexil")]
    doc = ["--plugin", documents]

    def json(words):
        return ["--formatter", "json", *words]

    stream = b"try say --text one\n# comment\n\ntry rows -c 3\ntry say --text \"two words\"\ntry none\n"
    lines = [
        # The quick forms run these five.
        CommandLine("account-list", [*host, "system", "account", "list"], asks_names=True),
        CommandLine("tree-reader", [*doc, "doc", "tree"]),
        CommandLine("typed-secrets", [*trial, "try", "unlock", "-p", "-i"],
                    answers=[b"open sesame\n", b"1234\n"]),
        CommandLine("stream", [*trial, "--input=STDIN"], stdin=stream),
        CommandLine("mount-json", json([*host, "storage", "mount", "list"])),
        # The kinds of calls.
        CommandLine("version", ["--version"]),
        CommandLine("unknown-word", [*host, "sistem", "acount", "list"]),
        CommandLine("help", ["--help"]),
        CommandLine("command-help", [*host, "system", "account", "list", "--help"]),
        CommandLine("listing", [*host, "system"]),
        CommandLine("refused-value", [*host, "storage", "usage", "list", "--depth", "x"]),
        CommandLine("describe", [*all_plugins, "--formatter", "yaml", "vexil", "command",
                                 "describe", "--path", "system.account.list"]),
        # Descriptors.
        CommandLine("document", [*doc, "doc", "list", "-w", "it's"]),
        CommandLine("document-xml", [*doc, "--formatter", "value-xml", "doc", "list"]),
        CommandLine("broken-document", [*doc, "doc", "broken"]),
        CommandLine("resolve", [*network, "network", "name", "resolve", "--name", "localhost"]),
        CommandLine("typed-password", [*password, "system", "password", "hash", "-s", "abcd", "-p"],
                    answers=[b"open sesame\n"]),
        # Formatters.
        CommandLine("rows-table", [*trial, "try", "rows", "-c", "60"]),
        CommandLine("rows-python", [*trial, "--formatter", "python", "try", "rows", "-c", "60"]),
        # Commands of the host.
        CommandLine("device-list", [*host, "storage", "device", "list"]),
        CommandLine("module-xml", [*host, "--formatter", "xml", "system", "module", "list"]),
        CommandLine("address-list", [*host, "network", "address", "list"]),
        CommandLine("checksum", [*host, "file", "checksum", "-f", campaign.path("log")]),
        CommandLine("members", [*host, "file", "members", "-f",
                               campaign.path("archive.tgz")]),
        CommandLine("usage", [*host, "storage", "usage", "list", "-a", "-d",
                             campaign.path("folder")]),
    ]
    return lines
