#!/usr/bin/env python3
"""Checks that includes point only upwards in the table of layers.

    check_layers.py [ROOT]

Reports, one a line, every include that

- leads from a layer to one below it,
- is part of a cycle of headers,
- is reserved for other layers (libxml2, the loader, the host's libraries, ...),
- brings more than the standard library into a public header,
- brings a private header into the tool or a plug-in, or the umbrella header into the library,

and every file of the library that the table does not know. Exit status 1 when there was one.
"""

import os
import re
import sys

from problem_report import report

# From the top: a file may include its own layer and those above. The classes of autocli/ are
# told apart by name; what stands in metaobj/ and callspec/ is one layer each.
LAYERS = [
    ("base", "", "Export KestrelException Version"),
    ("values", "metaobj", ""),
    ("contract", "callspec", ""),
    ("text", "autocli",
     "Util DisplayContext FormatParameters FormatterParam Formatter "
     "ChildProcess FileDescriptor NameRule Panic ShellCommand "
     "TextPieces TextWriter EscapeTable FitText PrintfFormat FieldStyle FieldSlot ValueView PlainText"),
    ("call", "autocli", "OptionParser CommandInput CommandOutput EchoGuard"),
    ("tree", "autocli",
     "NodeType NamespaceNode Namespace RootNamespace CommandSpec Command"),
    ("format", "autocli",
     "TableFormatter SimpleFormatter XmlFormatter JsonFormatter PythonFormatter "
     "CommandHelpFormatter CliDispatcherHelpFormatter HeaderMarker FieldPrefixes ValueWalk Indent"),
    ("extend", "autocli",
     "Plugin PluginEntryPoint SharedObjectFile SharedLibraryPlugin InternalPlugin CommandList "
     "XmlUtil XmlDocument XmlNode XmlValue XmlValueReader LeadingInteger MarkedText TemplateText "
     "TemplateParts ConditionalRemoval ExtensionCommand XmlPlugin"),
    ("dispatch", "autocli", "Report PluginFiles Dispatcher CliDispatcher"),
]
RANK = {name: rank for rank, (name, _, _) in enumerate(LAYERS)}
CLASS_LAYER = {stem: name for name, _, stems in LAYERS for stem in stems.split()}
FOLDER_LAYER = {folder: name for name, folder, stems in LAYERS if folder and not stems}

# Includes that are not for everybody, by the start of their text.
RESERVED = {
    "kestrel/platform/TessaLibs.h": ["values", "dispatch"],
    "kestrel/platform/Zoluser.h": ["text"],
    "kestrel/platform/AuditTls.h": ["dispatch"],
    "libxml/": ["extend"],
    "dlfcn.h": ["extend"],
    "termios.h": ["call"],
    "sys/ioctl.h": ["dispatch"],
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

LIBRARY_FOLDERS = ["include/kestrel", "metaobj", "callspec", "autocli"]
CLIENT_FOLDERS = ["plugins", "vexil"]
UMBRELLA = "include/kestrel/kestrel.h"
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*[<"]([^>"\n]+)[>"]', re.MULTILINE)


def sources_below(root, folders):
    """The C++ files below the folders, as sorted paths relative to the root."""
    found = []
    for folder in folders:
        for directory, _, names in os.walk(os.path.join(root, folder)):
            found += [os.path.relpath(os.path.join(directory, name), root)
                      for name in names if name.endswith((".h", ".h.in", ".cpp"))]
    return sorted(found)


def layer_of(path):
    """The name of the layer that a file of the library belongs to, None when there is none."""
    folder, name = os.path.split(path)
    stem = name.split(".")[0]
    if stem in CLASS_LAYER:
        return CLASS_LAYER[stem]
    return FOLDER_LAYER.get(os.path.basename(folder))


class Tree:
    """The include edges of the project: `includes` has, for each file, pairs of the text between
    the brackets and the project's file that it names, None for any other header."""

    def __init__(self, root):
        self.root = root
        self.library = sources_below(root, LIBRARY_FOLDERS)
        self.clients = sources_below(root, CLIENT_FOLDERS)
        self.files = set(self.library + self.clients)
        self.includes = {path: self._read(path) for path in sorted(self.files)}

    def _read(self, path):
        with open(os.path.join(self.root, path), encoding="utf-8") as file:
            return [(text, self._resolve(path, text)) for text in INCLUDE.findall(file.read())]

    def _resolve(self, path, text):
        beside = os.path.normpath(os.path.join(os.path.dirname(path), text))
        for candidate in ("include/" + text, "include/" + text + ".in", text, beside):
            if candidate in self.files:
                return candidate
        return None


def library_problems(tree):
    for path in tree.library:
        if path == UMBRELLA:
            continue
        layer = layer_of(path)
        if layer is None:
            yield f"{path}: no layer of the table in scripts/check_layers.py holds this file"
            continue
        for text, target in tree.includes[path]:
            yield from (f"{path}: {problem}" for problem in edge_problems(layer, text, target))
            if path.startswith("include/"):
                yield from public_header_problems(path, text, target)


def edge_problems(layer, text, target):
    """What is wrong with one include of a file in the layer."""
    if target == UMBRELLA:
        yield "includes the umbrella header, which is for users"
    elif target is not None:
        target_layer = layer_of(target)
        if target_layer is not None and RANK[target_layer] > RANK[layer]:
            yield f'includes "{text}": layer {layer} may not use {target_layer}'
    for start, layers in RESERVED.items():
        if text.startswith(start) and layer not in layers:
            yield f"includes {text}, which is reserved for: {', '.join(layers)}"


def public_header_problems(path, text, target):
    if target is None and text not in STANDARD_HEADERS:
        yield f"{path}: a public header includes {text}, which is not of the standard library"
    elif target is not None and not target.startswith("include/"):
        yield f"{path}: a public header includes the private {text}"


def client_problems(tree):
    for path in tree.clients:
        for text, target in tree.includes[path]:
            private = target in tree.library and not target.startswith("include/")
            if private or text.startswith("kestrel/platform/"):
                yield f"{path}: includes {text}, which is private to the library"


def header_cycles(tree):
    """Each cycle of headers once, told by the include that closes it."""
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

    for path in sorted(tree.includes):
        if not path.endswith(".cpp") and path not in state:
            yield from visit(path, [path])


def problems(root):
    tree = Tree(root)
    if not tree.library:
        yield f"{root}: no sources of the library found"
    yield from library_problems(tree)
    yield from client_problems(tree)
    yield from header_cycles(tree)


if __name__ == "__main__":
    sys.exit(report(problems, sys.argv))
