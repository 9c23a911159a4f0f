// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Complete {

/// One way to complete the word at the cursor.
struct Candidate {
  /// The whole word, not only what is missing.
  std::string word;
  /// Empty, or what the word means.
  std::string description;
};

/// What the shell does beyond offering the candidates.
enum class Directive {
  None,
  /// Offers files too.
  Files,
  /// Offers folders too.
  Folders,
  /// Writes no space after the word, because it can go on.
  NoSpace
};

struct Completion {
  std::vector<Candidate> candidates;
  Directive directive = Directive::None;

  /// Adds the candidate if it begins with `prefix`.
  void Add(const std::string& prefix, std::string word, std::string description = {});
};

/// The lines for the scripts of the shells: "WORD" or "WORD<tab>description" for each candidate,
/// then ":" and the name of the directive. Words with control characters, which a line cannot
/// contain, are left out, and so are repeated words; in descriptions such characters become spaces.
std::string WriteCompletion(const Completion& completion);

}  // namespace Kestrel::Complete
