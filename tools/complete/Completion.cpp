// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/complete/Completion.h"

#include <algorithm>
#include <set>
#include <utility>

namespace Kestrel::Complete {

namespace {

bool IsControl(char c) { return (c >= '\0' && c < ' ') || c == '\x7f'; }

const char* WordOf(Directive directive) {
  switch (directive) {
    case Directive::None:
      break;
    case Directive::Files:
      return "files";
    case Directive::Folders:
      return "folders";
    case Directive::NoSpace:
      return "nospace";
  }
  return "";
}

std::string OnOneLine(std::string text) {
  std::replace_if(text.begin(), text.end(), IsControl, ' ');
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace

void Completion::Add(const std::string& prefix, std::string word, std::string description) {
  if (word.compare(0, prefix.size(), prefix) == 0) {
    candidates.push_back({std::move(word), std::move(description)});
  }
}

std::string WriteCompletion(const Completion& completion) {
  std::string text;
  std::set<std::string> written;
  for (const Candidate& candidate : completion.candidates) {
    const bool isWritable = !candidate.word.empty() &&
                            std::none_of(candidate.word.begin(), candidate.word.end(), IsControl);
    if (!isWritable || !written.insert(candidate.word).second) {
      continue;
    }
    const std::string description = OnOneLine(candidate.description);
    text += candidate.word + (description.empty() ? "" : "\t" + description) + "\n";
  }
  return text + ":" + WordOf(completion.directive) + "\n";
}

}  // namespace Kestrel::Complete
