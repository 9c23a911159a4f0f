// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/WordFilter.h"

#include <algorithm>

namespace Kestrel::Host {
namespace {

// Converts a letter to lower case independently of the locale, and "_" to "-".
char ToPlain(char letter) {
  if (letter >= 'A' && letter <= 'Z') {
    return static_cast<char>(letter - 'A' + 'a');
  }
  return letter == '_' ? '-' : letter;
}

std::string ToPlain(std::string_view text) {
  std::string plain(text);
  std::transform(plain.begin(), plain.end(), plain.begin(),
                 [](char letter) { return ToPlain(letter); });
  return plain;
}

}  // namespace

WordSet& WordSet::Word(const std::string& word) {
  list_ += (list_.empty() ? "" : ", ") + word;
  return Alias(word, word);
}

WordSet& WordSet::Alias(const std::string& alias, const std::string& word) {
  words_.emplace(ToPlain(alias), word);
  return *this;
}

std::optional<std::string> WordSet::Find(std::string_view text) const {
  const auto found = words_.find(ToPlain(text));
  return found == words_.end() ? std::nullopt : std::optional<std::string>(found->second);
}

WordFilter::WordFilter(const CallSpec::Input& input, const char* parameter, const WordSet& set,
                       CallSpec::Output& output) {
  std::vector<std::string> given;
  input.GetParameterList(parameter, given);
  for (const std::string& text : given) {
    if (auto word = set.Find(text)) {
      words_.push_back(std::move(*word));
    } else {
      output.AddErrorMessage("There is no such " + std::string(parameter) + ": '" + text + "'; --" +
                             parameter + " is one of: " + set.GetList());
    }
  }
}

bool WordFilter::Accepts(std::string_view word) const {
  return words_.empty() || std::find(words_.begin(), words_.end(), word) != words_.end();
}

}  // namespace Kestrel::Host
