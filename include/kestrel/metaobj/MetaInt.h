// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

/// A signed 64-bit integer. The values -1 to 20 are shared instances.
class KESTREL_API MetaInt : public MetaObject {
 public:
  /// For `New` only; no other caller can make the flag.
  MetaInt(long value, FactoryFlag flag);

  /// Returns the shared 0. The reference stays valid until the library is unloaded.
  static const std::shared_ptr<MetaInt>& New();

  /// Returns the shared instance for -1 to 20, a new instance for any other value.
  static std::shared_ptr<MetaInt> New(long value);

  /// The value.
  long GetValue() const { return value_; }

  /// The value in decimal digits, with a leading '-' when it is negative.
  std::string ToString() const override;

  /// Makes the shared instances unless they exist already; returns true.
  static bool Init();

  /// What `Init()` returned when the library was loaded.
  static bool _sInitialized;

 private:
  static const std::shared_ptr<MetaInt>& Shared(long value);

  long value_;
};

}  // namespace Kestrel::MetaObj
