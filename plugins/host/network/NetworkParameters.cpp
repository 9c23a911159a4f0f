// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkParameters.h"

#include "plugins/host/frame/Parameter.h"

namespace Kestrel::Host {

// As the kernel has it: 15 bytes at most, without '/' and white space.
const char* const kInterfaceName = "[^/\\s]{1,15}";

void AddFamilyParameter(CallSpec::InputSpec& spec) {
  Parameter("family", CallSpec::Int,
            "List what belongs to this version of the Internet protocol only; one of %ENUM%.")
      .Short("f")
      .OneOf({4, 6})
      .AddTo(spec);
}

void AddInterfaceParameter(CallSpec::InputSpec& spec) {
  Parameter("interface", CallSpec::StringList,
            "List what belongs to the interface of this name only; %REGEX%.")
      .Short("i")
      .Matching(kInterfaceName)
      .AddTo(spec);
}

}  // namespace Kestrel::Host
