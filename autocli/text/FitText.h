// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Kestrel::AutoCli {

class TextWriter;

/// The arguments of AutoCli_FitString that say where and how a string is fitted.
struct FitRules {
  int indent = 0;
  int width = 0;
  bool skipFirstIndent = false;
  bool endLine = false;
  char wrapChar = 0;
  bool splitLines = false;
};

/// Breaks `text` into lines by `rules` and writes them, in one pass.
void FitText(std::string_view text, const FitRules& rules, TextWriter& writer);

}  // namespace Kestrel::AutoCli
