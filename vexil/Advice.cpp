// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/Advice.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

#include "autocli/text/TerminalText.h"
#include "kestrel/autocli/RootNamespace.h"
#include "vexil/CommandLine.h"
#include "vexil/Hints.h"
#include "vexil/NodePaths.h"
#include "vexil/Suggestions.h"
#include "vexil/UnknownWord.h"
#include "vexil/Words.h"

namespace Kestrel::Vexil {

namespace {

// The message contains the path only up to the unknown word; the command line also has the words
// after it. If the path of the line does not begin with the words of the message, the message is
// about another path, of which nothing else is known.
Words CompletePath(const Words& known, const Words& typed) {
  // A word may contain a whole path.
  const Words path = SplitWords(JoinWords(typed, " "), " ");
  const bool isOfLine =
      path.size() >= known.size() && std::equal(known.begin(), known.end(), path.begin());
  return isOfLine ? path : known;
}

std::string FindSuggestions(const AutoCli::Dispatcher& dispatcher, const Words& path,
                            const std::string& message) {
  const std::optional<Words> known = ReadUnknownWord(message);
  if (!known) {
    return {};
  }
  const std::shared_ptr<AutoCli::NamespaceNode> root = dispatcher.GetRootNamespace();
  return DidYouMean(SuggestPaths(ListNodePaths(*root), CompletePath(*known, path)));
}

template <typename Action>
void IgnoreFailure(const Action& action) {
  try {
    action();
  } catch (...) {  // NOLINT(bugprone-empty-catch): the message itself has been printed
  }
}

}  // namespace

void PrintMessage(const std::string& message) {
  const std::string shown = AutoCli::MessageFor(STDERR_FILENO, message);
  std::fprintf(stderr, "%s\n", shown.c_str());
}

void PrintSuggestions(const AutoCli::Dispatcher& dispatcher, const Words& words,
                      const std::string& message) {
  IgnoreFailure([&] {
    const std::string line = FindSuggestions(dispatcher, SplitCommandLine(words).path, message);
    if (!line.empty()) {
      PrintMessage(line);
    }
  });
}

void PrintHints(const AutoCli::Dispatcher& dispatcher, const Words& words) {
  if (isatty(STDERR_FILENO) == 0) {
    return;
  }
  IgnoreFailure([&] {
    for (const std::string& hint : FindHints(dispatcher, SplitCommandLine(words))) {
      PrintMessage("Hint: " + hint);
    }
  });
}

}  // namespace Kestrel::Vexil
