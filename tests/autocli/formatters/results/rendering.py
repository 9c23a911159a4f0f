# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0

"""A second implementation of the formatters, independent of the library.

Each renderer takes the root value, the parameters and the width of the screen. It returns the text
and the message of the exception that ends the formatting, or "" when there is none.
"""

import re

from values import Lie, List, Struct, kind_of

MISREAD = {"Bool": b"Error reading a bool", "Int": b"Error reading a int",
           "String": b"Error reading a string",
           "Struct": b"Error reading a struct from output.", "List": b"Error reading a List"}


class OutsideContract(Exception):
    """Raised when the documentation does not say what is printed."""


def indent(level):
    return b"   " * max(level, 0)


def to_string(value):
    """Returns what ToString returns for the value."""
    if isinstance(value, Lie):
        return value.text
    if isinstance(value, bool):
        return b"true" if value else b"false"
    if isinstance(value, int):
        return b"%d" % value
    if isinstance(value, Struct):
        fields = [b"'" + name + b"' => '" + to_string(field) + b"', "
                  for name, field in value.fields]
        return b"{" + b"".join(fields) + b"}"
    if isinstance(value, List):
        return b", ".join(to_string(item) for item in value.items)
    return value


# --- xml ---

LIST_WORDS = {"Bool": b"boolean", "Int": b"integer", "String": b"string", "Struct": b"structure",
              "List": b"list"}


def xml_escape(text):
    for char, entity in [(b"&", b"&amp;"), (b"<", b"&lt;"), (b">", b"&gt;"), (b"%", b"&#37;"),
                         (b'"', b"&quot;"), (b"'", b"&apos;")]:
        text = text.replace(char, entity)
    return text


def xml_value(value, level):
    margin = indent(level)
    if value is None or kind_of(value) is None:
        return b"Error Only simple int, bool, string and struct output supported\n"
    if isinstance(value, Lie):
        text = MISREAD[value.kind]
        return (b"<!-- " + text + b" -->\n") if value.kind == "Bool" else text + b"\n"
    if isinstance(value, bool):
        return margin + b"<boolean>" + to_string(value) + b"</boolean>\n"
    if isinstance(value, int):
        return margin + b"<integer>" + to_string(value) + b"</integer>\n"
    if isinstance(value, bytes):
        return margin + b"<string>" + xml_escape(value) + b"</string>\n"
    if isinstance(value, Struct):
        text = margin + b'<structure typeName="' + xml_escape(value.type_name) + b'">\n'
        for name, field in value.fields:
            text += margin + b'   <field name="' + xml_escape(name) + b'">\n'
            text += xml_value(field, level + 2) + margin + b"   </field>\n"
        return text + margin + b"</structure>\n"
    text = margin + b'<list type="' + LIST_WORDS[value.kind] + b'">\n'
    return text + b"".join(xml_value(item, level + 2) for item in value.items) + margin + b"</list>\n"


def xml(root, params, _width):
    text = b'<?xml version="1.0"?>\n'
    if b"stylesheet" in params:
        text += b'<?xml-stylesheet type="text/xsl" href="' + params[b"stylesheet"] + b'"?>\n'
    text += b'<output xmlns:vexil="urn:norvane:vexil:output:1.0">\n   <meta-data>\n'
    for key, value in sorted(params.items()):
        text += (b'      <meta-data-field name="' + xml_escape(key) + b'" value="' +
                 xml_escape(value) + b'"/>\n')
    text += b"   </meta-data>\n   <root>\n" + xml_value(root, 2)
    return text + b"   </root>\n</output>\n", ""


# --- json ---

JSON_NAMED = {8: b"\\b", 9: b"\\t", 10: b"\\n", 12: b"\\f", 13: b"\\r", ord('"'): b'\\"',
              ord("\\"): b"\\\\", ord("/"): b"\\/"}
JSON_BYTES = [JSON_NAMED.get(byte) or (bytes([byte]) if 32 <= byte <= 126 else b"\\u%04x" % byte)
              for byte in range(256)]


