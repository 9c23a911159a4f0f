// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/FieldLayout.h"

namespace Kestrel::AutoCli {

/// The texts that a formatter writes before the fields of records, made once for all records that
/// share a layout and stand at one level. Lives for one call; the records stay as they are.
class FieldPrefixes {
 public:
  /// Makes the text before a field of that name, the first one or another, in a record at that
  /// level.
  using Make = std::string (*)(const std::string& name, bool isFirst, long level);

  explicit FieldPrefixes(Make make) : make_(make) {}

  /// The texts in the order of the record's fields; null when they are not worth keeping, and are
  /// to be made one at a time. The pointer is good until the object goes.
  const std::string* Find(const MetaObj::MetaStruct& record, long level);

 private:
  struct Entry {
    const MetaObj::FieldLayout* layout;
    long level;
    std::vector<std::string> texts;
  };

  const Entry* FindEntry(const MetaObj::FieldLayout* layout, long level);
  void AddEntry(const MetaObj::FieldLayout* layout, long level);

  Make make_;
  std::vector<Entry> entries_;
  std::size_t lastUsed_ = 0;
};

}  // namespace Kestrel::AutoCli
