// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/log/LogLines.h"

namespace Kestrel::Host {

/// Assembles the entries of a journal from journalctl's export format, which may arrive in pieces
/// of any size. A field is a line "NAME=value", or a line with only the name, followed by the
/// length of the value in eight bytes, least significant first, and the value. An empty line ends
/// each entry.
class JournalParser {
 public:
  void Append(std::string_view piece) { text_.append(piece); }

  /// Returns the next entry; nothing if it has not arrived completely.
  std::optional<LogLine> Next();

  /// Whether all that has arrived belongs to entries that `Next` has returned.
  bool IsBetweenEntries() const { return position_ == text_.size() && !hasFields_; }

 private:
  bool TakeField();
  bool TakeSizedField(std::size_t nameEnd);
  void SetField(std::string_view name, std::string_view value);

  std::string text_;
  std::size_t position_ = 0;  // of the first unread byte of text_
  LogLine entry_;
  std::string command_;  // the name of the process that wrote the entry
  bool hasFields_ = false;
  bool isComplete_ = false;
};

/// Returns the last lines of the journal that pass the filter, the oldest first. If `units` is not
/// empty, only the lines of these units are returned; a unit may contain `*`.
///
/// Runs journalctl, found in PATH. Throws KestrelException if there is no journal, if this user may
/// not read all of it, if journalctl fails, or if one of the units is known neither to the journal
/// nor to systemctl.
std::vector<LogLine> ReadJournal(const std::vector<std::string>& units, const LogFilter& filter);

}  // namespace Kestrel::Host
