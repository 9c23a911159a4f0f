// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

/// The formatter "json": prints any value as JSON, for scripts. It takes no parameters.
///
/// A structure is an object with its fields in their order, a list an array. The layout is fixed; a
/// document that is a structure or a list begins with an empty line. A text is escaped byte by
/// byte, so that a UTF-8 character of two bytes becomes two escapes: a reader takes the text's code
/// points for bytes to restore it. Field names are not escaped.
///
/// Nothing is thrown for a bad value: a line in its place tells what is wrong, and the document is
/// no JSON then. Values may nest as deep as memory allows.
class KESTREL_API JsonFormatter : public Formatter {
 public:
  JsonFormatter();
  ~JsonFormatter() override;

  /// Writes the root of `output` and a line end, and flushes the stream.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;

  /// Writes one value, null included, without a line end after it, and flushes the stream. `level`
  /// is the indentation of its brackets; a level below 1 has none. The value of a field stands two
  /// levels deeper than its structure, an element three levels deeper than its list.
  void Format(std::shared_ptr<MetaObj::MetaObject> value, std::ostream& out, int level);
};

}  // namespace Kestrel::AutoCli
