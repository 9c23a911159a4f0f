// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/Input.h>
#include <kestrel/callspec/Output.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/network/NumberNames.h"

namespace Kestrel::Host {

/// The words that a parameter accepts. Case is ignored, and "_" is equivalent to "-".
class WordSet {
 public:
  /// Adds a word, which is also listed in error messages.
  WordSet& Word(const std::string& word);
  /// Adds another spelling of a word, such as its number.
  WordSet& Alias(const std::string& alias, const std::string& word);

  /// Adds every name of a table, with its number as another spelling.
  template <std::size_t Count>
  WordSet& Numbered(const NumberName (&names)[Count]) {
    for (const NumberName& entry : names) {
      Word(entry.name).Alias(std::to_string(entry.number), entry.name);
    }
    return *this;
  }

  /// Returns the matching word, spelled as it was added; nothing if there is none.
  std::optional<std::string> Find(std::string_view text) const;
  /// Returns the words in the order in which they were added, separated by ", ".
  const std::string& GetList() const { return list_; }

 private:
  std::map<std::string, std::string> words_;
  std::string list_;
};

/// The values that the user gave for a parameter, as words of a WordSet. Accepts every word if the
/// user gave none.
class WordFilter {
 public:
  /// Adds an error message to `output` for each value that is not in the set.
  WordFilter(const CallSpec::Input& input, const char* parameter, const WordSet& set,
             CallSpec::Output& output);

  bool IsGiven() const { return !words_.empty(); }
  bool Accepts(std::string_view word) const;

 private:
  std::vector<std::string> words_;
};

}  // namespace Kestrel::Host