def json_value(value, level):
    margin = indent(level)
    if value is None or kind_of(value) is None:
        return b"Unknown data type\n"
    if isinstance(value, Lie):
        return MISREAD[value.kind] + b"\n"
    if isinstance(value, (bool, int)):
        return to_string(value)
    if isinstance(value, bytes):
        return b'"' + b"".join(JSON_BYTES[byte] for byte in value) + b'"'
    if isinstance(value, Struct):
        opening, closing = b"{", b"}"
        parts = [margin + b'   "' + name + b'": ' + json_value(field, level + 2)
                 for name, field in value.fields]
        separator = b",\n"
    else:
        opening, closing = b"[", b"]"
        parts = [margin + json_value(item, level + 3) for item in value.items]
        separator = b", \n"
    last = b"\n" if parts else b""
    return (b"\n" + margin + opening + b"\n" + separator.join(parts) + last + margin + closing)


def json(root, _params, _width):
    return json_value(root, -1) + b"\n", ""


# --- python ---

class PythonNull(Exception):
    pass


def python_value(value):
    if value is None:
        raise PythonNull
    if isinstance(value, Lie):
        return MISREAD.get(value.kind, b"Unknown data type") + b"\n"
    if isinstance(value, bool):
        return b"True" if value else b"False"
    if isinstance(value, int):
        return to_string(value)
    if isinstance(value, bytes):
        return b'"""' + value.replace(b'"', b'\\"').replace(b"\n", b"\\n") + b'"""'
    if isinstance(value, Struct):
        return b"{" + b"".join(b'"' + name + b'": ' + python_value(field) + b", "
                               for name, field in value.fields) + b"}"
    return b"[" + b"".join(python_value(item) + b", " for item in value.items) + b"]"


def python(root, _params, _width):
    try:
        return python_value(root) + b"\n", ""
    except PythonNull:
        return b"", "Invalid MetaObject passed to Format in PythonFormatter"


# --- what simple and table share ---

def split_list(text):
    pieces = text.split(b",")
    return pieces[:-1] if pieces[-1] == b"" else pieces


def print_with(pattern, value):
    """Returns what C's snprintf writes, or None when the pattern does not fit the value."""
    pieces = re.split(rb"(%%|%[-0-9.]*(?:ld|d|s))", pattern)
    text = b""
    for number, piece in enumerate(pieces):
        if number % 2 == 0:
            text += piece
        elif piece == b"%%":
            text += b"%"
        elif piece.endswith(b"s"):
            if not isinstance(value, bytes):
                return None
            text += piece % value.split(b"\0")[0]
        else:
            if not isinstance(value, int):
                return None
            if piece == b"%d":  # prints only the low 32 bits
                value = (value + 2**31) % 2**32 - 2**31
            text += piece.replace(b"ld", b"d") % value
    return text


def format_field(type_name, field_name, value, params):
    key = type_name + b"." + field_name
    text = to_string(value)
    if b"printf:" + key in params:
        if isinstance(value, Lie):
            raise OutsideContract
        pattern = params[b"printf:" + key]
        text = b"" if isinstance(value, (Struct, List)) else print_with(pattern, value)
        if text is None:
            return (b"Error while handling formatting parameter printf:" + key +
                    b".  Unable to format field: Invalid argument")
    if b"units:" + key in params:
        text += b" " + params[b"units:" + key]
    return text


# --- simple ---

def simple_value(value, params, level):
    if value is None or kind_of(value) is None:
        return b""
    if isinstance(value, Lie):
        return MISREAD[value.kind] + b"\n"
    if isinstance(value, Struct):
        return simple_struct(value, params, level)
    if isinstance(value, List) and value.kind in ("Struct", "List"):
        return b"".join(b"\n" + simple_value(item, params, level + 1)
                        for item in value.items) + b"\n"
    return to_string(value) + b"\n"


def simple_header(structure, params):
    if b"header:" + structure.type_name not in params:
        return structure.type_name
    header = params[b"header:" + structure.type_name]
    marker = re.fullmatch(rb".*%(.+)%.*", header, re.DOTALL)
    fields = dict(structure.fields)
    if marker and marker.group(1) in fields:
        name = marker.group(1)
        return header.replace(b"%" + name + b"%", to_string(fields[name]))
    return header


