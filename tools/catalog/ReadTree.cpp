// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/ReadTree.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/NamespaceNode.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "tools/catalog/CatalogWords.h"
#include "tools/catalog/PluginOrigins.h"

namespace Kestrel::Catalog {

using AutoCli::CommandSpec;
using AutoCli::NamespaceNode;
using AutoCli::NodeType;
using CallSpec::InputSpec;
using CallSpec::OutputSpec;
using CallSpec::ParameterConstraint;
using CallSpec::ParameterSpec;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

/// The parameter that the library adds to every command.
constexpr const char* kHelp = "help";

/// Checks every byte without a branch for each.
bool IsAscii(const std::string& text) {
  unsigned bits = 0;
  for (const char c : text) {
    bits |= static_cast<unsigned char>(c);
  }
  return bits < 0x80;
}

/// Returns `text` as valid UTF-8. Converts it in pieces, because the library's check stops at a
/// NUL.
std::string Escaped(const std::string& text) {
  std::string escaped;
  std::size_t begin = 0;
  while (true) {
    const std::size_t end = std::min(text.find('\0', begin), text.size());
    escaped += MetaString::NewUtf8WithEscapes(text.substr(begin, end - begin))->GetValue();
    if (end == text.size()) {
      return escaped;
    }
    escaped += '\0';
    begin = end + 1;
  }
}

std::string ReadText(const std::string& text) { return IsAscii(text) ? text : Escaped(text); }

/// Returns an empty string for documentation that was never set, for which the library has a fixed
/// string.
std::string ReadDocumentation(const std::string& text) {
  return text == MetaStruct::_docMissingStaticString ? std::string() : ReadText(text);
}

std::map<std::string, std::string> ReadTexts(const std::map<std::string, std::string>& texts) {
  std::map<std::string, std::string> read;
  for (const auto& [name, value] : texts) {
    read.emplace_hint(read.end(), ReadText(name), ReadText(value));
  }
  return read;
}

/// Throws KestrelException if there is no word for the kind.
template <typename Kind>
const Kind& RequireKnown(const Kind& kind) {
  WordOf(kind);
  return kind;
}

AllowedValue ReadAllowedValue(const std::string& value, const ParameterConstraint& constraint) {
  const auto& descriptions = constraint.GetStringEnumWithDesc();
  const auto found = descriptions.find(value);
  return {ReadText(value), found == descriptions.end() ? "" : ReadText(found->second)};
}

Constraint ReadConstraint(const ParameterConstraint& declared) {
  Constraint constraint;
  constraint.type = RequireKnown(declared.GetType());
  constraint.text = ReadText(declared.ToString());
  switch (constraint.type) {
    case CallSpec::NoConstraint:
      break;
    case CallSpec::IntRange:
      declared.GetIntRange(constraint.minimum, constraint.maximum);
      break;
    case CallSpec::IntEnum:
      constraint.integers = declared.GetIntEnum();
      break;
    case CallSpec::StringEnum:
      constraint.strings.reserve(declared.GetStringEnum().size());
      for (const std::string& value : declared.GetStringEnum()) {
        constraint.strings.push_back(ReadAllowedValue(value, declared));
      }
      break;
    case CallSpec::StringRegex:
      constraint.expression = ReadText(declared.GetStringRegex());
      break;
  }
  return constraint;
}

Parameter ReadParameter(const ParameterSpec& declared) {
  Parameter parameter;
  parameter.name = declared.GetName();
  parameter.shortName = declared.GetShortName();
  parameter.kind = RequireKnown(declared.GetParameterType());
  parameter.description = ReadText(declared.GetDescription(true));
  parameter.required = declared.IsRequired();
  parameter.secret = declared.IsSecret();
  parameter.multiple = declared.AllowMultiple();
  if (declared.GetConstraint() != nullptr) {
    parameter.constraint = ReadConstraint(*declared.GetConstraint());
  }
  return parameter;
}

std::vector<Parameter> ReadParameters(CommandSpec& command) {
  const std::shared_ptr<InputSpec> spec = command.GetInputSpec();
  std::vector<Parameter> parameters;
  parameters.reserve(spec->GetParameters().size());
  for (const std::shared_ptr<ParameterSpec>& declared : spec->GetParameters()) {
    if (declared->GetName() != kHelp) {
      parameters.push_back(ReadParameter(*declared));
    }
  }
  return parameters;
}

/// The kind of a value and, for a structure or a list of structures, that structure.
struct Shape {
  ValueKind kind;
  std::shared_ptr<const MetaStruct> structure;
};

/// Returns the shape of a value. Checks the class of the value only if its kind is structure or
/// list.
Shape ReadShape(const std::shared_ptr<MetaObject>& value) {
  Shape shape;
  shape.kind.type = value->GetType();
  if (shape.kind.type == MetaType::Struct) {
    shape.structure = std::dynamic_pointer_cast<const MetaStruct>(value);
  } else if (const auto* const list = shape.kind.type == MetaType::List
                                          ? dynamic_cast<const MetaList*>(value.get())
                                          : nullptr) {
    shape.kind = {list->GetListType(), true};
    shape.structure = list->GetListStructure();
  }
  RequireKnown(shape.kind);
  return shape;
}

std::string TypeNameOf(const Shape& shape) {
  return shape.structure != nullptr ? shape.structure->GetTypeName() : "";
}

void AddFields(const std::shared_ptr<const MetaStruct>& structure, const std::string& prefix,
               std::vector<Field>& fields) {
  if (structure == nullptr) {
    return;
  }
  const std::vector<std::string> names = structure->GetFieldNames();
  fields.reserve(fields.size() + names.size());
  for (const std::string& name : names) {
    const Shape shape = ReadShape(structure->GetField(name));
    const std::string path = prefix + ReadText(name);
    fields.push_back({path, shape.kind, TypeNameOf(shape),
                      ReadDocumentation(structure->GetFieldDocumentation(name))});
    AddFields(shape.structure, path + ".", fields);
  }
}

Result ReadResult(const OutputSpec& declared) {
  Result result;
  result.description = ReadDocumentation(declared.GetDescription());
  const std::shared_ptr<MetaObject> root = declared.GetRootObject();
  if (root == nullptr) {
    return result;
  }
  const Shape shape = ReadShape(root);
  result.kind = shape.kind;
  result.typeName = TypeNameOf(shape);
  AddFields(shape.structure, "", result.fields);
  return result;
}

constexpr std::string_view kExamplePrefix = "example:";
constexpr std::string_view kFieldPrefix = "field:";
constexpr const char* kResultName = "result";

/// Removes `prefix` from `text`; returns false if `text` does not begin with it.
bool TakePrefix(std::string_view prefix, std::string& text) {
  if (text.compare(0, prefix.size(), prefix) != 0) {
    return false;
  }
  text.erase(0, prefix.size());
  return true;
}

void Document(const std::string& path, const std::string& documentation,
              std::vector<Field>& fields) {
  for (Field& field : fields) {
    if (field.path == path && field.documentation.empty()) {
      field.documentation = documentation;
    }
  }
}

/// Adds the examples and the documentation of the result that are in the meta-data of a command,
/// because a descriptor can contain them nowhere else. Documentation that the command itself
/// declares takes precedence; examples are added to its own.
void ApplyMetaData(Command& command) {
  for (const auto& [key, value] : command.metaData) {
    std::string name = key;
    if (TakePrefix(kExamplePrefix, name)) {
      command.examples.push_back({name, value});
    } else if (TakePrefix(kFieldPrefix, name)) {
      Document(name, value, command.result.fields);
    } else if (name == kResultName && command.result.description.empty()) {
      command.result.description = value;
    }
  }
}

/// Calls `read` and returns the message of the exception that it throws; nothing if it succeeds.
template <typename Read>
std::optional<std::string> CatchFault(Read read) {
  try {
    read();
    return std::nullopt;
  } catch (const std::exception& error) {
    return ReadText(error.what());
  } catch (...) {
    return "An exception that is no std::exception";
  }
}

template <typename Element>
void SortByPath(std::vector<Element>& elements) {
  std::stable_sort(elements.begin(), elements.end(), [](const Element& left, const Element& right) {
    return left.path < right.path;
  });
}

/// Walks the tree from the root down and builds each path from the names on the way. Nodes are not
/// asked for their paths, because a node may have been registered again below another parent.
class TreeWalk {
 public:
  explicit TreeWalk(const AutoCli::Dispatcher& dispatcher) : origins_(dispatcher) {}

