// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/XmlPlugin.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "autocli/descriptors/XmlDocument.h"
#include "autocli/descriptors/XmlNode.h"
#include "autocli/text/LeadingInteger.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/XmlUtil.h"

namespace Kestrel::AutoCli {

using CallSpec::InputSpec;
using CallSpec::OutputSpec;
using CallSpec::ParameterConstraint;
using CallSpec::ParameterConstraintType;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;

namespace {

/// Calls `handle` with each child of that name, in document order.
template <typename Handler>
void ForEachChild(const xmlNode* node, const char* name, Handler handle) {
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (IsNamed(child, name)) {
      handle(child);
    }
  }
}

/// A device or a pipe would hold up the start; a path that names nothing is the parser's to report.
bool IsReadableFile(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

XmlDocument ParseDescriptor(const std::string& path) {
  LIBXML_TEST_VERSION
  XmlDocument document(IsReadableFile(path) ? xmlReadFile(path.c_str(), nullptr, 0) : nullptr);
  if (document == nullptr) {
    throw KestrelException("Unable to parse XML descriptor: " + path);
  }
  return document;
}

const xmlNode* RequireChild(const xmlNode* command, const char* name) {
  const xmlNode* child = XmlUtil_FindChildNode(command, name);
  if (child == nullptr) {
    throw KestrelException("Unable to find <" + std::string(name) +
                           "> element, which is required for a command.");
  }
  return child;
}

struct ParameterTypeWord {
  const char* word;
  ParameterType type;
};

constexpr ParameterTypeWord kParameterTypes[] = {
    {"string", ParameterType::String}, {"string-list", ParameterType::StringList},
    {"bool", ParameterType::Bool},     {"bool-list", ParameterType::BoolList},
    {"int", ParameterType::Int},       {"int-list", ParameterType::IntList},
    {"flag", ParameterType::Flag},
};

/// The entry of a type's word, or null.
const ParameterTypeWord* FindParameterType(const std::string& word) {
  for (const ParameterTypeWord& entry : kParameterTypes) {
    if (word == entry.word) {
      return &entry;
    }
  }
  return nullptr;
}

bool IsBooleanWord(const std::string& word) { return word == "true" || word == "false"; }

/// A `parameter` element, as it is written.
struct ParameterElement {
  explicit ParameterElement(const xmlNode* node)
      : name(XmlUtil_ExtractAttribute(node, "name")),
        type(XmlUtil_ExtractAttribute(node, "type")),
        required(XmlUtil_ExtractAttribute(node, "required")),
        secret(XmlUtil_ExtractAttribute(node, "secret")),
        shortName(XmlUtil_ExtractAttribute(node, "shortname")),
        description(XmlUtil_GetContentForChildByTag(node, "description")) {
    if (secret.empty()) {
      secret = "false";
    }
  }

  std::string name;
  std::string type;
  std::string required;
  std::string secret;
  std::string shortName;
  std::string description;
};

void CheckParameter(const ParameterElement& parameter) {
  if (parameter.name.empty()) {
    throw KestrelException("Unable to parse Input Parameter.  Missing required attribute: 'name'");
  }
  if (FindParameterType(parameter.type) == nullptr) {
    throw KestrelException("Unable to parse Input Parameter " + parameter.name +
                           ". Missing or invalid required attribute: 'type'.  Must be one of "
                           "[string, string-list, bool, bool-list, int, int-list]");
  }
  // Spelled so from here on: scripts match these texts.
  const auto refuse = [&parameter](const std::string& reason) {
    throw KestrelException("Unable to parse Input Paramter " + parameter.name + reason);
  };
  if (!IsBooleanWord(parameter.required)) {
    refuse(". Missing or invalid 'required', must be one of ['true', 'false']");
  }
  if (parameter.description.empty()) {
    refuse(". Missing command description");
  }
  if (!IsBooleanWord(parameter.secret)) {
    refuse(". Invalid 'secret', must be one of ['true', 'false']");
  }
  if (parameter.secret == "true" && parameter.type != "string") {
    refuse(". Invalid type " + parameter.type + " for secret, must be 'string'");
  }
}

void SetConstraint(const xmlNode* constraint, ParameterSpec& parameter) {
  std::shared_ptr<ParameterConstraint> built;
  try {
    built = ExtractParamConstraint(constraint);
  } catch (const KestrelException& error) {
    throw KestrelException("Unable to build parameter constraint for parameter " +
                           parameter.GetName() + ".  Error was: " + error.what());
  }
  parameter.SetConstraint(built);
}

std::shared_ptr<ParameterConstraint> MakeStringEnum(const xmlNode* node) {
  auto constraint = ParameterConstraint::New(ParameterConstraintType::StringEnum);
  for (const std::string& value : ExtractEnum(node)) {
    constraint->AddStringEnum(value);
  }
  return constraint;
}

std::shared_ptr<ParameterConstraint> MakeIntEnum(const xmlNode* node) {
  auto constraint = ParameterConstraint::New(ParameterConstraintType::IntEnum);
  for (const std::string& value : ExtractEnum(node)) {
    std::int64_t number = 0;
    if (!ReadLeadingInteger(value, number)) {
      throw KestrelException("Error parsing integer enumeration. Expected integer, but got " +
                             value);
    }
    constraint->AddIntEnum(number);
  }
  return constraint;
}

std::shared_ptr<ParameterConstraint> MakeRegex(const xmlNode* node) {
  const std::string expression = XmlUtil_GetContent(node);
  if (expression.empty()) {
    throw KestrelException(
        "Error parsing regex from parameter constraint.Missing or empty 'regex' tag");
  }
  auto constraint = ParameterConstraint::New(ParameterConstraintType::StringRegex);
  constraint->SetStringRegex(expression);
  return constraint;
}

std::shared_ptr<ParameterConstraint> MakeRange(const xmlNode* node) {
  std::int64_t minimum = 0;
  std::int64_t maximum = 0;
  if (!ReadLeadingInteger(XmlUtil_ExtractAttribute(node, "min"), minimum) ||
      !ReadLeadingInteger(XmlUtil_ExtractAttribute(node, "max"), maximum)) {
    throw KestrelException(
        "Error parsing 'range' parameter constraint.  Range requires both 'min' and 'max' "
        "attributes and that both are integers.");
  }
  auto constraint = ParameterConstraint::New(ParameterConstraintType::IntRange);
  constraint->SetIntRange(minimum, maximum);
  return constraint;
}

/// How each type of constraint is written and made.
struct ConstraintWord {
  const char* word;
  const char* childName;
  std::shared_ptr<ParameterConstraint> (*make)(const xmlNode*);
};

constexpr ConstraintWord kConstraints[] = {
    {"stringenum", "enum", MakeStringEnum},
    {"intenum", "enum", MakeIntEnum},
    {"regex", "regex", MakeRegex},
    {"range", "range", MakeRange},
};

const ConstraintWord& FindConstraint(const std::string& word) {
  for (const ConstraintWord& entry : kConstraints) {
    if (word == entry.word) {
      return entry;
    }
  }
  throw KestrelException(
      "Missing or invalid constraint 'type', must be one of [stringenum, intenum, regex, range] "
      "got '" +
      word + "'");
}

bool IsNamespace(const std::shared_ptr<NamespaceNode>& node) {
  return node->GetType() == NodeType::Namespace;
}

/// The node at a path of the tree, or null when it leads nowhere: that is the rule here, and asking
/// costs less than an exception from ResolveNode.
std::shared_ptr<NamespaceNode> FindRegistered(const std::shared_ptr<Namespace>& root,
                                              const std::list<std::string>& words) {
  std::shared_ptr<NamespaceNode> node = root;
  for (const std::string& word : words) {
    if (!node->HasNamespaceNode(word)) {
      return nullptr;
    }
    node = node->GetNamespaceNode(word);
  }
  return node;
}

void RefuseTaken(const std::string& path, const std::shared_ptr<NamespaceNode>& node,
                 const std::shared_ptr<Namespace>& root) {
  const std::list<std::string> words = XmlPlugin::SplitPath(path);
  const std::shared_ptr<NamespaceNode> registered = FindRegistered(root, words);
  if (registered == nullptr) {
    return;
  }
  if (words.size() != 1 || !IsNamespace(registered) || !IsNamespace(node)) {
    throw KestrelException("Vexil path is already registered: " + path);
  }
  if (registered->GetDescription() != node->GetDescription()) {
    throw KestrelException("Duplicate top-level namespaces must have the same description: " +
                           path);
  }
}

/// Whether a top-level namespace is there already, to be shared.
bool IsShared(const std::shared_ptr<NamespaceNode>& registered,
              const std::shared_ptr<NamespaceNode>& node) {
  return registered != nullptr && IsNamespace(registered) && IsNamespace(node) &&
         registered->GetDescription() == node->GetDescription();
}

void Insert(const std::string& path, const std::shared_ptr<NamespaceNode>& node,
            const std::shared_ptr<Namespace>& root) {
  std::list<std::string> words = XmlPlugin::SplitPath(path);
  const std::string name = words.empty() ? std::string() : std::move(words.back());
  if (!words.empty()) {
    words.pop_back();
  }
  const std::shared_ptr<NamespaceNode> parent = words.empty() ? root : root->ResolveNode(words);
  const std::shared_ptr<NamespaceNode> registered = parent->GetNamespaceNode(name);
  if (parent != root || !IsShared(registered, node)) {
    parent->RegisterNamespaceNode(node, name);
  }
}

}  // namespace

std::shared_ptr<XmlPlugin> XmlPlugin::New(const std::string& path) {
  return std::make_shared<XmlPlugin>(path, ConstructionKey());
}

XmlPlugin::XmlPlugin(const std::string& path, ConstructionKey) : path_(path) {}
XmlPlugin::~XmlPlugin() = default;

void XmlPlugin::Initialize() {
  try {
    const XmlDocument document = ParseDescriptor(path_);
    ReadRoot(xmlDocGetRootElement(document.get()));
  } catch (const KestrelException& error) {
    throw KestrelException("Unable to handle XML Plugin " + path_ +
                           ".  There was an error while parsing: " + error.what());
  }
}

void XmlPlugin::ReadRoot(const xmlNode* root) {
  if (XmlUtil_GetContentForChildByTag(root, "version") != "1.0.0") {
    throw KestrelException("Unknown vexil extention version.  Valid versions are: '1.0.0'");
  }
  const xmlNode* namespaces = XmlUtil_FindChildNode(root, "namespaces");
  if (namespaces != nullptr) {
    AddNamespaces(namespaces);
  }
  const xmlNode* commands = XmlUtil_FindChildNode(root, "commands");
  if (commands != nullptr) {
    AddCommands(commands);
  }
  if (namespaces == nullptr && commands == nullptr) {
    throw KestrelException("Unable to find any namespaces or commands to register for plugin " +
                           path_);
  }
}

const std::string& XmlPlugin::GetName() const { return path_; }

void XmlPlugin::RegisterNamespaces(std::shared_ptr<Namespace> root) {
  // Everything is looked at before anything is inserted.
  for (const auto& [path, node] : registrations_) {
    if (path.empty()) {
      throw KestrelException("Invalid NULL registration found in XML plugin: " + path_ +
                             " all namespaces and commands must have a valid 'path' field");
    }
    if (node == nullptr) {
      throw KestrelException("Invalid null node: " + path);
    }
    RefuseTaken(path, node, root);
  }
  for (const auto& [path, node] : registrations_) {
    Insert(path, node, root);
  }
}

bool XmlPlugin::HasFormatter(const std::string&) { return false; }

std::shared_ptr<Formatter> XmlPlugin::GetFormatter(const std::string&) {
  // Spelled so: scripts match this text.
  throw KestrelException("Xml Plugin doesn't not support formatters");
}

const std::vector<std::shared_ptr<Formatter>>& XmlPlugin::GetFormatters() {
  static const std::vector<std::shared_ptr<Formatter>> none;
  return none;
}

std::list<std::string> XmlPlugin::SplitPath(const std::string& path) {
  std::list<std::string> words;
  std::size_t begin = 0;
  // What stands behind the last full stop counts only when it is not empty.
  while (begin < path.size()) {
    const std::size_t end = std::min(path.find('.', begin), path.size());
    words.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
  return words;
}

void XmlPlugin::AddNamespaces(const xmlNode* node) {
  ForEachChild(node, "namespace", [this](const xmlNode* child) { AddNamespace(child); });
}

void XmlPlugin::AddNamespace(const xmlNode* node) {
  const std::string path = XmlUtil_ExtractAttribute(node, "path");
  const std::string description = XmlUtil_GetContentForChildByTag(node, "description");
  if (path.empty() || description.empty()) {
    throw KestrelException(
        "Unable to register a namespace without valid 'path' attribute or <description> being "
        "present.");
  }
  auto registered = Namespace::New();
  registered->SetDescription(description);
  registrations_.emplace_back(path, registered);
}

void XmlPlugin::AddCommands(const xmlNode* node) {
  ForEachChild(node, "command", [this](const xmlNode* child) { AddCommand(child); });
}

void XmlPlugin::AddCommand(const xmlNode* node) {
  const std::string path = XmlUtil_ExtractAttribute(node, "path");
  if (path.empty()) {
    throw KestrelException(
        "Invalid command specification found.  <command> tags must have a non-empty 'path' "
        "attribute");
  }
  try {
    registrations_.emplace_back(path, ReadCommand(node));
  } catch (const KestrelException& error) {
    throw KestrelException("Unable to register the command 'vexil " + path + "'  Error was " +
                           error.what());
  }
}

std::shared_ptr<ExtensionCommand> XmlPlugin::ReadCommand(const xmlNode* node) {
  auto command = ExtensionCommand::New();
  command->SetDescription(XmlUtil_GetContentForChildByTag(node, "description"));
  const xmlNode* metaData = XmlUtil_FindChildNode(node, "meta-data");
  if (metaData != nullptr) {
    ExtractMetaData(metaData, command);
  }
  command->SetInputSpec(ExtractInputSpec(RequireChild(node, "input-spec")));
  command->SetOutputSpec(ExtractOutputSpec(RequireChild(node, "output-spec")));
  ExtractFormatParams(RequireChild(node, "format-parameters"), command);
  const std::string execute = XmlUtil_GetContentForChildByTag(node, "execute");
  if (execute.empty()) {
    throw KestrelException(
        "Missing or empty <execute> tag.  This tag must specify a valid execution string for this "
        "command.");
  }
  command->SetExecuteCommand(execute);
  command->SetStdin(XmlUtil_GetContentForChildByTag(node, "stdin"));
  return command;
}

void ExtractMetaData(const xmlNode* node, const std::shared_ptr<ExtensionCommand>& command) {
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (IsTextOrComment(child)) {
      continue;
    }
    if (!IsNamed(child, "meta-data-entry")) {
      throw KestrelException(
          std::string("Found unexpected tag while building meta-data set.  Unexpected tag was: ") +
          NameOf(child));
    }
    const std::string name = XmlUtil_ExtractAttribute(child, "name");
    if (name.empty()) {
      throw KestrelException("Error parsing 'meta-data-entry', missing required attribute 'name'");
    }
    command->AddMetaData(name, XmlUtil_GetContent(child));
  }
}

void ExtractFormatParams(const xmlNode* node, const std::shared_ptr<ExtensionCommand>& command) {
  bool hasFormatter = false;
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (IsNamed(child, "format-parameter")) {
      command->SetDefaultOutputParameter(XmlUtil_ExtractAttribute(child, "name"),
                                         XmlUtil_GetContent(child));
    } else if (IsNamed(child, "formatter")) {
      if (hasFormatter) {
        throw KestrelException("Invalid plugin format.  Duplicate <formatter> tags found");
      }
      hasFormatter = true;
      command->SetDefaultOutputFormatter(XmlUtil_GetContent(child));
    }
  }
}