def simple_struct(structure, params, level):
    fields = dict(structure.fields)
    names = list(fields)
    for key in (b"fields:" + structure.type_name, b"fields"):
        if key in params:
            names = split_list(params[key])
            break
    aligned = max(map(len, names), default=0) if params.get(b"align-fields") == b"true" else 0
    header = simple_header(structure, params)
    text = b"" if header == b"<NONE>" else indent(level) + header + b":\n"
    for name in names:
        if name not in fields:
            return text + b"Error getting field " + name + b"\n"
        text += indent(level) + b"   " + name.ljust(aligned) + b": "
        value = fields[name]
        if kind_of(value) == "Struct":
            text += b"\n" + simple_value(value, params, level + 2)
        elif kind_of(value) == "List":
            text += simple_value(value, params, level + 2)
        else:
            text += format_field(structure.type_name, name, value, params) + b"\n"
    return text


def simple(root, params, _width):
    return simple_value(root, params, -1 if isinstance(root, List) else 0), ""


# --- table ---

def split_drop_last(text, separator):
    pieces = text.split(separator)
    return pieces[:-1] if pieces[-1] == b"" else pieces


def fit_line(text, margin, width, skip_margin):
    start = b"" if skip_margin else b" " * max(margin, 1)
    if width <= margin or len(text) <= width - margin:
        return start + text
    available = remaining = width - margin
    result = start
    for number, word in enumerate(split_drop_last(text, b" ")):
        remaining -= len(word) + 1
        if remaining < 0:
            result += b" \n" + b" " * max(margin, 1) + word
            remaining = available - (len(word) + 1)
        else:
            result += (b" " if number else b"") + word
    return result


def fit_lines(text, margin, width):
    lines = split_drop_last(text, b"\n")
    return b"\n".join(fit_line(line, margin, width, number == 0)
                      for number, line in enumerate(lines))


def sub_field(structure, path):
    current, value = structure, None
    for piece in path.split(b"."):
        if current is None:
            raise OutsideContract  # a step through a scalar
        value = dict(current.fields).get(piece)
        if value is not None:
            current = value if isinstance(value, Struct) else None
    return value


def table_columns(shape, params):
    for key in (b"fields:" + shape.type_name, b"fields", b"table-columns"):
        if key in params:
            names = split_list(params[key])
            break
    else:
        names = shape.names
    return [name.strip(b" \t\f\v\n\r") for name in names]


def table_header(columns, widths, params):
    flag = params.get(b"show-header") or params.get(b"table-header", b"")
    if flag == b"false" or not columns:
        return b""
    *others, last = columns
    text = b"".join(name.ljust(widths[name]) for name in others) + last + b"\n"
    if params.get(b"header-line") == b"false":
        return text
    return text + b"".join(b"-" * (widths[name] - 2) + b"  " for name in others) + \
        b"-" * len(last) + b"\n"


def wrap_indent(columns, widths, params, width):
    if params.get(b"wrap-last") != b"true" or width == 0 or not columns:
        return 0
    last = columns[-1]
    margin = sum(widths[name] for name in columns if name != last)
    return 0 if margin + len(last) > width else margin


def table(root, params, width):
    if not isinstance(root, List) or root.kind != "Struct":
        return b"", "Error: Unexpected type for output, formatter, table, expected a List of structs"
    if root.shape is None:
        return b"", "Error: Unable to get structure type from list output." if root.items else ""
    columns = table_columns(root.shape, params)
    widths = {name: len(name) + 2 for name in columns}
    for structure in root.items:
        for name in columns:
            value = sub_field(structure, name)
            if value is None:
                return b"Error: Unknown field in field list: " + name + b"\n", ""
            text = format_field(structure.type_name, name, value, params)
            widths[name] = max(widths[name], len(text) + 2)
    result = table_header(columns, widths, params)
    margin = wrap_indent(columns, widths, params, width)
    for structure in root.items:
        result += table_row(structure, columns, widths, params, margin, width) + b"\n"
    return result, ""


def table_row(structure, columns, widths, params, margin, width):
    row = b""
    for number, name in enumerate(columns):
        value = sub_field(structure, name)
        is_last = number == len(columns) - 1
        if margin and name == columns[-1]:
            row += fit_lines(to_string(value), margin, width)
            continue
        text = format_field(structure.type_name, name, value, params)
        if kind_of(value) == "Int":
            row += text.rjust(widths[name] - 2) + b"  "
        else:
            row += text if is_last else text.ljust(widths[name])
    return row


RENDERERS = {"table": table, "simple": simple, "xml": xml, "python": python, "json": json}
