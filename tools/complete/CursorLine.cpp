// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/complete/CursorLine.h"

#include <algorithm>

#include "kestrel/autocli/OptionParser.h"

namespace Kestrel::Complete {

using Vexil::CommandLine;
using Vexil::TypedOption;
using Vexil::Words;

namespace {

// The parser takes "--name=" for a word, not for an option, so a value is added.
constexpr char kAnyValue = '?';

bool BeginsWith(const std::string& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

// Whether the last word is an option without its value.
bool EndsWithOpenOption(const Words& words) {
  return !words.empty() && words.back().find('=') == std::string::npos &&
         AutoCli::OptionParser().IsParameter(words.back());
}

Place FindPlace(const CommandLine& before) {
  if (!before.extraWords.empty()) {
    return Place::Nowhere;
  }
  if (!before.commandOptions.empty()) {
    return Place::AfterPath;
  }
  return before.path.empty() ? Place::BeforePath : Place::Path;
}

const std::string& GetLastOption(const CommandLine& before) {
  return before.commandOptions.empty() ? before.dispatcherOptions.back().name
                                       : before.commandOptions.back().name;
}

void FindOption(const Words& before, const CommandLine& lineBefore, CursorLine& line) {
  line.followsOption = EndsWithOpenOption(before);
  const std::size_t end = line.word.find('=');
  const bool hasEnd = BeginsWith(line.word, "--") && end != std::string::npos;
  if (hasEnd && AutoCli::OptionParser().IsParameter(line.word.substr(0, end + 1) + kAnyValue)) {
    line.option = line.word.substr(2, end - 2);
    line.beforeValue = line.word.substr(0, end + 1);
  } else if (line.followsOption && !BeginsWith(line.word, "-")) {
    line.option = GetLastOption(lineBefore);
  }
}

Words SkipFirst(const Words& words, std::size_t count) {
  return count >= words.size()
             ? Words()
             : Words(words.begin() + static_cast<std::ptrdiff_t>(count), words.end());
}

bool IsExplain(const std::string& program) {
  return program.substr(program.rfind('/') + 1) == "vexil-explain";
}

bool IsExplainOption(const std::string& word) {
  return std::any_of(kExplainOptions.begin(), kExplainOptions.end(),
                     [&word](const auto& option) { return option.first == word; });
}

CursorLine ReadToolLine(const Words& words, std::size_t index) {
  const Words before(words.begin() + 1, words.begin() + static_cast<std::ptrdiff_t>(index));
  const Words after = SkipFirst(words, index + 1);
  const CommandLine lineBefore = Vexil::SplitCommandLine(before);

  CursorLine line;
  line.place = FindPlace(lineBefore);
  line.word = index < words.size() ? words[index] : std::string();
  line.path = lineBefore.path;
  line.isOnlyWord = before.empty() && after.empty();
  FindOption(before, lineBefore, line);

  Words all = before;
  if (line.option) {
    all.push_back(line.word == line.beforeValue ? line.word + kAnyValue : line.word);
  }
  all.insert(all.end(), after.begin(), after.end());
  line.given = Vexil::SplitCommandLine(all);
  line.settledOptions = line.given.dispatcherOptions;
  if (line.option && line.place == Place::BeforePath) {
    line.settledOptions.erase(line.settledOptions.begin() +
                              static_cast<std::ptrdiff_t>(lineBefore.dispatcherOptions.size()) -
                              (line.beforeValue.empty() ? 1 : 0));
  }
  return line;
}

}  // namespace

CursorLine ReadCursorLine(const Words& words, std::size_t index) {
  if (!IsExplain(words[0])) {
    return ReadToolLine(words, index);
  }
  const bool hasOwnOption = index > 1 && IsExplainOption(words[1]);
  Words toolWords = words;
  toolWords.erase(toolWords.begin() + 1, toolWords.begin() + (hasOwnOption ? 2 : 1));
  CursorLine line = ReadToolLine(toolWords, index - (hasOwnOption ? 1 : 0));
  line.isOnlyWord = line.isOnlyWord && !hasOwnOption;
  line.isExplained = true;
  line.isFirstOfExplainedLine = index == 1;
  return line;
}

}  // namespace Kestrel::Complete