  Tree Run(NamespaceNode& root) {
    Names plugins;
    VisitChildren(root, root.GetNamespaceNodes(), "", plugins);
    SortByPath(tree_.namespaces);
    SortByPath(tree_.commands);
    SortByPath(tree_.faults);
    return std::move(tree_);
  }

 private:
  using Nodes = std::vector<std::shared_ptr<NamespaceNode>>;
  using Names = std::set<std::string>;

  /// Adds the plug-ins that are found below the node to `plugins`.
  void VisitChildren(const NamespaceNode& node, const Nodes& children, const std::string& prefix,
                     Names& plugins) {
    above_.push_back(&node);
    for (const std::shared_ptr<NamespaceNode>& child : children) {
      if (child != nullptr) {
        Visit(*child, prefix + child->GetName(), plugins);
      }
    }
    above_.pop_back();
  }

  void Visit(NamespaceNode& node, const std::string& path, Names& plugins) {
    if (std::find(above_.begin(), above_.end(), &node) != above_.end()) {
      AddFault(node, path, "The namespace is below itself");
    } else if (!paths_.insert(path).second) {
      AddFault(node, path, "Another node has the same path");
    } else if (node.GetType() == NodeType::Command) {
      VisitCommand(node, path, plugins);
    } else {
      VisitNamespace(node, path, plugins);
    }
  }

