// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

/// A string of bytes, NUL included; no encoding is asked for. The empty string is one shared
/// instance.
class KESTREL_API MetaString : public MetaObject {
 public:
  /// For `New` alone, which can make the flag.
  MetaString(std::string&& value, FactoryFlag flag);
  MetaString(std::string_view value, FactoryFlag flag);

  /// The shared empty string. The reference stays valid until the library is unloaded.
  static const std::shared_ptr<MetaString>& New();

  /// An owner of the shared instance for the empty string, else of a fresh instance.
  static std::shared_ptr<MetaString> New(std::string&& value);
  /// As above, from a copy.
  static std::shared_ptr<MetaString> New(const std::string& value);
  /// As above, from a text ended by a NUL. Null counts as the empty string.
  static std::shared_ptr<MetaString> New(const char* value);

  /// For text from outside the library: as `New`, but text that is not valid UTF-8 is replaced by
  /// a readable form with its bad bytes escaped. Only what stands before the first NUL is looked
  /// at, and only that is kept when it has to be escaped.
  static std::shared_ptr<MetaString> NewUtf8WithEscapes(std::string&& value);

  /// The value; the reference lives as long as this object.
  const std::string& GetValue() const { return value_; }

  /// The value itself, neither quoted nor escaped.
  std::string ToString() const override;

  /// Builds the shared instance unless it stands already; returns true.
  static bool Init();

  /// What `Init()` returned when the library was loaded.
  static bool _sInitialized;

 private:
  static std::shared_ptr<MetaString> Copy(std::string_view value);

  std::string value_;
};

}  // namespace Kestrel::MetaObj
