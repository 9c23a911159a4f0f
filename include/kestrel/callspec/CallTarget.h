// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::CallSpec {

/// Something that can be called with an input and that fills an output.
class KESTREL_API CallTarget {
 public:
  virtual ~CallTarget();

  /// Does the work: reads `input`, and sets the root value or adds error messages in `output`.
  virtual void Execute(const std::shared_ptr<Input>& input,
                       const std::shared_ptr<Output>& output) = 0;
};

}  // namespace Kestrel::CallSpec
