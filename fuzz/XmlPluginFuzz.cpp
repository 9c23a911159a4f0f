// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: a plug-in descriptor.
//
// A descriptor that cannot be read is refused with its path in the message. If the nodes that it
// declares can be registered, all of them are in the tree. Every command in the tree can be
// described, its values can be validated, and its templates can be filled. No command is run,
// because the input determines its command line.

#include "kestrel/autocli/XmlPlugin.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "FuzzInput.h"
#include "Printed.h"
#include "Property.h"
#include "Usage.h"
#include "XmlMessages.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CommandHelpFormatter.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "support/MemoryFile.h"

namespace Kestrel::Fuzz {
namespace {

using AutoCli::CommandInput;
using AutoCli::CommandOutput;
using AutoCli::ExtensionCommand;
using AutoCli::NamespaceNode;
using AutoCli::NodeType;
using AutoCli::RootNamespace;
using AutoCli::XmlPlugin;
using CallSpec::InputSpec;
using CallSpec::ParameterConstraintType;
using CallSpec::ParameterSpec;

bool BeginsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// Loads the descriptor. Returns null if it is refused.
std::shared_ptr<XmlPlugin> Load(const std::string& path) {
  const std::shared_ptr<XmlPlugin> plugin = XmlPlugin::New(path);
  try {
    plugin->Initialize();
    return plugin;
  } catch (const KestrelException& error) {
    Require(BeginsWith(error.what(), "Unable to handle XML Plugin " + path +
                                         ".  There was an error while parsing: "),
            "a refused descriptor is named");
    return nullptr;
  }
}

// Whether the parameter has a regular expression, which may be invalid. Compiling it then throws an
// exception of the library for regular expressions.
bool HasExpression(const ParameterSpec& parameter) {
  const auto& constraint = parameter.GetConstraint();
  return constraint != nullptr && constraint->GetType() == ParameterConstraintType::StringRegex;
}

void RequireChecksValues(ParameterSpec& parameter) {
  const std::shared_ptr<CommandOutput> output = CommandOutput::New();
  for (const char* value : {"", "1", "true", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaa!"}) {
    try {
      const bool isValid = parameter.Validate({value}, output);
      Require(isValid || output->HasError(), "a refused value is reported");
    } catch (const KestrelException&) {
    } catch (const std::exception&) {
      Require(HasExpression(parameter), "only the expression of a user throws other exceptions");
    }
  }
}

std::shared_ptr<CommandInput> MakeInput(const std::shared_ptr<InputSpec>& spec) {
  auto input = CommandInput::New();
  input->SetDispatcher("vexil");
  input->SetInputSpec(spec);
  for (const auto& parameter : spec->GetParameters()) {
    input->AddParameter(parameter->GetName(), "it's $val{x}");
  }
  return input;
}

void Substitute(ExtensionCommand& command, const std::shared_ptr<CommandInput>& input) {
  for (const bool forStdin : {false, true}) {
    try {
      command.SubstituteInput(input, forStdin);
    } catch (const KestrelException&) {
      // A marker does not fit the type of its parameter.
    }
  }
}

void RequireUsable(ExtensionCommand& command) {
  std::shared_ptr<InputSpec> spec;
  try {
    spec = command.GetInputSpec();
  } catch (const KestrelException& error) {
    Require(BeginsWith(error.what(), "Found a duplicate paramater "),
            "a command is only invalid when it declares its own help");
    return;
  }
  for (const auto& parameter : spec->GetParameters()) {
    RequireChecksValues(*parameter);
  }
  const std::shared_ptr<CommandInput> input = MakeInput(spec);
  Substitute(command, input);

  const std::shared_ptr<CommandOutput> help = CommandOutput::New();
  command.GenerateHelpOutput(input, help);
  RequireJsonReadsBack(help->GetRootObject());
  AutoCli::CommandHelpFormatter formatter;
  Require(!Print(formatter, help->GetRootObject(), {}, 80).empty(), "a command has a help page");
}

void RequireUsable(const std::shared_ptr<NamespaceNode>& root,
                   const std::shared_ptr<NamespaceNode>& node) {
  if (node != root) {
    std::list<std::string> path = node->GetPath();
    Require(root->ResolveNode(path) == node, "a node is found at its path");
  }
  if (node->GetType() == NodeType::Command) {
    RequireUsable(dynamic_cast<ExtensionCommand&>(*node));
    return;
  }
  for (const std::shared_ptr<NamespaceNode>& child : node->GetNamespaceNodes()) {
    RequireUsable(root, child);
  }
}

bool IsNamed(const xmlNode& node, std::string_view name) {
  return node.name != nullptr && reinterpret_cast<const char*>(node.name) == name;
}

std::string GetPathOf(xmlNode* node) {
  const std::unique_ptr<xmlChar, void (*)(void*)> path(
      xmlGetProp(node, reinterpret_cast<const xmlChar*>("path")), xmlFree);
  return path == nullptr ? std::string() : reinterpret_cast<const char*>(path.get());
}

std::list<std::string> SplitAtStops(const std::string& path) {
  std::list<std::string> words(1);
  for (const char c : path) {
    if (c == '.') {
      words.emplace_back();
    } else {
      words.back() += c;
    }
  }
  if (words.back().empty()) {
    words.pop_back();
  }
  return words;
}

// Requires that every element `elementName` in the elements `listName` has a node of the type
// `type` in the tree.
void RequireRegistered(xmlNode* descriptor, const char* listName, const char* elementName,
                       NodeType type, const std::shared_ptr<NamespaceNode>& root) {
  for (xmlNode* list = descriptor->children; list != nullptr; list = list->next) {
    for (xmlNode* element = list->children; IsNamed(*list, listName) && element != nullptr;
         element = element->next) {
      if (IsNamed(*element, elementName)) {
        std::list<std::string> words = SplitAtStops(GetPathOf(element));
        Require(root->ResolveNode(words)->GetType() == type, "what is declared is registered");
      }
    }
  }
}

void RequireRegistered(const std::string& text, const std::shared_ptr<NamespaceNode>& root) {
  const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), "fuzz", nullptr, 0), xmlFreeDoc);
  xmlNode* const descriptor = xmlDocGetRootElement(document.get());
  RequireRegistered(descriptor, "namespaces", "namespace", NodeType::Namespace, root);
  RequireRegistered(descriptor, "commands", "command", NodeType::Command, root);
}

// Returns false if a node cannot be inserted. Nodes inserted before remain and must work.
bool Register(XmlPlugin& plugin, const std::shared_ptr<RootNamespace>& root) {
  try {
    plugin.RegisterNamespaces(root);
    return true;
  } catch (const KestrelException&) {
    return false;
  }
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  const XmlMessages messages;
  const std::string text = FuzzInput(data, size).TakeRest();
  static const Kestrel::Testing::MemoryFile file;
  file.Write(text);
  const Usage usage(size);
  const std::shared_ptr<XmlPlugin> plugin = Load(file.GetPath());
  usage.Check(text.find("<!") == std::string::npos ? 0 : kMaxEntityText);
  if (plugin != nullptr) {
    const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
    if (Register(*plugin, root)) {
      RequireRegistered(text, root);
    }
    RequireUsable(root, root);
  }
  return 0;
}
