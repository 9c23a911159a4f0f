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

CommandLine SplitArguments(int argc, const char* const* argv) {
  std::vector<std::string> arguments;
  for (int i = 1; i < argc && argv[i] != nullptr; ++i) {
    arguments.emplace_back(argv[i]);
  }
  return SplitCommandLine(arguments);
}

// The message ends with the unknown word; the arguments also contain the words after it. The
// arguments do not begin with the words of the message if the line was read from a file.
Words CompletePath(const Words& known, const Words& arguments) {
  // An argument may contain a whole path.
  const Words path = SplitWords(JoinWords(arguments, " "), " ");
  const bool isOfArguments =
      path.size() >= known.size() && std::equal(known.begin(), known.end(), path.begin());
  return isOfArguments ? path : known;
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

// Uses the C stream, because a plug-in may have set a width on std::cerr or made it throw.
void PrintLine(const std::string& line) {
  const std::string shown = AutoCli::MessageFor(STDERR_FILENO, line);
  std::fprintf(stderr, "%s\n", shown.c_str());
}

template <typename Action>
void IgnoreFailure(const Action& action) {
  try {
    action();
  } catch (...) {  // NOLINT(bugprone-empty-catch): the message itself has been printed
  }
}

}  // namespace

void PrintSuggestions(const AutoCli::Dispatcher& dispatcher, int argc, const char* const* argv,
                      const std::string& message) {
  IgnoreFailure([&] {
    const std::string line = FindSuggestions(dispatcher, SplitArguments(argc, argv).path, message);
    if (!line.empty()) {
      PrintLine(line);
    }
  });
}

void PrintHints(const AutoCli::Dispatcher& dispatcher, int argc, const char* const* argv) {
  if (isatty(STDERR_FILENO) == 0) {
    return;
  }
  IgnoreFailure([&] {
    for (const std::string& hint : FindHints(dispatcher, SplitArguments(argc, argv))) {
      PrintLine("Hint: " + hint);
    }
  });
}

}  // namespace Kestrel::Vexil
