// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Kestrel::AutoCli {

class TextWriter;

/// Where and how a text is fitted; see AutoCli_FitString, whose arguments these are.
struct FitRules {
  int indent = 0;
  int width = 0;
  bool skipFirstIndent = false;
  bool endLine = false;
  char wrapChar = 0;
  bool splitLines = false;
};

/// Fits `text` by `rules`, in one pass.
void FitText(std::string_view text, const FitRules& rules, TextWriter& writer);

}  // namespace Kestrel::AutoCli
