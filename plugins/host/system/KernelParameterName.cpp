// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/KernelParameterName.h"

#include "plugins/host/frame/Parameter.h"

namespace Kestrel::Host {

void AddParameterName(CallSpec::InputSpec& spec) {
  Parameter("name", CallSpec::String, "The name of the parameter, such as vm.swappiness.")
      .Short("n")
      .Required()
      .Matching(kParameterNamePattern)
      .AddTo(spec);
}

}  // namespace Kestrel::Host
