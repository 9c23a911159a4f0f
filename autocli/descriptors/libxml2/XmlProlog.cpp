// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/libxml2/XmlProlog.h"

#include <strings.h>

#include <algorithm>

#include "autocli/text/StartsWith.h"

namespace Kestrel::AutoCli {

namespace {

std::string_view WithoutByteOrderMark(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  return StartsWith(text, kByteOrderMark) ? text.substr(kByteOrderMark.size()) : text;
}

/// Whether an XML declaration names UTF-8 or no encoding.
bool DeclaresUtf8(std::string_view declaration) {
  std::size_t position = declaration.find("encoding");
  if (position == std::string_view::npos) {
    return true;
  }
  position = declaration.find_first_of("'\"", position);
  constexpr std::string_view kUtf8 = "UTF-8";
  if (position == std::string_view::npos || declaration.size() - position < kUtf8.size() + 2) {
    return false;
  }
  return strncasecmp(declaration.data() + position + 1, kUtf8.data(), kUtf8.size()) == 0 &&
         declaration[position + 1 + kUtf8.size()] == declaration[position];
}

/// Whether the parser will read `text`, which has no byte order mark, as UTF-8. Like the parser,
/// looks at the first four bytes and at the XML declaration.
bool IsUtf8(std::string_view text) {
  for (const char c : text.substr(0, 4)) {
    if (c == '\0' || (c & 0x80) != 0) {
      return false;
    }
  }
  return !StartsWith(text, "<?xml") || DeclaresUtf8(text.substr(0, text.find("?>")));
}

/// Returns the rest of `text` after the first `end`; empty when there is none.
std::string_view After(std::string_view text, std::string_view end) {
  const std::size_t found = text.find(end);
  return found == std::string_view::npos ? std::string_view() : text.substr(found + end.size());
}

std::string_view SkipSpace(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

/// Whether a document type comes before the root element.
bool HasDocumentType(std::string_view text) {
  text = SkipSpace(text);
  while (StartsWith(text, "<?") || StartsWith(text, "<!--")) {
    text = SkipSpace(After(text, text[1] == '?' ? "?>" : "-->"));
  }
  return StartsWith(text, "<!DOCTYPE");
}

}  // namespace

bool HasPlainProlog(std::string_view text) {
  text = WithoutByteOrderMark(text);
  return IsUtf8(text) && !HasDocumentType(text);
}

}  // namespace Kestrel::AutoCli
