// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/InternalPlugin.h"

#include "kestrel/autocli/CommandHelpFormatter.h"
#include "kestrel/autocli/CommandList.h"
#include "kestrel/autocli/JsonFormatter.h"
#include "kestrel/autocli/PythonFormatter.h"
#include "kestrel/autocli/SimpleFormatter.h"
#include "kestrel/autocli/TableFormatter.h"
#include "kestrel/autocli/XmlFormatter.h"

namespace Kestrel::AutoCli {

namespace {

// A static of a function, because static objects of other sources may use it during their
// initialisation.
const std::string& PluginName() {
  static const std::string name("Internal");
  return name;
}

}  // namespace

const std::string& InternalPlugin::_name = PluginName();

std::shared_ptr<InternalPlugin> InternalPlugin::New() {
  return std::make_shared<InternalPlugin>(FactoryFlag());
}

InternalPlugin::InternalPlugin(FactoryFlag /*flag*/) {}

InternalPlugin::~InternalPlugin() = default;

void InternalPlugin::Initialize() {
  formatters_.reserve(6);
  formatters_.push_back(std::make_shared<TableFormatter>());
  formatters_.push_back(std::make_shared<SimpleFormatter>());
  formatters_.push_back(std::make_shared<XmlFormatter>());
  formatters_.push_back(std::make_shared<PythonFormatter>());
  formatters_.push_back(std::make_shared<JsonFormatter>());
  formatters_.push_back(std::make_shared<CommandHelpFormatter>());
}

const std::string& InternalPlugin::GetName() const { return PluginName(); }

void InternalPlugin::RegisterNamespaces(std::shared_ptr<Namespace> root) {
  const std::shared_ptr<Namespace> system = Namespace::New();
  system->SetDescription(
      "Commands that operate on the vexil system itself allowing users to get additional "
      "information.");
  const std::shared_ptr<Namespace> command = Namespace::New();
  command->SetDescription("Operations to get information about commands.");

  command->RegisterNamespaceNode(CommandList::New(root), "list");
  system->RegisterNamespaceNode(command, "command");
  root->RegisterNamespaceNode(system, "vexil");
}

bool InternalPlugin::HasFormatter(const std::string& name) { return GetFormatter(name) != nullptr; }

std::shared_ptr<Formatter> InternalPlugin::GetFormatter(const std::string& name) {
  for (const std::shared_ptr<Formatter>& formatter : formatters_) {
    if (formatter->GetName() == name) {
      return formatter;
    }
  }
  return nullptr;
}

const std::vector<std::shared_ptr<Formatter>>& InternalPlugin::GetFormatters() {
  return formatters_;
}

}  // namespace Kestrel::AutoCli
