// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/ExactFormat.h"
#include "vexil/formats/JsonSyntax.h"

// The format "ndjson": JSON with one line for each element of a list at the root.

namespace Kestrel::Formats {

namespace {

void Print(const Selection& selection, const FormatOptions& /*options*/, TextBuffer& out) {
  JsonLine syntax(out);
  ValuePrinter<JsonLine>(syntax).PrintRows(selection, [&out] { out.Append('\n'); });
}

}  // namespace

const ExactFormat kNdjsonFormat = {
    "ndjson", "Print JSON in UTF-8, with a line for each element of a list.", true, {}, Print};

}  // namespace Kestrel::Formats
