# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Finds mutations of a C++ source and writes them into it.

    negate   a condition is negated              compare  < becomes <= or >=, == becomes !=, ...
    logic    && has one more false condition, || one more true one
    sum      + becomes -; the right side of a sum of strings is left out
    number   a number becomes one greater, 1 becomes 0
    boolean  true becomes false
    delete   a statement is left out

A mutation has one or two mutants, each with a number; tests/mutants/Mutation.h activates one of
them. The sources are formatted by clang-format, so their layout shows what is an operator.
"""

import bisect
import collections
import re

COMPARISONS = {"<": ("Less", 2), "<=": ("LessEqual", 2), ">": ("Greater", 2),
               ">=": ("GreaterEqual", 2), "==": ("Equal", 1), "!=": ("Unequal", 1)}
SUMS = {"+": "Plus", "-": "Minus"}
NO_STATEMENT = re.compile(
    r"(const|constexpr|static|auto|using|struct|class|enum|template|typename|namespace|return|case|"
    r"default|public|private|protected|friend|virtual|explicit|extern|else|do|if|for|while|switch|"
    r"try|catch|goto|inline|unsigned|long|int|bool|char|double|void)\b|[\w:<>, *&]+[ &*]\w+( =|;|\(|{)")
JUMP = re.compile(r"(throw|break|continue|return;)")
# These only save time or memory, or are for the compiler only.
WITHOUT_EFFECT = re.compile(r".*\breserve\(|.*\bshrink_to_fit\(|static_cast<void>|static_assert")

# Edits are (position, length, text), where {n} stands for the number of the first mutant.
Mutation = collections.namedtuple("Mutation", "first kind edits count")
Mutant = collections.namedtuple("Mutant", "number kind file line text")


def mask(text):
    """Returns the text with comments, preprocessor lines and what is quoted replaced by spaces;
    the quotes remain."""
    pattern = re.compile(
        r'//[^\n]*|/\*.*?\*/|^#[^\n]*|R?"(?:\((?s:.)*?\)|(?:\\.|[^"\\\n])*)"|'
        r"(?<!\d)'(?:\\.|[^'\\\n])+'", re.S | re.M)

    def blank(match):
        spaces = re.sub(r"[^\n]", " ", match[0])
        is_quoted = match[0][-1] in "\"'" and match[0][0] not in "/#"
        return match[0][0] + spaces[1:-1] + match[0][-1] if is_quoted else spaces
    return pattern.sub(blank, text)


def without_comments(text):
    """Returns the text without its comments."""
    pattern = re.compile(
        r'//[^\n]*|/\*.*?\*/|R?"(?:\((?s:.)*?\)|(?:\\.|[^"\\\n])*)"|'
        r"(?<!\d)'(?:\\.|[^'\\\n])+'", re.S)
    return pattern.sub(lambda match: " " if match[0][0] == "/" else match[0], text)


def closing(code, opening):
    """Returns the position of the parenthesis that closes the one at `opening`."""
    depth = 0
    for at in range(opening, len(code)):
        depth += {"(": 1, ")": -1}.get(code[at], 0)
        if depth == 0:
            return at
    raise ValueError("unbalanced parentheses")


def negations(code):
    for match in re.finditer(r"\b(?:if|while) \(", code):
        end = closing(code, match.end() - 1)
        if not re.search(r";|[^=!<>]=[^=]", code[match.end():end]):
            yield "negate", [(match.end(), 0, "Mutation::IsActive({n}) != static_cast<bool>("),
                             (end, 0, ")")], 1


def comparisons(code):
    for match in re.finditer(r" (<|<=|>|>=|==|!=) (?=\S)", code):
        name, count = COMPARISONS[match[1]]
        yield "compare", [(match.end() - 1, 0, f"Mutation::{name}<{{n}}>(){match[1]}")], count


def conditions(code):
    for match in re.finditer(r" (&&|\|\|) ?(?=\S|\n)", code):
        negation = "!" if match[1] == "&&" else ""
        yield "logic", [(match.start(), 0, f" {match[1]} {negation}Mutation::IsActive({{n}})")], 1


def sums(code):
    for match in re.finditer(r"(?<=[\w)\]\"']) ([+-]) (?=\S)", code):
        yield "sum", [(match.end() - 1, 0, f"Mutation::{SUMS[match[1]]}<{{n}}>(){match[1]}")], 1


def literals(code):
    for match in re.finditer(r"(?<![\w.'<])(\d+)(?![\w.'>])", code):
        value = int(match[1], 8 if match[1][0] == "0" else 10)
        other = 0 if value == 1 else value + 1
        yield "number", [(match.start(), len(match[1]),
                          f"(Mutation::IsActive({{n}}) ? {other} : {match[1]})")], 1
    for match in re.finditer(r"(?<![\w<])(true|false)\b(?!>)", code):
        yield "boolean", [(match.start(), len(match[1]),
                           f"(Mutation::IsActive({{n}}) != {match[1]})")], 1


def statements(code):
    for match in re.finditer(r"(?<=[{};]\n)( +)([^\s#}][^\n{}]*;) *(?=\n)", code):
        statement = match[2]
        is_statement = not NO_STATEMENT.match(statement) or JUMP.match(statement)
        if is_statement and not WITHOUT_EFFECT.match(statement):
            yield "delete", [(match.start(2), 0, "if (!Mutation::IsActive({n})) ")], 1


class Source:
    """The text of a source with its mutations, numbered from `first`."""

    def __init__(self, path, text, first):
        self.path = path
        self.text = text
        self.mutations = []
        self.first = first
        self.next = first
        self._starts = [0] + [match.end() for match in re.finditer(r"\n", text)]
        code = mask(text)
        for find in (negations, comparisons, conditions, sums, literals, statements):
            for kind, edits, count in find(code):
                if not self._is_constant(edits[0][0]):
                    self.mutations.append(Mutation(self.next, kind, edits, count))
                    self.next += count

    def _is_constant(self, position):
        line = self.line_of(position)
        return "constexpr" in self.text[self._starts[line - 1]:position]

    def offset(self, mutation):
        """Returns the number that a mutation would have if the numbers of its source began at 0."""
        return mutation.first - self.first

    def line_of(self, position):
        return bisect.bisect_right(self._starts, position)

    def mutants(self):
        for first, kind, edits, count in self.mutations:
            line = self.line_of(edits[0][0])
            text = self.text[self._starts[line - 1]:].split("\n", 1)[0].strip()
            for number in range(first, first + count):
                yield Mutant(number, kind, self.path, line, text)

    def mutated(self, header):
        """Returns the text with all mutants. Lines keep their numbers."""
        edits = sorted(((position, order, length, text.format(n=mutation.first))
                        for order, mutation in enumerate(self.mutations)
                        for position, length, text in mutation.edits), reverse=True)
        text = self.text
        for position, _, length, new in edits:
            text = text[:position] + new + text[position + length:]
        return f'#include "{header}"\n#line 1 "{self.path}"\n{text}'

    def keep(self, is_kept):
        """Removes the mutations for which `is_kept` is false. Returns whether there were any."""
        kept = [mutation for mutation in self.mutations if is_kept(mutation)]
        some = len(kept) != len(self.mutations)
        self.mutations = kept
        return some

    def remove_lines(self, lines):
        return self.keep(
            lambda mutation: lines.isdisjoint(self.line_of(edit[0]) for edit in mutation.edits))
