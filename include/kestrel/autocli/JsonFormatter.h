// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

/// The formatter "json". Prints any value as JSON, for scripts. It has no parameters.
///
/// A structure becomes an object with its fields in byte order of their names, a list becomes an
/// array. The line breaks are fixed; a document whose root is a structure or list begins with an
/// empty line. Strings are escaped byte by byte: a UTF-8 character of two bytes becomes two
/// escapes. A reader restores the string by converting each code point to one byte. Field names are
/// not escaped.
///
/// For a value that cannot be printed, the output contains an error message on a line in its place
/// and is not valid JSON. Nesting is limited by memory only.
class KESTREL_API JsonFormatter : public Formatter {
 public:
  JsonFormatter();
  ~JsonFormatter() override;

  /// Writes the root of `output` and a line end and flushes the stream.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;

  /// Writes `value`, which may be null, without a line end and flushes the stream. `level` sets the
  /// indentation of its brackets: three spaces per level, none below level 1. A field value is two
  /// levels deeper than its structure, an element three levels deeper than its list.
  void Format(std::shared_ptr<MetaObj::MetaObject> value, std::ostream& out, int level);
};

}  // namespace Kestrel::AutoCli
