// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"

namespace Kestrel::CallSpec {

/// Something that declares the parameters and the result of a call.
class KESTREL_API CallTargetSpec {
 public:
  virtual ~CallTargetSpec();

  /// The declared parameters.
  virtual std::shared_ptr<InputSpec> GetInputSpec() = 0;

  /// The declared shape of the result.
  virtual std::shared_ptr<OutputSpec> GetOutputSpec() = 0;
};

}  // namespace Kestrel::CallSpec
