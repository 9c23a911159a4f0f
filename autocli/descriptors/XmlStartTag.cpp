// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/XmlStartTag.h"

#include <algorithm>
#include <cstring>

namespace Kestrel::AutoCli {

void XmlAttributes::Get(const xmlChar* name, std::string& value) const {
  value.clear();
  for (int i = 0; i < count_; ++i) {
    if (GetName(i) == name) {
      std::string buffer;
      value = Get(i, buffer);
      return;
    }
  }
}

// The parser passes "&#38;" for "&". There are no other references: it has replaced them, and a
// document without a type has no entities.
std::string_view XmlAttributes::Get(int index, std::string& buffer) const {
  constexpr std::string_view kRestOfReference = "#38;";
  std::string_view rest(AsChars(Entry(index)[3]), GetSize(index));
  std::size_t end = rest.find('&');
  if (end == std::string_view::npos) {
    return rest;
  }
  buffer.clear();
  for (; end != std::string_view::npos; end = rest.find('&')) {
    buffer.append(rest.substr(0, end + 1));
    rest.remove_prefix(std::min(end + 1 + kRestOfReference.size(), rest.size()));
  }
  return buffer.append(rest);
}

bool XmlAttributes::HasXmlId() const {
  for (int i = 0; i < count_; ++i) {
    const xmlChar* const prefix = Entry(i)[1];
    if (prefix != nullptr && std::strcmp(AsChars(prefix), "xml") == 0 &&
        std::strcmp(AsChars(GetName(i)), "id") == 0) {
      return true;
    }
  }
  return false;
}

}  // namespace Kestrel::AutoCli
