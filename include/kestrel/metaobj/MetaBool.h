// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

/// A boolean. Two shared instances stand for all; making one allocates nothing.
class KESTREL_API MetaBool : public MetaObject {
 public:
  /// For `New` alone, which can make the flag.
  MetaBool(bool value, FactoryFlag flag);

  /// The shared false. The reference stays valid until the library is unloaded.
  static const std::shared_ptr<MetaBool>& New();

  /// The shared true or false. The reference stays valid until the library is unloaded.
  static const std::shared_ptr<MetaBool>& New(bool value);

  /// The value.
  bool GetValue() const { return value_; }

  /// "true" or "false".
  std::string ToString() const override;

  /// Builds the shared instances unless they stand already; returns true.
  static bool Init();

  /// What `Init()` returned when the library was loaded.
  static bool _sInitialized;

 private:
  bool value_;
};

}  // namespace Kestrel::MetaObj
