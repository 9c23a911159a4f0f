// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A target that refuses the input "fault": replay_self_check.sh looks at what the replay makes of
// it.

#include <cstddef>
#include <cstdint>

#include "FuzzInput.h"
#include "Property.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  RequireEqual(FuzzInput(data, size).TakeLine().substr(0, 5) == "fault" ? "fault" : "fine", "fine",
               "an input is fine");
  return 0;
}
