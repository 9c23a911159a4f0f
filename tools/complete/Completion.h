// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Complete {

/// A possible completion of the word at the cursor.
struct Candidate {
  /// The whole word, not only what is missing.
  std::string word;
  /// What the word means, or empty.
  std::string description;
};

/// What the shell does in addition to offering the candidates.
enum class Directive {
  None,
  /// Offers files too.
  Files,
  /// Offers folders too.
  Folders,
  /// Adds no space after the word, because more may follow.
  NoSpace
};

struct Completion {
  std::vector<Candidate> candidates;
  Directive directive = Directive::None;

  /// Adds the candidate if it begins with `prefix`.
  void Add(const std::string& prefix, std::string word, std::string description = {});
};

/// Returns the lines for the shell scripts: "WORD" or "WORD<tab>description" for each candidate,
/// then ":" and the name of the directive, if there is one. Omits empty and repeated words, and
/// words with control characters, which a line cannot contain; in descriptions, such characters
/// become spaces.
std::string WriteCompletion(const Completion& completion);

}  // namespace Kestrel::Complete
