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

/// The formatter "xml": prints any value as an XML document for programs, each value as an element
/// named after its kind, three blanks of indentation a level.
///
/// All format parameters of the call stand in the document as meta-data. One has an effect:
/// "stylesheet", a file name or URL, adds an instruction that names it, its characters as they are.
///
/// Texts, type names, field names and meta-data are escaped; a control character, which no XML
/// document can hold, is written as it is. Nothing is thrown for a bad value: a line in its place
/// tells what is wrong. Values may nest as deep as memory allows.
class KESTREL_API XmlFormatter : public Formatter {
 public:
  XmlFormatter();
  ~XmlFormatter() override;

  /// Writes the whole document around the root of `output`, and flushes the stream.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;

  /// Writes the element of one value, null included, and flushes the stream. `level` is the
  /// element's indentation; a level below 1 has none.
  void Format(std::shared_ptr<MetaObj::MetaObject> value, std::ostream& out, int level);
};

/// The text with each of & < > % " ' replaced by an entity, all other bytes as they are.
KESTREL_API std::string SantizeString(std::string text);

}  // namespace Kestrel::AutoCli
