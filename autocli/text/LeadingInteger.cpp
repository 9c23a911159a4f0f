// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/LeadingInteger.h"

#include <charconv>

namespace Kestrel::AutoCli {

bool ReadLeadingInteger(const std::string& text, std::int64_t& value) {
  const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
  if (start == std::string::npos) {
    return false;
  }
  const char* first = text.data() + start;
  const char* last = text.data() + text.size();
  if (*first == '+') {
    ++first;
    if (first != last && *first == '-') {
      return false;
    }
  }
  return std::from_chars(first, last, value).ec == std::errc();
}

}  // namespace Kestrel::AutoCli
