// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

/// The formatter "python": prints any value as one line, an expression of the Python language made
/// of dictionaries, lists, texts, integers and booleans. It takes no parameters.
///
/// In texts only quotes and newlines are escaped. A text with a backslash therefore reads back as
/// another one, or as none: a script gives output that it does not trust to `ast.literal_eval`,
/// never to `eval`, or reads JSON. Field names are not escaped.
///
/// A value that is not of the class of its kind is not thrown for: a text in its place tells what
/// is wrong. Values may nest as deep as memory allows.
class KESTREL_API PythonFormatter : public Formatter {
 public:
  PythonFormatter();
  ~PythonFormatter() override;

  /// Writes the root of `output` and a line end, and flushes the stream.
  /// Throws KestrelException when a value is null; what stands before it is written.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;

  /// Writes one value without a line end, and flushes the stream. `level` does not change the text.
  /// Throws KestrelException when a value is null; what stands before it is written.
  void Format(std::shared_ptr<MetaObj::MetaObject> value, std::ostream& out, int level);

  /// Whether every byte of the text is below 128; true for the empty text.
  static bool IsAllAscii(const std::string& text);
};

}  // namespace Kestrel::AutoCli
