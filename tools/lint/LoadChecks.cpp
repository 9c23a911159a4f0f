// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Finds what the loader refuses. Each function of the library reads one element, so every element
// is examined by itself and one pass finds all faults.

#include <libxml/tree.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/autocli/XmlPlugin.h"
#include "kestrel/autocli/XmlUtil.h"
#include "tools/lint/Checks.h"

namespace Kestrel::Lint {

using AutoCli::ExtensionCommand;
using AutoCli::XmlPlugin;

namespace {

struct FreeNode {
  void operator()(xmlNode* node) const { xmlFreeNode(node); }
};
using OwnedNode = std::unique_ptr<xmlNode, FreeNode>;

const xmlChar* AsXml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

/// Returns the message that a function of the library throws; empty if it throws nothing.
std::string TextOf(const std::function<void()>& call) {
  try {
    call();
    return {};
  } catch (const KestrelException& error) {
    return error.what();
  }
}

void Refuse(const char* rule, const Element& element, const std::string& text,
            const std::string& advice, FileReport& report) {
  report.Add(rule, element, "the loader refuses this: " + text, advice);
}

const Element& SecondOr(const Element& parent, std::string_view child) {
  const std::vector<const Element*> found = parent.FindAll(child);
  return found.size() > 1 ? *found[1] : parent;
}

/// Returns the node of a child, or null. Reports a child that occurs twice although only one is
/// allowed.
xmlNode* FindOnly(const Element& parent, const char* child, FileReport& report) {
  xmlNode* node = nullptr;
  const std::string text =
      TextOf([&] { node = AutoCli::XmlUtil_FindChildNode(parent.node, child); });
  if (!text.empty()) {
    Refuse("element-twice", SecondOr(parent, child), text, "remove one of them", report);
  }
  return node;
}

/// Like FindOnly, but returns the content of the child, or "twice" if it occurs twice.
std::string GetOnlyContent(const Element& parent, const char* child, FileReport& report) {
  std::string content;
  const std::string text =
      TextOf([&] { content = AutoCli::XmlUtil_GetContentForChildByTag(parent.node, child); });
  if (!text.empty()) {
    Refuse("element-twice", SecondOr(parent, child), text, "remove one of them", report);
    return "twice";
  }
  return content;
}

const Element& ChildOrSelf(const Element& parent, std::string_view child) {
  const Element* const found = parent.Find(child);
  return found == nullptr ? parent : *found;
}

void CheckRoot(const Element& root, const std::string& file, FileReport& report) {
  const std::string version = GetOnlyContent(root, "version", report);
  if (version != "1.0.0" && version != "twice") {
    Refuse("version", ChildOrSelf(root, "version"),
           "Unknown vexil extention version.  Valid versions are: '1.0.0'",
           "write <version>1.0.0</version>, without spaces", report);
  }
  FindOnly(root, "namespaces", report);
  FindOnly(root, "commands", report);
  if (root.Find("namespaces") == nullptr && root.Find("commands") == nullptr) {
    Refuse("element-missing", root,
           "Unable to find any namespaces or commands to register for plugin " + file,
           "add 'commands'", report);
  }
}

void CheckNamespace(const Element& element, const std::string& file, FileReport& report) {
  const std::shared_ptr<XmlPlugin> plugin = XmlPlugin::New(file);
  const std::string text = TextOf([&] { plugin->AddNamespace(element.node); });
  if (text.empty()) {
    return;
  }
  if (element.FindAll("description").size() > 1) {
    Refuse("element-twice", SecondOr(element, "description"), text, "remove one of them", report);
  } else {
    Refuse("namespace-incomplete", element, text, "add what is missing", report);
  }
}

/// An element whose children are all of one name and have a required attribute.
struct EntrySet {
  const char* what;
  const char* entry;
  const char* attribute;
};

void CheckEntries(const Element& set, const EntrySet& kind, FileReport& report) {
  for (const auto& child : set.children) {
    if (child->name != kind.entry) {
      Refuse("element-unexpected", *child,
             std::string("Found unexpected tag while building ") + kind.what +
                 ".  Unexpected tag was: " + child->name,
             std::string("write '") + kind.entry + "'", report);
    } else if (child->Get(kind.attribute).empty()) {
      Refuse("attribute-missing", *child,
             std::string("Error parsing '") + kind.entry + "', missing required attribute '" +
                 kind.attribute + "'",
             "add it", report);
    }
  }
}

/// A fault of a parameter: what the loader's message contains, and how to change a copy of the
/// element so that the loader proceeds to the next fault.
struct ParameterFault {
  const char* text;
  const char* rule;
  const char* child;  // the subject of the finding; null for the parameter itself
  const char* advice;
  void (*repair)(xmlNode* copy);
};

void SetAttribute(xmlNode* node, const char* name, const char* value) {
  xmlSetProp(node, AsXml(name), AsXml(value));
}

void RemoveChildren(xmlNode* node, std::string_view name) {
  for (xmlNode* child = node->children; child != nullptr;) {
    xmlNode* const next = child->next;
    if (child->name != nullptr && name == reinterpret_cast<const char*>(child->name)) {
      xmlUnlinkNode(child);
      xmlFreeNode(child);
    }
    child = next;
  }
}

void ReplaceDescription(xmlNode* copy) {
  RemoveChildren(copy, "description");
  xmlNewChild(copy, nullptr, AsXml("description"), AsXml("description"));
}

void RemoveConstraints(xmlNode* copy) { RemoveChildren(copy, "constraint"); }

void RemoveAttribute(xmlNode* copy, const char* name) { xmlUnsetProp(copy, AsXml(name)); }

// Sets a type that the constraint allows, so that the constraint is not reported too.
void SetFittingType(xmlNode* copy) {
  const char* type = "string";
  for (xmlNode* child = copy->children; child != nullptr; child = child->next) {
    const std::string constraint = AutoCli::XmlUtil_ExtractAttribute(child, "type");
    if (constraint == "range" || constraint == "intenum") {
      type = "int";
    }
  }
  SetAttribute(copy, "type", type);
}

constexpr const char* kAddOrCorrect = "add or correct it";

constexpr ParameterFault kParameterFaults[] = {
    {"Missing required attribute: 'name'", "attribute-missing", nullptr, "add it",
     [](xmlNode* copy) { SetAttribute(copy, "name", "no-name"); }},
    {"Missing or invalid required attribute: 'type'", "parameter-type", nullptr, kAddOrCorrect,
     SetFittingType},
    {"Missing or invalid 'required'", "parameter-required", nullptr, kAddOrCorrect,
     [](xmlNode* copy) { SetAttribute(copy, "required", "true"); }},
    {"Missing command description", "element-missing", nullptr, "add a description",
     ReplaceDescription},
    {"Invalid 'secret'", "parameter-secret", nullptr, "correct it",
     [](xmlNode* copy) { RemoveAttribute(copy, "secret"); }},
    {"for secret, must be 'string'", "parameter-secret", nullptr, "change the type to 'string'",
     [](xmlNode* copy) { RemoveAttribute(copy, "secret"); }},
    {"Illegal Duplicate tags", "element-twice", "description", "remove one of them",
     ReplaceDescription},
    {"More than one instance of constraint", "element-twice", "constraint", "remove one of them",
     RemoveConstraints},
    {"Unable to build parameter constraint", "constraint-invalid", "constraint", "correct it",
     RemoveConstraints},
    {"is not allowed for a parameter of this type", "constraint-type", "constraint",
     "use a constraint for values of this type", RemoveConstraints},
    {"Invalid Parameter name", "parameter-name", nullptr, "use lower-case letters, digits and '-'",
     [](xmlNode* copy) { SetAttribute(copy, "name", "bad-name"); }},
    {"at least 2 characters", "parameter-name", nullptr,
     "use a longer name, and 'shortname' for the letter",
     [](xmlNode* copy) { SetAttribute(copy, "name", "bad-name"); }},
    {"Invalid value for shortName", "parameter-short-name", nullptr, "use one letter",
     [](xmlNode* copy) { RemoveAttribute(copy, "shortname"); }},
    {"Invalid short name", "parameter-short-name", nullptr, "use another letter",
     [](xmlNode* copy) { RemoveAttribute(copy, "shortname"); }},
};

const ParameterFault* FindFault(const std::string& text) {
  for (const ParameterFault& fault : kParameterFaults) {
    if (text.find(fault.text) != std::string::npos) {
      return &fault;
    }
  }
  return nullptr;
}

const Element& PlaceOf(const ParameterFault& fault, const Element& parameter) {
  if (fault.child == nullptr) {
    return parameter;
  }
  const std::vector<const Element*> children = parameter.FindAll(fault.child);
  return children.empty() ? parameter : *children.back();
}

/// Reports the faults of a parameter, and adds it to `parts`, repaired if necessary and possible.
void CheckParameter(const Element& element, CommandParts& parts, FileReport& report) {
  const OwnedNode copy(xmlCopyNode(element.node, 1));
  for (std::size_t i = 0; i <= std::size(kParameterFaults); ++i) {
    const std::string text = TextOf([&] { AutoCli::ExtractInputParam(copy.get(), parts.input); });
    if (text.empty()) {
      parts.parameters.emplace(element.Get("name"), &element);
      return;
    }
    const ParameterFault* const fault = FindFault(text);
    if (fault == nullptr) {
      const bool isDuplicate = text.find("duplicate") != std::string::npos;
      Refuse(isDuplicate ? "parameter-duplicate" : "refused", element, text,
             isDuplicate ? "use another name" : "correct it", report);
      return;
    }
    Refuse(fault->rule, PlaceOf(*fault, element), text, fault->advice, report);
    fault->repair(copy.get());
  }
}

/// Returns the innermost element at or below `element` from which the loader cannot build a value.
const Element* FindUnbuildable(const Element& element) {
  for (const auto& child : element.children) {
    if (const Element* const found = FindUnbuildable(*child)) {
      return found;
    }
  }
  if (element.name == "field") {
    return element.Get("name").empty() ? &element : nullptr;
  }
  const std::string text = TextOf([&] { AutoCli::XmlUtil_BuildMetaObject(element.node); });
  return text.empty() ? nullptr : &element;
}

void CheckOutput(const Element& element, CommandParts& parts, FileReport& report) {
  const std::string text = TextOf([&] { parts.output = AutoCli::ExtractOutputSpec(element.node); });
  if (text.empty()) {
    return;
  }
  if (element.children.size() > 1 && text.find("more than one node") != std::string::npos) {
    Refuse("element-twice", *element.children[1], text, "leave one value", report);
    return;
  }
  const Element* culprit = nullptr;
  for (const auto& child : element.children) {
    culprit = culprit == nullptr ? FindUnbuildable(*child) : culprit;
  }
  Refuse("shape-invalid", culprit == nullptr ? element : *culprit, text, "correct the element",
         report);
}

void CheckFormatter(const Element& element, FileReport& report) {
  const std::string text =
      TextOf([&] { AutoCli::ExtractFormatParams(element.node, ExtensionCommand::New()); });
  if (!text.empty()) {
    Refuse("element-twice", SecondOr(element, "formatter"), text, "remove one of them", report);
  }
}

const Element* Require(const Element& command, const char* name, FileReport& report) {
  if (FindOnly(command, name, report) == nullptr && command.Find(name) == nullptr) {
    Refuse("element-missing", command,
           std::string("Unable to find <") + name + "> element, which is required for a command.",
           std::string("add it; <") + name + "/> is enough where there is nothing to declare",
           report);
  }
  return command.Find(name);
}

void CheckExecute(const Element& command, FileReport& report) {
  if (GetOnlyContent(command, "execute", report).empty()) {
    Refuse("execute-missing", ChildOrSelf(command, "execute"),
           "Missing or empty <execute> tag.  This tag must specify a valid execution string for "
           "this command.",
           "write the shell command", report);
  }
}

CommandParts CheckCommand(const Element& command, FileReport& report) {
  CommandParts parts;
  parts.element = &command;
  parts.path = command.Get("path");
  parts.input = CallSpec::InputSpec::New();
  if (parts.path.empty()) {
    Refuse("attribute-missing", command,
           "Invalid command specification found.  <command> tags must have a non-empty 'path' "
           "attribute",
           "add the path", report);
  }
  GetOnlyContent(command, "description", report);
  FindOnly(command, "meta-data", report);
  if (const Element* const metaData = command.Find("meta-data")) {
    CheckEntries(*metaData, {"meta-data set", "meta-data-entry", "name"}, report);
  }
  if (const Element* const input = Require(command, "input-spec", report)) {
    for (const Element* parameter : input->FindAll("parameter")) {
      CheckParameter(*parameter, parts, report);
    }
  }
  if (const Element* const output = Require(command, "output-spec", report)) {
    CheckOutput(*output, parts, report);
  }
  if (const Element* const format = Require(command, "format-parameters", report)) {
    CheckFormatter(*format, report);
  }
  CheckExecute(command, report);
  GetOnlyContent(command, "stdin", report);
  return parts;
}

}  // namespace

std::vector<CommandParts> CheckLoading(const Element& root, const std::string& file,
                                       FileReport& report) {
  CheckRoot(root, file, report);
  for (const Element* namespaces : root.FindAll("namespaces")) {
    for (const Element* declared : namespaces->FindAll("namespace")) {
      CheckNamespace(*declared, file, report);
    }
  }
  const std::vector<const Element*> elements = FindCommands(root);
  std::vector<CommandParts> commands;
  commands.reserve(elements.size());
  for (const Element* command : elements) {
    commands.push_back(CheckCommand(*command, report));
  }
  const std::string text = TextOf([&] { XmlPlugin::New(file)->Initialize(); });
  if (!text.empty() && report.IsEmpty()) {
    Refuse("refused", root, text, "correct what it names", report);
  }
  return commands;
}

}  // namespace Kestrel::Lint
