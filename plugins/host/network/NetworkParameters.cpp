// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkParameters.h"

#include "plugins/host/frame/Parameter.h"

namespace Kestrel::Host {

// The rule of the kernel: at most 15 bytes, without "/" and white space.
const char* const kInterfaceName = "[^/\\s]{1,15}";

void AddFamilyParameter(CallSpec::InputSpec& spec) {
  Parameter("family", CallSpec::Int,
            "List only this version of the Internet protocol; one of %ENUM%.")
      .Short("f")
      .OneOf({4, 6})
      .AddTo(spec);
}

void AddInterfaceParameter(CallSpec::InputSpec& spec) {
  Parameter("interface", CallSpec::StringList, "List only the interface of this name; %REGEX%.")
      .Short("i")
      .Matching(kInterfaceName)
      .AddTo(spec);
}

}  // namespace Kestrel::Host
