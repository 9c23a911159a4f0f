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
  /// The parameters that the loader accepts, or would accept after the reported faults are
  /// repaired.
  std::shared_ptr<CallSpec::InputSpec> input;
  /// Null if it is missing, or if the loader refuses it.
  std::shared_ptr<CallSpec::OutputSpec> output;
  /// The elements of these parameters, by their names.
  std::map<std::string, const Element*> parameters;
};

/// What the files that are examined together have in common: the tree that they fill.
struct Host {
  AutoCli::Dispatcher& dispatcher;
  /// The formatters of shared objects, which are loaded in another process.
  std::set<std::string> formatters;
  /// Each path of the tree, with full stops between its words, and the file that declares it.
  std::map<std::string, std::string> owners;
};

/// Reports unknown elements and attributes, ignored text, and content that is cut off.
void CheckStructure(const Document& document, FileReport& report);

/// Reports what the loader refuses, with the loader's messages. Returns the commands.
std::vector<CommandParts> CheckLoading(const Element& root, const std::string& file,
                                       FileReport& report);

/// Adds the nodes of the descriptor to the tree, and reports those that the tree refuses.
void CheckPaths(const Element& root, Host& host, FileReport& report);

/// Adds a node to the tree at a path, whose words are separated by full stops, unless there is a
/// node at that path already or its parent does not exist.
void InsertNode(const std::string& path, const std::shared_ptr<AutoCli::NamespaceNode>& node,
                const std::string& file, Host& host);

/// Checks that names can be typed, and checks descriptions and constraints.
void CheckParameters(const CommandParts& command, FileReport& report);

/// Whether the parameter has a constraint that was refused or is misspelt. Findings that depend on
/// the constraint are then not reported.
bool HasLostConstraint(const CallSpec::ParameterSpec& parameter, const Element& element);

/// Checks the shape of the result, the formatter and its parameters.
void CheckFormats(const CommandParts& command, const Host& host, FileReport& report);

/// Checks the meta-data of a command.
void CheckMetaData(const CommandParts& command, FileReport& report);

/// Checks the program that the shell command starts.
void CheckScript(const CommandParts& command, FileReport& report);

/// Checks the markers of the templates.
void CheckTemplates(const Document& document, const CommandParts& command, FileReport& report);

/// Reports suppressions that have no reason, name an unknown rule, or have no effect.
void CheckSuppressions(const Document& document, FileReport& report);

/// Returns the `command` elements, in document order.
std::vector<const Element*> FindCommands(const Element& root);

}  // namespace Kestrel::Lint
