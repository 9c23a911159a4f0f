// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaObject.h"

/// Everything that a loaded tree declares, as plain values.
///
/// `ReadTree` makes the values from a live dispatcher. `WriteJson` and `ReadJson` store them and
/// pass them to other processes. The values keep nothing of the dispatcher alive and are compared
/// by value.
///
/// - A path consists of the names on the way from the root to a node, separated by a space:
/// "storage mount list".
/// - A plug-in is named by its file without folders: "host.so", "log.xml".
/// - Strings are valid UTF-8; other bytes of a declaration are replaced by `\xHH`. An empty string
/// means that nothing was declared.
namespace Kestrel::Catalog {

/// The plug-in of a node that comes from the library or from the program itself. No plug-in file
/// can have this name.
inline constexpr const char* kBuiltIn = "built-in";

/// The kind of a value in a result.
struct ValueKind {
  /// The kind of the value or, for a list, of its elements; never `List`.
  MetaObj::MetaType type = MetaObj::MetaType::String;
  bool isList = false;
};

/// One field of a declared result.
struct Field {
  /// The names of the fields from the root to this one, separated by full stops: "Usage.Free". A
  /// list of structures contributes only its name, no index.
  std::string path;
  ValueKind kind;
  /// The name of the structure or, for a list, of its structures; empty for other kinds.
  std::string typeName;
  std::string documentation;
};

/// The declared shape of a command's result.
struct Result {
  /// Nothing if the command declares no root value; the command can then never succeed.
  std::optional<ValueKind> kind;
  /// As in `Field`, for the root.
  std::string typeName;
  std::string description;
  /// The fields of the structure in byte order of their names, each followed by the fields inside
  /// it.
  std::vector<Field> fields;
};

/// A string that a parameter accepts.
struct AllowedValue {
  std::string value;
  std::string description;
};

/// A restriction on the values of a parameter beyond its kind. Only the members that belong to
/// `type` are meaningful; the others keep their initial values.
struct Constraint {
  CallSpec::ParameterConstraintType type = CallSpec::NoConstraint;
  /// The bounds of an IntRange, both included.
  std::int64_t minimum = 0;
  std::int64_t maximum = 0;
  /// The values of an IntEnum, in the declared order.
  std::vector<std::int64_t> integers;
  /// The values of a StringEnum, in the declared order.
  std::vector<AllowedValue> strings;
  /// The regular expression of a StringRegex, which must match the whole value.
  std::string expression;
  /// The constraint as worded in help pages and messages; empty for NoConstraint.
  std::string text;
};

/// A parameter of a command. The catalog omits the parameter `help`, which every command has.
struct Parameter {
  /// The long name, without dashes.
  std::string name;
  /// One character, or empty.
  std::string shortName;
  CallSpec::ParameterType kind = CallSpec::String;
  /// The description in help pages, with the constraint in place of %ENUM%, %REGEX% and %FULLENUM%.
  std::string description;
  bool required = false;
  /// Whether the value must not be visible while it is typed.
  bool secret = false;
  /// Whether the parameter may be repeated, each time with a value.
  bool multiple = false;
  Constraint constraint;
};

/// An example of how to call a command.
struct Example {
  /// The text after the command's path; may be empty.
  std::string arguments;
  std::string description;
};

struct Command {
  std::string path;
  /// The file that the command comes from, `kBuiltIn`, or empty if it cannot be determined.
  std::string plugin;
  std::string description;
  std::vector<Example> examples;
  std::map<std::string, std::string> metaData;
  /// The default formatter. Empty if the command names none; nothing is then printed by default.
  std::string formatter;
  std::map<std::string, std::string> formatParameters;
  /// In byte order of their names.
  std::vector<Parameter> parameters;
  Result result;
};

struct Namespace {
  std::string path;
  std::string description;
  /// The descriptors that declare the namespace or one below it, and the plug-ins of the commands
  /// below it, as far as these can be determined; in byte order.
  std::vector<std::string> plugins;
};

/// A node that could not be read at this path.
struct Fault {
  std::string path;
  /// As in `Command`.
  std::string plugin;
  /// The message of the exception that the declaration threw, or another reason.
  std::string text;
};

/// A whole tree except the root, which declares nothing. Each list is sorted by path in byte order.
/// No path occurs twice in `namespaces` and `commands`.
struct Tree {
  std::vector<Namespace> namespaces;
  std::vector<Command> commands;
  std::vector<Fault> faults;
};

/// Returns the command at a path, or null. The pointer is valid as long as the list does not
/// change.
const Command* FindCommand(const Tree& tree, const std::string& path);

/// Like FindCommand, for namespaces and faults.
const Namespace* FindNamespace(const Tree& tree, const std::string& path);
const Fault* FindFault(const Tree& tree, const std::string& path);

bool operator==(const ValueKind& left, const ValueKind& right);
bool operator==(const Field& left, const Field& right);
bool operator==(const Result& left, const Result& right);
bool operator==(const AllowedValue& left, const AllowedValue& right);
bool operator==(const Constraint& left, const Constraint& right);
bool operator==(const Parameter& left, const Parameter& right);
bool operator==(const Example& left, const Example& right);
bool operator==(const Command& left, const Command& right);
bool operator==(const Namespace& left, const Namespace& right);
bool operator==(const Fault& left, const Fault& right);
bool operator==(const Tree& left, const Tree& right);

}  // namespace Kestrel::Catalog
