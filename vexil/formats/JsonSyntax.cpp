// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/JsonSyntax.h"

namespace Kestrel::Formats {

void JsonRules::Replace(char32_t character, TextBuffer& out) {
  constexpr std::string_view kPlain = "\"\\\b\f\n\r\t";
  constexpr std::string_view kLetters = "\"\\bfnrt";
  const std::size_t found = kPlain.find(static_cast<char>(character));
  if (found != std::string_view::npos) {
    return out.AppendAll('\\', kLetters[found]);
  }
  out.AppendAll(std::string_view("\\u00"), kLowerDigits[character / 16],
                kLowerDigits[character % 16]);
}

void AppendJsonString(std::string_view text, TextBuffer& out) {
  out.Append('"');
  AppendEscaped<JsonRules>(text, out);
  out.Append('"');
}

}  // namespace Kestrel::Formats
