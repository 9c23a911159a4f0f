// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaList.h>
#include <kestrel/metaobj/MetaString.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

// The names of files, users and devices may contain bytes that make the output invalid or control
// the terminal. In the values returned here, \xHH replaces every control character and every byte
// that is not part of valid UTF-8.

std::shared_ptr<MetaObj::MetaString> SanitizedText(std::string_view text);

/// Like SanitizedText, but keeps tabs and line feeds, for text of several lines.
std::shared_ptr<MetaObj::MetaString> SanitizedLines(std::string_view text);

/// Sanitizes a sequence of strings in which many are equal to the one before. Consecutive equal
/// strings share one value.
class RepeatedText {
 public:
  /// The reference is valid until the next call.
  const std::shared_ptr<MetaObj::MetaString>& Get(std::string_view text);

 private:
  std::string text_;
  std::shared_ptr<MetaObj::MetaString> sanitized_ = MetaObj::MetaString::New();
};

/// Returns a list of strings, each sanitized by SanitizedText.
std::shared_ptr<MetaObj::MetaList> SanitizedList(const std::vector<std::string>& texts);

}  // namespace Kestrel::Host
