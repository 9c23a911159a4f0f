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

/// The formatter "python". Prints any value on one line, as an expression in the Python language
/// that consists of dictionaries, lists, strings, integers and booleans. It has no parameters.
///
/// In strings, only double quotes and newlines are escaped. A string with a backslash therefore may
/// read back as a different string or cause a syntax error. A script should read output that it
/// does not trust with `ast.literal_eval`, never with `eval`, or read JSON instead. Field names are
/// not escaped.
///
/// If the class of a value does not match its kind, the output contains an error message in its
/// place. Nesting is limited by memory only.
class KESTREL_API PythonFormatter : public Formatter {
 public:
  PythonFormatter();
  ~PythonFormatter() override;

  /// Writes the root of `output` and a line end and flushes the stream. Throws KestrelException if
  /// a value is null, after writing what precedes it.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;

  /// Writes one value without a line end and flushes the stream. `level` has no effect. Throws
  /// KestrelException if a value is null, after writing what precedes it.
  void Format(std::shared_ptr<MetaObj::MetaObject> value, std::ostream& out, int level);

  /// Returns whether every byte of `text` is below 128. True for an empty string.
  static bool IsAllAscii(const std::string& text);
};

}  // namespace Kestrel::AutoCli
