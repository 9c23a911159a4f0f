// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/ExactFormat.h"
#include "vexil/formats/JsonSyntax.h"

// The format "json-utf8": JSON as one indented document.

namespace Kestrel::Formats {

namespace {

constexpr std::size_t kIndentStep = 3;  // as in the formatters of the library

void Print(const Selection& selection, const FormatOptions& /*options*/, TextBuffer& out) {
  using Syntax = JsonSyntax<kIndentStep>;
  Syntax syntax(out);
  ValuePrinter<Syntax>(syntax).PrintResult(selection);
  out.Append('\n');
}

}  // namespace

const ExactFormat kJsonUtf8Format = {
    "json-utf8", "Print JSON in UTF-8 as one indented document.", true, {}, Print};

}  // namespace Kestrel::Formats
