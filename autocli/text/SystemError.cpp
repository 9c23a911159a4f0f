// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/SystemError.h"

#include <cstddef>
#include <cstring>

namespace Kestrel::AutoCli {

namespace {

constexpr std::size_t kMaxErrorText = 255;

}  // namespace

std::string SystemErrorText(int error) {
  char buffer[kMaxErrorText + 1] = "";
  // For a known error, strerror_r does not use the buffer. It returns a constant string, which may
  // be longer than the buffer.
  return std::string(strerror_r(error, buffer, sizeof buffer)).substr(0, kMaxErrorText);
}

}  // namespace Kestrel::AutoCli