std::shared_ptr<InputSpec> ExtractInputSpec(const xmlNode* node) {
  auto inputSpec = InputSpec::New();
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (IsNamed(child, "parameter")) {
      ExtractInputParam(child, inputSpec);
    } else if (IsNamed(child, "context-supported")) {
      inputSpec->SetContextSupported(XmlUtil_GetContent(child));
    }
  }
  return inputSpec;
}

void ExtractInputParam(const xmlNode* node, const std::shared_ptr<InputSpec>& inputSpec) {
  ParameterElement element(node);
  CheckParameter(element);
  auto parameter =
      ParameterSpec::New(std::move(element.name), FindParameterType(element.type)->type);
  if (!element.shortName.empty()) {
    parameter->SetShortName(std::move(element.shortName));
  }
  parameter->SetDescription(std::move(element.description));
  parameter->SetRequired(element.required == "true");
  if (element.secret == "true") {
    parameter->SetSecret(true);
  }
  const xmlNode* constraint = XmlUtil_FindChildNode(node, "constraint");
  if (constraint != nullptr) {
    SetConstraint(constraint, *parameter);
  }
  inputSpec->AddParameter(parameter);
}

std::shared_ptr<ParameterConstraint> ExtractParamConstraint(const xmlNode* node) {
  const ConstraintWord& constraint = FindConstraint(XmlUtil_ExtractAttribute(node, "type"));
  const xmlNode* child = XmlUtil_FindChildNode(node, constraint.childName);
  if (child == nullptr) {
    throw KestrelException(
        "Error parsing parameter constraint.  There was no data included inside the <constraint> "
        "tag for the given constraint type");
  }
  return constraint.make(child);
}

