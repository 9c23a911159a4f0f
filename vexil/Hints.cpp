// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/Hints.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/autocli/RootNamespace.h"
#include "vexil/DispatcherOptions.h"
#include "vexil/FindNode.h"
#include "vexil/HintContext.h"

namespace Kestrel::Vexil {

using AutoCli::CommandSpec;
using AutoCli::NamespaceNode;

namespace {

struct PathOfLine {
  Words words;
  std::shared_ptr<NamespaceNode> node;
};

// Even an option that needs no value or does not exist takes the first word of the path as its
// value.
bool MayHaveTakenPath(const CommandLine& line) {
  if (line.dispatcherOptions.empty() || !line.dispatcherOptions.back().tookWord) {
    return false;
  }
  const DispatcherOption* option = FindDispatcherOption(line.dispatcherOptions.back().name);
  return !line.path.empty() || option == nullptr || !option->hasValue;
}

PathOfLine FindTakenPath(const HintContext& context) {
  if (!MayHaveTakenPath(context.line)) {
    return {};
  }
  Words words = {context.line.dispatcherOptions.back().value};
  words.insert(words.end(), context.line.path.begin(), context.line.path.end());
  return {words, FindNode(context.dispatcher.GetRootNamespace(), words)};
}

void UseCommand(const PathOfLine& path, HintContext& context) {
  context.command = std::dynamic_pointer_cast<CommandSpec>(path.node);
  context.quotedPath = "'" + JoinWords(path.words, " ") + "'";
}

void FindCommand(HintContext& context, Hints& hints) {
  const PathOfLine typed = {context.line.path,
                            FindNode(context.dispatcher.GetRootNamespace(), context.line.path)};
  if (typed.node != nullptr && !typed.words.empty()) {
    UseCommand(typed, context);
    return;
  }
  const PathOfLine taken = FindTakenPath(context);
  if (taken.node != nullptr) {
    UseCommand(taken, context);
    hints.push_back(context.line.dispatcherOptions.back().spelling + " took the word " +
                    Quote(taken.words.front()) + " as its value.");
  }
}

}  // namespace

std::string Quote(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, '?');
  return "'" + text + "'";
}

std::string AskFor(const std::vector<std::string>& names, const std::string& prefix) {
  std::string text;
  for (const std::string& name : names) {
    text += text.empty() ? " Did you mean " : " or ";
    text += prefix.empty() ? Quote(name) : prefix + name;
  }
  return text.empty() ? text : text + "?";
}

std::vector<std::string> FindHints(const AutoCli::Dispatcher& dispatcher, const CommandLine& line) {
  Hints hints;
  HintContext context = {dispatcher, line, nullptr, {}};
  FindCommand(context, hints);
  AddOptionHints(context, hints);
  AddFormatHints(context, hints);
  return hints;
}

}  // namespace Kestrel::Vexil
