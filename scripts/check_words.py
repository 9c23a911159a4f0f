#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Reports phrases that readers of this project stumbled over, each with a replacement.

    check_words.py [--count] [PATH...]

Looks at documents and at the comments in sources and scripts, below each PATH or in the whole
project. Code, string literals, examples, `code spans` and "quoted words" are ignored, so messages
of the system keep their words. A phrase may be split over two lines.

Prints FILE:LINE: PHRASE: write REPLACEMENT. The exit status is 1 if a phrase was found. --count
prints the number of phrases in each folder instead.

To allow a correct use, extend ALLOWED. To add a phrase, extend PHRASES. Prefer idioms that are
wrong nearly everywhere, because a false report costs more time than an odd sentence.
"""

import ast
import collections
import io
import os
import re
import sys
import tokenize

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))

# A space in a phrase matches any white space.
PHRASES = [
    (r"stands? (in|at|on|above|after|before|behind|below|beside|between|within|there|once)",
     "is in, is after, ...; contains"),
    (r"behind", "after"),
    (r"gives", "returns, makes, reports, has"),
    (r"gives? back|gave back|given back", "releases, returns, restores"),
    (r"tells?|told", "reports, says, shows, determines"),
    (r"anew", "again; rewrite ..., recompile ..."),
    (r"hand(s|ed|ing)? (it |them )?(back|down|on|out|over)", "passes, returns, writes"),
    (r"let(s|ting)? go( of)?", "releases, destroys, frees"),
    (r"be it|be they", "whether"),
    (r"as (it|they) stands?", "unchanged"),
    (r"blanks?", "space, spaces; empty"),
    (r"whoever|whosoever", "a caller that, a reader who, anyone who"),
    (r"nobody|somebody|anybody", "no caller, a process, any user"),
    (r"for good", "permanently"),
    (r"for ever", "forever, without limit"),
    (r"what is there", "what exists"),
    (r"of (all|several|both) [a-z ]+,? the one (that|which|with)", "the first ... that"),
    (r"mend(s|ed|ing)?", "fix"),
    (r"(a|an|the|each|every|one|of|these|such|thousand|million|[0-9,]+) records?",
     "structure, row, entry"),
    (r"brings? (along|about|with)|brought (along|about|with)", "has, contains, causes"),
    (r"wants", "needs, must have"),
    (r"all else", "everything else"),
    (r"put in for", "that replaces"),
    (r"passed over", "skipped"),
    (r"(is|are) no(?! (longer|more|less|other|different|greater|better|worse))",
     "is not a"),
    (r"texts", "strings, messages"),
    (r"a text", "a string, a message"),
    (r"judge(s|d)?", "check, validate, decide"),
    (r"at hand", "available; this"),
    (r"in vain", "without success"),
    (r"leads? nowhere", "names nothing"),
    (r"besides(?=[.;:])", "also"),
    (r"on the way out", "before the process ends"),
    (r"in words for", "with a message for"),
    (r"(one|each) a line|a line each", "one per line"),
    (r"stays? as (it|they) (is|are)|meanwhile", "must not change until ..., does not change"),
]

# Correct uses.
ALLOWED = [
    r"blank lines?",
    r"there (is|are) no",
    r"(tell|tells|told) (\w+ ){0,5}apart",
    r"(unless|until|if|when) told",
    r"(message|error|help|usage|status) texts",
    r"a text (editor|file|format)",
    r"for good (measure|reason)",
    r"lags? behind",
    r"gives? up",
    r"(administrator|author|reader|user) wants",
    r"audit records?",
]

# Files that are not ours to rewrite, or that contain exact output.
SKIPPED = ["build", ".git", "LICENSE", "LICENSES", "fuzz/corpus", "fuzz/regressions", "tests/data",
           "tests/golden"]

CODE = "\x01"
CPP = re.compile(r'//(?P<line>[^\n]*)|/\*(?P<block>.*?)\*/|R"(?P<mark>\w*)\(.*?\)(?P=mark)"'
                 r'|"(?:\\.|[^"\\\n])*"|(?<!\d)\'(?:\\.|[^\'\\\n])*\'', re.DOTALL)
MARKDOWN_CODE = re.compile(r"^```.*?^```$|^    .*?$|<!--.*?-->|\]\([^)]*\)|<[^>\n]*>",
                           re.DOTALL | re.MULTILINE)
QUOTED = re.compile(r'`[^`\x01]*`|"[^"\x01]{0,300}"')


class Prose:
    """Masks everything but the prose of a file. The line breaks are kept."""

    def __init__(self, text):
        self.text = text
        self.kept = []

    def keep(self, begin, end):
        self.kept.append((begin, end))

    def masked(self):
        result, place = [], 0
        for begin, end in sorted(self.kept):
            result += [mask(self.text[place:begin]), self.text[begin:end]]
            place = end
        result.append(mask(self.text[place:]))
        return "".join(result)


def mask(text):
    return re.sub(r"\S", CODE, text)


def cpp_prose(text):
    prose = Prose(text)
    for match in CPP.finditer(text):
        for group in ("line", "block"):
            if match.group(group) is not None:
                prose.keep(*match.span(group))
    # The marks at the beginning of a comment's lines would separate words.
    return re.sub(r"^([ \t]*)\x01\x01(?=[/\s])/?", r"\1", prose.masked(), flags=re.MULTILINE)


def python_prose(text):
    lines = [0]
    for line in text.splitlines(keepends=True):
        lines.append(lines[-1] + len(line))
    prose = Prose(text)
    for token in tokenize.generate_tokens(io.StringIO(text).readline):
        if token.type == tokenize.COMMENT:
            prose.keep(lines[token.start[0] - 1] + token.start[1], lines[token.end[0] - 1] +
                       token.end[1])
    documented = (ast.Module, ast.ClassDef, ast.FunctionDef)
    for node in ast.walk(ast.parse(text)):
        if isinstance(node, documented) and ast.get_docstring(node) is not None:
            string = node.body[0]
            prose.keep(lines[string.lineno - 1] + string.col_offset + 3,
                       lines[string.end_lineno - 1] + string.end_col_offset - 3)
    return re.sub(r"^([ \t]*)#", r"\1 ", prose.masked(), flags=re.MULTILINE)


def script_prose(text):
    prose, place = Prose(text), 0
    for line in text.splitlines(keepends=True):
        comment = re.match(r"""(?:[^"'#]|"[^"]*"|'[^']*'|(?<=\S)#)*?(?:(?<=\s)|^)#(?!!)""", line)
        if comment:
            prose.keep(place + comment.end(), place + len(line))
        place += len(line)
    return re.sub(r"^([ \t]*)\x01", r"\1 ", prose.masked(), flags=re.MULTILINE)


def markdown_prose(text):
    return MARKDOWN_CODE.sub(lambda match: mask(match.group()), text)


def manual_prose(text):
    text = re.sub(r"^\.EX$.*?^\.EE$", lambda match: mask(match.group()), text,
                  flags=re.DOTALL | re.MULTILINE)
    return re.sub(r"^\.(?![BI] |[BI]R |RB |RI ).*$", lambda match: mask(match.group()), text,
                  flags=re.MULTILINE)


def xml_prose(text):
    prose = Prose(text)
    for match in re.finditer(r"<!--(.*?)-->", text, re.DOTALL):
        prose.keep(*match.span(1))
    return prose.masked()


READERS = [
    (r".*\.(cpp|h|h\.in)$", cpp_prose),
    (r".*\.py$", python_prose),
    (r".*\.md$", markdown_prose),
    (r".*\.[135]$", manual_prose),
    (r".*\.(xml|xml\.in|svg|rng)$", xml_prose),
    (r".*\.(sh|bash|pl|cmake|cmake\.in|map|list|txt|in)$", script_prose),
    (r"(.*/)?(run|test|\.[a-z-]+|value-document)$", script_prose),
]


def reader_of(path):
    return next((reader for pattern, reader in READERS if re.match(pattern, path)), None)


def compiled(phrase):
    return re.compile(r"(?<![\w-])(?:" + phrase.replace(" ", r"\s+") + r")(?![\w-])")


PATTERNS = [(compiled(phrase), replacement) for phrase, replacement in PHRASES]
PERMITS = [compiled(phrase) for phrase in ALLOWED]


def phrases_in(path, text):
    """Yields line, phrase and replacement of each phrase in the prose of a file."""
    prose = QUOTED.sub(lambda match: mask(match.group()), reader_of(path)(text))
    prose = re.sub(r"\x01[\x01 \t]*\x01", CODE, prose).lower()
    for permit in PERMITS:
        prose = permit.sub(lambda match: mask(match.group()), prose)
    found = []
    for pattern, replacement in PATTERNS:
        for match in pattern.finditer(prose):
            line = prose.count("\n", 0, match.start()) + 1
            found.append((line, " ".join(match.group().split()), replacement))
    return sorted(found)


def is_skipped(path):
    return any(path == skipped or path.startswith(skipped + "/") for skipped in SKIPPED)


def files_below(root, path):
    """Returns the files with prose at or below a path, relative to the root, sorted."""
    full = os.path.join(root, path)
    if os.path.isfile(full):
        return [path]
    found = []
    for directory, folders, names in os.walk(full):
        beside = [os.path.normpath(os.path.join(os.path.relpath(directory, root), name))
                  for name in names]
        found += [name for name in beside if reader_of(name) and not is_skipped(name)]
        folders[:] = [folder for folder in folders if not is_skipped(os.path.normpath(
            os.path.join(os.path.relpath(directory, root), folder)))]
    return sorted(found)


def check(root, paths):
    """Yields file, line, phrase and replacement of each phrase below the paths."""
    for path in paths:
        for name in files_below(root, path):
            with open(os.path.join(root, name), encoding="utf-8") as file:
                for finding in phrases_in(name, file.read()):
                    yield (name,) + finding


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--count"]
    found = list(check(ROOT, arguments or ["."]))
    if "--count" in sys.argv:
        for folder, count in sorted(collections.Counter(
                os.path.dirname(name) or "." for name, *_ in found).items()):
            print(f"{count:5} {folder}")
    else:
        for name, line, phrase, replacement in found:
            print(f'{name}:{line}: "{phrase}": write {replacement}')
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