std::vector<std::string> ExtractEnum(const xmlNode* node) {
  std::vector<std::string> values;
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (IsTextOrComment(child)) {
      continue;
    }
    if (!IsNamed(child, "enum-value")) {
      throw KestrelException(
          std::string("Found unexpected tag while building an enum.  Unexpected tag was: ") +
          NameOf(child));
    }
    values.push_back(XmlUtil_ExtractAttribute(child, "value"));
    if (values.back().empty()) {
      throw KestrelException("Error parsing 'enum-value', missing required attribute 'value'");
    }
  }
  return values;
}

std::shared_ptr<OutputSpec> ExtractOutputSpec(const xmlNode* node) {
  auto outputSpec = OutputSpec::New();
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (IsTextOrComment(child)) {
      continue;
    }
    if (outputSpec->GetRootObject() != nullptr) {
      throw KestrelException(
          std::string("Found more than one node under 'output-spec', where only one node is "
                      "supported.  The tag was ") +
          NameOf(child));
    }
    try {
      outputSpec->SetRootObject(XmlUtil_BuildMetaObject(child));
    } catch (const KestrelException& error) {
      throw KestrelException(std::string("Unable to build output spec.  Error was ") +
                             error.what());
    }
  }
  return outputSpec;
}

}  // namespace Kestrel::AutoCli
