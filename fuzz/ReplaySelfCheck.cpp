// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A target that fails on inputs that begin with "fault". replay_self_check.sh checks how the replay
// reports that.

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
