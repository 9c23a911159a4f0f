// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

#include "autocli/formatters/PrintfFormat.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

// The documentation of the two parameters, for the formatters that have them. Scripts match it.
inline constexpr char kUnitsParam[] = "units:<TypeName>.<FieldName>";
inline constexpr char kPrintfParam[] = "printf:<TypeName>.<FieldName>";
// An example for units, but the description of printf quotes it too.
inline constexpr char kStyleExample[] =
    "For example specifying \"units:ScsiDeviceList.Size\" = \"Mb\" would append the string 'Mb' to "
    "the end of a field";

/// How the values of one field of one structure type are printed: its parameters "printf:" and
/// "units:", looked up once for any number of values.
class FieldStyle {
 public:
  /// Returns whether `params` has a style for any field. Most calls have none and need no look-ups.
  static bool IsUsedBy(const FormatParameters& params);

  /// The style without parameters.
  FieldStyle() = default;

  /// Looks up the two parameters in `params`, which must outlive this object.
  FieldStyle(const std::string& typeName, const std::string& fieldName,
             const FormatParameters& params);

  /// Returns whether a value is printed as its `ToString()`, without changes.
  bool IsPlain() const { return !format_.has_value() && units_ == nullptr; }

  /// Returns what is printed for `value`; see AutoCli_FormatField.
  std::string MakeText(const MetaObj::MetaObject* value) const;

 private:
  std::string printfKey_;
  std::optional<PrintfFormat> format_;
  const std::string* units_ = nullptr;
};

}  // namespace Kestrel::AutoCli
