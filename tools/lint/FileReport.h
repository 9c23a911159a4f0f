// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <set>
#include <string>
#include <vector>

#include "tools/lint/Document.h"
#include "tools/lint/Finding.h"

namespace Kestrel::Lint {

/// Collects the findings of one file. A finding that a comment or an option suppresses is dropped.
class FileReport {
 public:
  /// `suppressed` are the rules of the options; it must outlive the report.
  FileReport(std::string file, const std::set<std::string>& suppressed)
      : file_(std::move(file)), suppressed_(suppressed) {}

  const std::string& GetFile() const { return file_; }
  const std::vector<Finding>& GetFindings() const { return findings_; }

  /// Adds a finding at the start tag of an element: what is wrong, and what to do.
  void Add(const char* rule, const Element& element, const std::string& what,
           const std::string& advice);
  /// Adds a finding at a place within an element; `element` may be null for the file itself.
  void AddAt(const char* rule, const Element* element, Position position, const std::string& what,
             const std::string& advice);

  /// Whether there is a finding about the element itself or, when it was suppressed, would be.
  bool HasFinding(const Element& element) const { return reported_.count(&element) != 0; }
  /// Whether nothing was found, not even what was suppressed.
  bool IsEmpty() const { return places_.empty(); }
  /// Whether there is a finding of `rule` within `element`.
  bool HasFindingBelow(const char* rule, const Element& element) const;

 private:
  struct Place {
    const Rule* rule;
    const Element* element;
  };

  bool IsSuppressed(const Rule& rule, const Element* element) const;

  std::string file_;
  const std::set<std::string>& suppressed_;
  std::vector<Finding> findings_;
  std::set<const Element*> reported_;
  std::vector<Place> places_;
};

/// The best of some words for a misspelt one: `, write 'NAME'`, or `otherwise` when none is near.
std::string AdviseNearest(const std::string& word, const std::vector<std::string>& words,
                          const std::string& otherwise);

/// The nearest of some words to a misspelt one; empty when none is near.
std::string FindNearest(const std::string& word, const std::vector<std::string>& words);

/// The text in single quotes, cut after 80 bytes, with control characters as escapes.
std::string Quote(const std::string& text);

}  // namespace Kestrel::Lint
