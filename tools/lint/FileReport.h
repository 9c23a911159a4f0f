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
  /// `suppressed` contains the rules that options suppress; it must outlive the report.
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

  /// Whether there is a finding about the element itself, suppressed or not.
  bool HasFinding(const Element& element) const { return reported_.count(&element) != 0; }
  /// Whether there is no finding in any element, not even a suppressed one.
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

/// Returns the advice for a misspelt word: `write 'NAME'` with the nearest of `words`, or
/// `otherwise` if none is near.
std::string AdviseNearest(const std::string& word, const std::vector<std::string>& words,
                          const std::string& otherwise);

/// Returns the one of `words` that is nearest to a misspelt word; empty if none is near.
std::string FindNearest(const std::string& word, const std::vector<std::string>& words);

/// Returns the text in single quotes, cut to 80 bytes, with control characters escaped.
std::string Quote(const std::string& text);

}  // namespace Kestrel::Lint
