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
/// `ReadTree` makes the values from a live dispatcher; `WriteJson` and `ReadJson` carry them to
/// another process or to a later day. They keep nothing of the dispatcher alive and compare by
/// value.
///
/// - A path is the words of a node from the root down, separated by a space: "storage mount list".
/// - A plug-in is named by its file without folders: "host.so", "log.xml".
/// - Strings are valid UTF-8; other bytes of a declaration are replaced by `\xHH`. An empty string
///   means that nothing was declared.
namespace Kestrel::Catalog {

/// The plug-in of a node that comes from the library or from the program itself. No file has this
/// name.
inline constexpr const char* kBuiltIn = "built-in";

/// The kind of a value that a result contains.
struct ValueKind {
  /// The kind of the value, or of each element when it is a list; never `List`.
  MetaObj::MetaType type = MetaObj::MetaType::String;
  bool isList = false;
};

/// One field of a declared result.
struct Field {
  /// The names of the fields that lead here, separated by full stops: "Usage.Free". The fields of
  /// the structures in a list are reached through the list's own name.
  std::string path;
  ValueKind kind;
  /// The name of the structure, or of those in the list; empty for other kinds.
  std::string typeName;
  std::string documentation;
};

/// The declared shape of a command's result.
struct Result {
  /// Nothing when the command declares no root value; it can then never succeed.
  std::optional<ValueKind> kind;
  /// As in `Field`, for the root.
  std::string typeName;
  std::string description;
  /// A structure's fields in byte order of their names, each followed by those within it.
  std::vector<Field> fields;
};

/// A string that a parameter accepts.
struct AllowedValue {
  std::string value;
  std::string description;
};

/// What narrows the values of a parameter beyond its kind. Only the members of `type` have a
/// meaning; the others are as they were made here.
struct Constraint {
  CallSpec::ParameterConstraintType type = CallSpec::NoConstraint;
  /// The bounds of an IntRange, both included.
  std::int64_t minimum = 0;
  std::int64_t maximum = 0;
  /// The values of an IntEnum, in the declared order.
  std::vector<std::int64_t> integers;
  /// The values of a StringEnum, in the declared order.
  std::vector<AllowedValue> strings;
  /// The regular expression of a StringRegex, which has to match the whole value.
  std::string expression;
  /// The constraint as help pages and messages say it; empty for NoConstraint.
  std::string text;
};

/// One parameter of a command. The parameter `help`, which every command has, is in no catalog.
struct Parameter {
  /// The long name, without dashes.
  std::string name;
  /// One character, or empty.
  std::string shortName;
  CallSpec::ParameterType kind = CallSpec::String;
  /// As help pages show it, with the constraint's text in place of its markers.
  std::string description;
  bool required = false;
  /// Whether the value is not to be seen while it is typed.
  bool secret = false;
  /// Whether the parameter may be repeated, each time with a value.
  bool multiple = false;
  Constraint constraint;
};

/// How a command is called to some end.
struct Example {
  /// What follows the command's path; empty when nothing does.
  std::string arguments;
  std::string description;
};

struct Command {
  std::string path;
  /// The file that brought the command, `kBuiltIn`, or empty when that cannot be found out.
  std::string plugin;
  std::string description;
  std::vector<Example> examples;
  std::map<std::string, std::string> metaData;
  /// The default formatter; empty when the command names none and so prints nothing by itself.
  std::string formatter;
  std::map<std::string, std::string> formatParameters;
  /// In byte order of their names.
  std::vector<Parameter> parameters;
  Result result;
};

struct Namespace {
  std::string path;
  std::string description;
  /// The plug-ins that declare the namespace or have a command below it, in byte order. Empty when
  /// nothing is below it and no descriptor declares it.
  std::vector<std::string> plugins;
};

/// A node whose declaration failed; the catalog has nothing else about it.
struct Fault {
  std::string path;
  /// As in `Command`.
  std::string plugin;
  /// What the declaration threw.
  std::string text;
};

/// A whole tree, but for the root, which declares nothing. Each list is in byte order of the paths;
/// no path is twice in the first two.
struct Tree {
  std::vector<Namespace> namespaces;
  std::vector<Command> commands;
  std::vector<Fault> faults;
};

/// The command at a path, or null. The pointer is good as long as the list is not changed.
const Command* FindCommand(const Tree& tree, const std::string& path);

/// The same for a namespace and for a fault.
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
