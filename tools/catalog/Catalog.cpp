// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/Catalog.h"

#include <algorithm>
#include <tuple>

namespace Kestrel::Catalog {

namespace {

/// Returns the element with that path in a list sorted by path, or null.
template <typename Element>
const Element* FindByPath(const std::vector<Element>& elements, const std::string& path) {
  const auto found = std::lower_bound(
      elements.begin(), elements.end(), path,
      [](const Element& element, const std::string& wanted) { return element.path < wanted; });
  return found != elements.end() && found->path == path ? &*found : nullptr;
}

// Lists the members of each struct in a single place, for all comparisons.
auto Members(const ValueKind& kind) { return std::tie(kind.type, kind.isList); }
auto Members(const Field& field) {
  return std::tie(field.path, field.kind, field.typeName, field.documentation);
}
auto Members(const Result& result) {
  return std::tie(result.kind, result.typeName, result.description, result.fields);
}
auto Members(const AllowedValue& value) { return std::tie(value.value, value.description); }
auto Members(const Constraint& constraint) {
  return std::tie(constraint.type, constraint.minimum, constraint.maximum, constraint.integers,
                  constraint.strings, constraint.expression, constraint.text);
}
auto Members(const Parameter& parameter) {
  return std::tie(parameter.name, parameter.shortName, parameter.kind, parameter.description,
                  parameter.required, parameter.secret, parameter.multiple, parameter.constraint);
}
auto Members(const Example& example) { return std::tie(example.arguments, example.description); }
auto Members(const Command& command) {
  return std::tie(command.path, command.plugin, command.description, command.examples,
                  command.metaData, command.formatter, command.formatParameters, command.parameters,
                  command.result);
}
auto Members(const Namespace& node) { return std::tie(node.path, node.description, node.plugins); }
auto Members(const Fault& fault) { return std::tie(fault.path, fault.plugin, fault.text); }
auto Members(const Tree& tree) { return std::tie(tree.namespaces, tree.commands, tree.faults); }

}  // namespace

const Command* FindCommand(const Tree& tree, const std::string& path) {
  return FindByPath(tree.commands, path);
}

const Namespace* FindNamespace(const Tree& tree, const std::string& path) {
  return FindByPath(tree.namespaces, path);
}

const Fault* FindFault(const Tree& tree, const std::string& path) {
  return FindByPath(tree.faults, path);
}

bool operator==(const ValueKind& left, const ValueKind& right) {
  return Members(left) == Members(right);
}
bool operator==(const Field& left, const Field& right) { return Members(left) == Members(right); }
bool operator==(const Result& left, const Result& right) { return Members(left) == Members(right); }
bool operator==(const AllowedValue& left, const AllowedValue& right) {
  return Members(left) == Members(right);
}
bool operator==(const Constraint& left, const Constraint& right) {
  return Members(left) == Members(right);
}
bool operator==(const Parameter& left, const Parameter& right) {
  return Members(left) == Members(right);
}
bool operator==(const Example& left, const Example& right) {
  return Members(left) == Members(right);
}
bool operator==(const Command& left, const Command& right) {
  return Members(left) == Members(right);
}
bool operator==(const Namespace& left, const Namespace& right) {
  return Members(left) == Members(right);
}
bool operator==(const Fault& left, const Fault& right) { return Members(left) == Members(right); }
bool operator==(const Tree& left, const Tree& right) { return Members(left) == Members(right); }

}  // namespace Kestrel::Catalog
