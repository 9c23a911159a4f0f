// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/XmlStartTag.h"

#include <algorithm>
#include <string_view>

namespace Kestrel::AutoCli {

namespace {

/// Appends an attribute's value as the parser passes it, where "&#38;" stands for "&". There are no
/// other references: the parser has replaced them, and a document without a type has no entities.
void AppendDecoded(std::string_view value, std::string& decoded) {
  constexpr std::string_view kRestOfReference = "#38;";
  for (std::size_t end = value.find('&'); end != std::string_view::npos; end = value.find('&')) {
    decoded.append(value.substr(0, end + 1));
    value.remove_prefix(std::min(end + 1 + kRestOfReference.size(), value.size()));
  }
  decoded.append(value);
}

}  // namespace

void XmlAttributes::Get(const xmlChar* name, std::string& value) const {
  value.clear();
  for (int i = 0; i < count_; ++i) {
    const xmlChar** entry = Entry(i);
    if (entry[0] == name) {
      const auto size = static_cast<std::size_t>(entry[4] - entry[3]);
      return AppendDecoded(std::string_view(AsChars(entry[3]), size), value);
    }
  }
}

}  // namespace Kestrel::AutoCli
