// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/log/LogLines.h"

namespace Kestrel::Host {

/// Puts together the entries of a journal from its export format, in whatever pieces it comes: a
/// line "NAME=value" for each field, or a line with the name alone, then eight bytes for the length
/// of the value, the least first, and the value; and an empty line after each entry.
class JournalParser {
 public:
  void Append(std::string_view piece) { text_.append(piece); }

  /// The next entry that is there whole.
  std::optional<LogLine> Next();

  /// Whether nothing is left of an entry that is not there whole.
  bool IsBetweenEntries() const { return position_ == text_.size() && !hasFields_; }

 private:
  bool TakeField();
  bool TakeSizedField(std::size_t nameEnd);
  void SetField(std::string_view name, std::string_view value);

  std::string text_;
  std::size_t position_ = 0;  // of the first byte of text_ that is not read
  LogLine entry_;
  std::string command_;  // of the process that wrote the entry
  bool hasFields_ = false;
  bool isComplete_ = false;
};

/// The last lines of the journal that pass the filter, the oldest first. With `units`, those of
/// these units only; a unit may contain `*`.
///
/// Asks journalctl as found in PATH. Throws KestrelException when there is no journal, when not all
/// of it may be read, and when neither the journal nor systemctl knows a unit.
std::vector<LogLine> ReadJournal(const std::vector<std::string>& units, const LogFilter& filter);

}  // namespace Kestrel::Host