  void VisitCommand(NamespaceNode& node, const std::string& path, Names& plugins) {
    const std::string plugin = FindPlugin(node, path);
    if (!plugin.empty()) {
      plugins.insert(plugin);
    }
    auto* const command = dynamic_cast<CommandSpec*>(&node);
    if (command == nullptr) {
      AddFault(node, path, "The node has the type of a command but is none");
      return;
    }
    const std::optional<std::string> fault = CatchFault([&] {
      Command read = ReadCommand(*command, path);
      read.plugin = plugin;
      tree_.commands.push_back(std::move(read));
    });
    if (fault.has_value()) {
      AddFault(node, path, *fault);
    }
  }

  void VisitNamespace(NamespaceNode& node, const std::string& path, Names& plugins) {
    Nodes children;
    const std::optional<std::string> fault =
        CatchFault([&] { children = node.GetNamespaceNodes(); });
    if (fault.has_value()) {
      AddFault(node, path, *fault);
      return;
    }
    Names below;
    for (const Plugin* const descriptor : origins_.FindDescriptors(path)) {
      below.insert(descriptor->file);
    }
    VisitChildren(node, children, path + " ", below);
    tree_.namespaces.push_back(
        {path, ReadText(node.GetDescription()), {below.begin(), below.end()}});
    plugins.insert(below.begin(), below.end());
  }

  std::string FindPlugin(const NamespaceNode& node, const std::string& path) {
    const Plugin* const plugin = origins_.FindPlugin(node, path);
    return plugin != nullptr ? ReadText(plugin->file) : "";
  }

  void AddFault(const NamespaceNode& node, const std::string& path, const std::string& text) {
    tree_.faults.push_back({path, FindPlugin(node, path), text});
  }

  PluginOrigins origins_;
  Tree tree_;
  std::vector<const NamespaceNode*> above_;
  Names paths_;
};

}  // namespace

Tree ReadTree(const AutoCli::Dispatcher& dispatcher) {
  return TreeWalk(dispatcher).Run(*dispatcher.GetRootNamespace());
}

Command ReadCommand(CommandSpec& command, const std::string& path) {
  Command read;
  read.path = path;
  read.description = ReadText(command.GetDescription());
  read.examples.reserve(command.GetExamples().size());
  for (const auto& [arguments, description] : command.GetExamples()) {
    read.examples.push_back({ReadText(arguments), ReadText(description)});
  }
  read.metaData = ReadTexts(command.GetMetaData());
  const AutoCli::FormatParameters format = command.GetDefaultOutputFormatParameters();
  read.formatter = ReadText(format.GetFormatter());
  read.formatParameters = ReadTexts(format.GetParameters());
  read.parameters = ReadParameters(command);
  read.result = ReadResult(*command.GetOutputSpec());
  ApplyMetaData(read);
  return read;
}

}  // namespace Kestrel::Catalog
