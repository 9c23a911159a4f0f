// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/vexil/CommandLookup.h"

#include <cstddef>
#include <vector>

namespace Kestrel::Vexil {

using AutoCli::CommandSpec;
using AutoCli::NamespaceNode;
using AutoCli::NodeType;

namespace {

std::vector<std::string> SplitWords(const std::string& written) {
  constexpr const char* kSeparators = " .\t\r\n";
  std::vector<std::string> words;
  std::size_t begin = written.find_first_not_of(kSeparators);
  while (begin != std::string::npos) {
    const std::size_t end = written.find_first_of(kSeparators, begin);
    words.push_back(written.substr(begin, end - begin));
    begin = written.find_first_not_of(kSeparators, end);
  }
  return words;
}

void Append(const std::string& word, const char* separator, std::string& path) {
  path += (path.empty() ? "" : separator) + word;
}

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

/// Returns why `node`, which is at `path`, has no child `word`.
std::string WhyNotBelow(NamespaceNode& node, const std::string& path, const std::string& word) {
  if (path.empty()) {
    return Quoted(word) + " is unknown";
  }
  return node.GetType() == NodeType::Command ? Quoted(path) + " is a command and contains nothing"
                                             : Quoted(path) + " contains no " + Quoted(word);
}

}  // namespace

CommandLookup FindCommand(const std::shared_ptr<NamespaceNode>& root, const std::string& written) {
  CommandLookup lookup;
  std::shared_ptr<NamespaceNode> node = root;
  for (const std::string& word : SplitWords(written)) {
    if (!node->HasNamespaceNode(word)) {
      lookup.reason = "No command has the path " + Quoted(written) + ": " +
                      WhyNotBelow(*node, lookup.path, word) + ".";
      return lookup;
    }
    node = node->GetNamespaceNode(word);
    Append(word, " ", lookup.path);
    if (node->GetType() != NodeType::Command) {
      Append(word, ".", lookup.lastNamespace);
    }
  }
  lookup.command = std::dynamic_pointer_cast<CommandSpec>(node);
  if (lookup.path.empty()) {
    lookup.reason = "The path " + Quoted(written) + " has no words.";
  } else if (lookup.command == nullptr) {
    lookup.reason = "The path " + Quoted(written) + " leads to a namespace, not to a command.";
  }
  return lookup;
}

}  // namespace Kestrel::Vexil
