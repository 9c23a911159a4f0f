#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks that includes follow the order of the folders.

    check_layers.py [--graph] [ROOT]

A folder is a layer. A file may include its own folder and the folders before it in the list below.
Reports, one per line, every include that

- leads from a folder to a later one, or to one on the same level,
- is part of a cycle of headers,
- is reserved for other folders (libxml2, the loader, the host's libraries, ...),
- adds anything but a public or standard header to a public header (two headers of the test kit may
  include their test framework),
- adds a private header of the library to the tool, a plug-in or a companion program, unless the
  exception is listed below,
- adds a header for users to the library: kestrel.h, or Util.h in a source that does not define one
  of its functions,

and every C++ file that is in none of the folders. The exit status is 1 if anything was reported.

--graph instead prints a line for each folder in the order of the list, with the folders that its
files include. Includes follow the order if every folder after an arrow begins an earlier line.
"""

import os
import re
import sys

from problem_report import report

# From the bottom to the top. Folders in one row are on the same level: none of them may include
# another.
LAYERS = [
    ["platform"],
    ["metaobj"],
    ["callspec"],
    ["callspec/expression"],
    ["autocli/text"],
    ["autocli/process"],
    ["autocli/formatters"],
    ["autocli/tree"],
    ["autocli/plugins"],
    ["autocli/descriptors"],
    ["autocli/descriptors/libxml2"],
    ["autocli/dispatch"],
    ["vexil/formats"],
    ["vexil"],
    ["plugins/hello"],
    ["plugins/host/frame"],
    ["plugins/host/system", "plugins/host/storage", "plugins/host/network", "plugins/host/log",
     "plugins/host/package", "plugins/host/service", "plugins/host/file"],
    ["plugins/host"],
    ["tools/catalog"],
    ["plugins/vexil"],
    ["tools/complete"],
    ["tools/fleet/rows"],
    ["tools/newplugin/templates/native"],
    ["tools/console"],
    ["tools/isolation"],
    ["tools/lint"],
    ["tools/doctor"],
    ["tools/explain"],
]
RANK = {folder: rank for rank, folders in enumerate(LAYERS) for folder in folders}
LIBRARY = [folder for folder in RANK if not folder.startswith(("plugins/", "tools/", "vexil"))]

PUBLIC = "include/kestrel/"
# A public header belongs to the folder of its source, or, without a source, to the highest folder
# that it includes. The following headers have no source, and their includes do not determine the
# folder.
HEADERS_WITHOUT_A_SOURCE = {
    "include/kestrel/Export.h": "metaobj",
    "include/kestrel/Version.h.in": "metaobj",
    "include/kestrel/autocli/DisplayContext.h": "autocli/formatters",
    "include/kestrel/autocli/FormatterParam.h": "autocli/formatters",
    "include/kestrel/testing/Catch2.h": "autocli/dispatch",
    "include/kestrel/testing/GoogleTest.h": "autocli/dispatch",
    "include/kestrel/testing/Golden.h": "autocli/dispatch",
    "include/kestrel/testing/ShellWords.h": "autocli/dispatch",
    "include/kestrel/testing/Verdict.h": "autocli/dispatch",
}
# The test frameworks that public headers may include.
FRAMEWORKS = {
    "include/kestrel/testing/Catch2.h": "catch2/",
    "include/kestrel/testing/GoogleTest.h": "gtest/",
}

# Headers for users, with the only sources of the library that may include each.
FOR_USERS = {
    "include/kestrel/kestrel.h": [],
    # Gathers functions of several folders; these sources define them.
    "include/kestrel/autocli/Util.h": [
        "autocli/text/FitText.cpp",
        "autocli/text/Panic.cpp",
        "autocli/process/ShellCommand.cpp",
        "autocli/formatters/FieldStyle.cpp",
        "autocli/tree/NameRule.cpp",
    ],
}

# The exceptions to the rule that private headers of the library are for the library only. The tool
# and the companion programs are installed with the library of their own version. The tool reads
# rows of a result in place, splits and writes strings, prints its messages and determines its
# rights in the same way as the library. Companion programs print messages in the same way,
# vexil-complete and vexil-doctor decide in the same way which files others can change, and
# vexil-lint encodes characters in the same way.
READS_PRIVATE = [
    ("tools/complete/TrustedFile.cpp", "autocli/plugins/TrustPolicy.h"),
    ("vexil/formats/EscapedText.h", "autocli/text/ShortCopy.h"),
    ("vexil/formats/FormatOptions.cpp", "autocli/text/TextPieces.h"),
    ("vexil/formats/TextBuffer.cpp", "autocli/text/WriteUnpadded.h"),
    ("vexil/formats/TextBuffer.h", "autocli/text/PutPiece.h"),
    ("vexil/formats/Utf8.h", "autocli/text/Utf8.h"),
    ("vexil/formats/Values.h", "metaobj/ValueAccess.h"),
    ("tools/console/Console.cpp", "autocli/text/TerminalText.h"),
    ("tools/doctor/Access.cpp", "autocli/plugins/TrustPolicy.h"),
    ("tools/doctor/PluginTable.cpp", "autocli/text/TerminalText.h"),
    ("tools/explain/main.cpp", "autocli/text/TerminalText.h"),
    ("tools/lint/Scanner.cpp", "autocli/text/Utf8.h"),
    ("vexil/Advice.cpp", "autocli/text/TerminalText.h"),
    ("vexil/ForeignRights.cpp", "autocli/text/StartsWith.h"),
    ("vexil/FormatHints.cpp", "autocli/text/StartsWith.h"),
    ("vexil/FormatKeys.cpp", "autocli/text/TextPieces.h"),
    ("vexil/Session.cpp", "autocli/text/StartsWith.h"),
    ("vexil/WordCost.cpp", "autocli/text/StartsWith.h"),
    ("vexil/main.cpp", "autocli/process/ProcessRights.h"),
    ("vexil/main.cpp", "autocli/text/TerminalText.h"),
]

# Includes that only these folders may use, by the start of the header's name. Only the files of the
# library are checked.
RESERVED = {
    "kestrel/platform/TessaLibs.h": ["metaobj", "autocli/dispatch"],
    "kestrel/platform/Zoluser.h": ["autocli/process"],
    "kestrel/platform/AuditTls.h": ["autocli/dispatch"],
    "libxml/": ["autocli/descriptors", "autocli/descriptors/libxml2", "tools/lint"],
    "dlfcn.h": ["autocli/plugins", "callspec", "tools/isolation"],
    "termios.h": ["autocli/process"],
    "sys/ioctl.h": ["autocli/dispatch"],
}

STANDARD_HEADERS = set("""
    algorithm any array atomic bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes
    climits clocale cmath codecvt complex condition_variable csetjmp csignal cstdarg cstddef cstdint
    cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem
    forward_list fstream functional future initializer_list iomanip ios iosfwd iostream istream
    iterator limits list locale map memory memory_resource mutex new numeric optional ostream queue
    random ratio regex scoped_allocator set shared_mutex sstream stack stdexcept streambuf string
    string_view strstream system_error thread tuple type_traits typeindex typeinfo unordered_map
    unordered_set utility valarray variant vector""".split())

SOURCE_FOLDERS = ["include/kestrel", "platform", "metaobj", "callspec", "autocli", "vexil", "plugins",
                  "tools"]
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*[<"]([^>"\n]+)[>"]', re.MULTILINE)


def sources_below(root):
    """Returns the C++ files of the project, as sorted paths relative to the root."""
    found = []
    for folder in SOURCE_FOLDERS:
        for directory, _, names in os.walk(os.path.join(root, folder)):
            found += [os.path.relpath(os.path.join(directory, name), root)
                      for name in names if name.endswith((".h", ".h.in", ".cpp"))]
    return sorted(found)


class Tree:
    """The includes of the project.

    `includes` maps each file to pairs: the name between the brackets, and the project's file of
    that name, or None if it is not a header of the project.
    """

    def __init__(self, root):
        self.root = root
        self.files = sources_below(root)
        known = set(self.files)
        self.includes = {path: self._read(path, known) for path in self.files}
        self._layers = {}
        self._sources = {path: os.path.dirname(path) for path in self.files
                         if path.endswith(".cpp")}

    def _read(self, path, known):
        with open(os.path.join(self.root, path), encoding="utf-8") as file:
            return [(text, resolve(path, text, known)) for text in INCLUDE.findall(file.read())]

    def layer_of(self, path):
        """Returns the folder that a file belongs to, or None."""
        if path not in self._layers:
            self._layers[path] = None  # ends the recursion of headers that include each other
            self._layers[path] = self._find_layer(path)
        return self._layers[path]

    def _find_layer(self, path):
        if path.startswith("platform/"):
            return "platform"
        if not path.startswith(PUBLIC):
            folder = os.path.dirname(path)
            return folder if folder in RANK else None
        if path in HEADERS_WITHOUT_A_SOURCE:
            return HEADERS_WITHOUT_A_SOURCE[path]
        return self._folder_of_source(path) or self._highest_included(path)

    def _folder_of_source(self, header):
        stem = os.path.basename(header).split(".")[0]
        names = os.path.dirname(header)[len(PUBLIC):] or "metaobj"
        for source, folder in self._sources.items():
            if os.path.basename(source) == stem + ".cpp" and folder.split("/")[0] == names:
                return folder
        return None

    def _highest_included(self, header):
        layers = [self.layer_of(target) for _, target in self.includes[header] if target]
        return max((layer for layer in layers if layer), key=RANK.get, default=None)

    def is_library(self, path):
        return path.startswith(PUBLIC) or self.layer_of(path) in LIBRARY


def resolve(path, text, known):
    """Returns the project's file that an include names, None if it is not a header of the project."""
    beside = os.path.normpath(os.path.join(os.path.dirname(path), text))
    for candidate in ("include/" + text, "include/" + text + ".in", "platform/include/" + text,
                      text, beside):
        if candidate in known:
            return candidate
    return None


def problems_of_file(tree, path):
    if path in FOR_USERS:
        return
    layer = tree.layer_of(path)
    if layer is None:
        yield f"{path}: is in none of the folders of scripts/check_layers.py"
        return
    for text, target in tree.includes[path]:
        if target is not None:
            yield from order_problems(tree, path, text, target)
        if tree.is_library(path):
            yield from library_problems(tree, path, text, target)
        elif is_private(tree, path, target):
            yield f"{path}: includes {text}, which is private to the library"


def order_problems(tree, path, text, target):
    layer, other = tree.layer_of(path), tree.layer_of(target)
    if target in FOR_USERS or other is None or other == layer:
        return
    if RANK[other] == RANK[layer]:
        yield f'{path}: includes "{text}": {layer} may not use {other}, which is beside it'
    elif RANK[other] > RANK[layer]:
        yield f'{path}: includes "{text}": {layer} may not use {other}, which is above it'


def library_problems(tree, path, text, target):
    """Yields the problems of one include in a file of the library."""
    if path not in FOR_USERS.get(target, [path]):
        yield f"{path}: includes {text}, which is for users"
    for start, layers in RESERVED.items():
        if text.startswith(start) and tree.layer_of(path) not in layers + ["platform"]:
            yield f"{path}: includes {text}, which is reserved for: {', '.join(layers)}"
    if not path.startswith(PUBLIC):
        return
    if target is None and text.startswith(FRAMEWORKS.get(path, "\n")):
        return
    if target is None and text not in STANDARD_HEADERS:
        yield f"{path}: a public header includes {text}, which is not of the standard library"
    elif target is not None and not target.startswith(PUBLIC):
        yield f"{path}: a public header includes the private {text}"


def is_private(tree, path, target):
    if (path, target) in READS_PRIVATE:
        return False
    return target is not None and not target.startswith(PUBLIC) and tree.is_library(target)


def header_cycles(tree):
    """Yields each cycle of headers once, at the include that closes it."""
    state = {}

    def visit(path, trail):
        state[path] = "open"
        for _, target in tree.includes.get(path, []):
            if target is None or target.endswith(".cpp"):
                continue
            if state.get(target) == "open":
                cycle = trail[trail.index(target):] + [target]
                yield "cycle of headers: " + " -> ".join(cycle)
            elif target not in state:
                yield from visit(target, trail + [target])
        state[path] = "done"

    for path in tree.files:
        if not path.endswith(".cpp") and path not in state:
            yield from visit(path, [path])


def problems(root):
    tree = Tree(root)
    if not any(tree.is_library(path) for path in tree.files):
        yield f"{root}: no sources of the library found"
    for path in tree.files:
        yield from problems_of_file(tree, path)
    yield from header_cycles(tree)


def graph(root):
    """Yields a line for each folder that has files: the folder and those that its files include."""
    tree = Tree(root)
    used = {layer: set() for layer in RANK if layer in map(tree.layer_of, tree.files)}
    for path in tree.files:
        layer = tree.layer_of(path)
        if layer is not None and path not in FOR_USERS:
            used[layer] |= {tree.layer_of(target) for _, target in tree.includes[path]
                            if target is not None and target not in FOR_USERS}
    for layer, others in used.items():
        others = sorted(others - {layer, None}, key=list(RANK).index)
        yield " ".join([layer, "->"] + others) if others else layer


def main():
    arguments = [argument for argument in sys.argv if argument != "--graph"]
    if "--graph" in sys.argv:
        report(graph, arguments)
        return 0
    return report(problems, arguments)


if __name__ == "__main__":
    sys.exit(main())
