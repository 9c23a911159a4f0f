// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkParameters.h"

#include "plugins/host/frame/Parameter.h"

namespace Kestrel::Host {

const char* const kInterfaceCompletion = "network.interface.list Name";

void AddFamilyParameter(CallSpec::InputSpec& spec) {
  Parameter("family", CallSpec::Int,
            "List only this version of the Internet protocol; one of %ENUM%.")
      .Short("f")
      .OneOf({4, 6})
      .AddTo(spec);
}

void AddInterfaceParameter(CallSpec::InputSpec& spec) {
  Parameter("interface", CallSpec::StringList,
            "List only the interface of this name; * in it stands for anything.")
      .Short("i")
      .AddTo(spec);
}

std::string TextOrNone(std::string text) { return text.empty() ? "none" : std::move(text); }

}  // namespace Kestrel::Host
