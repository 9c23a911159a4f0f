// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/NamespaceNode.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "tools/lint/Document.h"
#include "tools/lint/FileReport.h"

// The checks of a descriptor: a function for each group of rules.

namespace Kestrel::Lint {

/// A command of a descriptor, as far as the loader accepts it.
struct CommandParts {
  const Element* element = nullptr;
  std::string path;
  /// The parameters that the loader accepts.
  std::shared_ptr<CallSpec::InputSpec> input;
  /// Null when the loader refuses it.
  std::shared_ptr<CallSpec::OutputSpec> output;
  /// The elements of the accepted parameters, by their names.
  std::map<std::string, const Element*> parameters;
};

/// What the files that are examined together have in common: the tree that they fill.
struct Host {
  AutoCli::Dispatcher& dispatcher;
  /// The formatters of shared objects, which are loaded in another process.
  std::set<std::string> formatters;
  /// Each path of the tree, separated by full stops, and the file that declares it.
  std::map<std::string, std::string> owners;
};

/// Unknown elements and attributes, text that is ignored, content that is cut.
void CheckStructure(const Document& document, FileReport& report);

/// What the loader refuses, in its own words. Returns the commands.
std::vector<CommandParts> CheckLoading(const Element& root, const std::string& file,
                                       FileReport& report);

/// Adds the nodes of the descriptor to the tree, and reports those that the tree refuses.
void CheckPaths(const Element& root, Host& host, FileReport& report);

/// Adds a node to the tree at a path, whose words are separated by full stops, unless there is one
/// or its parent does not exist.
void InsertNode(const std::string& path, const std::shared_ptr<AutoCli::NamespaceNode>& node,
                const std::string& file, Host& host);

/// Names that cannot be typed, descriptions, constraints.
void CheckParameters(const CommandParts& command, FileReport& report);

/// Whether there is a constraint that was refused, or one that is misspelt. What depends on it is
/// not reported.
bool HasLostConstraint(const CallSpec::ParameterSpec& parameter, const Element& element);

/// The shape of the result, formatters and their parameters.
void CheckFormats(const CommandParts& command, const Host& host, FileReport& report);

/// The meta-data of a command.
void CheckMetaData(const CommandParts& command, FileReport& report);

/// The program that the shell command starts.
void CheckScript(const CommandParts& command, FileReport& report);

/// The markers of the templates.
void CheckTemplates(const Document& document, const CommandParts& command, FileReport& report);

/// Suppressions without a reason, of unknown rules, and without effect.
void CheckSuppressions(const Document& document, FileReport& report);

/// All elements of the commands, in the order of the document.
std::vector<const Element*> FindCommands(const Element& root);

}  // namespace Kestrel::Lint
