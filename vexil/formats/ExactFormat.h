// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "vexil/formats/FormatOptions.h"
#include "vexil/formats/Selection.h"
#include "vexil/formats/TextBuffer.h"

namespace Kestrel::Formats {

/// A format: what distinguishes one of the tool's formatters from the others.
struct ExactFormat {
  const char* name;
  const char* description;
  bool isForPrograms;  ///< false: the command's own choice of fields is used
  OwnKeys ownKeys;     ///< the parameters that not every format has

  /// Prints the selected values. Throws ValueFault or ResultFault if that is not possible.
  void (*print)(const Selection& selection, const FormatOptions& options, TextBuffer& out);
};

extern const ExactFormat kCsvFormat;
extern const ExactFormat kJsonUtf8Format;
extern const ExactFormat kNdjsonFormat;
extern const ExactFormat kPrettyFormat;
extern const ExactFormat kTsvFormat;
extern const ExactFormat kValueXmlFormat;
extern const ExactFormat kYamlFormat;

}  // namespace Kestrel::Formats
