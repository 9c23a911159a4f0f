// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

/// A string of any bytes, NUL included; no encoding is required. The empty string is one shared
/// instance.
class KESTREL_API MetaString : public MetaObject {
 public:
  /// @{
  /// For `New` only; no other caller can make the flag.
  MetaString(std::string&& value, FactoryFlag flag);
  MetaString(std::string_view value, FactoryFlag flag);
  /// @}

  /// Returns the shared empty string. The reference stays valid until the library is unloaded.
  static const std::shared_ptr<MetaString>& New();

  /// Returns the shared instance for the empty string, a new instance for any other value.
  static std::shared_ptr<MetaString> New(std::string&& value);
  /// As above, with a copy of `value`.
  static std::shared_ptr<MetaString> New(const std::string& value);
  /// As above, with a copy of a NUL-terminated string. Null counts as the empty string.
  static std::shared_ptr<MetaString> New(const char* value);

  /// For input from outside the library: the same as `New`, except that a value that is not valid
  /// UTF-8 is replaced by one with its invalid bytes escaped. Only the bytes before the first NUL
  /// are checked; if they need escaping, the rest is dropped.
  static std::shared_ptr<MetaString> NewUtf8WithEscapes(std::string&& value);

  /// The value. The reference is valid as long as this object exists.
  const std::string& GetValue() const { return value_; }

  /// The value itself, neither quoted nor escaped.
  std::string ToString() const override;

  /// Makes the shared instance unless it exists already; returns true.
  static bool Init();

  /// What `Init()` returned when the library was loaded.
  static bool _sInitialized;

 private:
  static std::shared_ptr<MetaString> Copy(std::string_view value);

  std::string value_;
};

}  // namespace Kestrel::MetaObj
