// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/Input.h>
#include <kestrel/callspec/InputSpec.h>
#include <kestrel/callspec/Output.h>
#include <kestrel/metaobj/MetaList.h>
#include <kestrel/metaobj/MetaObject.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "plugins/host/frame/StructShape.h"

namespace Kestrel::Host {

/// The order and number of rows that the user requests from a command that lists structures, with
/// the parameters "sort", "descending" and "limit".
class RowOrder {
 public:
  /// Declares the three parameters.
  static void DeclareParameters(CallSpec::InputSpec& spec);

  /// Returns the order that `input` requests. Returns nothing, and adds a message to `output`, if
  /// "sort" names a field that `shape` does not have or that has no order, or if "descending" is
  /// given without "sort".
  static std::optional<RowOrder> Read(const CallSpec::Input& input, const StructShape& shape,
                                      CallSpec::Output& output);

  /// Returns the rows in that order, up to the limit; returns `rows` itself if no order is
  /// requested and the limit is not exceeded. Strings are compared byte by byte, integers by value,
  /// and false comes before true. Rows with equal values keep their order.
  std::shared_ptr<MetaObj::MetaList> Apply(const std::shared_ptr<MetaObj::MetaList>& rows) const;

 private:
  std::string field_;                                   // empty if the rows keep their order
  MetaObj::MetaType kind_ = MetaObj::MetaType::String;  // of the field
  bool isDescending_ = false;
  std::size_t limit_ = std::numeric_limits<std::size_t>::max();
};

}  // namespace Kestrel::Host
