// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

#include "autocli/formatters/PrintfFormat.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

// What the formatters that style fields say about the two parameters. Scripts match these texts.
inline constexpr char kUnitsParam[] = "units:<TypeName>.<FieldName>";
inline constexpr char kPrintfParam[] = "printf:<TypeName>.<FieldName>";
// The example of units, although the texts about printf quote it too.
inline constexpr char kStyleExample[] =
    "For example specifying \"units:ScsiDeviceList.Size\" = \"Mb\" would append the string 'Mb' to "
    "the end of a field";

/// How the values of one field of one structure type are printed: its "printf:" and "units:"
/// parameters, looked up once for any number of values.
class FieldStyle {
 public:
  /// Whether `params` styles any field at all; most calls do not, and then need no look-ups.
  static bool IsUsedBy(const FormatParameters& params);

  /// The style of no parameters.
  FieldStyle() = default;

  /// Looks the two parameters up. `params` must outlive the object.
  FieldStyle(const std::string& typeName, const std::string& fieldName,
             const FormatParameters& params);

  /// Whether a value is printed as its `ToString()` and nothing more.
  bool IsPlain() const { return !format_.has_value() && units_ == nullptr; }

  /// The text of `value`; see AutoCli_FormatField.
  std::string MakeText(const MetaObj::MetaObject* value) const;

 private:
  std::string printfKey_;
  std::optional<PrintfFormat> format_;
  const std::string* units_ = nullptr;
};

}  // namespace Kestrel::AutoCli
