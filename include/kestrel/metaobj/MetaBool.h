// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

/// A boolean. There are two instances, false and true, which all owners share.
class KESTREL_API MetaBool : public MetaObject {
 public:
  /// For `New` only; no other caller can make the flag.
  MetaBool(bool value, FactoryFlag flag);

  /// Returns the shared false. The reference stays valid until the library is unloaded.
  static const std::shared_ptr<MetaBool>& New();

  /// Returns the shared instance for `value`. The reference stays valid until the library is
  /// unloaded.
  static const std::shared_ptr<MetaBool>& New(bool value);

  /// The value.
  bool GetValue() const { return value_; }

  /// "true" or "false".
  std::string ToString() const override;

  /// Makes the shared instances unless they exist already; returns true.
  static bool Init();

  /// What `Init()` returned when the library was loaded.
  static bool _sInitialized;

 private:
  bool value_;
};

}  // namespace Kestrel::MetaObj
