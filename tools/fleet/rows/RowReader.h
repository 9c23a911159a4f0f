// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaList.h>

#include <istream>
#include <memory>

#include "plugins/host/frame/StructShape.h"

namespace Kestrel::Fleet {

/// Reads rows of several hosts, all of one shape, from lines of JSON.
///
///     the shape      {"type": TYPE, "fields": [FIELD, ...]}
///     for each part  {"host": HOST, "rows": COUNT}
///                    COUNT rows, each an object with a member for each field but the first
///
/// FIELD is an array: the name, the kind as `vexil command describe` names it, and for structures
/// the type name and an array of fields. The first field of the shape is a string, with the value
/// HOST.
///
/// The constructor and `ReadRows` throw KestrelException if a line has another form.
class RowReader {
 public:
  /// Reads the shape. `stream` must live as long as the reader.
  explicit RowReader(std::istream& stream);
  RowReader(const RowReader&) = delete;
  RowReader& operator=(const RowReader&) = delete;
  ~RowReader();

  const Host::StructShape& GetShape() const;

  /// Reads all rows to the end of the stream.
  std::shared_ptr<MetaObj::MetaList> ReadRows();

 private:
  struct Shape;

  void ReadPart(const std::string& header, MetaObj::MetaList& rows);

  std::istream& stream_;
  std::unique_ptr<const Shape> shape_;
};

}  // namespace Kestrel::Fleet
