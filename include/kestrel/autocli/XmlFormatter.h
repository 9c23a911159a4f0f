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

/// The formatter "xml". Prints any value as an XML document, for programs. Each value is an element
/// named after its kind, indented by three spaces per level.
///
/// The document contains all format parameters of the call as meta-data. One of them has an effect:
/// "stylesheet", a file name or URL, adds a processing instruction with that name, which is not
/// escaped.
///
/// Strings, type names, field names and meta-data are escaped. Control characters are written
/// unchanged, although XML allows few of them. For a value that cannot be printed, the output
/// contains an error message on a line in its place. Nesting is limited by memory only.
class KESTREL_API XmlFormatter : public Formatter {
 public:
  XmlFormatter();
  ~XmlFormatter() override;

  /// Writes a whole document with the root of `output` and flushes the stream.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;

  /// Writes the element of `value`, which may be null, and flushes the stream. `level` sets the
  /// indentation of the element: three spaces per level, none below level 1.
  void Format(std::shared_ptr<MetaObj::MetaObject> value, std::ostream& out, int level);
};

/// Returns `text` with each of & < > % " ' replaced by its XML reference and no other change.
KESTREL_API std::string SantizeString(std::string text);

}  // namespace Kestrel::AutoCli
